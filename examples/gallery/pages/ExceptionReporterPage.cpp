// SPDX-License-Identifier: MIT
#include "ExceptionReporterPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/support/VXExceptionReporter.h>

ExceptionReporterPage::ExceptionReporterPage()
    : GalleryPage(QStringLiteral("exception-reporter"), QStringLiteral("Exception reporter"),
                  QStringLiteral("Tells of an exception that nobody foresaw, and what a report of it would hold."),
                  {QStringLiteral("VXExceptionReporter")}) {}

ExceptionReporterPage::~ExceptionReporterPage() = default;

void ExceptionReporterPage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 0, 420, 32),
                  QStringLiteral("There is no host for reports here: the window offers to copy one in place of sending "
                                 "it."));
    settings.addText(QStringLiteral("Reason"), m_reason, [this](const QString& text) { m_reason = text; });
    settings.addButton(QStringLiteral("&Throw"), [this] { throw NSException(NSRangeException, m_reason); });
}

void ExceptionReporterPage::takePictures(PictureBook& book) {
    whileModal([&](NSWindow& window) {
        book.addWindow(QStringLiteral("exception-reporter"), QStringLiteral("Exception reporter"), window, 8);
        VXExceptionReporter::reporter().ignore(nullptr);
    });
    VXExceptionReporter::reporter().reportException(NSException(NSRangeException, m_reason));
}

// SPDX-License-Identifier: MIT
#include "DatabasePage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QDir>

#include <utility>

namespace {

// Points.
constexpr NSSize pageSize{420, 240};
constexpr double lineHeight = 14;
constexpr double pathHeight = 28;
constexpr double explanationHeight = 42;
constexpr double buttonWidth = 190;
constexpr double buttonHeight = 28;

} // namespace

DatabasePage::DatabasePage(std::function<void()> useStandard)
    : PreferencesPage(pageSize), m_path((addText(nextRow(lineHeight), QStringLiteral("The snippets are kept in")),
                                         addText(nextRow(pathHeight), {}))),
      m_useStandard((addText(nextRow(explanationHeight),
                             QStringLiteral("To choose another file, hold the Alt key while the program starts. "
                                            "Snippets in a file of your own are not synced.")),
                     addButton(NSMakeRect(pageSize.width - margin - buttonWidth, NSMinY(nextRow(buttonHeight)),
                                          buttonWidth, buttonHeight),
                               QStringLiteral("Use Standard Database")))) {
    m_path.setSelectable(true);
    connect(&m_useStandard, &QAbstractButton::clicked, this, std::move(useStandard));
}

void DatabasePage::show(const QString& path, bool isStandard) {
    m_path.setStringValue(QDir::toNativeSeparators(path));
    m_useStandard.setEnabled(!isStandard);
}

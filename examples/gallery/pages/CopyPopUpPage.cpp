// SPDX-License-Identifier: MIT
#include "CopyPopUpPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTCopyPopUp.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSWindow.h>

CopyPopUpPage::CopyPopUpPage()
    : GalleryPage(QStringLiteral("copy-pop-up"), QStringLiteral("Copy pop-up"),
                  QStringLiteral("Tells for a moment that something was copied, low in the middle of the screen; the "
                                 "mouse goes through it."),
                  {QStringLiteral("LTCopyPopUp")}) {}

CopyPopUpPage::~CopyPopUpPage() = default;

void CopyPopUpPage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 4, 120, 16), QStringLiteral("Text to copy"));
    auto& field = stage.put<LTHUDTextField>(NSMakeRect(130, 0, 240, 22));
    field.setAccessibleName(QStringLiteral("Text to copy"));
    field.setText(QStringLiteral("Copied from the gallery"));
    settings.addButton(QStringLiteral("&Copy"), [&field] {
        NSPasteboard& pasteboard = NSPasteboard::generalPasteboard();
        pasteboard.clearContents();
        pasteboard.setString(field.text(), QString::fromLatin1(NSStringPboardType));
        LTCopyPopUp::pop();
    });
    settings.addNote(QStringLiteral("It is the one of the process: copying again while it is there shows no second "
                                    "one."),
                     3);
}

void CopyPopUpPage::takePictures(PictureBook& book) {
    LTCopyPopUp::pop();
    for (NSWindow* const window : NSWindow::windows()) {
        if (window->ignoresMouseEvents() && window->isVisible()) {
            book.addWindow(QStringLiteral("copy-pop-up"), QStringLiteral("Copy pop-up"), *window, 12);
            window->orderOut(nullptr);
            break;
        }
    }
}

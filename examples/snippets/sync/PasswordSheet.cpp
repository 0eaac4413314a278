// SPDX-License-Identifier: MIT
#include "PasswordSheet.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>

namespace {

// Points.
constexpr NSSize sheetSize{442, 160};
constexpr double margin = 24;
constexpr double textWidth = sheetSize.width - 2 * margin;
constexpr NSRect headlineFrame{{margin, 120}, {textWidth, 20}};
constexpr NSRect reasonFrame{{margin, 84}, {textWidth, 28}};
constexpr NSRect labelFrame{{margin, 55}, {72, 15}};
constexpr NSRect fieldFrame{{106, 52}, {sheetSize.width - 106 - margin, 22}};
constexpr NSRect okFrame{{331, 2}, {96, 28}};
constexpr NSRect cancelFrame{{235, 2}, {96, 28}};

constexpr double headlineFontSize = 16;
constexpr double textFontSize = 11;

void addText(NSWindow& sheet, const NSRect& frame, const NSFont& font, const QString& text) {
    auto* field = new NSTextField(frame, sheet.contentView());
    field->setFont(font);
    field->setTextColor(NSColor::whiteColor());
    field->setStringValue(text);
    ViewCore::of(sheet.contentView())->addSubview(field);
}

LTHUDButton& addButton(NSWindow& sheet, const NSRect& frame, const QString& title) {
    auto* button = new LTHUDButton(frame, sheet.contentView());
    button->setTitle(title);
    ViewCore::of(sheet.contentView())->addSubview(button);
    return *button;
}

} // namespace

std::optional<QString> askForPassword(const QString& host, const QString& reason, NSWindow& window) {
    const QString headline = QStringLiteral("Password for %1").arg(host);
    LTHUDWindow sheet({NSZeroPoint, sheetSize}, NSBorderlessWindowMask, NSBackingStoreBuffered, true);
    sheet.setHasShadow(true);
    sheet.setWindowTitle(headline);
    sheet.setAccessibleDescription(reason);
    addText(sheet, headlineFrame, NSFont::boldSystemFontOfSize(headlineFontSize), headline);
    addText(sheet, reasonFrame, NSFont::systemFontOfSize(textFontSize), reason);
    addText(sheet, labelFrame, NSFont::systemFontOfSize(textFontSize), QStringLiteral("Password:"));
    auto* password = new LTHUDSecureTextField(fieldFrame, sheet.contentView());
    password->setAccessibleName(QStringLiteral("Password"));
    ViewCore::of(sheet.contentView())->addSubview(password);
    LTHUDButton& ok = addButton(sheet, okFrame, QStringLiteral("OK"));
    LTHUDButton& cancel = addButton(sheet, cancelFrame, QStringLiteral("Cancel"));
    password->setTarget(&ok);
    password->setNextKeyView(&ok);
    sheet.setDefaultButtonCell(&ok.cell());
    cancel.cell().setKeyEquivalent(QStringLiteral("\u001b"));

    std::optional<QString> answer;
    QObject::connect(&ok, &QAbstractButton::clicked, &sheet, [&] {
        if (password->text().isEmpty()) {
            NSBeep();
            return;
        }
        answer = password->text();
        NSApplication::sharedApplication()->stopModal();
    });
    QObject::connect(&cancel, &QAbstractButton::clicked, &sheet,
                     [] { NSApplication::sharedApplication()->stopModal(); });
    sheet.makeFirstResponder(password);
    sheet.runHUDSheetForWindow(window);
    return answer;
}

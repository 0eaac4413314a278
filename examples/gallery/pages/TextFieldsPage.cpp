// SPDX-License-Identifier: MIT
#include "TextFieldsPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>

namespace {

constexpr NSRect fieldFrame{{0, 0}, {170, 22}}; // points

} // namespace

TextFieldsPage::TextFieldsPage()
    : GalleryPage(QStringLiteral("text-fields"), QStringLiteral("Text fields"),
                  QStringLiteral("For a line of text, for a password, and for text that nobody types. Return presses "
                                 "the target, Tab goes on."),
                  {QStringLiteral("LTHUDLineEdit"), QStringLiteral("LTHUDTextField"),
                   QStringLiteral("LTHUDSecureTextField"), QStringLiteral("NSTextField")}) {}

void TextFieldsPage::build(Stage& stage, SettingsPane& settings) {
    constexpr double firstWidth = 200;
    stage.putText(NSMakeRect(0, 4, 120, 16), QStringLiteral("Text"));
    auto& plain = stage.put<LTHUDTextField>(NSMakeRect(130, 0, firstWidth, 22));
    plain.setAccessibleName(QStringLiteral("Text"));
    plain.setPlaceholderString(QStringLiteral("Name"));
    stage.putText(NSMakeRect(0, 40, 120, 16), QStringLiteral("Password"));
    auto& secure = stage.put<LTHUDSecureTextField>(NSMakeRect(130, 36, firstWidth, 22));
    secure.setAccessibleName(QStringLiteral("Password"));
    secure.setPlaceholderString(QStringLiteral("Password"));
    auto& target = stage.put<LTHUDButton>(NSMakeRect(130, 72, 110, 28));
    target.setTitle(QStringLiteral("&Log In"));
    auto& told = stage.putText(NSMakeRect(0, 114, 424, 16), QStringLiteral("Return in a field presses “Log In”."));
    QObject::connect(&target, &QAbstractButton::clicked, &stage, [&told, &plain, &secure] {
        told.setStringValue(
            QStringLiteral("“%1”, and %2 characters of a password.").arg(plain.text()).arg(secure.text().size()));
    });
    stage.putText(NSMakeRect(0, 160, 120, 16), QStringLiteral("Label"));
    auto& label = stage.put<NSTextField>(NSMakeRect(130, 160, 280, 64));
    makeWhite(
        label,
        QStringLiteral("Text that nobody types is broken into the lines of its frame. What is too long is drawn a "
                       "little smaller, and ends in an ellipsis at last."),
        NSFont::systemFontOfSize(NSFont::systemFontSize()));
    const std::vector<LTHUDLineEdit*> fields{&plain, &secure};
    for (LTHUDLineEdit* field : fields) {
        field->setTarget(&target);
    }

    settings.addText(QStringLiteral("Placeholder"), plain.placeholderString(), [fields](const QString& text) {
        for (LTHUDLineEdit* field : fields) {
            field->setPlaceholderString(text);
        }
    });
    settings.addCheckBox(QStringLiteral("Enabled"), true, [=, &label](bool isOn) {
        for (LTHUDLineEdit* field : fields) {
            field->setEnabled(isOn);
        }
        label.setEnabled(isOn);
    });
    settings.addCheckBox(QStringLiteral("Label can be selected"), false,
                         [&label](bool isOn) { label.setSelectable(isOn); });
    settings.addSlider(QStringLiteral("Width"), 60, 290, firstWidth, [fields](double width) {
        for (LTHUDLineEdit* field : fields) {
            field->setFrame(NSMakeRect(130, field->frame().origin.y, width, fieldFrame.size.height));
        }
    });
    settings.addSlider(QStringLiteral("Size of the label's font"), 9, 24, NSFont::systemFontSize(),
                       [&label](double size) { label.setFont(NSFont::systemFontOfSize(size)); });
    settings.addChoice(
        QStringLiteral("Colour of the label"),
        {QStringLiteral("White"), QStringLiteral("Amber"), QStringLiteral("Green")}, 0, [&label](int index) {
            const NSColor colors[] = {NSColor::whiteColor(), NSColor::colorWithCalibratedRed(1, 0.78, 0.35, 1),
                                      NSColor::colorWithCalibratedRed(0.55, 0.9, 0.55, 1)};
            label.setTextColor(colors[index]);
        });
}

void TextFieldsPage::takePictures(PictureBook& book) {
    const std::vector<ControlState> states{ControlState::Normal, ControlState::Focused, ControlState::Disabled,
                                           ControlState::Inactive};
    book.addStates(
        QStringLiteral("text-field"), QStringLiteral("Text field"),
        [] {
            auto* const field = new LTHUDTextField(fieldFrame);
            field->setText(QStringLiteral("Ada Lovelace"));
            return field;
        },
        states);
    book.addStates(
        QStringLiteral("text-field-empty"), QStringLiteral("Empty text field"),
        [] {
            auto* const field = new LTHUDTextField(fieldFrame);
            field->setPlaceholderString(QStringLiteral("Name"));
            return field;
        },
        states);
    book.addStates(
        QStringLiteral("secure-text-field"), QStringLiteral("Secure text field"),
        [] {
            auto* const field = new LTHUDSecureTextField(fieldFrame);
            field->setText(QStringLiteral("engine"));
            return field;
        },
        states);
    book.addStates(QStringLiteral("label"), QStringLiteral("Label"),
                   [] {
                       auto* const label = new NSTextField(fieldFrame);
                       makeWhite(*label, QStringLiteral("Nobody types this."), NSFont::systemFontOfSize(13));
                       return label;
                   },
                   {ControlState::Normal, ControlState::Disabled});
}

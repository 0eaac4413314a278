// SPDX-License-Identifier: MIT
#include "ButtonsPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/platform/appkit/NSWindow.h>

namespace {

constexpr double pushHeight = 28; // points, that the images are made for
constexpr double flatHeight = 22;

} // namespace

ButtonsPage::ButtonsPage()
    : GalleryPage(QStringLiteral("buttons"), QStringLiteral("Push buttons"),
                  QStringLiteral("The push button of dark panels, made of images, and the flat one, which is drawn."),
                  {QStringLiteral("LTHUDButton"), QStringLiteral("LTHUDFlatButton")}) {}

void ButtonsPage::build(Stage& stage, SettingsPane& settings) {
    constexpr double firstWidth = 140;
    stage.putText(NSMakeRect(0, 4, 120, 16), QStringLiteral("Push button"));
    auto& push = stage.put<LTHUDButton>(NSMakeRect(130, 0, firstWidth, pushHeight));
    stage.putText(NSMakeRect(0, 53, 120, 16), QStringLiteral("Flat button"));
    auto& flat = stage.put<LTHUDFlatButton>(NSMakeRect(130, 50, firstWidth, flatHeight));
    auto& told = stage.putText(NSMakeRect(0, 110, 400, 16), QStringLiteral("Not clicked yet."));
    const std::vector<NSButton*> buttons{&push, &flat};
    push.setTitle(QStringLiteral("&Save"));
    flat.setTitle(QStringLiteral("Sa&ve"));
    for (NSButton* button : buttons) {
        QObject::connect(button, &QAbstractButton::clicked, &stage, [&told, button] {
            told.setStringValue(QStringLiteral("“%1” was clicked.").arg(button->displayTitle()));
        });
    }

    settings.addText(QStringLiteral("Title of the push button"), push.title(),
                     [&push](const QString& title) { push.setTitle(title); });
    settings.addText(QStringLiteral("Title of the flat button"), flat.title(),
                     [&flat](const QString& title) { flat.setTitle(title); });
    settings.addStates(buttons);
    settings.addCheckBox(QStringLiteral("Return presses Save"), false, [&push](bool isOn) {
        if (NSWindow* window = push.ViewCore::window()) {
            window->setDefaultButtonCell(isOn ? &push.cell() : nullptr);
        }
    });
    settings.addSlider(QStringLiteral("Width"), 60, 290, firstWidth, [buttons](double width) {
        for (NSButton* button : buttons) {
            button->setFrame(NSMakeRect(130, button->frame().origin.y, width, button->frame().size.height));
        }
    });
}

void ButtonsPage::takePictures(PictureBook& book) {
    book.addStates(QStringLiteral("push-button"), QStringLiteral("Push button"), [] {
        auto* const button = new LTHUDButton(NSMakeRect(0, 0, 110, pushHeight));
        button->setTitle(QStringLiteral("&Save"));
        return button;
    });
    book.addStates(QStringLiteral("flat-button"), QStringLiteral("Flat button"), [] {
        auto* const button = new LTHUDFlatButton(NSMakeRect(0, 0, 110, flatHeight));
        button->setTitle(QStringLiteral("&Save"));
        return button;
    });
}

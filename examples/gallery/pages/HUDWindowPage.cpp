// SPDX-License-Identifier: MIT
#include "HUDWindowPage.h"

#include "../DemoPanel.h"
#include "../GalleryApplication.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/hud/LTHUDWindow.h>

namespace {

constexpr NSSize panelSize{340, 190}; // points

std::unique_ptr<LTHUDWindow> makePanel(const QString& text) {
    return makeDemoPanel(panelSize, QStringLiteral("Dark panel"), text);
}

} // namespace

HUDWindowPage::HUDWindowPage()
    : GalleryPage(QStringLiteral("hud-window"), QStringLiteral("Dark panel"),
                  QStringLiteral("Translucent, dragged by its background, never out of sight; over another window it "
                                 "slides out of a slot as a sheet."),
                  {QStringLiteral("LTHUDWindow"), QStringLiteral("_LTSheetWindowSlot")}) {}

HUDWindowPage::~HUDWindowPage() = default;

void HUDWindowPage::build(Stage& stage, SettingsPane& settings) {
    m_hasLane = true;
    m_window = makePanel(QStringLiteral("Drag me by my background. My title bar is paler while another application is "
                                        "in front."));
    stage.putText(NSMakeRect(0, 0, 420, 32), QStringLiteral("The window of the gallery is one, too."));
    settings.addButton(QStringLiteral("&Show Panel"), [this] { m_window->makeKeyAndOrderFront(nullptr); });
    settings.addButton(QStringLiteral("Show &Sheet"), [this, &stage] { runSheet(*stage.window()); });
    settings.addCheckBox(QStringLiteral("Button lane"), m_hasLane, [this](bool isOn) {
        m_hasLane = isOn;
        m_window->setHasButtonLane(isOn);
    });
    settings.addSlider(QStringLiteral("Width"), 240, 700, panelSize.width, [this](double width) {
        m_window->setFrame({m_window->frame().origin, {width, m_window->frame().size.height}}, true);
    });
    settings.addSlider(QStringLiteral("Height"), 140, 500, panelSize.height, [this](double height) {
        m_window->setFrame({m_window->frame().origin, {m_window->frame().size.width, height}}, true);
    });
    settings.addSlider(QStringLiteral("Opacity"), 0.2, 1, 1, [this](double alpha) { m_window->setAlphaValue(alpha); });
}

void HUDWindowPage::runSheet(NSWindow& parent) {
    const auto sheet =
        makePanel(QStringLiteral("A sheet has no title bar, and takes the input of its window away until "
                                 "it is closed."));
    sheet->setHasButtonLane(m_hasLane);
    for (auto* const button : sheet->findChildren<QAbstractButton*>()) {
        QObject::connect(button, &QAbstractButton::clicked, sheet.get(),
                         [] { GalleryApplication::shared().stopModal(); });
    }
    sheet->runHUDSheetForWindow(parent);
}

void HUDWindowPage::leave() {
    m_window.reset();
}

void HUDWindowPage::takePictures(PictureBook& book) {
    GalleryApplication& application = GalleryApplication::shared();
    m_window->makeKeyAndOrderFront(nullptr);
    book.addWindow(QStringLiteral("hud-window"), QStringLiteral("Panel"), *m_window);
    m_window->setHasButtonLane(false);
    book.addWindow(QStringLiteral("hud-window-without-lane"), QStringLiteral("Panel without a lane"), *m_window);
    m_window->setHasButtonLane(true);
    application.setShownActive(false);
    m_window->display();
    book.addWindow(QStringLiteral("hud-window-inactive"), QStringLiteral("Panel, inactive"), *m_window);
    application.setShownActive(true);
    m_window->orderOut(nullptr);

    const auto parent = makePanel({});
    parent->setFrame(NSInsetRect(parent->frame(), -40, -60), true);
    parent->makeKeyAndOrderFront(nullptr);
    whileModal([&](NSWindow& /*sheet*/) {
        book.addWindow(QStringLiteral("hud-sheet"), QStringLiteral("Sheet"), *parent, 24);
        application.stopModal();
    });
    runSheet(*parent);
}

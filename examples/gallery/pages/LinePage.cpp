// SPDX-License-Identifier: MIT
#include "LinePage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTLine.h>
#include <VXKit/platform/appkit/NSWindow.h>

namespace {

// Points.
constexpr double lineWidth = 300;
constexpr double lineHeight = 2;
constexpr double plateHeight = 60;
constexpr NSRect plainFrame{{0, 0}, {340, 90}};

/// A window that is none of the dark panels.
std::unique_ptr<NSWindow> makePlainWindow() {
    constexpr double white = 0.93;
    auto window = std::make_unique<NSWindow>(plainFrame, NSTitledWindowMask | NSClosableWindowMask,
                                             NSBackingStoreBuffered, false);
    window->setWindowTitle(QStringLiteral("Plain window"));
    window->setBackgroundColor(NSColor::colorWithCalibratedWhite(white, 1));
    auto* const line = new LTLine(NSMakeRect(20, 44, lineWidth, lineHeight));
    ViewCore::of(window->contentView())->addSubview(line);
    window->center();
    return window;
}

} // namespace

LinePage::LinePage()
    : GalleryPage(QStringLiteral("line"), QStringLiteral("Line"),
                  QStringLiteral("Dark above light in a dark panel, fading to both ends elsewhere, and a plate behind "
                                 "other views where it is high."),
                  {QStringLiteral("LTLine")}) {}

LinePage::~LinePage() = default;

void LinePage::build(Stage& stage, SettingsPane& settings) {
    stage.putText(NSMakeRect(0, 0, 400, 16), QStringLiteral("A line"));
    auto& line = stage.put<LTLine>(NSMakeRect(0, 26, lineWidth, lineHeight));
    stage.putText(NSMakeRect(0, 60, 400, 16), QStringLiteral("A plate"));
    auto& plate = stage.put<LTLine>(NSMakeRect(0, 84, lineWidth, plateHeight));
    settings.addSlider(QStringLiteral("Width"), 20, 420, lineWidth, [&line, &plate](double width) {
        for (LTLine* each : {&line, &plate}) {
            each->setFrameSize({width, each->frame().size.height});
        }
    });
    settings.addSlider(QStringLiteral("Height of the plate"), 2, 120, plateHeight, [&plate](double height) {
        plate.setFrameSize({plate.frame().size.width, height});
    });
    settings.addButton(QStringLiteral("In a &Plain Window"), [this] {
        m_plainWindow = makePlainWindow();
        m_plainWindow->makeKeyAndOrderFront(nullptr);
    });
}

void LinePage::leave() {
    m_plainWindow.reset();
}

void LinePage::takePictures(PictureBook& book) {
    book.addStates(QStringLiteral("line"), QStringLiteral("Line in a panel"),
                   [] { return new LTLine(NSMakeRect(0, 0, 160, lineHeight)); }, {ControlState::Normal});
    book.addStates(QStringLiteral("line-plate"), QStringLiteral("Plate"),
                   [] { return new LTLine(NSMakeRect(0, 0, 160, 40)); }, {ControlState::Normal});
    m_plainWindow = makePlainWindow();
    m_plainWindow->makeKeyAndOrderFront(nullptr);
    book.addWindow(QStringLiteral("line-in-plain-window"), QStringLiteral("Line in a plain window"), *m_plainWindow, 8);
    m_plainWindow.reset();
}

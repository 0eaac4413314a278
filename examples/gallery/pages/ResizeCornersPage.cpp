// SPDX-License-Identifier: MIT
#include "ResizeCornersPage.h"

#include "../DemoPanel.h"
#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>

namespace {

// Points.
constexpr NSSize cornerWindowSize{360, 200};
constexpr NSSize leastSize{240, 140};
constexpr NSSize largestSize{640, 480};
constexpr double gripSide = 14;

} // namespace

ResizeCornersPage::ResizeCornersPage()
    : GalleryPage(
          QStringLiteral("resize-corners"), QStringLiteral("Resize corners"),
          QStringLiteral("Grips at the bottom corners of a window without a frame. Drag one: the window keeps to "
                         "its least and largest size."),
          {QStringLiteral("LTResizeCorner"), QStringLiteral("LTLeftResizeCorner")}) {}

ResizeCornersPage::~ResizeCornersPage() = default;

void ResizeCornersPage::build(Stage& stage, SettingsPane& settings) {
    makeWindow();
    stage.putText(
        NSMakeRect(0, 0, 420, 32),
        QStringLiteral("The grips at the bottom of the window that the button shows can be dragged also while "
                       "another application is in front."));
    const auto setLeast = [this](const NSSize& size) { m_window->setMinSize(size); };
    const auto setLargest = [this](const NSSize& size) { m_window->setMaxSize(size); };
    settings.addButton(QStringLiteral("&Show Window"), [this] { m_window->makeKeyAndOrderFront(nullptr); });
    settings.addSlider(QStringLiteral("Least width"), 160, 360, leastSize.width, [this, setLeast](double width) {
        setLeast({width, m_window->minSize().height});
    });
    settings.addSlider(QStringLiteral("Least height"), 100, 200, leastSize.height, [this, setLeast](double height) {
        setLeast({m_window->minSize().width, height});
    });
    settings.addSlider(QStringLiteral("Largest width"), 360, 900, largestSize.width, [this, setLargest](double width) {
        setLargest({width, m_window->maxSize().height});
    });
    settings.addSlider(QStringLiteral("Largest height"), 200, 700, largestSize.height,
                       [this, setLargest](double height) {
                           setLargest({m_window->maxSize().width, height});
                       });
}

void ResizeCornersPage::makeWindow() {
    m_window = makeDemoPanel(cornerWindowSize, QStringLiteral("Resize me"),
                             QStringLiteral("Drag one of the grips at the bottom. The top edge stays where it is."));
    m_window->setMinSize(leastSize);
    m_window->setMaxSize(largestSize);
    ViewCore& content = *ViewCore::of(m_window->contentView());
    auto* const right = new LTResizeCorner(NSMakeRect(cornerWindowSize.width - gripSide, 0, gripSide, gripSide));
    right->setAutoresizingMask(NSViewMinXMargin | NSViewMaxYMargin);
    content.addSubview(right);
    auto* const left = new LTLeftResizeCorner(NSMakeRect(0, 0, gripSide, gripSide));
    left->setAutoresizingMask(NSViewMaxXMargin | NSViewMaxYMargin);
    content.addSubview(left);
}

void ResizeCornersPage::leave() {
    m_window.reset();
}

void ResizeCornersPage::takePictures(PictureBook& book) {
    m_window->makeKeyAndOrderFront(nullptr);
    book.addWindow(QStringLiteral("resize-corners"), QStringLiteral("Resize corners"), *m_window, 8);
    m_window->setFrame(NSInsetRect(m_window->frame(), 50, 20), true);
    book.addWindow(QStringLiteral("resize-corners-small"), QStringLiteral("Resize corners, smaller"), *m_window, 8);
    m_window->orderOut(nullptr);
}

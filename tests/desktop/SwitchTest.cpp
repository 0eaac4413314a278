// SPDX-License-Identifier: MIT
// Switches between views on a real X server, seen by pictures of the screen.
#include "../app/ShellHost.h"
#include "Desktop.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>
#include <VXKit/transitions/_LTPrefTab.h>

#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>

namespace {

constexpr NSRect startFrame{{300, 300}, {400, 250}};
constexpr NSRect endFrame{{250, 250}, {500, 300}};

const QColor oldColor(200, 40, 40);
const QColor newColor(40, 60, 220);
const QColor groundColor(30, 120, 60);

NSColor nsColor(const QColor& color) {
    constexpr double most = 255;
    return NSColor::colorWithCalibratedRed(color.red() / most, color.green() / most, color.blue() / most, 1);
}

class PlainView : public NSView {
public:
    PlainView(const NSSize& size, QColor color) : m_color(std::move(color)) { NSView::setFrame({NSZeroPoint, size}); }
    void drawRect(const NSRect& dirtyRect) override {
        nsColor(m_color).setFill();
        NSRectFill(dirtyRect);
    }

private:
    QColor m_color;
};

/// What a picture of the screen shows of the window, in pixels from the top left of the screen.
struct Seen {
    QRect window;  // around all that has one of its colours
    int oldPixels; // of the row just below its top edge
    int newPixels; // of the same
    int firstNew;  // where the new view begins in that row
    int lastOld;   // and where the old one ends
};

Seen seenIn(const QImage& picture) {
    const auto isOurs = [](QRgb pixel) {
        const QColor color(pixel);
        return color == oldColor || color == newColor || color == groundColor;
    };
    Seen seen{{}, 0, 0, picture.width(), -1};
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        const auto* const end = row + picture.width();
        const auto* const first = std::find_if(row, end, isOurs);
        if (first != end) {
            const auto last = std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(row), isOurs);
            seen.window |= QRect(QPoint(static_cast<int>(first - row), y), QPoint(static_cast<int>(&*last - row), y));
        }
    }
    for (int x = seen.window.left(); !seen.window.isEmpty() && x <= seen.window.right(); ++x) {
        const QColor color(picture.pixel(x, seen.window.top() + 2));
        if (color == oldColor) {
            ++seen.oldPixels;
            seen.lastOld = x;
        } else if (color == newColor) {
            ++seen.newPixels;
            seen.firstNew = std::min(seen.firstNew, x);
        }
    }
    return seen;
}

class SwitchOnDesktop : public testing::TestWithParam<NSWindowManagement> {
protected:
    void SetUp() override {
        window.setManagement(GetParam());
        window.setBackgroundColor(nsColor(groundColor));
        container = new LTSwitchableView(NSMakeRect(0, 0, 400, 250));
        container->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
        ViewCore::of(window.contentView())->addSubview(container);
        container->setANewView(new PlainView({400, 250}, oldColor), 0);
        window.orderFront(nullptr);
        waitUntilShown(window);
        ASSERT_TRUE(waitFor([] { return seenIn(pictureOfScreen()).oldPixels == 400; }));
    }

    ShellApplication application;
    NSWindow window{startFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false};
    LTSwitchableView* container = nullptr;
};

} // namespace

TEST_P(SwitchOnDesktop, TheOldViewLeavesAndTheNewOneEntersAsTheWindowGrowsFromItsTopEdge) {
    const QRect before = NSScreenRectToGlobal(startFrame).toRect();
    // Slow enough for many pictures, whatever else the machine does.
    const AnimationDurationsForTesting slow(8);
    auto* const view = new PlainView(endFrame.size, newColor);
    container->setANewView(view, 0, true);
    std::vector<Seen> film;
    ASSERT_TRUE(waitFor([&] {
        film.push_back(seenIn(pictureOfScreen()));
        if (film.size() == 6) {
            keepPicture(GetParam() == NSWindowManagement::Managed ? "switch-managed" : "switch");
        }
        return !FrameAnimations::isAnimating(window) && !FrameAnimations::isAnimating(*view) &&
               film.back().newPixels == 500;
    }));
    EXPECT_EQ(film.front().window, before);
    EXPECT_EQ(film.front().oldPixels, 400);
    EXPECT_EQ(film.back().window, NSScreenRectToGlobal(endFrame).toRect());
    EXPECT_EQ(film.back().newPixels, 500);
    EXPECT_EQ(film.back().oldPixels, 0);
    EXPECT_EQ(window.frame(), endFrame);
    int between = 0;
    for (std::size_t at = 1; at < film.size(); ++at) {
        const Seen& then = film[at - 1];
        const Seen& now = film[at];
        EXPECT_EQ(now.window.top(), before.top()) << "picture " << at;
        EXPECT_GE(now.window.height(), then.window.height()) << "picture " << at;
        EXPECT_GE(now.window.width(), then.window.width()) << "picture " << at;
        EXPECT_LE(now.oldPixels, then.oldPixels) << "picture " << at;
        EXPECT_GE(now.newPixels, then.newPixels) << "picture " << at;
        EXPECT_LT(now.lastOld, now.firstNew) << "the new one is on the right of the old one, in picture " << at;
        // The window is never without its colours, between its edges and what it shows.
        between += now.oldPixels > 0 && now.newPixels > 0 ? 1 : 0;
    }
    EXPECT_GE(between, 3) << "of " << film.size() << " pictures";
}

INSTANTIATE_TEST_SUITE_P(, SwitchOnDesktop, testing::Values(NSWindowManagement::Bypassing, NSWindowManagement::Managed),
                         [](const testing::TestParamInfo<NSWindowManagement>& each) {
                             return each.param == NSWindowManagement::Managed ? "Managed" : "Bypassing";
                         });

namespace {

/// A page of preferences.
NSView* makePage(const char* button, const char* option) {
    auto* const page = new NSView;
    page->setFrame(NSMakeRect(0, 0, 420, 180));
    auto* const check = new LTHUDCheckBox(NSMakeRect(20, 130, 300, 20));
    check->setTitle(QString::fromLatin1(option));
    page->addSubview(check);
    auto* const push = new LTHUDButton(NSMakeRect(20, 80, 140, 28));
    push->setTitle(QString::fromLatin1(button));
    page->addSubview(push);
    return page;
}

class PreferencesOnDesktop : public testing::Test {
protected:
    ShellApplication application;
    LTHUDWindow window{NSMakeRect(300, 250, 420, 230), NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

} // namespace

TEST_F(PreferencesOnDesktop, AreUsedByTheMouseAndByTheKeyboard) {
    ViewCore& content = *ViewCore::of(window.contentView());
    auto* const container = new LTSwitchableView(NSMakeRect(0, 0, 420, 175));
    auto* const tabs = new LTPreferenceTabs(NSMakeRect(10, 180, 400, 26));
    content.addSubview(container);
    content.addSubview(tabs);
    tabs->_switchView = container;
    tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Accounts"), QStringLiteral("Shortcuts")});
    const std::vector<QWidget*> pages{makePage("Reset", "Open at login"), makePage("Add account", "Sync by itself"),
                                      makePage("Record", "Use the number pad")};
    tabs->setTabViews(pages);
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(waitFor([&] { return window.isKeyWindow(); }));
    keepPicture("preferences");
    const auto tab = [&](std::size_t index) { return static_cast<_LTPrefTab*>(tabs->subviews().at(index)); };
    click(tab(1)->mapToGlobal(tab(1)->rect().center()));
    EXPECT_TRUE(
        waitFor([&] { return container->currentView() == pages[1] && !FrameAnimations::isAnimating(*pages[1]); }));
    keepPicture("preferences-accounts");
    pressKey("Right");
    EXPECT_TRUE(
        waitFor([&] { return container->currentView() == pages[2] && !FrameAnimations::isAnimating(*pages[2]); }));
    EXPECT_TRUE(tab(2)->showsFirstResponder());
    keepPicture("preferences-focus");
    pressKey("Home");
    EXPECT_TRUE(waitFor([&] { return container->currentView() == pages[0]; }));
    tab(1)->setDown(true);
    keepPicture("preferences-pressed");
    tab(1)->setDown(false);
    EXPECT_EQ(tabs->indexOfSelectedTab(), 0);
}

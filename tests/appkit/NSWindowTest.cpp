// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSScreen.h>

#include <QLabel>

#include <limits>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using NSWindowTest = AppKitHost;

/// A window that the test has put on the screen.
class ShownWindow : public HostWindow {
public:
    explicit ShownWindow(const NSRect& frame, int level = NSNormalWindowLevel) : HostWindow(frame) {
        setLevel(level);
        orderFront(nullptr);
    }
};

} // namespace

TEST_F(NSWindowTest, HasTheFrameOfItsContentWithoutABorder) {
    const HostWindow window(NSMakeRect(10.5, 20.25, 200, 100.5));
    EXPECT_EQ(window.frame(), NSMakeRect(10.5, 20.25, 200, 100.5));
    EXPECT_EQ(window.styleMask(), NSBorderlessWindowMask);
    EXPECT_EQ(window.frameRectForContentRect(NSMakeRect(1, 2, 3, 4)), NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(window.contentRectForFrameRect(NSMakeRect(1, 2, 3, 4)), NSMakeRect(1, 2, 3, 4));
}

TEST_F(NSWindowTest, HasABorderAroundItsContentOnceTheWindowManagerMadeOne) {
    const NSRect content = NSMakeRect(10, 20, 200, 100);
    HostWindow window(content, NSTitledWindowMask);
    EXPECT_EQ(window.frame(), content) << "nobody knows of one yet";
    show(window);
    const QMargins border = window.windowHandle()->frameMargins();
    ASSERT_GT(border.top(), 0);
    EXPECT_EQ(window.frame(), NSMakeRect(10 - border.left(), 20 - border.bottom(), 200 + border.left() + border.right(),
                                         100 + border.top() + border.bottom()));
    EXPECT_EQ(window.contentRectForFrameRect(window.frame()), content);
    {
        const Posts posts(&window);
        window.windowHandle()->setPosition(window.geometry().topLeft() + QPoint(5, 0));
        EXPECT_TRUE(QTest::qWaitFor([&] { return NSMinX(window.frame()) == 15 - border.left(); }));
        EXPECT_THAT(posts.names, ElementsAre(NSWindowDidMoveNotification)) << "the border has not just come";
    }
    window.setFrame(NSMakeRect(50, 60, 150, 120), true);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 60, 150, 120));
    EXPECT_EQ(window.content().frame().size, window.contentRectForFrameRect(NSMakeRect(50, 60, 150, 120)).size);
}

TEST_F(NSWindowTest, LiesFromTheBottomLeftOfTheMainScreen) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    const double screenHeight = NSScreen::mainScreen().frame().size.height;
    EXPECT_EQ(window.geometry(), QRect(10, static_cast<int>(screenHeight) - 120, 200, 100));
    show(window);
    EXPECT_EQ(window.frame(), NSMakeRect(10, 20, 200, 100));
    EXPECT_EQ(window.geometry(), QRect(10, static_cast<int>(screenHeight) - 120, 200, 100));
}

TEST_F(NSWindowTest, KeepsItsFrameWhateverIsSetBeforeItIsShown) {
    HostWindow window(NSMakeRect(10.5, 20, 200, 100));
    window.setLevel(NSFloatingWindowLevel);
    window.setManagement(NSWindowManagement::Bypassing);
    window.setOpaque(false);
    window.setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
    EXPECT_EQ(window.frame(), NSMakeRect(10.5, 20, 200, 100));
    EXPECT_FALSE(window.isVisible());
    show(window);
    EXPECT_EQ(window.frame(), NSMakeRect(10.5, 20, 200, 100));
}

TEST_F(NSWindowTest, TellsOfAMoveBeforeAResize) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    for (const bool isShown : {false, true}) {
        if (isShown) {
            show(window);
        }
        window.setFrame(NSMakeRect(10, 20, 200, 100), false);
        const Posts posts(&window);
        window.setFrame(NSMakeRect(15, 25, 210, 110), isShown);
        EXPECT_THAT(posts.names, ElementsAre(NSWindowDidMoveNotification, NSWindowDidResizeNotification));
    }
}

TEST_F(NSWindowTest, TellsOfWhatChangedAlone) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    show(window);
    Posts posts(&window);
    window.setFrame(NSMakeRect(10, 20, 200, 100), true);
    settle();
    EXPECT_THAT(posts.names, IsEmpty());
    window.setFrameOrigin({11, 20});
    settle();
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidMoveNotification));
    posts.names.clear();
    window.setFrame(NSMakeRect(11, 20, 201, 100), true);
    settle();
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResizeNotification));
}

TEST_F(NSWindowTest, HasItsNewFrameAndContentWhenItTells) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    show(window);
    NSRect frame;
    NSRect content;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, &window, [&](const NSNotification&) {
            frame = window.frame();
            content = window.content().frame();
        });
    window.setFrame(NSMakeRect(15, 25, 210, 110), false);
    EXPECT_EQ(frame, NSMakeRect(15, 25, 210, 110));
    EXPECT_EQ(content, NSMakeRect(0, 0, 210, 110));
}

TEST_F(NSWindowTest, TellsOnceOfAFixedWindowsChange) {
    NSWindow window(NSMakeRect(10, 20, 200, 100), NSTitledWindowMask, NSBackingStoreBuffered, false);
    show(window);
    const Posts posts(&window);
    window.setFrame(NSMakeRect(15.5, 25.25, 210, 110), true);
    settle();
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidMoveNotification, NSWindowDidResizeNotification));
    EXPECT_EQ(window.frame(), NSMakeRect(15.5, 25.25, 210, 110));
}

TEST_F(NSWindowTest, FollowsWhatTheWindowManagerMadeOfIt) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    show(window);
    const Posts posts(&window);
    const double screenHeight = NSScreen::mainScreen().frame().size.height;
    window.windowHandle()->setGeometry(30, 40, 220, 120);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.geometry() == QRect(30, 40, 220, 120); }));
    EXPECT_EQ(window.frame(), NSMakeRect(30, screenHeight - 160, 220, 120));
    EXPECT_EQ(window.content().frame(), NSMakeRect(0, 0, 220, 120));
    EXPECT_THAT(posts.names, testing::Contains(NSWindowDidMoveNotification));
    EXPECT_THAT(posts.names, testing::Contains(NSWindowDidResizeNotification).Times(1));
}

TEST_F(NSWindowTest, HasItsContentFollow) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    auto* const spring = new NSView;
    spring->setFrame(NSMakeRect(10, 10, 180, 80));
    spring->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    window.content().addSubview(spring);
    window.setFrame(NSMakeRect(10, 20, 300, 150), false);
    EXPECT_EQ(window.content().frame(), NSMakeRect(0, 0, 300, 150));
    EXPECT_EQ(spring->frame(), NSMakeRect(10, 10, 280, 130));
}

TEST_F(NSWindowTest, DrawsWhenAskedToWhileItSetsItsFrame) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    auto* const view = new DrawnView;
    view->setFrame(NSMakeRect(0, 0, 50, 50));
    window.content().addSubview(view);
    show(window);
    view->drawings = 0;
    window.setFrame(NSMakeRect(10, 20, 210, 100), true);
    EXPECT_EQ(view->drawings, 1);
}

TEST_F(NSWindowTest, OutlastsFramesBeyondAnyScreen) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    HostWindow child(NSMakeRect(10, 20, 50, 50));
    show(window);
    window.addChildWindow(&child, NSWindowAbove);
    for (const double number : {0.0, -1.0, -1e300, -infinite}) {
        window.setFrame(NSMakeRect(number, number, number, number), true);
        settle();
    }
    for (const double number : {1e300, -1e300, 1e10, infinite, -infinite, none}) {
        window.orderOut(nullptr);
        // A window that large would only fill the memory.
        window.setFrame(NSMakeRect(number, number, number, number), true);
        window.setFrame(NSMakeRect(number, number, 10, 10), true);
        window.orderFront(nullptr);
        settle();
    }
    window.setFrame(NSMakeRect(10, 20, 200, 100), true);
    settle();
    EXPECT_EQ(window.frame(), NSMakeRect(10, 20, 200, 100)) << "and is none the worse for it";
    EXPECT_EQ(window.QWidget::size(), QSize(200, 100));
}

TEST_F(NSWindowTest, KeepsItsFrameWhenItsLimitsAreSet) {
    HostWindow window(NSMakeRect(10, 20, 200, 100), NSTitledWindowMask | NSResizableWindowMask);
    show(window);
    const NSRect frame = window.frame();
    const Posts posts(&window);
    window.setMinSize({300, 300});
    window.setMaxSize({150, 150});
    settle();
    EXPECT_EQ(window.frame(), frame);
    EXPECT_THAT(posts.names, IsEmpty());
    EXPECT_EQ(window.minSize(), (NSSize{300, 300}));
    EXPECT_EQ(window.maxSize(), (NSSize{150, 150}));
}

TEST_F(NSWindowTest, TakesAFrameBeyondItsLimits) {
    HostWindow window(NSMakeRect(10, 20, 200, 100), NSTitledWindowMask | NSResizableWindowMask);
    HostWindow child(NSMakeRect(15, 25, 10, 10));
    show(window);
    window.addChildWindow(&child, NSWindowAbove);
    window.setMinSize({100, 80});
    window.setMaxSize({300, 300});
    const NSPoint before = window.frame().origin;
    settle();
    const Posts posts(&window);
    window.setFrame(NSMakeRect(20, 30, 50, 50), true);
    settle();
    EXPECT_EQ(window.frame(), NSMakeRect(20, 30, 50, 50));
    EXPECT_EQ(window.content().frame().size, window.contentRectForFrameRect(NSMakeRect(20, 30, 50, 50)).size);
    EXPECT_EQ(child.frame().origin, NSMakePoint(15 + 20 - before.x, 25 + 30 - before.y));
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidMoveNotification, NSWindowDidResizeNotification));
    window.setFrame(NSMakeRect(20, 30, 400, 400), true);
    settle();
    EXPECT_EQ(window.frame(), NSMakeRect(20, 30, 400, 400));
}

TEST_F(NSWindowTest, TellsTheWindowManagerItsLimits) {
    HostWindow window(NSMakeRect(10, 20, 200, 100), NSTitledWindowMask | NSResizableWindowMask);
    window.setMinSize({100, 80});
    window.setMaxSize({300, 250});
    show(window);
    EXPECT_EQ(window.windowHandle()->minimumSize(), QSize(100, 80));
    EXPECT_EQ(window.windowHandle()->maximumSize(), QSize(300, 250));
}

TEST_F(NSWindowTest, CentresWithAThirdOfTheFreeHeightAbove) {
    HostWindow window(NSMakeRect(0, 0, 200, 101));
    window.center();
    const NSRect visible = NSScreen::mainScreen().visibleFrame();
    EXPECT_EQ(NSMidX(window.frame()), NSMidX(visible));
    const double above = NSMaxY(visible) - NSMaxY(window.frame());
    const double below = NSMinY(window.frame()) - NSMinY(visible);
    EXPECT_NEAR(above * 2, below, 2) << "to the whole point";
    EXPECT_EQ(below, std::floor(below));
}

TEST_F(NSWindowTest, GoesWhereItIsConstrainedToWhenItIsOrderedIn) {
    struct : HostWindow {
        using HostWindow::HostWindow;
        NSRect constrainFrameRect(const NSRect& frame) const override { return NSOffsetRect(frame, 5, 6); }
    } window{NSMakeRect(10, 20, 200, 100)};
    window.orderFront(nullptr);
    EXPECT_EQ(window.frame(), NSMakeRect(15, 26, 200, 100));
}

TEST_F(NSWindowTest, IsPlacedWhereItsSubclassSays) {
    struct : HostWindow {
        using HostWindow::HostWindow;
        NSRect frame() const override { return NSMakeRect(40, 50, 60, 70); }
    } window{NSMakeRect(10, 20, 200, 100)};
    window.orderFront(nullptr);
    EXPECT_EQ(window.NSWindow::frame(), NSMakeRect(40, 50, 60, 70));
}

TEST_F(NSWindowTest, HasNoNumberBeforeItIsFirstOrderedIn) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    EXPECT_EQ(window.windowNumber(), -1);
    window.setFrame(NSMakeRect(10, 20, 210, 100), true);
    EXPECT_EQ(window.windowNumber(), -1);
    window.orderFront(nullptr);
    const int number = window.windowNumber();
    EXPECT_GT(number, 0);
    window.orderOut(nullptr);
    EXPECT_EQ(window.windowNumber(), number) << "it keeps it while it is out";
}

TEST_F(NSWindowTest, HasNoNumberWhileItIsOutWhenOneShot) {
    HostWindow window(NSMakeRect(10, 20, 200, 100));
    window.setOneShot(true);
    window.orderFront(nullptr);
    EXPECT_GT(window.windowNumber(), 0);
    window.orderOut(nullptr);
    EXPECT_EQ(window.windowNumber(), -1);
    window.orderFront(nullptr);
    EXPECT_GT(window.windowNumber(), 0);
}

TEST_F(NSWindowTest, HasANumberOfItsOwn) {
    const ShownWindow first(NSMakeRect(0, 0, 10, 10));
    const ShownWindow second(NSMakeRect(0, 0, 10, 10));
    EXPECT_NE(first.windowNumber(), second.windowNumber());
}

TEST_F(NSWindowTest, FloatsAtLevelsThatGoByNumbers) {
    EXPECT_EQ(CGWindowLevelForKey(10), 8);
    EXPECT_EQ(CGWindowLevelForKey(kCGNormalWindowLevelKey), 0);
    EXPECT_EQ(CGWindowLevelForKey(kCGFloatingWindowLevelKey), 3);
    EXPECT_EQ(CGWindowLevelForKey(kCGMainMenuWindowLevelKey), 24);
    EXPECT_EQ(CGWindowLevelForKey(kCGStatusWindowLevelKey), 25);
    EXPECT_EQ(CGWindowLevelForKey(kCGPopUpMenuWindowLevelKey), 101);
    EXPECT_EQ(CGWindowLevelForKey(-17), 0) << "a number without a level";
}

TEST_F(NSWindowTest, IsOrderedToTheFrontOfItsLevelOnly) {
    const ShownWindow high(NSMakeRect(0, 0, 10, 10), NSFloatingWindowLevel);
    const ShownWindow higher(NSMakeRect(0, 0, 10, 10), NSModalPanelWindowLevel);
    ShownWindow low(NSMakeRect(0, 0, 10, 10));
    ShownWindow lowToo(NSMakeRect(0, 0, 10, 10));
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&low, &lowToo, &high, &higher));
    low.orderFront(nullptr);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&lowToo, &low, &high, &higher));
}

TEST_F(NSWindowTest, IsOrderedToTheBackOfItsLevelOnly) {
    const ShownWindow low(NSMakeRect(0, 0, 10, 10));
    const ShownWindow high(NSMakeRect(0, 0, 10, 10), NSFloatingWindowLevel);
    ShownWindow highToo(NSMakeRect(0, 0, 10, 10), NSFloatingWindowLevel);
    highToo.orderBack(nullptr);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&low, &highToo, &high));
}

TEST_F(NSWindowTest, GoesToTheFrontOfALevelThatItIsGiven) {
    ShownWindow first(NSMakeRect(0, 0, 10, 10));
    const ShownWindow second(NSMakeRect(0, 0, 10, 10));
    const ShownWindow floating(NSMakeRect(0, 0, 10, 10), NSFloatingWindowLevel);
    first.setLevel(NSFloatingWindowLevel);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&second, &floating, &first));
    EXPECT_TRUE(first.isVisible());
    first.setLevel(NSNormalWindowLevel);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&second, &first, &floating));
}

TEST_F(NSWindowTest, IsOrderedRelativeToAnother) {
    const ShownWindow bottom(NSMakeRect(0, 0, 10, 10));
    const ShownWindow top(NSMakeRect(0, 0, 10, 10));
    HostWindow between(NSMakeRect(0, 0, 10, 10));
    between.orderWindow(NSWindowBelow, top.windowNumber());
    EXPECT_TRUE(between.isVisible());
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&bottom, &between, &top));
    between.orderWindow(NSWindowAbove, top.windowNumber());
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&bottom, &top, &between));
    between.orderWindow(NSWindowBelow, bottom.windowNumber());
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&between, &bottom, &top));
    between.orderWindow(NSWindowAbove, 0);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&bottom, &top, &between));
    between.orderWindow(NSWindowOut, 0);
    EXPECT_FALSE(between.isVisible());
}

TEST_F(NSWindowTest, OrderedRelativeToItselfOrANumberOfNobodyGoesToTheFront) {
    ShownWindow first(NSMakeRect(0, 0, 10, 10));
    const ShownWindow second(NSMakeRect(0, 0, 10, 10));
    first.orderWindow(NSWindowAbove, first.windowNumber());
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&second, &first));
    first.orderWindow(NSWindowBelow, first.windowNumber());
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&first, &second));
    first.orderWindow(NSWindowAbove, 123456);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&second, &first));
}

TEST_F(NSWindowTest, HasAlphaBetweenNothingAndAll) {
    HostWindow window(NSMakeRect(0, 0, 10, 10));
    EXPECT_EQ(window.alphaValue(), 1);
    window.setAlphaValue(0.5);
    EXPECT_EQ(window.alphaValue(), 0.5);
    EXPECT_NEAR(window.windowOpacity(), 0.5, 0.01);
    window.setAlphaValue(-3);
    EXPECT_EQ(window.alphaValue(), 0);
    window.setAlphaValue(7);
    EXPECT_EQ(window.alphaValue(), 1);
    window.setAlphaValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(window.alphaValue(), 1);
}

TEST_F(NSWindowTest, DeletesTheContentThatItHadBefore) {
    HostWindow window(NSMakeRect(0, 0, 100, 80));
    const QPointer<QWidget> before = window.contentView();
    auto* const after = new NSView;
    window.setContentView(after);
    EXPECT_FALSE(before);
    EXPECT_EQ(window.contentView(), after);
    EXPECT_EQ(after->frame(), NSMakeRect(0, 0, 100, 80));
    window.setContentView(after);
    window.setContentView(nullptr);
    EXPECT_EQ(window.contentView(), after) << "there is always one";
    show(window);
    auto* const plain = new QLabel;
    window.setContentView(plain);
    EXPECT_TRUE(plain->isVisible());
    EXPECT_EQ(plain->geometry(), QRect(0, 0, 100, 80));
    window.setFrame(NSMakeRect(0, 0, 120, 90), true);
    EXPECT_EQ(plain->geometry(), QRect(0, 0, 120, 90));
}

TEST_F(NSWindowTest, TakesItsNewContentOutOfTheOldOne) {
    HostWindow window(NSMakeRect(0, 0, 100, 80));
    const QPointer<NSView> inner(new NSView);
    window.content().addSubview(inner);
    window.setContentView(inner);
    ASSERT_TRUE(inner);
    EXPECT_EQ(window.contentView(), inner);
    EXPECT_EQ(inner->frame(), NSMakeRect(0, 0, 100, 80));
}

TEST_F(NSWindowTest, TellsBeforeItCloses) {
    HostWindow window(NSMakeRect(0, 0, 100, 80));
    show(window);
    bool wasVisible = false;
    int count = 0;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowWillCloseNotification, &window, [&](const NSNotification&) {
            ++count;
            wasVisible = window.isVisible();
        });
    window.close();
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(wasVisible);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(NSWindowTest, IsReleasedWhenClosedOnlyWhenAskedTo) {
    const QPointer<HostWindow> kept(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    const QPointer<HostWindow> released(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    EXPECT_FALSE(kept->isReleasedWhenClosed());
    released->setReleasedWhenClosed(true);
    for (HostWindow* window : {kept.data(), released.data()}) {
        window->orderFront(nullptr);
        window->close();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(kept);
    EXPECT_FALSE(released);
    delete kept;
}

TEST_F(NSWindowTest, MayBeEndedByWhoIsToldThatItCloses) {
    QPointer<HostWindow> window(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    window->orderFront(nullptr);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowWillCloseNotification, window.data(), [&](const NSNotification&) { delete window; });
    window->close();
    EXPECT_FALSE(window);
}

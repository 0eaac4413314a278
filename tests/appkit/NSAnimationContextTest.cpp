// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/NSAnimationContext.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace {

constexpr NSRect startFrame{{10, 20}, {100, 50}};
constexpr NSRect targetFrame{{110, 60}, {40, 70}};

/// Points; as exactly as Qt solves the curve.
constexpr double curveTolerance = 1e-3;

class NSAnimationContextTest : public AppKitHost {
protected:
    NSView& addView(const NSRect& frame = startFrame) {
        auto view = std::make_unique<NSView>();
        view->setFrame(frame);
        window.content().addSubview(view.get());
        return *view.release();
    }

    /// A group whose end is counted.
    void animate(double seconds, const std::function<void()>& changes) {
        NSAnimationContext::runAnimationGroup(
            [&](NSAnimationContext& context) {
                context.setDuration(seconds);
                changes();
            },
            [this] { ++ends; });
    }

    HostWindow window{NSMakeRect(100, 100, 300, 200)};
    FrameAnimations::ClockForTesting clock;
    int ends = 0;
};

/// The same in the time that really goes by.
class RealTime : public AppKitHost {
protected:
    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};

} // namespace

TEST_F(NSAnimationContextTest, LastsAQuarterOfASecondUnlessTold) {
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
    NSView& view = addView();
    view.animator().setFrame(targetFrame);
    EXPECT_EQ(view.frame(), startFrame) << "it returns at once";
    clock.advance(0.249);
    EXPECT_NE(view.frame(), targetFrame);
    EXPECT_TRUE(FrameAnimations::isAnimating(view));
    clock.advance(0.001);
    EXPECT_EQ(view.frame(), targetFrame);
    EXPECT_FALSE(FrameAnimations::isAnimating(view));
}

TEST_F(NSAnimationContextTest, MovesSlowlyAtBothEnds) {
    NSView& view = addView();
    animate(1, [&] { view.animator().setFrame(targetFrame); });
    clock.advance(0.25);
    // The cubic Bézier curve through (0.42, 0) and (0.58, 1) is at 0.12916 when a quarter of the time has gone by.
    expectNear(view.frame(),
               NSMakeRect(10 + 100 * 0.129162, 20 + 40 * 0.129162, 100 - 60 * 0.129162, 50 + 20 * 0.129162),
               curveTolerance);
    clock.advance(0.25);
    expectNear(view.frame(), NSMakeRect(60, 40, 70, 60), curveTolerance);
    clock.advance(0.25);
    expectNear(view.frame(),
               NSMakeRect(10 + 100 * 0.870838, 20 + 40 * 0.870838, 100 - 60 * 0.870838, 50 + 20 * 0.870838),
               curveTolerance);
    clock.advance(0.25);
    EXPECT_EQ(view.frame(), targetFrame);
}

TEST_F(NSAnimationContextTest, EndsExactlyOnATargetOfFractions) {
    NSView& view = addView(NSMakeRect(0.1, 0.7, 33.3, 12.9));
    const NSRect target = NSMakeRect(17.3, 41.7, 60.1, 20.3);
    view.animator().setFrame(target);
    clock.advance(0.1);
    clock.advance(7);
    EXPECT_EQ(view.frame(), target);
}

TEST_F(NSAnimationContextTest, GroupsNestAndTakeTheDurationAroundThem) {
    NSAnimationContext::beginGrouping();
    NSAnimationContext::currentContext().setDuration(3);
    NSAnimationContext::beginGrouping();
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 3);
    NSAnimationContext::currentContext().setDuration(1);
    EXPECT_EQ(NSAnimationContext::openGroups(), 2U);
    NSAnimationContext::endGrouping();
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 3);
    NSAnimationContext::endGrouping();
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
}

TEST_F(NSAnimationContextTest, IgnoresAnEndWithoutABeginning) {
    NSAnimationContext::endGrouping();
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
    NSAnimationContext::beginGrouping();
    EXPECT_EQ(NSAnimationContext::openGroups(), 1U);
    NSAnimationContext::endGrouping();
}

TEST_F(NSAnimationContextTest, WhatIsSetInAGroupMovesInStepWhateverHappensWithIt) {
    NSView& one = addView();
    NSView& other = addView();
    NSAnimationContext::beginGrouping();
    NSAnimationContext::currentContext().setDuration(1);
    one.animator().setFrame(targetFrame);
    other.animator().setFrame(targetFrame);
    NSAnimationContext::beginGrouping(); // and is left open
    for (int step = 0; step < 12; ++step) {
        clock.advance(0.1);
        EXPECT_EQ(one.frame(), other.frame());
    }
    EXPECT_EQ(one.frame(), targetFrame);
}

TEST_F(NSAnimationContextTest, AGroupLeftOpenIsClosedWithItsTurnOfTheEventLoop) {
    for (int time = 0; time < 1000; ++time) {
        NSAnimationContext::beginGrouping();
        NSAnimationContext::currentContext().setDuration(60);
    }
    EXPECT_EQ(NSAnimationContext::openGroups(), 1000U);
    settle();
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
    NSView& view = addView();
    view.animator().setFrame(targetFrame);
    clock.advance(0.25);
    EXPECT_EQ(view.frame(), targetFrame);
}

TEST(NSAnimationContextGroups, AreForgottenWithTheApplication) {
    int count = 1;
    std::string name = "host";
    std::array<char*, 2> arguments{name.data(), nullptr};
    {
        const NSApplication first(count, arguments.data());
        NSAnimationContext::beginGrouping();
        NSAnimationContext::beginGrouping();
        NSAnimationContext::currentContext().setDuration(60);
    }
    const NSApplication second(count, arguments.data());
    NSAnimationContext::beginGrouping();
    EXPECT_EQ(NSAnimationContext::openGroups(), 1U);
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
    NSAnimationContext::endGrouping();
}

TEST_F(NSAnimationContextTest, ADurationOutsideOfGroupsHoldsForItsTurn) {
    NSAnimationContext::currentContext().setDuration(2);
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 2);
    settle();
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
}

TEST_F(NSAnimationContextTest, AGroupStaysOpenWhileItsTurnWaitsForAnotherEventLoop) {
    std::size_t openAfter = 0;
    std::size_t openInside = 0;
    QTimer::singleShot(0, &application, [&] {
        NSAnimationContext::beginGrouping();
        NSAnimationContext::currentContext().setDuration(3);
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [] { NSAnimationContext::beginGrouping(); });
        QTimer::singleShot(5, &loop, [&] {
            openInside = NSAnimationContext::openGroups();
            loop.quit();
        });
        loop.exec();
        EXPECT_EQ(NSAnimationContext::currentContext().duration(), 3);
        NSAnimationContext::endGrouping();
        openAfter = NSAnimationContext::openGroups();
        application.quit();
    });
    QCoreApplication::exec();
    EXPECT_EQ(openInside, 1U) << "the one inside was closed";
    EXPECT_EQ(openAfter, 0U);
}

TEST_F(NSAnimationContextTest, ASecondAnimationTakesOverFromWhereTheFrameIs) {
    NSView& view = addView();
    animate(1, [&] { view.animator().setFrame(targetFrame); });
    clock.advance(0.5);
    expectNear(view.frame(), NSMakeRect(60, 40, 70, 60), curveTolerance);
    animate(2, [&] { view.animator().setFrame(NSMakeRect(0, 0, 70, 60)); });
    clock.advance(1);
    expectNear(view.frame(), NSMakeRect(30, 20, 70, 60), curveTolerance);
    settle();
    EXPECT_EQ(ends, 1) << "of the one that was overtaken";
    clock.advance(1);
    EXPECT_EQ(view.frame(), NSMakeRect(0, 0, 70, 60));
    settle();
    EXPECT_EQ(ends, 2);
}

TEST_F(NSAnimationContextTest, AFrameThatIsSetDirectlyEndsTheAnimation) {
    NSView& view = addView();
    animate(1, [&] { view.animator().setFrame(targetFrame); });
    clock.advance(0.5);
    view.setFrame(NSMakeRect(1, 2, 3, 4));
    EXPECT_FALSE(FrameAnimations::isAnimating(view));
    clock.advance(1);
    EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 3, 4));
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(NSAnimationContextTest, AFrameThatIsSetWhenAStepIsToldEndsTheAnimation) {
    NSView& view = addView();
    view.setPostsFrameChangedNotifications(true);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSViewFrameDidChangeNotification, static_cast<ViewCore*>(&view), [&](const NSNotification&) {
            if (view.frame() != NSMakeRect(1, 2, 3, 4)) {
                view.setFrame(NSMakeRect(1, 2, 3, 4));
            }
        });
    view.animator().setFrame(targetFrame);
    clock.advance(0.1);
    clock.advance(1);
    EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 3, 4));
}

TEST_F(NSAnimationContextTest, FollowingTheSuperviewDoesNotEndTheAnimation) {
    NSView& view = addView();
    view.setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    view.animator().setFrame(targetFrame);
    clock.advance(0.1);
    window.setFrame(NSMakeRect(100, 100, 400, 300), false);
    EXPECT_TRUE(FrameAnimations::isAnimating(view));
    clock.advance(1);
    EXPECT_EQ(view.frame(), targetFrame);
}

TEST_F(NSAnimationContextTest, AViewInAResizingWindowIsPlacedInTheSizeThatItHasBy) {
    NSView& view = addView();
    NSAnimationContext::beginGrouping();
    view.animator().setFrame(targetFrame);
    window.animator().setFrame(NSMakeRect(100, 0, 300, 300), true);
    NSAnimationContext::endGrouping();
    for (int step = 0; step < 6; ++step) {
        clock.advance(0.05);
        const NSRect frame = view.frame();
        const int bottom = view.geometry().y() + view.geometry().height();
        EXPECT_NEAR(window.height() - bottom, frame.origin.y, 1.01) << step;
    }
    EXPECT_EQ(window.frame(), NSMakeRect(100, 0, 300, 300));
    EXPECT_EQ(view.geometry(), QRect(110, 300 - 60 - 70, 40, 70));
}

TEST_F(NSAnimationContextTest, AnimatesAWindowsFrameWithoutBlocking) {
    const NSRect target = NSMakeRect(60, 40, 271.3, 163.9);
    animate(0.5, [&] { window.animator().setFrame(target, true); });
    EXPECT_EQ(window.frame(), NSMakeRect(100, 100, 300, 200));
    clock.advance(0.25);
    expectNear(window.frame(), NSMakeRect(80, 70, 285.65, 181.95), curveTolerance);
    EXPECT_EQ(window.content().frame(), NSMakeRect(0, 0, window.width(), window.height()));
    clock.advance(0.25);
    EXPECT_EQ(window.frame(), target);
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(NSAnimationContextTest, AWindowIsRedrawnOnceForEachStepWhenAllHasMoved) {
    auto view = std::make_unique<DrawnView>();
    DrawnView& drawn = *view;
    drawn.setFrame(startFrame);
    window.content().addSubview(view.release());
    show(window);
    std::vector<NSRect> frames;
    drawn.drawing = [&] { frames.push_back(drawn.frame()); };
    NSAnimationContext::beginGrouping();
    window.animator().setFrame(NSMakeRect(100, 50, 300, 250), true);
    drawn.animator().setFrame(targetFrame);
    NSAnimationContext::endGrouping();
    clock.advance(0.125);
    drawn.drawing = nullptr;
    ASSERT_EQ(frames.size(), 1U);
    expectNear(frames[0], NSMakeRect(60, 40, 70, 60), curveTolerance);
}

TEST_F(NSAnimationContextTest, AWindowMovedDirectlyStaysThere) {
    window.animator().setFrame(NSMakeRect(0, 0, 500, 400), true);
    clock.advance(0.1);
    window.setFrameOrigin({7, 8});
    const NSRect frame = window.frame();
    clock.advance(1);
    EXPECT_EQ(window.frame(), frame);
}

TEST_F(NSAnimationContextTest, JumpsToItsEndWithoutATimeThatMakesSense) {
    for (const double seconds :
         {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300}) {
        NSView& view = addView();
        ends = 0;
        animate(seconds, [&] { view.animator().setFrame(targetFrame); });
        EXPECT_EQ(view.frame(), targetFrame) << seconds;
        settle();
        EXPECT_EQ(ends, 1);
    }
}

TEST_F(NSAnimationContextTest, JumpsToItsEndWhereLessMotionIsWishedFor) {
    NSUserDefaults::standardUserDefaults().setBool(true, VXReduceMotion);
    NSView& view = addView();
    animate(60, [&] {
        view.animator().setFrame(targetFrame);
        window.animator().setFrame(NSMakeRect(0, 0, 100, 80), true);
    });
    NSUserDefaults::standardUserDefaults().removeObjectForKey(VXReduceMotion);
    EXPECT_EQ(view.frame(), targetFrame);
    EXPECT_EQ(window.frame(), NSMakeRect(0, 0, 100, 80));
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(NSAnimationContextTest, IsAsLongAsATestSays) {
    const AnimationDurationsForTesting longer(4);
    NSView& view = addView();
    view.animator().setFrame(targetFrame);
    clock.advance(0.5);
    expectNear(view.frame(), NSMakeRect(60, 40, 70, 60), curveTolerance);
    clock.advance(0.5);
    EXPECT_EQ(view.frame(), targetFrame);
}

TEST_F(NSAnimationContextTest, AJumpEndsWhatIsUnderWay) {
    NSView& view = addView();
    view.animator().setFrame(targetFrame);
    clock.advance(0.1);
    animate(0, [&] { view.animator().setFrame(NSMakeRect(1, 2, 3, 4)); });
    clock.advance(1);
    EXPECT_EQ(view.frame(), NSMakeRect(1, 2, 3, 4));
}

TEST_F(NSAnimationContextTest, EndsWithAViewOrWindowThatIsDestroyed) {
    NSView& view = addView();
    auto brief = std::make_unique<HostWindow>(NSMakeRect(0, 0, 100, 80));
    animate(1, [&] {
        view.animator().setFrame(targetFrame);
        brief->animator().setFrame(NSMakeRect(0, 0, 500, 400), true);
    });
    clock.advance(0.5);
    delete &view;
    settle();
    EXPECT_EQ(ends, 0) << "the window's is under way";
    brief.reset();
    settle();
    EXPECT_EQ(ends, 1);
    clock.advance(1);
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(NSAnimationContextTest, OutlastsAViewThatIsDestroyedByAStep) {
    QPointer<QWidget> brief(&addView());
    NSView& view = addView();
    view.setPostsFrameChangedNotifications(true);
    // It comes before the one that is destroyed.
    brief->setParent(nullptr);
    window.content().addSubview(brief);
    view.animator().setFrame(targetFrame);
    ViewCore::of(brief)->animator().setFrame(targetFrame);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSViewFrameDidChangeNotification, static_cast<ViewCore*>(&view), [&](const NSNotification&) { delete brief; });
    clock.advance(0.1);
    EXPECT_FALSE(brief);
    clock.advance(1);
    EXPECT_EQ(view.frame(), targetFrame);
}

TEST_F(NSAnimationContextTest, OutlastsAWindowThatDiesOfItsOwnMotion) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    show(*brief);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, brief.data(), [&](const NSNotification&) { delete brief; });
    animate(1, [&] { brief->animator().setFrame(NSMakeRect(0, 0, 500, 400), true); });
    clock.advance(0.5);
    EXPECT_FALSE(brief);
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(NSAnimationContextTest, TheEndIsToldOnceAndTheHandlerMayAnimateAgain) {
    NSView& view = addView();
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext&) { view.animator().setFrame(targetFrame); },
                                          [&] {
                                              ++ends;
                                              view.animator().setFrame(startFrame);
                                          });
    settle();
    EXPECT_EQ(ends, 0);
    clock.advance(0.25);
    settle();
    EXPECT_EQ(ends, 1);
    clock.advance(0.25);
    settle();
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(view.frame(), startFrame);
}

TEST_F(NSAnimationContextTest, TheEndIsToldWhereNothingIsAnimated) {
    animate(1, [] {});
    EXPECT_EQ(ends, 0);
    settle();
    EXPECT_EQ(ends, 1);
}

TEST_F(RealTime, MovesByManyStepsInAtLeastItsDuration) {
    // A window manager tells of each step when it likes, and of an earlier one after a later one was set.
    window.setManagement(NSWindowManagement::Bypassing);
    show(window);
    std::vector<NSRect> frames;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, &window, [&](const NSNotification&) { frames.push_back(window.frame()); });
    bool ended = false;
    QElapsedTimer time;
    time.start();
    NSAnimationContext::runAnimationGroup(
        [&](NSAnimationContext&) { window.animator().setFrame(NSMakeRect(200, 50, 300, 250), true); },
        [&] { ended = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return ended; }));
    EXPECT_GE(time.elapsed(), 250);
    EXPECT_GT(frames.size(), 2U);
    EXPECT_EQ(frames.back(), NSMakeRect(200, 50, 300, 250));
    EXPECT_TRUE(std::is_sorted(frames.begin(), frames.end(),
                               [](const NSRect& a, const NSRect& b) { return a.origin.x < b.origin.x; }));
}

TEST_F(RealTime, TheApplicationMayEndInTheMiddle) {
    window.animator().setFrame(NSMakeRect(200, 50, 300, 250), true);
    settle();
    EXPECT_TRUE(FrameAnimations::isAnimating(window));
}

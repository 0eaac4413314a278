// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <limits>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class BlockingAnimation : public AppKitHost {
protected:
    std::vector<double> run(double seconds) {
        std::vector<double> steps;
        runBlockingAnimation(target, seconds, [&](double progress) { steps.push_back(progress); });
        return steps;
    }

    QObject target;
};

} // namespace

TEST_F(BlockingAnimation, GoesForwardAndEndsWithExactlyOne) {
    const std::vector<double> steps = run(0.1);
    ASSERT_GT(steps.size(), 2U);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_GT(steps.front(), 0);
    EXPECT_EQ(steps.back(), 1);
    EXPECT_EQ(std::count(steps.begin(), steps.end(), 1.0), 1) << "once";
}

TEST_F(BlockingAnimation, TakesTheTimeThatItIsGiven) {
    QElapsedTimer clock;
    clock.start();
    run(0.12);
    EXPECT_GE(clock.elapsed(), 119);
}

TEST_F(BlockingAnimation, IsSlowAtBothEnds) {
    // By the curve, a tenth of the time makes 0.0197 of the way.
    QElapsedTimer clock;
    double share = -1;
    clock.start();
    runBlockingAnimation(target, 0.5, [&](double progress) {
        const auto time = static_cast<double>(clock.elapsed()) / 500;
        if (time < 0.3 && share < 0 && time > 0.05) {
            share = progress / time;
        }
    });
    EXPECT_GT(share, 0);
    EXPECT_LT(share, 0.75);
}

TEST_F(BlockingAnimation, JumpsToItsEndWithoutATimeThatMakesSense) {
    for (const double seconds :
         {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300}) {
        EXPECT_THAT(run(seconds), ElementsAre(1.0));
    }
}

TEST_F(BlockingAnimation, LetsTimersRun) {
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(5);
    run(0.1);
    EXPECT_GT(ticks, 3);
}

TEST_F(BlockingAnimation, EndsAtOnceWithItsTarget) {
    auto brief = std::make_unique<QObject>();
    QObject& animated = *brief;
    std::vector<double> after;
    QElapsedTimer clock;
    clock.start();
    runBlockingAnimation(animated, 60, [&](double progress) {
        if (!brief) {
            after.push_back(progress);
        }
        brief.reset();
    });
    EXPECT_LT(clock.elapsed(), 30000);
    EXPECT_THAT(after, IsEmpty());
}

TEST_F(BlockingAnimation, IsAsLongAsATestSays) {
    const AnimationDurationsForTesting none(0);
    EXPECT_THAT(run(60), ElementsAre(1.0));
    {
        const AnimationDurationsForTesting short_(0.001);
        EXPECT_EQ(run(60).back(), 1);
    }
    EXPECT_THAT(run(60), ElementsAre(1.0)) << "the one before counts again";
}

TEST_F(BlockingAnimation, RunsWithinAnother) {
    bool ran = false;
    std::vector<double> inner;
    runBlockingAnimation(target, 0.05, [&](double) {
        if (!std::exchange(ran, true)) {
            inner = run(0.05);
        }
    });
    EXPECT_EQ(inner.back(), 1);
}

namespace {

class AnimatedFrame : public AppKitHost {
protected:
    AnimatedFrame() { show(window); }

    HostWindow window{NSMakeRect(100, 100, 200, 100)};
};

} // namespace

TEST_F(AnimatedFrame, TakesAFifthOfASecondForEach150PointsOfAnyEdge) {
    EXPECT_DOUBLE_EQ(window.animationResizeTime(NSMakeRect(100, 100, 350, 100)), 0.20);
    EXPECT_DOUBLE_EQ(window.animationResizeTime(NSMakeRect(100, 100, 200, 400)), 0.40);
    EXPECT_DOUBLE_EQ(window.animationResizeTime(NSMakeRect(100, 25, 200, 175)), 0.10);
    EXPECT_DOUBLE_EQ(window.animationResizeTime(NSMakeRect(25, 100, 200, 100)), 0.10) << "a move changes two edges";
    EXPECT_DOUBLE_EQ(window.animationResizeTime(NSMakeRect(0, 0, 600, 300)), 0.40);
    EXPECT_EQ(window.animationResizeTime(window.frame()), 0);
}

TEST_F(AnimatedFrame, EndsExactlyOnItsTarget) {
    const NSRect target = NSMakeRect(60.1, 40.7, 271.3, 163.9);
    std::vector<NSRect> frames;
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, &window, [&](const NSNotification&) { frames.push_back(window.frame()); });
    window.setFrame(target, true, true);
    EXPECT_EQ(window.frame(), target);
    EXPECT_EQ(window.content().frame(), NSMakeRect(0, 0, window.width(), window.height()));
    ASSERT_GT(frames.size(), 1U) << "by several steps";
    EXPECT_EQ(frames.back(), target);
    for (const NSRect& frame : frames) {
        EXPECT_LE(frame.origin.x, 100);
        EXPECT_GE(frame.origin.x, 60.1);
    }
}

TEST_F(AnimatedFrame, IsSetAtOnceWithoutAnimation) {
    QElapsedTimer clock;
    clock.start();
    const Posts posts(&window);
    window.setFrame(NSMakeRect(0, 0, 500, 400), true, false);
    EXPECT_EQ(posts.names.size(), 2U);
    window.setFrame(NSMakeRect(0, 0, 500, 400), true, true);
    EXPECT_EQ(posts.names.size(), 2U) << "and nothing is animated that is there";
    const AnimationDurationsForTesting none(0);
    window.setFrame(NSMakeRect(0, 0, 300, 200), true, true);
    EXPECT_EQ(posts.names.size(), 3U);
}

TEST_F(AnimatedFrame, EndsAtOnceWithItsWindow) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    show(*brief);
    const AnimationDurationsForTesting slow(1000);
    QTimer::singleShot(20, &application, [&] { delete brief; });
    QElapsedTimer clock;
    clock.start();
    brief->setFrame(NSMakeRect(0, 0, 500, 400), true, true);
    EXPECT_LT(clock.elapsed(), 30000);
    EXPECT_FALSE(brief);
}

TEST_F(AnimatedFrame, EndsAtOnceWithAWindowThatDiesOfItsOwnMotion) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 100, 80)));
    show(*brief);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, brief.data(), [&](const NSNotification&) { delete brief; });
    const AnimationDurationsForTesting slow(1000);
    brief->setFrame(NSMakeRect(0, 0, 500, 400), true, true);
    EXPECT_FALSE(brief);
}

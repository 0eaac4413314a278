// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSAnimation.h>
#include <VXKit/platform/appkit/NSCursor.h>
#include <VXKit/platform/appkit/NSPanel.h>

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The value of the cubic Bézier curve through (0, 0), `first`, `second` and (1, 1) where x is `progress`; by halving.
double valueOnCurve(const NSPoint& first, const NSPoint& second, double progress) {
    const auto bezier = [](double a, double b, double t) {
        return 3 * a * t * (1 - t) * (1 - t) + 3 * b * t * t * (1 - t) + t * t * t;
    };
    double low = 0;
    double high = 1;
    for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        (bezier(first.x, second.x, middle) < progress ? low : high) = middle;
    }
    return bezier(first.y, second.y, low);
}

/// An animation that writes down its steps and does in them what the test says.
class RecordedAnimation : public NSAnimation, public NSAnimationDelegate {
public:
    using NSAnimation::NSAnimation;

    void setCurrentProgress(float progress) override {
        NSAnimation::setCurrentProgress(progress);
        steps.push_back(progress);
        runs.push_back(isAnimating());
        if (const auto work = inStep) {
            work();
        }
    }
    void animationDidEnd(NSAnimation& animation) override {
        EXPECT_EQ(&animation, this);
        told.emplace_back(isAnimating() ? "end while it runs" : "end");
        if (const auto work = atEnd) {
            work();
        }
    }
    void animationDidStop(NSAnimation& /*animation*/) override {
        told.emplace_back(isAnimating() ? "stop while it runs" : "stop");
    }

    std::vector<float> steps;
    std::vector<bool> runs;
    std::vector<std::string> told;
    std::function<void()> inStep;
    std::function<void()> atEnd;
};

class Animation : public AppKitHost {
protected:
    Animation() { animation->setDelegate(animation.get()); }

    std::unique_ptr<RecordedAnimation> animation = std::make_unique<RecordedAnimation>(0.08);
};

} // namespace

TEST_F(Animation, LastsHalfASecondEasedInAndOutUnlessTold) {
    const NSAnimation plain;
    EXPECT_EQ(plain.duration(), 0.5);
    EXPECT_EQ(plain.animationCurve(), NSAnimationEaseInOut);
    EXPECT_EQ(plain.currentProgress(), 0);
    EXPECT_EQ(plain.currentValue(), 0);
    EXPECT_FALSE(plain.isAnimating());
    EXPECT_EQ(plain.delegate(), nullptr);
}

TEST_F(Animation, IsOverWhenItsStartReturns) {
    QElapsedTimer clock;
    clock.start();
    animation->startAnimation();
    EXPECT_GE(clock.elapsed(), 79);
    ASSERT_GT(animation->steps.size(), 2U);
    EXPECT_TRUE(std::is_sorted(animation->steps.begin(), animation->steps.end()));
    EXPECT_GT(animation->steps.front(), 0);
    EXPECT_EQ(animation->steps.back(), 1);
    EXPECT_EQ(std::count(animation->steps.begin(), animation->steps.end(), 1.0F), 1);
    EXPECT_EQ(std::count(animation->runs.begin(), animation->runs.end(), false), 0) << "it runs in all of its steps";
    EXPECT_FALSE(animation->isAnimating());
    EXPECT_THAT(animation->told, ElementsAre("end"));
}

TEST_F(Animation, ProgressIsThePlainShareOfTheTime) {
    animation->setDuration(0.4);
    QElapsedTimer clock;
    double largestLag = 0;
    animation->inStep = [&] {
        const double share = static_cast<double>(clock.nsecsElapsed()) / 0.4e9;
        const double lag = share - static_cast<double>(animation->currentProgress());
        EXPECT_GT(lag, -0.001) << "never ahead of the time";
        largestLag = std::max(largestLag, std::min(share, 1.0) - static_cast<double>(animation->currentProgress()));
    };
    clock.start();
    animation->startAnimation();
    EXPECT_LT(largestLag, 0.1);
}

TEST_F(Animation, ValueFollowsTheCurve) {
    struct Curve {
        NSAnimationCurve curve;
        NSPoint first;
        NSPoint second;
    };
    const Curve curves[] = {{NSAnimationEaseInOut, {0.42, 0}, {0.58, 1}},
                            {NSAnimationEaseIn, {0.42, 0}, {1, 1}},
                            {NSAnimationEaseOut, {0, 0}, {0.58, 1}},
                            {NSAnimationLinear, {0.25, 0.25}, {0.75, 0.75}}};
    for (const Curve& each : curves) {
        NSAnimation plain(1, each.curve);
        for (const float progress : {0.0F, 0.05F, 0.1F, 0.25F, 0.5F, 0.6F, 0.75F, 0.99F, 1.0F}) {
            plain.setCurrentProgress(progress);
            EXPECT_NEAR(static_cast<double>(plain.currentValue()),
                        valueOnCurve(each.first, each.second, static_cast<double>(progress)), 5e-4)
                << each.curve << " at " << progress;
        }
    }
}

TEST_F(Animation, EndsAreExact) {
    NSAnimation plain;
    plain.setCurrentProgress(1);
    EXPECT_EQ(plain.currentValue(), 1);
    plain.setCurrentProgress(0);
    EXPECT_EQ(plain.currentValue(), 0);
}

TEST_F(Animation, ProgressStaysBetweenNothingAndAll) {
    NSAnimation plain;
    plain.setCurrentProgress(-3);
    EXPECT_EQ(plain.currentProgress(), 0);
    plain.setCurrentProgress(7);
    EXPECT_EQ(plain.currentProgress(), 1);
    plain.setCurrentProgress(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(plain.currentProgress(), 0);
}

TEST_F(Animation, RunsOnFromTheProgressThatItHas) {
    animation->setDuration(0.2);
    animation->setCurrentProgress(0.75F);
    animation->steps.clear();
    QElapsedTimer clock;
    clock.start();
    animation->startAnimation();
    EXPECT_GE(clock.elapsed(), 49);
    EXPECT_LT(clock.elapsed(), 190);
    EXPECT_GE(animation->steps.front(), 0.75F);
    EXPECT_EQ(animation->steps.back(), 1);
    animation->steps.clear();
    animation->startAnimation();
    EXPECT_LT(animation->steps.front(), 0.75F) << "at its end, it begins anew";
}

TEST_F(Animation, JumpsToItsEndWithoutATimeThatMakesSense) {
    for (const double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), 1e8}) {
        animation = std::make_unique<RecordedAnimation>(seconds);
        animation->setDelegate(animation.get());
        animation->startAnimation();
        EXPECT_THAT(animation->steps, ElementsAre(1.0F));
        EXPECT_THAT(animation->told, ElementsAre("end"));
    }
}

TEST_F(Animation, JumpsToItsEndWhereLessMotionIsWished) {
    const AnimationDurationsForTesting none(0);
    animation->startAnimation();
    EXPECT_THAT(animation->steps, ElementsAre(1.0F));
    EXPECT_THAT(animation->told, ElementsAre("end"));
}

TEST_F(Animation, StopsWhereItIs) {
    animation->setDuration(60);
    animation->inStep = [this] { animation->stopAnimation(); };
    QElapsedTimer clock;
    clock.start();
    animation->startAnimation();
    EXPECT_LT(clock.elapsed(), 30000);
    EXPECT_THAT(animation->told, ElementsAre("stop"));
    EXPECT_EQ(animation->steps.size(), 1U);
    EXPECT_LT(animation->currentProgress(), 0.5F);
    EXPECT_FALSE(animation->isAnimating());
    animation->stopAnimation();
    EXPECT_THAT(animation->told, ElementsAre("stop")) << "told once";
}

TEST_F(Animation, IsStoppedByATimer) {
    animation->setDuration(60);
    QTimer::singleShot(0, &application, [this] { animation->stopAnimation(); });
    animation->startAnimation();
    EXPECT_THAT(animation->told, ElementsAre("stop"));
}

TEST_F(Animation, IsNotStartedTwice) {
    animation->inStep = [this] {
        const std::size_t before = animation->steps.size();
        animation->startAnimation();
        EXPECT_EQ(animation->steps.size(), before);
    };
    animation->startAnimation();
    EXPECT_THAT(animation->told, ElementsAre("end"));
}

TEST_F(Animation, MayBeStartedAnewFromItsEnd) {
    animation->atEnd = [this] {
        animation->atEnd = nullptr;
        animation->startAnimation();
    };
    animation->startAnimation();
    EXPECT_THAT(animation->told, ElementsAre("end", "end"));
    EXPECT_EQ(std::count(animation->steps.begin(), animation->steps.end(), 1.0F), 2);
}

TEST_F(Animation, MayDieInAStep) {
    animation->setDuration(60);
    QElapsedTimer clock;
    clock.start();
    animation->inStep = [this] { animation.reset(); };
    animation->startAnimation();
    EXPECT_FALSE(animation);
    EXPECT_LT(clock.elapsed(), 30000);
}

TEST_F(Animation, MayDieAtItsEnd) {
    animation->atEnd = [this] { animation.reset(); };
    animation->startAnimation();
    EXPECT_FALSE(animation);
}

TEST_F(Animation, DoesWithoutADelegate) {
    animation->setDelegate(nullptr);
    animation->startAnimation();
    EXPECT_EQ(animation->steps.back(), 1);
    EXPECT_THAT(animation->told, IsEmpty());
}

namespace {

using Cursor = AppKitHost;
using Panel = AppKitHost;

} // namespace

TEST_F(Cursor, IsShownAgainWhenItWasUnhiddenAsOftenAsHidden) {
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    NSCursor::unhide();
    NSCursor::hide();
    ASSERT_TRUE(QGuiApplication::overrideCursor());
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::BlankCursor);
    NSCursor::hide();
    NSCursor::unhide();
    EXPECT_TRUE(QGuiApplication::overrideCursor());
    NSCursor::unhide();
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(Cursor, UnhidingLeavesTheHostsOwnPointerAlone) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    NSCursor::unhide();
    ASSERT_TRUE(QGuiApplication::overrideCursor());
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    QGuiApplication::restoreOverrideCursor();
}

TEST_F(Panel, NeverGetsTheCommands) {
    NSPanel panel(NSMakeRect(100, 100, 200, 100), NSTitledWindowMask, NSBackingStoreBuffered, false);
    show(panel);
    EXPECT_TRUE(panel.isKeyWindow());
    EXPECT_FALSE(panel.isMainWindow());
}

// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSViewAnimation.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr NSRect firstFrame{{100, 100}, {200, 100}};
constexpr NSRect endFrame{{300, 200}, {100, 150}};

/// Writes down how the animation ended, and whether it was still running then.
class EndLog : public NSAnimationDelegate {
public:
    void animationDidEnd(NSAnimation& animation) override {
        told.emplace_back(animation.isAnimating() ? "end while it runs" : "end");
        if (const auto work = atEnd) {
            work();
        }
    }
    void animationDidStop(NSAnimation& animation) override {
        told.emplace_back(animation.isAnimating() ? "stop while it runs" : "stop");
        if (const auto work = atEnd) {
            work();
        }
    }

    std::vector<std::string> told;
    std::function<void()> atEnd;
};

NSViewAnimationDescription effectOn(QWidget& target, const char* effect) {
    return {{NSViewAnimationTargetKey, QPointer<QWidget>(&target)}, {NSViewAnimationEffectKey, std::string(effect)}};
}

NSViewAnimationDescription moveOf(QWidget& target, const NSRect& from, const NSRect& to) {
    return {{NSViewAnimationTargetKey, QPointer<QWidget>(&target)},
            {NSViewAnimationStartFrameKey, from},
            {NSViewAnimationEndFrameKey, to}};
}

class ViewAnimation : public AppKitHost {
protected:
    /// Sets out with `description`, not blocking.
    void start(const NSViewAnimationDescription& description, double seconds = 0.1) {
        animation->setViewAnimations({description});
        animation->setAnimationBlockingMode(NSAnimationNonblocking);
        animation->setDuration(seconds);
        animation->setDelegate(&log);
        animation->startAnimation();
    }

    void waitForEnd() {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !log.told.empty(); }, 10000));
        QTest::qWait(60); // for a second end
        EXPECT_EQ(log.told.size(), 1U);
    }

    EndLog log;
    std::unique_ptr<HostWindow> window = std::make_unique<HostWindow>(firstFrame);
    std::unique_ptr<NSViewAnimation> animation = std::make_unique<NSViewAnimation>();
};

} // namespace

TEST_F(ViewAnimation, ThatDoesNotBlockEndsInTheEventLoop) {
    show(*window);
    start(moveOf(*window, firstFrame, endFrame));
    EXPECT_TRUE(animation->isAnimating());
    EXPECT_THAT(log.told, IsEmpty());
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
    EXPECT_FALSE(animation->isAnimating());
    EXPECT_EQ(window->frame(), endFrame);
}

TEST_F(ViewAnimation, ThatBlocksIsOverWhenItsStartReturns) {
    show(*window);
    animation->setViewAnimations({moveOf(*window, firstFrame, endFrame)});
    animation->setDuration(0.05);
    animation->setDelegate(&log);
    animation->startAnimation();
    EXPECT_THAT(log.told, ElementsAre("end"));
    EXPECT_EQ(window->frame(), endFrame);
}

TEST_F(ViewAnimation, LastsHalfASecondWhereTheDurationMakesNoSense) {
    show(*window);
    for (const double duration : {-1.0, std::numeric_limits<double>::quiet_NaN()}) {
        log.told.clear();
        QElapsedTimer clock;
        clock.start();
        start(moveOf(*window, firstFrame, endFrame), duration);
        ASSERT_TRUE(QTest::qWaitFor([this] { return !log.told.empty(); }, 10000));
        EXPECT_GE(clock.elapsed(), 499);
        EXPECT_LT(clock.elapsed(), 2500);
        EXPECT_EQ(std::isnan(animation->duration()), std::isnan(duration)) << "what was set is what is told";
    }
}

TEST_F(ViewAnimation, EasesInAndOutOfTheWay) {
    show(*window);
    animation->setViewAnimations({moveOf(*window, firstFrame, endFrame)});
    animation->setAnimationBlockingMode(NSAnimationNonblocking);
    animation->setDuration(60);
    animation->startAnimation();
    EXPECT_EQ(window->frame(), firstFrame);
    animation->setCurrentProgress(0.5F);
    EXPECT_NEAR(window->frame().origin.x, 200, 0.01);
    EXPECT_NEAR(window->frame().size.height, 125, 0.01);
    animation->setCurrentProgress(0.1F);
    EXPECT_LT(window->frame().origin.x, 110) << "slow at the beginning";
    animation->setCurrentProgress(0.9F);
    EXPECT_GT(window->frame().origin.x, 290) << "and at the end";
}

TEST_F(ViewAnimation, MovesFromAndToWhereTheTargetIsUnlessTold) {
    auto view = std::make_unique<DrawnView>();
    view->setFrame(NSMakeRect(10, 10, 20, 20));
    window->content().addSubview(view.get());
    DrawnView& target = *view.release();
    show(*window);
    start({{NSViewAnimationTargetKey, QPointer<QWidget>(&target)},
           {NSViewAnimationEndFrameKey, NSMakeRect(50, 60, 40, 20)}});
    EXPECT_EQ(target.frame(), NSMakeRect(10, 10, 20, 20));
    waitForEnd();
    EXPECT_EQ(target.frame(), NSMakeRect(50, 60, 40, 20));
    log.told.clear();
    start({{NSViewAnimationTargetKey, QPointer<QWidget>(&target)},
           {NSViewAnimationStartFrameKey, NSMakeRect(0, 0, 5, 5)}});
    EXPECT_EQ(target.frame(), NSMakeRect(0, 0, 5, 5));
    waitForEnd();
    EXPECT_EQ(target.frame(), NSMakeRect(50, 60, 40, 20));
}

TEST_F(ViewAnimation, FadesAWindowOutAndOrdersItOut) {
    show(*window);
    window->setAlphaValue(0.8);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 0.2);
    EXPECT_EQ(window->alphaValue(), 0.8);
    double least = 1;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            least = window->isVisible() ? std::min(least, window->alphaValue()) : least;
            return !log.told.empty();
        },
        10000));
    EXPECT_LT(least, 0.7);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->alphaValue(), 0.8) << "to be shown again as it was";
}

TEST_F(ViewAnimation, FadesAWindowInFromNothing) {
    window->setAlphaValue(0);
    start(effectOn(*window, NSViewAnimationFadeInEffect), 0.2);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->alphaValue(), 0);
    waitForEnd();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->alphaValue(), 1);
}

TEST_F(ViewAnimation, FadesAViewWithAllThatIsInIt) {
    auto view = std::make_unique<DrawnView>();
    view->setFrame(NSMakeRect(0, 0, 200, 100));
    view->drawing = [] {
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).setFill();
        NSRectFill(NSMakeRect(0, 0, 200, 100));
    };
    window->setBackgroundColor(NSColor::whiteColor());
    window->content().addSubview(view.get());
    DrawnView& target = *view.release();
    show(*window);
    start(effectOn(target, NSViewAnimationFadeOutEffect), 60);
    animation->setCurrentProgress(0.5F);
    const QColor half = window->grab().toImage().pixelColor(100, 50);
    EXPECT_EQ(half.red(), 255);
    EXPECT_NEAR(half.green(), 128, 2);
    EXPECT_NEAR(half.blue(), 128, 2);
    animation->setCurrentProgress(1);
    EXPECT_TRUE(target.isHidden());
    EXPECT_EQ(target.graphicsEffect(), nullptr);
    animation->stopAnimation();
    start(effectOn(target, NSViewAnimationFadeInEffect), 60);
    EXPECT_FALSE(target.isHidden());
    EXPECT_EQ(window->grab().toImage().pixelColor(100, 50), QColor(Qt::white));
    animation->setCurrentProgress(1);
    EXPECT_EQ(window->grab().toImage().pixelColor(100, 50), QColor(Qt::red));
}

TEST_F(ViewAnimation, StoppedStaysWhereItIsAndTellsSo) {
    show(*window);
    start(moveOf(*window, firstFrame, endFrame), 60);
    animation->setCurrentProgress(0.5F);
    const NSRect half = window->frame();
    animation->stopAnimation();
    EXPECT_THAT(log.told, ElementsAre("stop"));
    animation->stopAnimation();
    QTest::qWait(60);
    EXPECT_THAT(log.told, ElementsAre("stop"));
    EXPECT_EQ(window->frame(), half);
}

TEST_F(ViewAnimation, StoppedFadeLeavesTheWindowShownWithItsOwnOpacity) {
    show(*window);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 60);
    animation->setCurrentProgress(0.5F);
    EXPECT_NEAR(window->alphaValue(), 0.5, 0.01);
    animation->stopAnimation();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->alphaValue(), 1);
}

TEST_F(ViewAnimation, EndsOnceWhereItsWindowDies) {
    show(*window);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 0.15);
    QTest::qWait(30);
    window.reset();
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
}

TEST_F(ViewAnimation, EndsOnceWhereItsWindowWasDeadBefore) {
    show(*window);
    const NSViewAnimationDescription description = effectOn(*window, NSViewAnimationFadeOutEffect);
    window.reset();
    start(description, 0.05);
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
}

TEST_F(ViewAnimation, EndsOnceWhereItsWindowIsOrderedOut) {
    show(*window);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 0.15);
    QTest::qWait(30);
    window->close();
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
    EXPECT_FALSE(window->isVisible());
}

TEST_F(ViewAnimation, JumpsToItsEndWhereMotionIsReduced) {
    show(*window);
    NSUserDefaults::standardUserDefaults().setBool(true, VXReduceMotion);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 60);
    EXPECT_THAT(log.told, IsEmpty()) << "not while it is started";
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
    EXPECT_FALSE(window->isVisible());
    NSUserDefaults::standardUserDefaults().removeObjectForKey(VXReduceMotion);
}

TEST_F(ViewAnimation, JumpsToItsEndWhereMotionIsReducedInTheMiddle) {
    show(*window);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 60);
    QTest::qWait(50);
    EXPECT_TRUE(window->isVisible());
    NSUserDefaults::standardUserDefaults().setBool(true, VXReduceMotion);
    waitForEnd();
    EXPECT_THAT(log.told, ElementsAre("end"));
    EXPECT_FALSE(window->isVisible());
    NSUserDefaults::standardUserDefaults().removeObjectForKey(VXReduceMotion);
}

TEST_F(ViewAnimation, MayBeDestroyedFromAllThatItCalls) {
    show(*window);
    log.atEnd = [this] { animation.reset(); };
    start(moveOf(*window, firstFrame, endFrame), 0.05);
    waitForEnd();
    EXPECT_EQ(animation, nullptr);
    EXPECT_EQ(window->frame(), endFrame);

    log.told.clear();
    animation = std::make_unique<NSViewAnimation>();
    const NSNotificationObservation moves = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, window.get(), [this](const NSNotification&) { animation.reset(); });
    start(moveOf(*window, firstFrame, endFrame), 0.05); // the first step is its end
    EXPECT_EQ(animation, nullptr);
    QTest::qWait(100);
    EXPECT_THAT(log.told, IsEmpty());
    EXPECT_EQ(window->frame(), firstFrame);
}

TEST_F(ViewAnimation, DestroyedEndsWithoutAWordAndWithTheWindowsOwnOpacity) {
    show(*window);
    start(effectOn(*window, NSViewAnimationFadeOutEffect), 60);
    animation->setCurrentProgress(0.5F);
    animation.reset();
    QTest::qWait(60);
    EXPECT_THAT(log.told, IsEmpty());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->alphaValue(), 1);
}

TEST_F(ViewAnimation, PassesOverWhatItDoesNotUnderstand) {
    show(*window);
    start({{NSViewAnimationTargetKey, std::string("window")},
           {NSViewAnimationStartFrameKey, std::string("left")},
           {NSViewAnimationEffectKey, std::string("Sparkle")}},
          0.05);
    waitForEnd();
    log.told.clear();
    start(effectOn(*window, "Sparkle"), 0.05);
    waitForEnd();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->frame(), firstFrame);
    EXPECT_EQ(window->alphaValue(), 1);
}

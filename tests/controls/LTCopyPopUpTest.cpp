// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTCopyPopUp.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/platform/graphics/NSBezierPath.h>

#include <QAccessible>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <map>
#include <optional>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// The windows at the level of the pop-up that are no pictures of another.
std::vector<NSWindow*> popUps() {
    std::vector<NSWindow*> found;
    for (NSWindow* window : NSWindow::windows()) {
        if (window->ignoresMouseEvents()) {
            found.push_back(window);
        }
    }
    return found;
}

NSWindow* popUp() {
    const std::vector<NSWindow*> found = popUps();
    return found.size() == 1 ? found.front() : nullptr;
}

bool isIdle() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return popUps().empty();
}

/// Writes down which windows are on all desktops and let clicks through.
class RecordedEffects : public WindowEffects {
public:
    void setInputRegion(QWidget& window, const std::optional<QRegion>& region) override { inputs[&window] = region; }
    void setOnAllDesktops(QWidget& window, bool isOnAll) override { desktops[&window] = isOnAll; }
    void takeKeyboard(QWidget& window) override {
        keyboards.push_back(&window);
        WindowEffects::takeKeyboard(window);
    }

    std::map<QWidget*, std::optional<QRegion>> inputs;
    std::map<QWidget*, bool> desktops;
    std::vector<QWidget*> keyboards; // who asked for it
};

class CopyPopUp : public AppKitHost {
protected:
    CopyPopUp() {
        auto recorded = std::make_unique<RecordedEffects>();
        effects = recorded.get();
        WindowEffects::setSharedEffects(std::move(recorded));
        atRest = NSMakeRect(NSScreen::mainScreen().frame().size.width / 2 - 100, 250, 200, 200);
    }
    ~CopyPopUp() override {
        EXPECT_TRUE(QTest::qWaitFor(isIdle, 10000)) << "it goes whatever happens";
        WindowEffects::setSharedEffects(nullptr);
    }

    RecordedEffects* effects;
    NSRect atRest;
    double shownFor = 0.05; // in place of 1.5 seconds
    std::vector<double> intervals;
    NSTimer::IntervalsForTesting shorter{[this](double seconds) {
        intervals.push_back(seconds);
        return shownFor;
    }};
};

/// The same, with every animation at its end at once.
class JumpingCopyPopUp : public CopyPopUp {
    const AnimationDurationsForTesting m_none{0};
};

/// The same, with animations of a few frames.
class MovingCopyPopUp : public CopyPopUp {
    const AnimationDurationsForTesting m_quick{0.5};
};

} // namespace

TEST_F(JumpingCopyPopUp, IsASquareLowInTheMiddleOfTheScreen) {
    LTCopyPopUp::pop();
    NSWindow* const window = popUp();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->frame(), atRest);
    EXPECT_EQ(window->styleMask(), NSBorderlessWindowMask);
    EXPECT_FALSE(window->hasShadow());
    EXPECT_FALSE(window->isOpaque());
    EXPECT_EQ(window->backgroundColor(), NSColor::clearColor());
    EXPECT_EQ(window->level(), 8);
    EXPECT_EQ(window->management(), NSWindowManagement::Bypassing);
    EXPECT_TRUE(effects->desktops[window]);
    EXPECT_THAT(intervals, ElementsAre(1.5));
}

TEST_F(MovingCopyPopUp, ZoomsInBeyondItsSizeAndSettles) {
    const AnimationDurationsForTesting slow(6);
    struct Frame {
        bool isPicture;
        NSRect rect;
    };
    std::vector<Frame> frames;
    const NSNotificationObservation resizes = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, nullptr, [&](const NSNotification&) {
            for (NSWindow* window : NSWindow::windows()) {
                const bool isPicture = dynamic_cast<SnapshotWindow*>(window);
                if (window->isVisible() && (isPicture || window->ignoresMouseEvents()) &&
                    (frames.empty() || frames.back().rect != window->frame())) {
                    frames.push_back({isPicture, window->frame()});
                }
            }
        });
    LTCopyPopUp::pop();
    ASSERT_GT(frames.size(), 3U);
    const NSRect created = NSInsetRect(atRest, -15, -15);
    EXPECT_TRUE(frames.front().isPicture);
    const auto firstOfWindow =
        std::find_if(frames.begin(), frames.end(), [](const Frame& frame) { return !frame.isPicture; });
    ASSERT_NE(firstOfWindow, frames.end());
    EXPECT_EQ(std::prev(firstOfWindow)->rect, created);
    for (auto frame = frames.begin(); frame != firstOfWindow; ++frame) {
        // On the straight way from the small square in the middle of the place of rest.
        const double share = (frame->rect.size.width - 15) / (230 - 15);
        EXPECT_NEAR(frame->rect.origin.x, (atRest.origin.x + 85) * (1 - share) + created.origin.x * share, 1e-9);
        EXPECT_NEAR(frame->rect.origin.y, 335 * (1 - share) + 235 * share, 1e-9);
    }
    EXPECT_EQ(frames.back().rect, atRest);
    EXPECT_FALSE(frames.back().isPicture);
    EXPECT_TRUE(std::is_sorted(firstOfWindow, frames.end(), [](const Frame& one, const Frame& other) {
        return one.rect.size.width > other.rect.size.width;
    }));
    EXPECT_EQ(popUp()->frame(), atRest);
}

TEST_F(JumpingCopyPopUp, ShowsTheIconOnATranslucentRoundedSquare) {
    LTCopyPopUp::pop();
    ASSERT_NE(popUp(), nullptr);
    for (const double ratio : {1.0, 2.0}) {
        auto* const view = dynamic_cast<NSImageView*>(ViewCore::of(popUp()->contentView())->subviews().front());
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 200, 200));
        EXPECT_EQ(view->autoresizingMask(), 18U);
        EXPECT_EQ(view->imageScaling(), NSScaleProportionally);
        ASSERT_NE(view->image(), nullptr);
        EXPECT_TRUE(view->image()->scalesWhenResized());
        EXPECT_EQ(view->image()->size(), NSMakeSize(200, 200));
        if (ratio != popUp()->devicePixelRatioF()) {
            continue;
        }
        const QImage expected = drawn({200, 200}, ratio, [] {
            NSColor::colorWithCalibratedWhite(0, 0.35).setFill();
            NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 200, 200), 15, 15).fill();
            VXKitImage(QStringLiteral("CopyIcon"))->drawAtPoint({36, 36}, NSZeroRect, NSCompositeSourceOver, 1);
        });
        QImage picture = view->image()->imageForScale(ratio);
        picture.setDevicePixelRatio(1);
        EXPECT_LE(difference(picture, expected), 1);
        EXPECT_EQ(qAlpha(picture.pixel(100, 10)), 89);
        EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
        EXPECT_GT(qAlpha(picture.pixel(100, 110)), 150) << "the icon";
    }
}

TEST_F(JumpingCopyPopUp, IsThereOnceAtATimeAndAgainAfterItsFade) {
    LTCopyPopUp::pop();
    const QPointer<NSWindow> first = popUp();
    LTCopyPopUp::pop();
    LTCopyPopUp::pop();
    EXPECT_EQ(popUps().size(), 1U);
    EXPECT_EQ(popUp(), first);
    ASSERT_TRUE(QTest::qWaitFor(isIdle, 10000));
    EXPECT_FALSE(first);
    LTCopyPopUp::pop();
    ASSERT_NE(popUp(), nullptr);
    EXPECT_TRUE(popUp()->isVisible());
    EXPECT_EQ(popUp()->frame(), atRest);
}

TEST_F(MovingCopyPopUp, AnotherPopWhileItZoomsInIsIgnored) {
    std::size_t most = 0;
    QTimer again;
    again.callOnTimeout(&application, [&] {
        LTCopyPopUp::pop();
        most = std::max(most, popUps().size());
    });
    again.start(1);
    LTCopyPopUp::pop();
    again.stop();
    EXPECT_EQ(most, 1U);
    EXPECT_EQ(intervals.size(), 1U);
    EXPECT_EQ(popUp()->frame(), atRest);
}

TEST_F(CopyPopUp, FadesInHalfASecondAndIgnoresPopsMeanwhile) {
    {
        const AnimationDurationsForTesting none(0);
        LTCopyPopUp::pop();
    }
    const QPointer<NSWindow> window = popUp();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->alphaValue(), 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->alphaValue() < 1; }, 5000));
    QElapsedTimer clock;
    clock.start();
    double before = 1;
    bool isFading = true;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            if (window && window->isVisible()) {
                isFading = isFading && window->alphaValue() <= before;
                before = window->alphaValue();
                LTCopyPopUp::pop();
                EXPECT_EQ(popUps().size(), 1U);
            }
            return !window;
        },
        5000));
    EXPECT_TRUE(isFading);
    EXPECT_LT(before, 0.5);
    EXPECT_GE(clock.elapsed(), 400);
    EXPECT_LT(clock.elapsed(), 2000);
}

TEST_F(JumpingCopyPopUp, NeverTakesTheKeyboardNorTheMouse) {
    HostWindow below(NSMakeRect(atRest.origin.x - 50, 200, 300, 300));
    show(below);
    LTCopyPopUp::pop();
    settle();
    NSWindow* const window = popUp();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(window->canBecomeKeyWindow());
    ASSERT_TRUE(effects->inputs[window]);
    EXPECT_TRUE(effects->inputs[window]->isEmpty()) << "no part of it takes clicks";
    EXPECT_THAT(effects->keyboards, ElementsAre(&below));
}

TEST_F(JumpingCopyPopUp, WindowsThatTheMouseGoesThroughGetNoneOfItWhereThePlatformHandsItOver) {
    HostWindow window(NSMakeRect(100, 100, 100, 100));
    window.setIgnoresMouseEvents(true);
    show(window);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {50, 50});
    EXPECT_TRUE(window.sent.empty());
    QTest::keyClick(window.windowHandle(), Qt::Key_A);
    EXPECT_EQ(window.sentTypes(), (std::vector<int>{NSKeyDown, NSKeyUp}));
    window.setIgnoresMouseEvents(false);
    window.sent.clear();
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {50, 50});
    EXPECT_EQ(window.sentTypes(), (std::vector<int>{NSLeftMouseDown, NSLeftMouseUp}));
    EXPECT_FALSE(effects->inputs[&window]) << "all of it takes clicks again";
}

TEST_F(JumpingCopyPopUp, IsPassedByByScreenReaders) {
    LTCopyPopUp::pop();
    NSWindow* const window = popUp();
    ASSERT_NE(window, nullptr);
    const QAccessibleInterface* described = QAccessible::queryAccessibleInterface(window);
    ASSERT_NE(described, nullptr);
    EXPECT_TRUE(described->state().invisible);
    EXPECT_EQ(described->childCount(), 0);
    EXPECT_EQ(described->text(QAccessible::Name), QString());
}

TEST_F(CopyPopUp, ShowsItsEndAloneWhereMotionIsReduced) {
    NSUserDefaults::standardUserDefaults().setBool(true, VXReduceMotion);
    QElapsedTimer clock;
    clock.start();
    LTCopyPopUp::pop();
    ASSERT_NE(popUp(), nullptr);
    EXPECT_EQ(popUp()->frame(), atRest);
    EXPECT_TRUE(QTest::qWaitFor(isIdle, 5000));
    NSUserDefaults::standardUserDefaults().removeObjectForKey(VXReduceMotion);
}

TEST_F(JumpingCopyPopUp, IsGoneAfterSomebodyClosedItsWindow) {
    LTCopyPopUp::pop();
    popUp()->close();
    EXPECT_TRUE(QTest::qWaitFor(isIdle, 5000));
    LTCopyPopUp::pop();
    ASSERT_NE(popUp(), nullptr);
    EXPECT_TRUE(popUp()->isVisible());
}

TEST_F(JumpingCopyPopUp, TheTimerOfADeadWindowIsNotThatOfTheNext) {
    shownFor = 0.1;
    LTCopyPopUp::pop();
    delete popUp();
    shownFor = 0.7;
    QElapsedTimer clock;
    clock.start();
    LTCopyPopUp::pop();
    const QPointer<NSWindow> second = popUp();
    ASSERT_TRUE(second);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !second; }, 5000));
    EXPECT_GE(clock.elapsed(), 600);
}

TEST_F(CopyPopUp, TheEndOfAFadeWithoutItsWindowIsNotThatOfTheNext) {
    {
        const AnimationDurationsForTesting none(0);
        LTCopyPopUp::pop();
    }
    const QPointer<NSWindow> window = popUp();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->alphaValue() < 1; }, 5000));
    delete window.data();
    LTCopyPopUp::pop();
    EXPECT_TRUE(popUps().empty()) << "the fade is not over";
    EXPECT_TRUE(QTest::qWaitFor(
        [] {
            LTCopyPopUp::pop();
            return popUp() != nullptr;
        },
        5000));
}

TEST_F(MovingCopyPopUp, SurvivesTheDeathOfItsWindowWhileItZoomsIn) {
    QTimer::singleShot(20, &application, [] { delete popUp(); });
    LTCopyPopUp::pop();
    EXPECT_TRUE(isIdle());
    EXPECT_TRUE(intervals.empty());
}

TEST(CopyPopUpAtTheEnd, GoesWithTheApplication) {
    static char name[] = "host";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    const AnimationDurationsForTesting none(0);
    QPointer<NSWindow> window;
    {
        const NSApplication application(count, arguments);
        LTCopyPopUp::pop();
        window = popUp();
        ASSERT_TRUE(window);
    }
    EXPECT_FALSE(window);
    {
        const NSApplication application(count, arguments);
        LTCopyPopUp::pop();
        EXPECT_NE(popUp(), nullptr) << "and the next one has its own";
    }
}

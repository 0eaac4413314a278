// SPDX-License-Identifier: MIT
#include "../app/ShellHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr NSRect effectsFrame{{100, 100}, {400, 200}};

/// The window that the effects are for; it writes down what is done to it.
class EffectsWindow : public NSWindow {
public:
    EffectsWindow() : NSWindow(effectsFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
        setBackgroundColor(NSColor::colorWithCalibratedRed(1, 0, 0, 1));
    }

    bool canBecomeKeyWindow() const override { return true; }
    void display() override {
        told.emplace_back("display");
        NSWindow::display();
    }
    using NSWindow::setFrame;
    void setFrame(const NSRect& frame, bool display) override {
        told.emplace_back(display ? "set frame with display" : "set frame");
        NSWindow::setFrame(frame, display);
    }
    void orderWindow(NSWindowOrderingMode place, int other) override {
        told.emplace_back(place == NSWindowAbove ? "front" : place == NSWindowBelow ? "back" : "out");
        NSWindow::orderWindow(place, other);
    }
    void makeKeyAndOrderFront(QObject* sender) override {
        told.emplace_back("key");
        NSWindow::makeKeyAndOrderFront(sender);
    }

    std::vector<std::string> told;
};

NoodleZoomWindow* zoomWindow() {
    for (NSWindow* window : NSWindow::windows()) {
        if (auto* zoom = dynamic_cast<NoodleZoomWindow*>(window)) {
            return zoom;
        }
    }
    return nullptr;
}

class NoodleEffects : public ShellHost {
protected:
    NoodleEffects() {
        auto recorded = std::make_unique<RecordedEffects>(shadows);
        WindowEffects::setSharedEffects(std::move(recorded));
        window = std::make_unique<EffectsWindow>();
    }
    ~NoodleEffects() override {
        window.reset();
        WindowEffects::setSharedEffects(nullptr);
    }

    void show() {
        window->makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        window->told.clear();
    }

    /// A closed zoom window is deleted by the event loop.
    static void expectNoZoomWindow() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(zoomWindow(), nullptr);
    }

    std::unique_ptr<EffectsWindow> window;
    // Where the zoom window went, each frame once.
    std::vector<NSRect> frames;
    NSNotificationObservation moves = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, nullptr, [this](const NSNotification& notification) {
            const NoodleZoomWindow* zoom = zoomWindow();
            if (zoom && notification.object == NSNotificationSender(zoom)) {
                frames.push_back(zoom->frame());
            }
        });
};

/// The same, with every animation at its end at once.
class JumpingEffects : public NoodleEffects {
    const AnimationDurationsForTesting m_none{0};
};

/// The same, with animations of a few frames, so that something can happen in their middle.
class MovingEffects : public NoodleEffects {
protected:
    /// Does `what` at the first step of the animation.
    void inTheMiddle(const std::function<void()>& what) {
        m_steps = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidResizeNotification, nullptr, [this, what](const NSNotification& notification) {
                const NoodleZoomWindow* zoom = zoomWindow();
                if (zoom && notification.object == NSNotificationSender(zoom) && !std::exchange(m_happened, true)) {
                    // Not within the step: as a timer or a message would do it.
                    QTimer::singleShot(0, &application, what);
                }
            });
    }

    bool m_happened = false;

private:
    const AnimationDurationsForTesting m_quick{0.5};
    NSNotificationObservation m_steps;
};

} // namespace

TEST_F(JumpingEffects, PopGrowsPastTheWindowAndSettles) {
    pop(*window);
    EXPECT_THAT(frames, ElementsAre(NSMakeRect(87.5, 87.5, 425, 225), effectsFrame));
    EXPECT_TRUE(window->isVisible());
    expectNoZoomWindow();
}

TEST_F(JumpingEffects, PopDisplaysTakesItsPictureAndShowsTheWindowWithTheKeyboardInThisOrder) {
    pop(*window);
    // "back" and "out" are for the pixels of a window that was never shown.
    EXPECT_THAT(window->told, ElementsAre("display", "back", "display", "out", "key", "front", "display"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->isKeyWindow(); }));
    window->orderOut(nullptr);
    window->told.clear();
    pop(*window);
    EXPECT_THAT(window->told, ElementsAre("display", "key", "front", "display"));
}

TEST_F(JumpingEffects, PopOnlyRedisplaysAVisibleWindow) {
    show();
    pop(*window);
    EXPECT_THAT(window->told, ElementsAre("display"));
    EXPECT_THAT(frames, IsEmpty());
}

TEST_F(JumpingEffects, PopAwayShrinksIntoASquareOfTwentyPointsInTheMiddle) {
    show();
    popAway(*window);
    EXPECT_THAT(frames, ElementsAre(NSMakeRect(290, 190, 20, 20)));
    EXPECT_FALSE(window->isVisible());
    expectNoZoomWindow();
}

TEST_F(JumpingEffects, NothingPopsAwayThatIsNotThere) {
    popAway(*window);
    zoomOffToRect(*window, NSMakeRect(0, 0, 10, 10));
    EXPECT_THAT(window->told, IsEmpty());
    EXPECT_THAT(frames, IsEmpty());
}

TEST_F(JumpingEffects, ZoomOnGrowsOutOfTheRectangle) {
    zoomOnFromRect(*window, NSMakeRect(10, 20, 30, 40));
    EXPECT_THAT(frames, ElementsAre(effectsFrame));
    EXPECT_EQ(window->told.front(), "set frame with display");
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->isKeyWindow(); }));
    expectNoZoomWindow();
}

TEST_F(JumpingEffects, ZoomOnDoesNothingToAVisibleWindow) {
    show();
    zoomOnFromRect(*window, NSMakeRect(10, 20, 30, 40));
    EXPECT_THAT(window->told, IsEmpty());
    EXPECT_THAT(frames, IsEmpty());
}

TEST_F(JumpingEffects, ZoomOffShrinksIntoTheRectangle) {
    show();
    zoomOffToRect(*window, NSMakeRect(10, 20, 30, 40));
    EXPECT_THAT(frames, ElementsAre(NSMakeRect(10, 20, 30, 40)));
    EXPECT_THAT(window->told, ElementsAre("out"));
    expectNoZoomWindow();
}

TEST_F(JumpingEffects, NothingButTheFinalStateIsShown) {
    bool wasShown = false;
    const NSNotificationObservation observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, nullptr, [&](const NSNotification&) {
            const NoodleZoomWindow* zoom = zoomWindow();
            wasShown = wasShown || (zoom && zoom->isVisible());
        });
    pop(*window);
    expectNoZoomWindow();
    popAway(*window);
    EXPECT_FALSE(wasShown);
    EXPECT_EQ(frames.size(), 3U);
}

TEST_F(NoodleEffects, AZoomWindowShowsAPictureOfTheWindowInTheGivenRectangle) {
    window->setHasShadow(false);
    const std::unique_ptr<NoodleZoomWindow> zoom(_createZoomWindowWithRect(*window, NSMakeRect(10, 20, 30, 40)));
    EXPECT_EQ(zoom->frame(), NSMakeRect(10, 20, 30, 40));
    EXPECT_EQ(zoom->styleMask(), 0U);
    EXPECT_EQ(zoom->level(), 8);
    EXPECT_FALSE(zoom->isOpaque());
    EXPECT_FALSE(zoom->hasShadow()) << "as the window";
    EXPECT_TRUE(zoom->isReleasedWhenClosed());
    EXPECT_EQ(zoom->backgroundColor(), NSColor::clearColor());
    EXPECT_FALSE(zoom->isVisible());
    const auto* view = zoom->contentView()->findChild<QWidget*>();
    const auto* picture = dynamic_cast<const NSImageView*>(view);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->imageScaling(), NSScaleToFit);
    EXPECT_EQ(picture->image()->size(), effectsFrame.size);
    EXPECT_EQ(picture->image()->imageForScale(1).pixel(200, 100), qRgb(255, 0, 0));
    window->setHasShadow(true);
    const std::unique_ptr<NoodleZoomWindow> other(_createZoomWindowWithRect(*window, NSMakeRect(10, 20, 30, 40)));
    EXPECT_TRUE(other->hasShadow());
}

TEST_F(NoodleEffects, AZoomWindowStretchesItsPictureToItsFrame) {
    const std::unique_ptr<NoodleZoomWindow> zoom(_createZoomWindowWithRect(*window, NSMakeRect(200, 150, 100, 50)));
    zoom->orderFront(nullptr);
    const auto colorAt = [&](double x, double y) {
        // On the screen, where the window lies still while its picture moves.
        const QPoint local = zoom->mapFromGlobal(NSScreenRectToGlobal(NSMakeRect(x, y, 0, 0)).topLeft().toPoint());
        return snapshotOfWindow(*zoom)->imageForScale(1).pixelColor(local);
    };
    EXPECT_EQ(colorAt(205, 155), QColor(Qt::red));
    EXPECT_EQ(colorAt(295, 195), QColor(Qt::red));
    EXPECT_EQ(colorAt(195, 155).alpha(), 0);
    const QRect place = zoom->geometry();
    zoom->setFrame(NSMakeRect(120, 110, 300, 180), true);
    EXPECT_EQ(colorAt(125, 115), QColor(Qt::red));
    EXPECT_EQ(colorAt(415, 285), QColor(Qt::red));
    EXPECT_EQ(colorAt(425, 285).alpha(), 0);
    EXPECT_EQ(zoom->geometry(), place) << "the window itself stands still";
}

TEST_F(NoodleEffects, AZoomWindowTakesTwoFifthsOfTheTime) {
    const std::unique_ptr<NoodleZoomWindow> zoom(_createZoomWindowWithRect(*window, effectsFrame));
    const NSRect farther = NSOffsetRect(effectsFrame, 150, 0);
    EXPECT_EQ(zoom->animationResizeTime(farther), 0.2 * static_cast<double>(0.4F));
    EXPECT_EQ(window->animationResizeTime(farther), 0.2);
}

TEST_F(NoodleEffects, AWindowThatWasNeverShownIsOrderedInAndOutOnceForItsPixels) {
    EXPECT_EQ(window->windowNumber(), -1);
    std::unique_ptr<NoodleZoomWindow> zoom(_createZoomWindowWithRect(*window, effectsFrame));
    EXPECT_THAT(window->told, ElementsAre("back", "display", "out"));
    EXPECT_GT(window->windowNumber(), 0);
    EXPECT_FALSE(window->isVisible());
    window->told.clear();
    zoom.reset(_createZoomWindowWithRect(*window, effectsFrame));
    EXPECT_THAT(window->told, IsEmpty()) << "now it has them";
    window->orderFront(nullptr);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get())) << "and can be shown as ever";
}

TEST_F(NoodleEffects, AOneShotWindowStaysOne) {
    window->setOneShot(true);
    const std::unique_ptr<NoodleZoomWindow> zoom(_createZoomWindowWithRect(*window, effectsFrame));
    EXPECT_TRUE(window->isOneShot());
    EXPECT_GT(window->windowNumber(), 0) << "it was not one while it was ordered out";
    window->setOneShot(false);
    const std::unique_ptr<NoodleZoomWindow> other(_createZoomWindowWithRect(*window, effectsFrame));
    EXPECT_FALSE(window->isOneShot());
}

TEST_F(MovingEffects, PopGivesItsPictureTheShadowOfAHUDWindow) {
    NSWindow* zoom = nullptr;
    inTheMiddle([&] { zoom = zoomWindow(); });
    pop(*window);
    ASSERT_TRUE(zoom);
    ASSERT_EQ(shadows.size(), 1U);
    EXPECT_EQ(shadows[0].first, zoom);
    EXPECT_EQ(shadows[0].second.standardDeviation, 72);
}

TEST_F(MovingEffects, ZoomingLeavesItsPictureWithoutOne) {
    zoomOnFromRect(*window, NSMakeRect(10, 20, 30, 40));
    zoomOffToRect(*window, NSMakeRect(10, 20, 30, 40));
    EXPECT_THAT(shadows, IsEmpty());
}

TEST_F(MovingEffects, OnlyThePictureIsSeenUntilTheEnd) {
    std::vector<bool> seen;
    inTheMiddle([&] { seen = {zoomWindow()->isVisible(), window->isVisible()}; });
    pop(*window);
    EXPECT_THAT(seen, ElementsAre(true, false));
    EXPECT_TRUE(window->isVisible());
    m_happened = false;
    popAway(*window);
    EXPECT_THAT(seen, ElementsAre(true, false)) << "it goes before its picture shrinks";
    expectNoZoomWindow();
}

TEST_F(MovingEffects, ThePictureNeverLeavesItsStage) {
    pop(*window);
    EXPECT_GT(frames.size(), 4U);
    for (const NSRect& frame : frames) {
        EXPECT_EQ(NSUnionRect(frame, NSMakeRect(87.5, 87.5, 425, 225)), NSMakeRect(87.5, 87.5, 425, 225));
    }
}

TEST_F(MovingEffects, AWindowClosedInTheMiddleStaysClosed) {
    inTheMiddle([this] { window->close(); });
    pop(*window);
    EXPECT_FALSE(window->isVisible());
    expectNoZoomWindow();
}

TEST_F(MovingEffects, AWindowOrderedOutInTheMiddleStaysOut) {
    inTheMiddle([this] { window->orderOut(nullptr); });
    pop(*window);
    EXPECT_FALSE(window->isVisible());
    expectNoZoomWindow();
}

TEST_F(MovingEffects, AWindowOrderedInWhileItPopsAwayStaysIn) {
    show();
    inTheMiddle([this] { window->orderFront(nullptr); });
    popAway(*window);
    EXPECT_TRUE(window->isVisible());
    expectNoZoomWindow();
}

TEST_F(MovingEffects, AWindowThatDiesInTheMiddleEndsItsEffect) {
    for (void (*effect)(NSWindow&) : {pop, popAway}) {
        window = std::make_unique<EffectsWindow>();
        if (effect == popAway) {
            show();
        }
        m_happened = false;
        inTheMiddle([this] { window.reset(); });
        effect(*window);
        EXPECT_TRUE(m_happened);
        EXPECT_FALSE(window);
        expectNoZoomWindow();
    }
}

TEST_F(MovingEffects, TheApplicationEndingInTheMiddleIsNoTrouble) {
    inTheMiddle([this] { application.terminate(nullptr); });
    pop(*window);
    expectNoZoomWindow();
}

TEST_F(MovingEffects, AWindowWithoutASizeIsNoTrouble) {
    window->setFrame(NSMakeRect(100, 100, 0, 0), false);
    pop(*window);
    EXPECT_TRUE(window->isVisible());
    popAway(*window);
    EXPECT_FALSE(window->isVisible());
}

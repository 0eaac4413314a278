// SPDX-License-Identifier: MIT
#include "../appkit/AppKitHost.h"
#include "../graphics/GraphicsTestSupport.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/NSAnimationContext.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QPointer>

#include <ostream>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

constexpr NSRect windowFrame{{200, 300}, {400, 250}};
constexpr double quick = 0.02; // seconds that settling takes here

/// A window with a container that fills its content.
class LTSwitchableViewTest : public AppKitHost {
protected:
    LTSwitchableViewTest() {
        container = new LTSwitchableView(NSMakeRect(0, 0, 400, 250));
        container->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
        window->content().addSubview(container);
    }

    static NSView* makeView(const NSRect& frame = NSMakeRect(0, 0, 30, 20)) {
        auto* const view = new NSView;
        view->setFrame(frame);
        return view;
    }

    static NSRect frameOf(QWidget* view) { return ViewCore::of(view)->frame(); }

    /// Lets the settling of all switches come.
    void settleSwitches() const {
        ASSERT_TRUE(QTest::qWaitFor([this] { return settlings == timers; }));
    }

    std::unique_ptr<HostWindow> window = std::make_unique<HostWindow>(windowFrame);
    QPointer<LTSwitchableView> container;
    FrameAnimations::ClockForTesting clock;
    std::vector<double> askedIntervals;
    int timers = 0;
    int settlings = 0;
    NSTimer::IntervalsForTesting intervals{[this](double seconds) {
        askedIntervals.push_back(seconds);
        if (seconds == 2) {
            ++timers;
            // After it, of the same length.
            NSTimer::scheduledTimerWithTimeInterval(0.5, NSTimerRepeats::No, [this](NSTimer&) { ++settlings; });
        }
        return quick;
    }};
};

/// One of the ways of a switch: where the new view begins and where the old one ends, for a size of (400, 250).
struct Way {
    int direction;
    NSPoint newStart;
    NSPoint oldEnd;
};

void PrintTo(const Way& way, std::ostream* out) {
    *out << "direction " << way.direction;
}

class Ways : public LTSwitchableViewTest, public testing::WithParamInterface<Way> {};

} // namespace

TEST_F(LTSwitchableViewTest, BeginsEmptyAndIdle) {
    EXPECT_EQ(container->currentView(), nullptr);
    EXPECT_EQ(container->animating(), 0);
    EXPECT_FALSE(container->isFlipped());
    EXPECT_TRUE(container->postsFrameChangedNotifications());
    EXPECT_EQ(container->frame(), NSMakeRect(0, 0, 400, 250));
}

TEST_F(LTSwitchableViewTest, TheFirstViewFillsItAtOnce) {
    NSView* const view = makeView();
    container->setANewView(view, 0, true);
    EXPECT_EQ(container->currentView(), view);
    EXPECT_EQ(view->superview(), container);
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 400, 250));
    EXPECT_FALSE(FrameAnimations::isAnimating(*view));
    EXPECT_EQ(window->frame(), windowFrame) << "be it to adjust the window";
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
    EXPECT_EQ(container->animating(), 2);
}

TEST_F(LTSwitchableViewTest, SwitchingToTheViewShownMovesNothingAndLeavesItsGroupOpen) {
    NSView* const view = makeView();
    container->setANewView(view, 0);
    view->setFrame(NSMakeRect(1, 2, 3, 4));
    container->setANewView(view, 0, true);
    EXPECT_EQ(view->frame(), NSMakeRect(1, 2, 3, 4));
    EXPECT_FALSE(FrameAnimations::isAnimating(*view));
    EXPECT_EQ(window->frame(), windowFrame);
    EXPECT_EQ(container->animating(), 2);
    EXPECT_EQ(NSAnimationContext::openGroups(), 1U);
    EXPECT_EQ(NSAnimationContext::currentContext().duration(), 0.25);
    EXPECT_EQ(timers, 2) << "it settles all the same";
    // Which is of no account to the next one.
    NSView* const next = makeView();
    container->setANewView(next, 0);
    EXPECT_EQ(NSAnimationContext::openGroups(), 1U);
    clock.advance(0.25);
    EXPECT_EQ(next->frame(), NSMakeRect(0, 0, 400, 250));
}

TEST_F(LTSwitchableViewTest, AGroupThatIsLeftOpenDoesNotStayForEver) {
    NSView* const view = makeView();
    container->setANewView(view, 0);
    for (int time = 0; time < 100; ++time) {
        container->setANewView(view, 0);
    }
    settle();
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
}

TEST_P(Ways, TheNewViewComesInAndTheOldOneLeaves) {
    NSView* const old = makeView();
    NSView* const view = makeView();
    container->setANewView(old, 0);
    container->setANewView(view, GetParam().direction);
    const NSSize size{400, 250};
    EXPECT_EQ(container->currentView(), view);
    EXPECT_EQ(view->superview(), container);
    EXPECT_EQ(view->frame(), (NSRect{GetParam().newStart, size}));
    EXPECT_EQ(old->frame(), NSMakeRect(0, 0, 400, 250));
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
    clock.advance(0.125);
    EXPECT_NEAR(view->frame().origin.x, GetParam().newStart.x / 2, 1e-3);
    EXPECT_NEAR(view->frame().origin.y, GetParam().newStart.y / 2, 1e-3);
    EXPECT_NEAR(old->frame().origin.x, GetParam().oldEnd.x / 2, 1e-3);
    EXPECT_NEAR(old->frame().origin.y, GetParam().oldEnd.y / 2, 1e-3);
    clock.advance(0.12);
    EXPECT_TRUE(FrameAnimations::isAnimating(*view));
    clock.advance(0.005);
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 400, 250));
    EXPECT_EQ(old->frame(), (NSRect{GetParam().oldEnd, size}));
    EXPECT_EQ(old->superview(), container) << "it stays";
    EXPECT_FALSE(old->isHidden());
    EXPECT_EQ(window->frame(), windowFrame);
}

TEST_P(Ways, TheWindowTakesTheSizeOfTheNewView) {
    NSView* const old = makeView();
    NSView* const view = makeView(NSMakeRect(0, 0, 500, 300));
    container->setANewView(old, 0);
    container->setANewView(view, GetParam().direction, true);
    // 100 wider, 50 to each side, and 50 downwards.
    const NSRect grown = NSMakeRect(150, 250, 500, 300);
    const NSPoint newStart{GetParam().newStart.x * 500 / 400, GetParam().newStart.y * 300 / 250};
    const NSPoint oldEnd{GetParam().oldEnd.x * 500 / 400, GetParam().oldEnd.y * 300 / 250};
    EXPECT_EQ(window->frame(), windowFrame);
    EXPECT_EQ(view->frame(), (NSRect{newStart, {500, 300}}));
    clock.advance(0.125);
    EXPECT_NEAR(window->frame().origin.x, 175, 1e-3);
    EXPECT_NEAR(window->frame().origin.y, 275, 1e-3);
    EXPECT_NEAR(window->frame().size.width, 450, 1e-3);
    EXPECT_NEAR(NSMaxY(window->frame()), 550, 1e-9) << "its top edge stays";
    EXPECT_NEAR(old->frame().size.width, 450, 1e-3);
    clock.advance(0.125);
    EXPECT_EQ(window->frame(), grown);
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 500, 300));
    EXPECT_EQ(old->frame(), (NSRect{oldEnd, {500, 300}}));
    EXPECT_EQ(container->frame(), NSMakeRect(0, 0, 500, 300));
}

INSTANTIATE_TEST_SUITE_P(Directions, Ways,
                         testing::Values(Way{0, {400, 0}, {-400, 0}}, Way{1, {-400, 0}, {400, 0}},
                                         Way{2, {0, 250}, {0, -250}}, Way{3, {0, -250}, {0, 250}},
                                         Way{7, {0, -250}, {0, 250}}, Way{-1, {0, -250}, {0, 250}}),
                         [](const testing::TestParamInfo<Way>& each) {
                             return each.param.direction < 0 ? std::string("Negative")
                                                             : std::to_string(each.param.direction);
                         });

TEST_F(LTSwitchableViewTest, TheWindowShrinksToo) {
    container->setANewView(makeView(), 0);
    NSView* const view = makeView(NSMakeRect(0, 0, 300, 200));
    container->setANewView(view, 0, true);
    clock.advance(0.25);
    EXPECT_EQ(window->frame(), NSMakeRect(250, 350, 300, 200));
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 300, 200));
}

TEST_F(LTSwitchableViewTest, TheWindowGrowsInSinglePrecision) {
    container->setANewView(makeView(), 0);
    container->setANewView(makeView(NSMakeRect(0, 0, 500.1, 300.3)), 0, true);
    clock.advance(0.25);
    const auto dw = static_cast<double>(100.1F);
    const auto dh = static_cast<double>(static_cast<float>(300.3 - 250));
    EXPECT_EQ(window->frame(), NSMakeRect(200 - dw / 2, 300 - dh, 400 + dw, 250 + dh));
}

TEST_F(LTSwitchableViewTest, TheViewBeforeTheLastIsTakenOutAndBelongsToTheHost) {
    const std::unique_ptr<NSView> first(makeView());
    NSView* const second = makeView();
    container->setANewView(first.get(), 0);
    container->setANewView(second, 0);
    NSView* const third = makeView();
    container->setANewView(third, 0);
    EXPECT_EQ(first->superview(), nullptr);
    EXPECT_THAT(container->subviews(), ElementsAre(second, third));
    clock.advance(0.25);
    EXPECT_EQ(second->frame(), NSMakeRect(-400, 0, 400, 250));
}

TEST_F(LTSwitchableViewTest, GoingBackToTheViewBeforeKeepsIt) {
    NSView* const first = makeView();
    NSView* const second = makeView();
    container->setANewView(first, 0);
    container->setANewView(second, 0);
    clock.advance(0.25);
    container->setANewView(first, 1);
    EXPECT_EQ(first->frame(), NSMakeRect(-400, 0, 400, 250));
    EXPECT_THAT(container->subviews(), testing::UnorderedElementsAre(first, second));
    clock.advance(0.25);
    EXPECT_EQ(first->frame(), NSMakeRect(0, 0, 400, 250));
    EXPECT_EQ(second->frame(), NSMakeRect(400, 0, 400, 250));
}

TEST_F(LTSwitchableViewTest, ASecondSwitchInTheMiddleTakesTheViewFromWhereItIs) {
    NSView* const first = makeView();
    NSView* const second = makeView();
    NSView* const third = makeView();
    container->setANewView(first, 0);
    container->setANewView(second, 0);
    clock.advance(0.125);
    const NSRect middle = second->frame();
    container->setANewView(third, 2);
    EXPECT_EQ(second->frame(), middle);
    EXPECT_EQ(first->superview(), nullptr);
    clock.advance(0.25);
    EXPECT_EQ(second->frame(), NSMakeRect(0, -250, 400, 250));
    EXPECT_EQ(third->frame(), NSMakeRect(0, 0, 400, 250));
    clock.advance(1);
    EXPECT_EQ(third->frame(), NSMakeRect(0, 0, 400, 250));
    delete first;
}

TEST_F(LTSwitchableViewTest, AFrameChangeDuringASwitchLeavesTheViewsAlone) {
    NSView* const first = makeView();
    NSView* const second = makeView();
    container->setANewView(first, 0);
    container->setANewView(second, 0);
    clock.advance(0.125);
    const std::vector<NSRect> frames{first->frame(), second->frame()};
    container->setFrame(NSMakeRect(0, 0, 380, 230));
    EXPECT_EQ(first->frame(), frames[0]);
    EXPECT_EQ(second->frame(), frames[1]);
    EXPECT_TRUE(FrameAnimations::isAnimating(*second));
    EXPECT_FALSE(first->isHidden());
    clock.advance(0.125);
    EXPECT_EQ(second->frame(), NSMakeRect(0, 0, 400, 250)) << "where it was going to";
}

TEST_F(LTSwitchableViewTest, SettlesTwoSecondsLaterBothTheMinimumSizeAndFrameChanges) {
    NSView* const first = makeView();
    NSView* const second = makeView(NSMakeRect(0, 0, 500, 300));
    container->setANewView(first, 0);
    container->setANewView(second, 0, true);
    EXPECT_THAT(askedIntervals, testing::Contains(2.0).Times(2));
    clock.advance(0.25);
    EXPECT_EQ(window->minSize(), NSZeroSize);
    EXPECT_EQ(container->animating(), 2);
    settleSwitches();
    EXPECT_EQ(window->minSize(), NSMakeSize(500, 300));
    EXPECT_EQ(container->animating(), 0);
    EXPECT_FALSE(first->isHidden()) << "not before the frame changes";
    window->setFrame(NSMakeRect(150, 250, 520, 320), false);
    EXPECT_EQ(second->frame(), NSMakeRect(0, 0, 520, 320));
    EXPECT_TRUE(first->isHidden());
    EXPECT_EQ(first->superview(), container);
    container->setANewView(first, 0);
    EXPECT_FALSE(first->isHidden()) << "it is unhidden by the next switch";
}

TEST_F(LTSwitchableViewTest, TheMinimumSizeIsSetBeforeFrameChangesCountAgain) {
    class AskedWindow : public HostWindow {
    public:
        using HostWindow::HostWindow;
        NSRect frame() const override {
            if (whenAsked) {
                whenAsked();
            }
            return HostWindow::frame();
        }
        std::function<void()> whenAsked;
    };
    auto asked = std::make_unique<AskedWindow>(windowFrame);
    AskedWindow& host = *asked;
    window = std::move(asked);
    container = new LTSwitchableView(NSMakeRect(0, 0, 400, 250));
    host.content().addSubview(container);
    container->setANewView(makeView(), 0);
    // The size is asked for to be the least one.
    std::vector<int> animatingThen;
    host.whenAsked = [&] { animatingThen.push_back(container->animating()); };
    settleSwitches();
    EXPECT_THAT(animatingThen, ElementsAre(2));
    EXPECT_EQ(container->animating(), 0);
    EXPECT_EQ(host.minSize(), windowFrame.size);
}

TEST_F(LTSwitchableViewTest, TheFirstSettlingOfTwoSwitchesEndsTheWaiting) {
    NSView* const first = makeView();
    NSView* const second = makeView();
    container->setANewView(first, 0);
    settleSwitches();
    EXPECT_EQ(container->animating(), 0);
    // As the settling of the switch before comes while the next one is under way.
    container->setANewView(second, 0);
    container->setANewView(first, 0);
    clock.advance(0.01);
    EXPECT_EQ(container->animating(), 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return container->animating() == 0; }));
    container->setFrame(NSMakeRect(0, 0, 380, 230));
    EXPECT_EQ(first->frame(), NSMakeRect(0, 0, 380, 230)) << "frames count again, early";
    EXPECT_FALSE(FrameAnimations::isAnimating(*first));
    settleSwitches();
    EXPECT_EQ(timers, 3);
}

TEST_F(LTSwitchableViewTest, AnIdleContainerKeepsItsViewFilled) {
    NSView* const view = makeView();
    container->setANewView(view, 0);
    settleSwitches();
    window->setFrame(NSMakeRect(0, 0, 333, 222), false);
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 333, 222));
    container->setFrame(NSMakeRect(10, 10, 100, 50));
    EXPECT_EQ(view->frame(), NSMakeRect(0, 0, 100, 50));
}

TEST_F(LTSwitchableViewTest, CutsTheViewsThatSlideAtItsEdges) {
    const auto painted = [](const NSColor& color) {
        auto* const view = new DrawnView;
        view->setFrame(NSMakeRect(0, 0, 30, 20));
        view->drawing = [view, color] {
            color.setFill();
            NSRectFill(view->bounds());
        };
        return view;
    };
    window->setBackgroundColor(NSColor::blackColor());
    container->setFrame(NSMakeRect(100, 50, 200, 100));
    container->setANewView(painted(NSColor::colorWithCalibratedRed(1, 0, 0, 1)), 0);
    container->setANewView(painted(NSColor::colorWithCalibratedRed(0, 0, 1, 1)), 0);
    clock.advance(0.125);
    const QImage picture = snapshotOfWindow(*window)->imageForScale(1);
    for (int x = 0; x < 400; ++x) {
        const QColor expected = x < 100 || x >= 300 ? Qt::black : x < 200 ? Qt::red : Qt::blue;
        ASSERT_EQ(picture.pixelColor(x, 150), expected) << x;
    }
    EXPECT_EQ(picture.pixelColor(150, 99), QColor(Qt::black));
    EXPECT_EQ(picture.pixelColor(150, 100), QColor(Qt::red));
    EXPECT_EQ(picture.pixelColor(150, 200), QColor(Qt::black));
}

TEST_F(LTSwitchableViewTest, PaintsEachViewOnceAStepAndNotAtAllAtRest) {
    auto* const first = new DrawnView;
    auto* const second = new DrawnView;
    container->setANewView(first, 0);
    show(*window);
    container->setANewView(second, 0);
    settle();
    EXPECT_EQ(second->drawings, 0) << "it is out of sight";
    first->drawings = 0;
    constexpr int steps = 5;
    for (int step = 0; step < steps; ++step) {
        clock.advance(0.05);
        settle();
    }
    EXPECT_LE(first->drawings, steps);
    EXPECT_LE(second->drawings, steps);
    const int drawings = first->drawings + second->drawings;
    settle();
    EXPECT_EQ(first->drawings + second->drawings, drawings);
}

TEST_F(LTSwitchableViewTest, OutlastsViewsThatAreDestroyed) {
    NSView* first = makeView();
    NSView* second = makeView();
    container->setANewView(first, 0);
    container->setANewView(second, 0);
    clock.advance(0.1);
    delete first;
    clock.advance(0.05);
    delete second;
    EXPECT_EQ(container->currentView(), nullptr);
    clock.advance(1);
    NSView* const third = makeView();
    container->setANewView(third, 0);
    EXPECT_EQ(third->frame(), NSMakeRect(0, 0, 400, 250)) << "as the first one";
    settleSwitches();
    container->setFrame(NSMakeRect(0, 0, 300, 200));
    EXPECT_EQ(third->frame(), NSMakeRect(0, 0, 300, 200));
}

TEST_F(LTSwitchableViewTest, OutlastsItsEndAtEveryStage) {
    for (const double gone : {0.0, 0.1, 0.25}) {
        auto* const brief = new LTSwitchableView(NSMakeRect(0, 0, 100, 80));
        window->content().addSubview(brief);
        brief->setANewView(makeView(), 0);
        brief->setANewView(makeView(NSMakeRect(0, 0, 410, 260)), 0, true);
        clock.advance(gone);
        delete brief;
        clock.advance(1);
        settleSwitches();
    }
    EXPECT_EQ(window->minSize(), NSZeroSize) << "nobody sets it any more";
}

TEST_F(LTSwitchableViewTest, OutlastsTheEndOfItsWindowAtEveryStage) {
    for (const double gone : {0.0, 0.1, 0.25}) {
        window = std::make_unique<HostWindow>(windowFrame);
        container = new LTSwitchableView(NSMakeRect(0, 0, 100, 80));
        window->content().addSubview(container);
        container->setANewView(makeView(), 0);
        container->setANewView(makeView(NSMakeRect(0, 0, 410, 260)), 0, true);
        clock.advance(gone);
        window.reset();
        EXPECT_FALSE(container);
        clock.advance(1);
        settleSwitches();
    }
}

TEST_F(LTSwitchableViewTest, OutlastsAWindowThatGoesWithItsFirstStep) {
    container->setANewView(makeView(), 0);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, window.get(), [this](const NSNotification&) { window.reset(); });
    const AnimationDurationsForTesting none(0);
    NSView* const view = makeView(NSMakeRect(0, 0, 500, 300));
    container->setANewView(view, 0, true);
    EXPECT_FALSE(container);
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
    delete view;
}

TEST_F(LTSwitchableViewTest, WithoutAWindowOnlyTheViewsMove) {
    LTSwitchableView alone(NSMakeRect(0, 0, 100, 80));
    NSView* const second = makeView(NSMakeRect(0, 0, 500, 300));
    alone.setANewView(makeView(), 0);
    alone.setANewView(second, 0, true);
    clock.advance(0.25);
    EXPECT_EQ(second->frame(), NSMakeRect(0, 0, 100, 80));
    settleSwitches();
    EXPECT_EQ(alone.animating(), 0);
}

TEST_F(LTSwitchableViewTest, NoViewLeavesItEmptyAndTheWindowAlone) {
    container->setANewView(nullptr, 0);
    EXPECT_EQ(container->currentView(), nullptr);
    NSView* const view = makeView();
    container->setANewView(view, 0);
    container->setANewView(nullptr, 0, true);
    clock.advance(0.25);
    EXPECT_EQ(container->currentView(), nullptr);
    EXPECT_EQ(view->frame(), NSMakeRect(-400, 0, 400, 250));
    EXPECT_EQ(window->frame(), windowFrame);
    EXPECT_EQ(NSAnimationContext::openGroups(), 0U);
}

TEST_F(LTSwitchableViewTest, TakesAPlainWidgetOfQts) {
    auto* const plain = new QWidget;
    plain->resize(500, 300);
    container->setANewView(makeView(), 0);
    container->setANewView(plain, 0, true);
    clock.advance(0.25);
    EXPECT_EQ(window->frame(), NSMakeRect(150, 250, 500, 300));
    EXPECT_EQ(plain->geometry(), QRect(0, 0, 500, 300));
}

TEST_F(LTSwitchableViewTest, IsThereAtOnceWhereThereIsToBeNoMotion) {
    const AnimationDurationsForTesting none(0);
    NSView* const first = makeView();
    NSView* const second = makeView(NSMakeRect(0, 0, 500, 300));
    container->setANewView(first, 0);
    container->setANewView(second, 1, true);
    EXPECT_EQ(window->frame(), NSMakeRect(150, 250, 500, 300));
    EXPECT_EQ(second->frame(), NSMakeRect(0, 0, 500, 300));
    EXPECT_EQ(first->frame(), NSMakeRect(500, 0, 500, 300));
    settleSwitches();
    EXPECT_EQ(window->minSize(), NSMakeSize(500, 300));
}

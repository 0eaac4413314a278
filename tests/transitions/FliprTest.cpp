// SPDX-License-Identifier: MIT
#include "FliprHost.h"

#include <VXKit/platform/appkit/NSScreen.h>

#include <QElapsedTimer>
#include <QPointer>

#include <cmath>
#include <cstdint>
#include <tuple>
#include <utility>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// Every number a nanosecond clock may show, so that each frame takes `seconds`.
std::function<std::int64_t()> clockOfFrames(double seconds) {
    return [now = std::int64_t(0), step = static_cast<std::int64_t>(std::llround(seconds * 1e9))]() mutable {
        return now += step;
    };
}

} // namespace

TEST_F(Flipr, TheFlippingWindowIsATransparentPanelWithWideMargins) {
    NSPanel* const panel = flippingWindow();
    ASSERT_TRUE(panel);
    EXPECT_EQ(panel->frame(), NSMakeRect(128, 128, 512, 768));
    EXPECT_EQ(panel->styleMask(), 0U);
    EXPECT_EQ(panel->backgroundColor(), NSColor::clearColor());
    EXPECT_FALSE(panel->isOpaque());
    EXPECT_FALSE(panel->hasShadow());
    EXPECT_TRUE(panel->isOneShot());
    EXPECT_EQ(panel->level(), 8);
    EXPECT_EQ(panel->collectionBehavior(), 1U);
    EXPECT_EQ(panel->management(), NSWindowManagement::Bypassing);
    EXPECT_FALSE(panel->isVisible());
    const auto* card = dynamic_cast<const FliprView*>(panel->contentView());
    ASSERT_TRUE(card);
    EXPECT_EQ(card->frame(), NSMakeRect(0, 0, 512, 768));
    EXPECT_EQ(card->originalRect(), NSMakeRect(64, 256, 384, 256));
    EXPECT_EQ(card->autoresizingMask(), 18U);
    EXPECT_FALSE(card->isOpaque());
    EXPECT_EQ(card->animation(), nullptr);
    EXPECT_EQ(card->frameTime(), 0);
}

TEST_F(Flipr, EachFlipHasAFreshPanel) {
    const QPointer<NSPanel> first(flippingWindow());
    NSPanel* second = flippingWindow();
    EXPECT_FALSE(first);
    ASSERT_TRUE(second);
    NSPanel* during = nullptr;
    NSPanel* shown = nullptr;
    whileTurning([&](FliprPanel& panel) {
        shown = &panel;
        during = flippingWindow();
        EXPECT_TRUE(FliprView::isInAnimation());
    });
    flip();
    ASSERT_EQ(turns, 1);
    EXPECT_EQ(during, shown) << "the same while it is needed";
    const QPointer<NSPanel> after(panelOfFlips());
    EXPECT_TRUE(after) << "it stays, out of sight";
    EXPECT_TRUE(flippingWindow());
    EXPECT_FALSE(after);
}

TEST_F(Flipr, ReleasingForgetsThePanel) {
    const QPointer<NSPanel> panel(flippingWindow());
    releaseFlippingWindow();
    EXPECT_TRUE(panel) << "not at once";
    NSPanel* const next = flippingWindow();
    EXPECT_NE(next, panel);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(panel);
    EXPECT_EQ(panelOfFlips(), next);
    releaseFlippingWindow();
    releaseFlippingWindow();
}

TEST_F(Flipr, ShowsTheOtherWindowWithTheKeyboard) {
    flip();
    EXPECT_FALSE(initial->isVisible());
    EXPECT_TRUE(final->isVisible());
    EXPECT_EQ(final->frame(), finalFrame);
    EXPECT_TRUE(QTest::qWaitFor([this] { return final->isKeyWindow(); }));
    expectEnded();
}

TEST_F(Flipr, ThePanelCoversTheOneWindowThenTheOther) {
    std::vector<NSRect> frames;
    whileTurning([&](FliprPanel& panel) {
        pictureAt(panel, 0.3);
        frames.push_back(panel.frame());
        frames.push_back(panel.card().originalRect());
        frames.push_back(panel.card().frame());
        pictureAt(panel, 0.7);
        frames.push_back(panel.frame());
        frames.push_back(panel.card().originalRect());
        frames.push_back(panel.card().frame());
    });
    flip();
    EXPECT_THAT(frames, ElementsAre(NSMakeRect(100 - 64, 100 - 256, 400 - 384 + 512, 200 - 256 + 768),
                                    NSMakeRect(64, 256, 400, 200), NSMakeRect(0, 0, 528, 712),
                                    // From here on by the other corner, that of the screen.
                                    NSMakeRect(300 - 192, 150 - 384, 460 - 384 + 528, 260 - 256 + 712),
                                    NSMakeRect(192, 384, 460, 260), NSMakeRect(0, 0, 604, 716)));
}

TEST_F(Flipr, TakesItsStepsInOrder) {
    std::vector<std::string> order;
    const auto note = [&](const std::string& stage) {
        const FliprPanel* panel = panelOfFlips();
        order.push_back(stage +
                        (panel && panel->isVisible() ? " shown"
                         : panel                     ? " ready"
                                                     : " none") +
                        (final->alphaValue() == 0 ? " clear" : "") + (initial->isVisible() ? " A" : ""));
    };
    initial->atStage = note;
    final->atStage = note;
    flip();
    // The other window's views draw whenever the window server likes while it is clear.
    std::erase(order, "B.draw shown clear");
    std::erase(order, "B.draw ready clear");
    EXPECT_THAT(order, ElementsAre("B.display none A",
                                   "B.frame none A",    // it lays itself out
                                   "A.draw ready A",    // the one picture
                                   "B.display ready A", // the other window comes in
                                   "B.front ready A",   //
                                   "B.key ready A",     //
                                   "B.draw ready A",    // the other picture
                                   "A.out ready clear", // the other one is clear before this one goes
                                   "B.draw ready",      // the end: opaque, and the panel away
                                   "B.display ready"));
}

TEST_F(Flipr, TheDurationFollowsTheTimeThatFramesTake) {
    for (const auto& [frameTime, duration, progress] : {std::tuple(0.01, 0.75, 0.02 / 0.75), {0.2, 1.4, 0.4 / 1.4}}) {
        const FliprClockForTesting clock(clockOfFrames(frameTime));
        whileTurning([&, duration = duration, progress = progress](const FliprPanel& panel) {
            EXPECT_NEAR(panel.card().animation()->duration(), duration, 1e-6);
            EXPECT_GE(static_cast<double>(panel.card().animation()->currentProgress()), progress - 1e-6);
            EXPECT_LT(static_cast<double>(panel.card().animation()->currentProgress()), progress + 0.5);
        });
        flip();
        std::swap(initial, final);
    }
    EXPECT_EQ(turns, 2);
}

TEST_F(Flipr, TellsHowLongAFrameTook) {
    const FliprClockForTesting clock(clockOfFrames(0.25));
    float frameTime = 0;
    whileTurning([&](const FliprPanel& panel) { frameTime = panel.card().frameTime(); });
    flip();
    EXPECT_EQ(frameTime, 0.25F);
}

TEST_F(Flipr, LastsAsLongAsItSays) {
    const AnimationDurationsForTesting real(1);
    QElapsedTimer time;
    time.start();
    flip();
    EXPECT_GE(time.elapsed(), 600);
}

TEST_F(Flipr, WithoutMotionThePanelIsNeverSeenAndAllElseIsTheSame) {
    std::vector<std::string> withMotion;
    flip();
    withMotion = log;
    EXPECT_THAT(withMotion, ElementsAre("B.display", "B.frame", "B.display", "B.front", "B.key", "A.out", "B.display"));
    final->orderOut(nullptr);
    show(*initial);
    const AnimationDurationsForTesting none(0);
    bool wasSeen = false;
    const auto look = [&](const std::string&) {
        const FliprPanel* panel = panelOfFlips();
        wasSeen = wasSeen || (panel && panel->isVisible());
    };
    initial->atStage = look;
    final->atStage = look;
    const auto observation =
        NSNotificationCenter::defaultCenter().addObserverForName("", nullptr, [&](const NSNotification&) { look({}); });
    flip();
    EXPECT_FALSE(wasSeen);
    EXPECT_FALSE(panelOfFlips()->isVisible());
    EXPECT_EQ(log, withMotion);
    EXPECT_TRUE(final->isVisible());
    EXPECT_FALSE(initial->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([this] { return final->isKeyWindow(); }));
    expectEnded();
}

TEST_F(Flipr, WindowsChangePlacesAtOnceWhereThereCanBeNoPanel) {
    const NoFlippingWindowForTesting none;
    EXPECT_EQ(flippingWindow(), nullptr);
    flip();
    EXPECT_THAT(log, ElementsAre("B.display", "B.frame", "B.display", "B.front", "B.key", "A.out"));
    EXPECT_TRUE(final->isVisible());
    EXPECT_EQ(final->alphaValue(), 1);
    EXPECT_FALSE(initial->isVisible());
    EXPECT_EQ(panelOfFlips(), nullptr);
    expectEnded();
}

TEST_F(Flipr, AWindowTurnedOverToItselfStaysInFront) {
    flipToShowWindow(*initial, *initial, true);
    EXPECT_TRUE(initial->isVisible());
    EXPECT_EQ(initial->alphaValue(), 1);
    expectEnded();
}

TEST_F(Flipr, AWindowWithoutASizeIsNoTrouble) {
    final->setFrame(NSMakeRect(100, 100, 0, 0), false);
    flip();
    expectEnded();
    final->setFrame(finalFrame, false);
    initial->setFrame(NSMakeRect(100, 100, 0, 0), false);
    flip();
    EXPECT_TRUE(final->isVisible());
    expectEnded();
}

TEST_F(Flipr, AWindowWiderThanTheEyeIsFarIsNoTrouble) {
    initial->setFrame(NSMakeRect(0, 0, 3600, 300), false);
    whileTurning([&](FliprPanel& panel) {
        for (const double value : {0.2, 0.4, 0.45, 0.5, 0.55, 0.7}) {
            pictureAt(panel, value);
        }
    });
    flip();
    EXPECT_EQ(turns, 1);
    expectEnded();
}

TEST_F(Flipr, AFlipDuringAFlipBringsThatToItsEnd) {
    FlippedWindow third("C", NSMakeRect(50, 60, 300, 220), 120, log);
    std::vector<bool> state;
    whileTurning([&](const FliprPanel& panel) {
        pictureAt(const_cast<FliprPanel&>(panel), 0.6);
        whileTurning([&](const FliprPanel& inner) {
            state = {&inner == &panel, inner.isVisible(), final->isVisible(), final->alphaValue() == 1,
                     third.alphaValue() == 0};
        });
        flipToShowWindow(*final, third, false);
        EXPECT_TRUE(third.isVisible());
    });
    flip();
    EXPECT_EQ(turns, 2);
    EXPECT_THAT(state, ElementsAre(true, true, false, true, true)) << "in the panel that is there";
    EXPECT_TRUE(third.isVisible());
    EXPECT_EQ(third.alphaValue(), 1);
    EXPECT_FALSE(initial->isVisible());
    EXPECT_FALSE(final->isVisible());
    expectEnded();
    EXPECT_TRUE(QTest::qWaitFor([&] { return third.isKeyWindow(); }));
}

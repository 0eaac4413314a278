// SPDX-License-Identifier: MIT
#include "../appkit/AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/FliprPanel.h>
#include <VXKit/transitions/FliprView.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <ostream>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr NSRect initialFrame{{100, 100}, {400, 200}};
constexpr NSRect finalFrame{{300, 150}, {460, 260}};

/// The progress at which the eased value is `value`, by the curve itself: x and y are cubic Bézier functions of t.
float progressOfValue(double value) {
    const auto bezier = [](double a, double b, double t) {
        return 3 * a * t * (1 - t) * (1 - t) + 3 * b * t * t * (1 - t) + t * t * t;
    };
    double low = 0;
    double high = 1;
    for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        (bezier(0, 1, middle) < value ? low : high) = middle;
    }
    return static_cast<float>(bezier(0.42, 0.58, low));
}

/// A card that stands upright before an eye 1600 points away, turned about its middle by `angle`: what is on its right
/// side goes away from the eye by the sine.
struct Turned {
    double angle;

    [[nodiscard]] double depth(double across) const { return 1600 + across * std::sin(angle); }
    /// Where a point of the card is seen, both from the middle.
    [[nodiscard]] NSPoint seen(const NSPoint& onCard) const {
        return {onCard.x * std::cos(angle) * 1600 / depth(onCard.x), onCard.y * 1600 / depth(onCard.x)};
    }
    /// And back.
    [[nodiscard]] NSPoint onCard(const NSPoint& seen) const {
        const double across = 1600 * seen.x / (1600 * std::cos(angle) - seen.x * std::sin(angle));
        return {across, seen.y * depth(across) / 1600};
    }
};

/// What is seen of a flip at `value`: of the back side, as much as it has turned beyond the half, from behind.
Turned turnedAt(double value, double direction) {
    const double angle = direction * std::numbers::pi * value;
    return {value <= 0.5 ? angle : angle - direction * std::numbers::pi};
}

/// A picture whose colour says where in it one is.
std::shared_ptr<NSImage> slopes(const NSSize& size, int blue, double ratio) {
    QImage image((NSSizeToQSizeF(size) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixelColor(x, y, QColor(x * 255 / image.width(), y * 255 / image.height(), blue));
        }
    }
    image.setDevicePixelRatio(ratio);
    return NSImage::initWithQImage(image);
}

/// A window that writes down what is done to it, and does at a stage of it what the test says.
class FlippedWindow : public NSWindow {
public:
    FlippedWindow(const char* name, const NSRect& frame, int blue, std::vector<std::string>& log)
        : NSWindow(frame, NSBorderlessWindowMask, NSBackingStoreBuffered, false), m_name(name), m_log(log) {
        auto view = std::make_unique<DrawnView>();
        view->drawing = [this, blue, pixelRatio = devicePixelRatioF()] {
            slopes(NSMakeSize(width(), height()), blue, pixelRatio)
                ->drawAtPoint(NSZeroPoint, NSZeroRect, NSCompositeSourceOver, 1);
            reach("draw");
        };
        setContentView(view.release());
    }

    bool canBecomeKeyWindow() const override { return true; }
    void display() override {
        NSWindow::display();
        tell("display");
    }
    using NSWindow::setFrame;
    void setFrame(const NSRect& frame, bool display) override {
        NSWindow::setFrame(frame, display);
        tell("frame");
    }
    void orderWindow(NSWindowOrderingMode place, int other) override {
        NSWindow::orderWindow(place, other);
        tell(place == NSWindowAbove ? "front" : place == NSWindowBelow ? "back" : "out");
    }
    void makeKeyAndOrderFront(QObject* sender) override {
        NSWindow::makeKeyAndOrderFront(sender);
        tell("key");
    }

    /// Called at each stage; last of all, because it may be the window's end.
    std::function<void(const std::string&)> atStage;

private:
    void tell(const char* what) {
        m_log.push_back(m_name + "." + what);
        reach(what);
    }
    void reach(const char* what) {
        if (const auto work = atStage) {
            work(m_name + "." + what);
        }
    }

    std::string m_name;
    std::vector<std::string>& m_log;
};

FliprPanel* panelOfFlips() {
    for (NSWindow* window : NSWindow::windows()) {
        if (auto* panel = dynamic_cast<FliprPanel*>(window)) {
            return panel;
        }
    }
    return nullptr;
}

/// The effects of a desktop without a compositing manager.
class OpaqueDesktop : public WindowEffects {
public:
    bool isAvailable(Effect /*effect*/) const override { return false; }
};

class Flipr : public AppKitHost {
protected:
    Flipr() { show(*initial); }
    ~Flipr() override {
        releaseFlippingWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void flip(bool forward = true) {
        log.clear();
        flipToShowWindow(*initial, *final, forward);
    }

    /// Does `what` from the event loop while the animation of the next flip runs.
    void whileTurning(const std::function<void(FliprPanel&)>& what) {
        m_waiting.callOnTimeout(&application, [this, what] {
            FliprPanel* const panel = panelOfFlips();
            if (panel && panel->card().animation() && panel->card().animation()->isAnimating()) {
                m_waiting.stop();
                m_waiting.disconnect();
                ++turns;
                what(*panel);
            }
        });
        m_waiting.start(0);
    }

    /// What the panel shows at `value`, at the pixel ratio of the screen, as if it were one.
    static QImage pictureAt(FliprPanel& panel, double value) {
        panel.card().animation()->setCurrentProgress(progressOfValue(value));
        QImage picture = snapshotOfWindow(panel)->imageForScale(panel.devicePixelRatioF());
        picture.setDevicePixelRatio(1);
        return picture;
    }

    void expectEnded() const {
        EXPECT_FALSE(FliprView::isInAnimation());
        if (const FliprPanel* panel = panelOfFlips()) {
            EXPECT_FALSE(panel->isVisible());
            EXPECT_EQ(panel->card().animation(), nullptr);
        }
        for (const auto* window : {initial.get(), final.get()}) {
            if (window) {
                EXPECT_EQ(window->alphaValue(), 1);
            }
        }
    }

    std::vector<std::string> log;
    std::unique_ptr<FlippedWindow> initial = std::make_unique<FlippedWindow>("A", initialFrame, 40, log);
    std::unique_ptr<FlippedWindow> final = std::make_unique<FlippedWindow>("B", finalFrame, 200, log);
    int turns = 0;

private:
    const AnimationDurationsForTesting m_quick{0.1};
    QTimer m_waiting;
};

class SharpFlipr : public TwoPixelsAPoint, public Flipr {};

class OpaqueFlipr : public Flipr {
protected:
    OpaqueFlipr() {
        // Before the windows that are told of it.
        initial.reset();
        final.reset();
        WindowEffects::setSharedEffects(std::make_unique<OpaqueDesktop>());
        initial = std::make_unique<FlippedWindow>("A", initialFrame, 40, log);
        final = std::make_unique<FlippedWindow>("B", finalFrame, 200, log);
        show(*initial);
    }
    ~OpaqueFlipr() override {
        releaseFlippingWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        initial.reset();
        final.reset();
        WindowEffects::setSharedEffects(nullptr);
    }
};

/// Every number a nanosecond clock may show, so that each frame takes `seconds`.
std::function<std::int64_t()> clockOfFrames(double seconds) {
    return [now = std::int64_t(0), step = static_cast<std::int64_t>(std::llround(seconds * 1e9))]() mutable {
        return now += step;
    };
}

} // namespace

TEST(FliprCorners, AreTheWindowsOwnAtRest) {
    for (const float direction : {1.0F, -1.0F}) {
        const FliprCorners corners = FliprCorners::atValue(0, direction, {400, 300});
        EXPECT_EQ(corners.topRight, NSMakePoint(400, 300));
        EXPECT_EQ(corners.topLeft, NSMakePoint(0, 300));
        EXPECT_EQ(corners.bottomRight, NSMakePoint(400, 0));
        EXPECT_EQ(corners.bottomLeft, NSMakePoint(0, 0));
    }
}

TEST(FliprCorners, AreThoseOfACardBeforeAnEye1600PointsAway) {
    for (const double direction : {1.0, -1.0}) {
        for (const double value : {0.0, 0.1, 0.25, 0.4, 0.5, 0.6, 0.75, 0.9, 1.0}) {
            for (const NSSize& size : {NSSize{400, 300}, NSSize{733, 91}}) {
                const FliprCorners corners =
                    FliprCorners::atValue(static_cast<float>(value), static_cast<float>(direction), size);
                const Turned turned = turnedAt(value, direction);
                const double hw = size.width / 2;
                const double hh = size.height / 2;
                const auto expectAt = [&](const NSPoint& corner, double across, double up) {
                    const NSPoint seen = turned.seen({across, up});
                    EXPECT_NEAR(corner.x, hw + seen.x, 1e-3) << value << " " << direction;
                    EXPECT_NEAR(corner.y, hh + seen.y, 1e-3) << value << " " << direction;
                };
                expectAt(corners.topRight, hw, hh);
                expectAt(corners.topLeft, -hw, hh);
                expectAt(corners.bottomRight, hw, -hh);
                expectAt(corners.bottomLeft, -hw, -hh);
            }
        }
    }
}

TEST(FliprCorners, FallTogetherOnTheEdge) {
    const FliprCorners corners = FliprCorners::atValue(0.5F, 1, {400, 300});
    EXPECT_NEAR(corners.topRight.x, 200, 1e-3);
    EXPECT_NEAR(corners.topLeft.x, 200, 1e-3);
    // The near edge is the left one, and the higher by it.
    EXPECT_NEAR(corners.topLeft.y, 150 + 150 * 1600.0 / 1400, 1e-3);
    EXPECT_NEAR(corners.topRight.y, 150 + 150 * 1600.0 / 1800, 1e-3);
}

TEST(FliprCorners, TurnTheOtherWayBackward) {
    for (const float value : {0.2F, 0.5F, 0.8F}) {
        const FliprCorners forward = FliprCorners::atValue(value, 1, {400, 300});
        const FliprCorners backward = FliprCorners::atValue(value, -1, {400, 300});
        EXPECT_NEAR(forward.topRight.x, 400 - backward.topLeft.x, 1e-4);
        EXPECT_NEAR(forward.topRight.y, backward.topLeft.y, 1e-4);
        EXPECT_NEAR(forward.bottomLeft.x, 400 - backward.bottomRight.x, 1e-4);
    }
}

TEST(FliprCorners, AreSinglePrecision) {
    const FliprCorners corners = FliprCorners::atValue(0.3F, 1, {401, 299});
    const float angle = 1.0F * 3.1415927F * 0.3F;
    const auto s = static_cast<float>(std::sin(static_cast<double>(angle)) * 200.5);
    const auto c = static_cast<float>(std::cos(static_cast<double>(angle)) * 200.5);
    EXPECT_EQ(corners.topRight.x, static_cast<double>(c * 1600.0F / (1600.0F + s) + 200.5F));
    EXPECT_EQ(corners.bottomLeft.x, static_cast<double>(-c * 1600.0F / (1600.0F - s) + 200.5F));
    EXPECT_EQ(corners.bottomLeft.y, static_cast<double>(149.5F - 149.5F * 1600.0F / (1600.0F - s)));
}

TEST(FliprTiming, IsThreeQuartersOfASecondWhereDrawingIsQuick) {
    const FliprTiming timing = FliprTiming::forFrameTimes(0.01F, 0.01F);
    EXPECT_EQ(timing.duration, 0.75);
    EXPECT_FLOAT_EQ(timing.progress, 0.02F / 0.75F);
    EXPECT_EQ(FliprTiming::forFrameTimes(0, 0).duration, 0.75);
    EXPECT_EQ(FliprTiming::forFrameTimes(0, 0).progress, 0);
}

TEST(FliprTiming, HoldsFiveFramesWhereDrawingIsSlow) {
    const FliprTiming timing = FliprTiming::forFrameTimes(0.2F, 0.2F);
    EXPECT_NEAR(timing.duration, 1.4, 1e-6);
    EXPECT_FLOAT_EQ(timing.progress, 0.4F / 1.4F);
}

TEST(FliprTiming, GrowsFromWhereFiveFramesNoLongerFit) {
    // Seven frames in all: 0.75 / 7 is 0.10714.
    EXPECT_EQ(FliprTiming::forFrameTimes(0.107F, 0.107F).duration, 0.75);
    EXPECT_NEAR(FliprTiming::forFrameTimes(0.108F, 0.108F).duration, 0.756, 1e-6);
    EXPECT_NEAR(FliprTiming::forFrameTimes(0.5F, 0.1F).duration, 1.1, 1e-6) << "the first one counts by itself";
}

namespace {

class RecordedCard : public FliprAnimationDelegate {
public:
    void update() override { told.emplace_back("update"); }
    void display() override {
        told.emplace_back("display");
        if (const auto work = std::exchange(atDisplay, nullptr)) {
            work();
        }
    }
    void animationDidEnd(NSAnimation& /*animation*/) override { told.emplace_back("end"); }

    std::vector<std::string> told;
    std::function<void()> atDisplay;
};

class FliprAnimationSteps : public AppKitHost {
protected:
    FliprAnimationSteps() { animation.setDelegate(&card); }

    FliprAnimation animation{NSAnimationEaseInOut};
    RecordedCard card;
};

} // namespace

TEST_F(FliprAnimationSteps, ItsDurationIsAPlaceholder) {
    EXPECT_EQ(animation.duration(), 100000000);
    EXPECT_EQ(animation.animationCurve(), NSAnimationEaseInOut);
}

TEST_F(FliprAnimationSteps, TellsNothingBeforeItRuns) {
    animation.setCurrentProgress(0.05F);
    animation.setCurrentProgress(0.7F);
    EXPECT_EQ(animation.currentProgress(), 0.7F);
    EXPECT_THAT(card.told, IsEmpty());
}

TEST_F(FliprAnimationSteps, SwapsOncePastTheHalfAndDrawsAllButTheLastFrames) {
    card.atDisplay = [&] {
        for (const float progress : {0.3F, 0.5F, 0.51F, 0.6F, 0.98F, 0.99F, 1.0F}) {
            card.told.clear();
            animation.setCurrentProgress(progress);
            const bool swaps = progress == 0.51F;
            const bool draws = progress < 0.985F;
            EXPECT_EQ(card.told, swaps   ? std::vector<std::string>({"update", "display"})
                                 : draws ? std::vector<std::string>({"display"})
                                         : std::vector<std::string>())
                << progress;
        }
        card.told.clear();
    };
    animation.startAtProgress(0.1F, 0.06);
    EXPECT_EQ(card.told.back(), "end");
    EXPECT_EQ(std::count(card.told.begin(), card.told.end(), "update"), 0) << "once in all";
}

TEST_F(FliprAnimationSteps, StartsWhereItIsTold) {
    std::optional<float> first;
    card.atDisplay = [&] { first = animation.currentProgress(); };
    animation.startAtProgress(0.4F, 0.3);
    EXPECT_EQ(animation.duration(), 0.3);
    ASSERT_TRUE(first);
    EXPECT_GT(*first, 0.4F);
    EXPECT_EQ(card.told.back(), "end");
}

TEST_F(FliprAnimationSteps, AJumpSwapsAndEndsWithoutDrawing) {
    const AnimationDurationsForTesting none(0);
    animation.startAtProgress(0.02F, 0.75);
    EXPECT_THAT(card.told, ElementsAre("update", "end"));
}

TEST_F(FliprAnimationSteps, AnyDelegateHearsOfTheEnd) {
    class Plain : public NSAnimationDelegate {
    public:
        void animationDidEnd(NSAnimation& /*animation*/) override { ++ends; }
        int ends = 0;
    } plain;
    animation.setDelegate(&plain);
    animation.startAtProgress(0.1F, 0.05);
    EXPECT_EQ(plain.ends, 1);
}

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

namespace {

/// Compares what the panel shows at several values with a card turned before an eye, seen at each pixel.
void expectCard(const QImage& picture, const FliprPanel& panel, double value, double direction, int blue) {
    const NSRect place = panel.card().originalRect();
    const double ratio = panel.devicePixelRatioF();
    const Turned turned = turnedAt(value, direction);
    int inside = 0;
    int largest = 0;
    for (int row = 0; row < picture.height(); ++row) {
        for (int column = 0; column < picture.width(); ++column) {
            const NSPoint at{(column + 0.5) / ratio - NSMidX(place),
                             panel.height() - (row + 0.5) / ratio - NSMidY(place)};
            const NSPoint onCard = turned.onCard(at);
            // Shares of the card, from its top left. Not its edge, which is soft.
            const double x = 0.5 + onCard.x / place.size.width;
            const double y = 0.5 - onCard.y / place.size.height;
            const double marginX = 2 / std::abs(turned.seen({place.size.width / 2, 0}).x);
            if (x < marginX || x > 1 - marginX || y < 0.02 || y > 0.98) {
                continue;
            }
            ++inside;
            const QColor color = picture.pixelColor(column, row);
            // The levels were cut to integers, and belong to the middles of the pixels.
            const double red = 255 * (x - 0.5 / (place.size.width * ratio)) - 0.5;
            const double green = 255 * (y - 0.5 / (place.size.height * ratio)) - 0.5;
            largest = std::max({largest, static_cast<int>(std::abs(color.red() - red)),
                                static_cast<int>(std::abs(color.green() - green)), std::abs(color.blue() - blue),
                                255 - color.alpha()});
        }
    }
    EXPECT_GT(inside, 10000 * ratio) << value;
    EXPECT_LE(largest, 2) << "at " << value;
}

} // namespace

TEST_F(Flipr, ShowsTheOneSideAndThenTheOther) {
    for (const bool forward : {true, false}) {
        whileTurning([&](FliprPanel& panel) {
            const double direction = forward ? 1 : -1;
            for (const double value : {0.1, 0.25, 0.35}) {
                expectCard(pictureAt(panel, value), panel, value, direction, 40);
            }
            for (const double value : {0.65, 0.75, 0.9}) {
                expectCard(pictureAt(panel, value), panel, value, direction, 200);
            }
        });
        flip(forward);
        flipToShowWindow(*final, *initial, forward);
    }
    EXPECT_EQ(turns, 2);
}

TEST_F(SharpFlipr, ShowsBothSidesAtThePixelsOfTheScreen) {
    whileTurning([&](FliprPanel& panel) {
        ASSERT_EQ(panel.devicePixelRatioF(), 2);
        expectCard(pictureAt(panel, 0.25), panel, 0.25, 1, 40);
        expectCard(pictureAt(panel, 0.75), panel, 0.75, 1, 200);
    });
    flip();
    EXPECT_EQ(turns, 1);
}

namespace {

/// At rest, the card is the window, pixel by pixel.
void expectTheWindowItself(FliprPanel& panel, const QImage& picture, NSWindow& window) {
    const double ratio = panel.devicePixelRatioF();
    QImage expected = snapshotOfWindow(window)->imageForScale(ratio);
    expected.setDevicePixelRatio(1);
    const QPoint corner = ((window.pos() - panel.pos()) * ratio);
    const QImage shown = picture.copy(QRect(corner, expected.size()));
    EXPECT_EQ(shown.convertToFormat(QImage::Format_RGB32), expected.convertToFormat(QImage::Format_RGB32));
}

} // namespace

TEST_F(Flipr, BeginsWithTheWindowItselfPixelByPixel) {
    whileTurning([&](FliprPanel& panel) { expectTheWindowItself(panel, pictureAt(panel, 0), *initial); });
    flip();
    EXPECT_EQ(turns, 1);
}

TEST_F(SharpFlipr, BeginsWithTheWindowItselfPixelByPixel) {
    whileTurning([&](FliprPanel& panel) { expectTheWindowItself(panel, pictureAt(panel, 0), *initial); });
    flip();
    EXPECT_EQ(turns, 1);
}

TEST_F(Flipr, BeginsWithTheWindowItselfWhereItsFrameHasFractions) {
    initial->setFrame(NSMakeRect(100.4, 90.7, 321.3, 180.6), false);
    whileTurning([&](FliprPanel& panel) { expectTheWindowItself(panel, pictureAt(panel, 0), *initial); });
    flip();
    EXPECT_EQ(turns, 1);
}

TEST_F(Flipr, NothingIsSeenOfACardOnItsEdge) {
    whileTurning([&](FliprPanel& panel) {
        const QImage picture = pictureAt(panel, 0.5);
        EXPECT_EQ(picture.convertToFormat(QImage::Format_Alpha8).pixelColor(264, picture.height() / 2).alpha(), 0);
    });
    flip();
    EXPECT_EQ(turns, 1);
}

TEST_F(Flipr, DrawsAShadowBelowTheCard) {
    whileTurning([&](FliprPanel& panel) {
        const QImage picture = pictureAt(panel, 0);
        const NSRect place = panel.card().originalRect();
        const int middle = static_cast<int>(NSMidX(place));
        const auto alphaAt = [&](double y) {
            return picture.pixelColor(middle, picture.height() - 1 - static_cast<int>(y)).alpha();
        };
        EXPECT_GT(alphaAt(NSMinY(place) - 1), 130);
        EXPECT_GT(alphaAt(NSMinY(place) - 1), alphaAt(NSMinY(place) - 10));
        EXPECT_GT(alphaAt(NSMinY(place) - 10), alphaAt(NSMinY(place) - 20));
        EXPECT_GT(alphaAt(NSMinY(place) - 3), alphaAt(NSMaxY(place) + 2)) << "it falls downwards";
        EXPECT_EQ(alphaAt(NSMinY(place) - 60), 0);
    });
    flip();
    EXPECT_EQ(turns, 1);
}

TEST_F(Flipr, ShowsNothingWhileThePanelMovesFromTheOneToTheOther) {
    int alpha = -1;
    whileTurning([&](FliprPanel& panel) {
        const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidMoveNotification, &panel, [&](const NSNotification&) {
                const QImage picture = snapshotOfWindow(panel)->imageForScale(1);
                alpha = picture.pixelColor(picture.rect().center()).alpha();
            });
        pictureAt(panel, 0.7);
    });
    flip();
    EXPECT_EQ(alpha, 0);
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

namespace {

struct Event {
    const char* name;
    void (*happen)(std::unique_ptr<FlippedWindow>& initial, std::unique_ptr<FlippedWindow>& final);
    char dies; // of the windows
};

const Event events[] = {
    {"A dies", [](auto& initial, auto&) { initial.reset(); }, 'A'},
    {"B dies", [](auto&, auto& final) { final.reset(); }, 'B'},
    {"A is closed", [](auto& initial, auto&) { initial->close(); }, 0},
    {"B is closed", [](auto&, auto& final) { final->close(); }, 0},
    {"B is ordered out", [](auto&, auto& final) { final->NSWindow::orderWindow(NSWindowOut, 0); }, 0},
    {"A is ordered in", [](auto& initial, auto&) { initial->NSWindow::orderWindow(NSWindowAbove, 0); }, 0},
    {"the panel is released", [](auto&, auto&) { releaseFlippingWindow(); }, 0},
    {"the panel dies", [](auto&, auto&) { delete panelOfFlips(); }, 'P'},
};

std::ostream& operator<<(std::ostream& stream, const Event& event) {
    return stream << event.name;
}

class InterruptedFlipr : public Flipr, public testing::WithParamInterface<Event> {
protected:
    /// Runs a flip in which the event happens at `stage` of a window, and looks at what is left.
    void flipWith(const std::string& stage) {
        bool happened = false;
        const auto act = [this, stage, &happened](const std::string& reached) {
            if (reached == stage && !std::exchange(happened, true)) {
                initial->atStage = nullptr;
                final->atStage = nullptr;
                GetParam().happen(initial, final);
            }
        };
        initial->atStage = act;
        final->atStage = act;
        flip();
        EXPECT_TRUE(happened);
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        expectEnded();
    }

    /// The same from the event loop, when the flip has come to `value`.
    void flipWithWhileTurning(double value) {
        const AnimationDurationsForTesting endless(1000);
        QElapsedTimer time;
        time.start();
        whileTurning([this, value](FliprPanel& panel) {
            pictureAt(panel, value);
            GetParam().happen(initial, final);
        });
        flip();
        EXPECT_EQ(turns, 1);
        EXPECT_LT(time.elapsed(), 60000) << "it does not run on";
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        expectEnded();
    }
};

std::string nameOf(const testing::TestParamInfo<Event>& info) {
    std::string name = info.param.name;
    std::erase(name, ' ');
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, InterruptedFlipr, testing::ValuesIn(events), nameOf);

TEST_P(InterruptedFlipr, BeforeAnything) {
    flipWith("B.frame");
}

TEST_P(InterruptedFlipr, WhileTheFirstPictureIsTaken) {
    if (GetParam().dies != 'A') { // no view outlives the death of its window in its own drawing
        flipWith("A.draw");
    }
}

TEST_P(InterruptedFlipr, WhenTheOtherWindowHasTheKeyboard) {
    flipWith("B.key");
}

TEST_P(InterruptedFlipr, WhenTheFirstWindowIsOut) {
    flipWith("A.out");
}

TEST_P(InterruptedFlipr, WhileThePanelComesIn) {
    bool happened = false;
    final->atStage = [&](const std::string& stage) {
        if (stage == "B.key") {
            QTimer::singleShot(0, &application, [&] { // when the panel is waited for, or later
                happened = true;
                GetParam().happen(initial, final);
            });
        }
    };
    flip();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(happened);
    expectEnded();
}

TEST_P(InterruptedFlipr, InItsFirstHalf) {
    flipWithWhileTurning(0.2);
}

TEST_P(InterruptedFlipr, InItsSecondHalf) {
    flipWithWhileTurning(0.8);
}

TEST_P(InterruptedFlipr, WhileThePanelMovesFromTheOneToTheOther) {
    if (GetParam().dies == 'P') {
        return; // no window outlives its death in its own notification
    }
    NSNotificationObservation observation;
    bool happened = false;
    whileTurning([&](FliprPanel& panel) {
        observation = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidMoveNotification, &panel, [&](const NSNotification&) {
                if (!std::exchange(happened, true)) {
                    GetParam().happen(initial, final);
                }
            });
        panel.card().animation()->setCurrentProgress(0.8F);
    });
    flip();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(happened);
    expectEnded();
}

TEST_P(InterruptedFlipr, AtItsEnd) {
    int displays = 0;
    final->atStage = [&](const std::string& stage) {
        if (stage == "B.display" && ++displays == 3) { // after its frame was set, and when it came in
            final->atStage = nullptr;
            GetParam().happen(initial, final);
        }
    };
    flip();
    EXPECT_EQ(displays, 3);
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    expectEnded();
}

TEST_F(Flipr, AWindowOrderedOutInTheMiddleStaysOut) {
    whileTurning([&](FliprPanel&) { final->orderOut(nullptr); });
    flip();
    EXPECT_FALSE(final->isVisible());
    expectEnded();
}

TEST_F(Flipr, TheApplicationEndingInTheMiddleIsNoTrouble) {
    whileTurning([&](FliprPanel&) { QCoreApplication::exit(); });
    flip();
    EXPECT_EQ(turns, 1);
    expectEnded();
}

TEST_F(OpaqueFlipr, CutsThePanelToTheCardWhereNothingCanBeTranslucent) {
    std::vector<QRegion> masks;
    whileTurning([&](FliprPanel& panel) {
        for (const double value : {0.0, 0.25, 0.5, 0.75}) {
            pictureAt(panel, value);
            masks.push_back(panel.mask());
        }
    });
    flip();
    ASSERT_EQ(masks.size(), 4U);
    EXPECT_EQ(masks[0].boundingRect(), QRect(64, 256, 400, 200));
    for (const std::size_t turned : {1U, 3U}) {
        EXPECT_FALSE(masks[turned].isEmpty());
        EXPECT_LT(masks[turned].boundingRect().width(), 340);
    }
    // Not without a mask, which would be the whole panel, black.
    EXPECT_EQ(masks[2].boundingRect().size(), QSize(1, 1));
    expectEnded();
    EXPECT_TRUE(final->isVisible());
}

TEST_F(OpaqueFlipr, TheOtherWindowIsNotSeenBeforeItsTurnAndNotMissingAtTheEnd) {
    std::vector<std::string> seen;
    const auto note = [&](const std::string& stage) {
        const bool isCutAway = !final->mask().isEmpty() && !final->mask().intersects(final->rect());
        if (final->isVisible()) {
            seen.push_back(stage + (isCutAway ? " cut away" : " seen"));
        }
    };
    final->atStage = note;
    initial->atStage = note;
    whileTurning([&](FliprPanel& panel) {
        note("turning");
        expectCard(pictureAt(panel, 0.75), panel, 0.75, 1, 200);
    });
    flip();
    note("end");
    std::erase(seen, "B.draw cut away");
    EXPECT_THAT(seen, ElementsAre("B.display cut away", "B.front cut away", "B.key cut away", "A.out cut away",
                                  "turning cut away", "B.display cut away", "end seen"));
    EXPECT_EQ(turns, 1);
}

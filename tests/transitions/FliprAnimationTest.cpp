// SPDX-License-Identifier: MIT
#include "../appkit/AppKitHost.h"
#include "TurnedCard.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/transitions/FliprAnimation.h>
#include <VXKit/transitions/FliprView.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

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
                const TurnedCard turned = turnedAt(value, direction);
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

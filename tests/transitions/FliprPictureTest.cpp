// SPDX-License-Identifier: MIT
#include "FliprHost.h"
#include "TurnedCard.h"

#include <VXKit/platform/desktop/WindowEffects.h>

#include <QRegion>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// The effects of a desktop without a compositing manager.
class OpaqueDesktop : public WindowEffects {
public:
    bool isAvailable(Effect /*effect*/) const override { return false; }
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

/// Compares what the panel shows at several values with a card turned before an eye, seen at each pixel.
void expectCard(const QImage& picture, const FliprPanel& panel, double value, double direction, int blue) {
    const NSRect place = panel.card().originalRect();
    const double ratio = panel.devicePixelRatioF();
    const TurnedCard turned = turnedAt(value, direction);
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

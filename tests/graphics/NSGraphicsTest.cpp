// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

const QColor halfRed = QColor::fromRgbF(1, 0, 0, 0.5F);

void setHalfRed() {
    NSColor::colorWithCalibratedRed(1, 0, 0, 0.5).set();
}

} // namespace

TEST(NSRectFill, FillsExactlyThePixelsOfItsRectangleFromTheBottomLeft) {
    for (const int ratio : {1, 2}) {
        const QImage image = drawn({20, 12}, ratio, [] {
            NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
            NSRectFill(NSMakeRect(3, 4, 5, 6));
        });
        EXPECT_EQ(image, plain(QSize(20, 12) * ratio, QRect(3 * ratio, 2 * ratio, 5 * ratio, 6 * ratio), Qt::red));
    }
}

TEST(NSRectFill, FillsFromTheTopInAFlippedContext) {
    const QImage image = drawn(
        {20, 12}, 1, [] { NSRectFill(NSMakeRect(3, 4, 5, 6)); }, Flipped::Yes);
    EXPECT_EQ(image, plain({20, 12}, {3, 4, 5, 6}, Qt::black));
}

TEST(NSRectFill, ReplacesWhatIsThere) {
    const QImage image = drawn(
        {4, 4}, 1,
        [] {
            setHalfRed();
            NSRectFill(NSMakeRect(1, 1, 2, 2));
        },
        Flipped::No, Qt::white);
    EXPECT_EQ(image, plain({4, 4}, {1, 1, 2, 2}, halfRed, Qt::white));
}

TEST(NSRectFill, CoversPixelsInPartWhereItsSidesLieBetweenThem) {
    const QImage image = drawn({4, 1}, [] { NSRectFill(NSMakeRect(0.5, 0, 2.25, 1)); });
    EXPECT_NEAR(qAlpha(image.pixel(0, 0)), 128, 2);
    EXPECT_EQ(qAlpha(image.pixel(1, 0)), 255);
    EXPECT_NEAR(qAlpha(image.pixel(2, 0)), 191, 2);
    EXPECT_EQ(qAlpha(image.pixel(3, 0)), 0);
}

TEST(NSRectFill, DrawsNothingForAnEmptyRectangleOrWithoutAContext) {
    const QImage image = drawn({4, 4}, [] {
        NSRectFill(NSMakeRect(1, 1, 0, 2));
        NSRectFill(NSMakeRect(3, 3, -2, -2));
        NSRectFill(NSMakeRect(1, 1, std::nan(""), 2));
        NSFrameRect(NSMakeRect(1, 1, 0, 2));
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    NSFrameRect(NSMakeRect(0, 0, 3, 3));
}

TEST(NSRectFillUsingOperation, LaysAColourOverWhatIsThere) {
    const QImage image = drawn(
        {2, 1}, 1,
        [] {
            setHalfRed();
            NSRectFillUsingOperation(NSMakeRect(1, 0, 1, 1), NSCompositeSourceOver);
        },
        Flipped::No, Qt::white);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(qAlpha(image.pixel(1, 0)), 255);
    EXPECT_EQ(qRed(image.pixel(1, 0)), 255);
    EXPECT_NEAR(qGreen(image.pixel(1, 0)), 127, 2);
}

TEST(NSRectFillUsingOperation, CombinesAsThePorterAndDuffOperationOfItsName) {
    // Source and destination of different colours and alphas; by operation, the parts of each that remain.
    const double sourceAlpha = 0.8;
    const double destinationAlpha = 0.6;
    struct Expected {
        NSCompositingOperation operation;
        double ofSource;
        double ofDestination;
    };
    const std::vector<Expected> operations = {
        {NSCompositeClear, 0, 0},
        {NSCompositeCopy, 1, 0},
        {NSCompositeSourceOver, 1, 1 - sourceAlpha},
        {NSCompositeSourceIn, destinationAlpha, 0},
        {NSCompositeSourceOut, 1 - destinationAlpha, 0},
        {NSCompositeSourceAtop, destinationAlpha, 1 - sourceAlpha},
        {NSCompositeDestinationOver, 1 - destinationAlpha, 1},
        {NSCompositeDestinationIn, 0, sourceAlpha},
        {NSCompositeDestinationOut, 0, 1 - sourceAlpha},
        {NSCompositeDestinationAtop, 1 - destinationAlpha, sourceAlpha},
        {NSCompositeXOR, 1 - destinationAlpha, 1 - sourceAlpha},
        {NSCompositePlusLighter, 1, 1},
    };
    for (const Expected& expected : operations) {
        const QImage image = drawn({2, 1}, [&] {
            NSColor::colorWithCalibratedRed(0, 0, 1, destinationAlpha).set();
            NSRectFill(NSMakeRect(0, 0, 2, 1));
            NSColor::colorWithCalibratedRed(1, 0, 0, sourceAlpha).set();
            NSRectFillUsingOperation(NSMakeRect(0, 0, 1, 1), expected.operation);
        });
        const double red = 255 * sourceAlpha * expected.ofSource;
        const double blue = 255 * destinationAlpha * expected.ofDestination;
        // Multiplied by alpha, as the pixels are stored.
        const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(0))[0];
        EXPECT_NEAR(qRed(pixel), red, 2) << expected.operation;
        EXPECT_NEAR(qBlue(pixel), blue, 2) << expected.operation;
        EXPECT_NEAR(qAlpha(pixel), std::min(255.0, red + blue), 2) << expected.operation;
        EXPECT_NEAR(qAlpha(image.pixel(1, 0)), 153, 1) << "beside the rectangle, operation " << expected.operation;
    }
}

TEST(NSRectFillUsingOperation, DarkensWithPlusDarker) {
    const QImage image = drawn(
        {1, 1}, 1,
        [] {
            NSColor::colorWithCalibratedWhite(0.5, 1).set();
            NSRectFillUsingOperation(NSMakeRect(0, 0, 1, 1), NSCompositePlusDarker);
        },
        Flipped::No, QColor(200, 200, 200));
    EXPECT_NEAR(qRed(image.pixel(0, 0)), 100, 2);
}

TEST(NSCompositingOperation, HasAppKitsNumbers) {
    EXPECT_EQ(NSCompositeCopy, 1);
    EXPECT_EQ(NSCompositeSourceOver, 2);
    EXPECT_EQ(NSCompositeXOR, 10);
    EXPECT_EQ(NSCompositePlusDarker, 11);
    EXPECT_EQ(NSCompositePlusLighter, 13);
}

TEST(NSFrameRect, IsOnePointWideInsideItsRectangle) {
    for (const int ratio : {1, 2}) {
        const QImage image = drawn({10, 8}, ratio, [] {
            setHalfRed();
            NSFrameRect(NSMakeRect(2, 1, 6, 5));
        });
        QImage expected = plain(QSize(10, 8) * ratio, QRect(2 * ratio, 2 * ratio, 6 * ratio, 5 * ratio), halfRed);
        const QRect hole(3 * ratio, 3 * ratio, 4 * ratio, 3 * ratio);
        for (int y = hole.top(); y <= hole.bottom(); ++y) {
            for (int x = hole.left(); x <= hole.right(); ++x) {
                expected.setPixel(x, y, 0);
            }
        }
        EXPECT_EQ(image, expected);
    }
}

TEST(NSFrameRect, IsWholeWhenTooSmallForAnInside) {
    for (const NSSize& size : {NSMakeSize(2, 5), NSMakeSize(5, 2), NSMakeSize(1, 1)}) {
        const QImage image = drawn({6, 6}, [&] { NSFrameRect({{0, 0}, size}); });
        const QSize pixels(qRound(size.width), qRound(size.height));
        EXPECT_EQ(image, plain({6, 6}, {QPoint(0, 6 - pixels.height()), pixels}, Qt::black));
    }
}

TEST(NSFrameRect, CastsOneShadow) {
    const QImage image = drawn({8, 8}, [] {
        NSShadow shadow;
        shadow.setShadowColor(NSColor::blackColor());
        shadow.setShadowOffset({0, 1});
        shadow.set();
        NSColor::whiteColor().set();
        NSFrameRect(NSMakeRect(1, 1, 6, 6));
    });
    // No side darkens another one: all of the frame itself stays white.
    for (int along = 1; along < 7; ++along) {
        EXPECT_EQ(image.pixelColor(along, 1), QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(along, 6), QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(1, along), QColor(Qt::white));
        EXPECT_EQ(image.pixelColor(6, along), QColor(Qt::white));
    }
    EXPECT_EQ(image.pixelColor(3, 0), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(3, 5), QColor(Qt::black));
}

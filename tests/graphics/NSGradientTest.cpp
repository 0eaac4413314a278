// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGradient.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace {

const NSGradient blackToWhite(NSColor::blackColor(), NSColor::whiteColor());

// Compares each pixel's grey with what `part`, how far along the way its middle is, makes of it.
void expectGreys(const QImage& image, const std::function<double(double x, double y)>& part) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double expected = 255 * part(x + 0.5, y + 0.5);
            EXPECT_NEAR(qRed(image.pixel(x, y)), expected, 2) << x << ", " << y;
        }
    }
}

QImage gradientAt(double angle, Flipped flipped = Flipped::No, double ratio = 1) {
    return drawn(
        {40, 20}, ratio, [&] { blackToWhite.drawInRect(NSMakeRect(0, 0, 40, 20), angle); }, flipped);
}

} // namespace

TEST(NSGradient, GoesFromLeftToRightAtAngleZero) {
    expectGreys(gradientAt(0), [](double x, double) { return x / 40; });
    expectGreys(gradientAt(0, Flipped::No, 2), [](double x, double) { return x / 80; });
    expectGreys(gradientAt(360), [](double x, double) { return x / 40; });
}

TEST(NSGradient, GoesFromBottomToTopAtAngleNinety) {
    expectGreys(gradientAt(90), [](double, double y) { return 1 - y / 20; });
    expectGreys(gradientAt(90, Flipped::No, 2), [](double, double y) { return 1 - y / 40; });
}

TEST(NSGradient, GoesFromTopToBottomAtAngleNinetyInAFlippedContext) {
    expectGreys(gradientAt(90, Flipped::Yes), [](double, double y) { return y / 20; });
}

TEST(NSGradient, GoesFromRightToLeftAtAngleHundredAndEighty) {
    expectGreys(gradientAt(180), [](double x, double) { return 1 - x / 40; });
}

TEST(NSGradient, ReachesTheCornersOfItsRectangleAtASlant) {
    // At 45 degrees the way is as long as the sum of the sides, projected.
    expectGreys(gradientAt(45), [](double x, double y) { return (x + (20 - y)) / 60; });
    expectGreys(gradientAt(-45), [](double x, double y) { return (x + y) / 60; });
}

TEST(NSGradient, CoversExactlyItsRectangle) {
    for (const int ratio : {1, 2}) {
        const QImage image = drawn({10, 10}, ratio, [] { blackToWhite.drawInRect(NSMakeRect(2, 1, 5, 4), 90); });
        EXPECT_EQ(inkOf(image), QRect(2 * ratio, 5 * ratio, 5 * ratio, 4 * ratio));
        EXPECT_EQ(qAlpha(image.pixel(2 * ratio, 5 * ratio)), 255);
    }
}

TEST(NSGradient, ChangesColourAndAlphaEachForItself) {
    const NSGradient gradient(NSColor::colorWithCalibratedRed(1, 0, 0, 0), NSColor::colorWithCalibratedRed(0, 0, 1, 1));
    const QImage image = drawn({20, 1}, [&] { gradient.drawInRect(NSMakeRect(0, 0, 20, 1), 0); });
    for (int x = 0; x < 20; ++x) {
        const double part = (x + 0.5) / 20;
        const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(0))[x];
        EXPECT_NEAR(qAlpha(pixel), 255 * part, 2);
        EXPECT_NEAR(qRed(pixel), 255 * part * (1 - part), 2);
        EXPECT_NEAR(qBlue(pixel), 255 * part * part, 2);
    }
}

TEST(NSGradient, IsLaidOverWhatIsThere) {
    const NSGradient gradient(NSColor::clearColor(), NSColor::colorWithCalibratedWhite(0.278, 1));
    const QImage image = drawn(
        {1, 7}, 1, [&] { gradient.drawInRect(NSMakeRect(0, 0, 1, 7), 90); }, Flipped::No, Qt::white);
    for (int y = 0; y < 7; ++y) {
        const double part = 1 - (y + 0.5) / 7;
        EXPECT_EQ(qAlpha(image.pixel(0, y)), 255);
        EXPECT_NEAR(qRed(image.pixel(0, y)), 255 * (1 - part) + 255 * 0.278 * part * part, 3);
    }
}

TEST(NSGradient, FillsAPathAcrossItsBounds) {
    const QImage image = drawn({20, 10}, [] {
        blackToWhite.drawInBezierPath(NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(4, 0, 10, 10)), 0);
    });
    EXPECT_EQ(inkOf(image), QRect(4, 0, 10, 10));
    EXPECT_EQ(qAlpha(image.pixel(4, 0)), 0);
    for (int x = 5; x < 13; ++x) {
        EXPECT_NEAR(qRed(image.pixel(x, 5)), 255 * (x + 0.5 - 4) / 10, 2);
    }
}

TEST(NSGradient, DrawsNothingForAnEmptyRectangleOrWithoutAContext) {
    const QImage image = drawn({4, 4}, [] {
        blackToWhite.drawInRect(NSMakeRect(0, 0, 0, 4), 90);
        blackToWhite.drawInBezierPath(NSBezierPath(), 0);
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
    blackToWhite.drawInRect(NSMakeRect(0, 0, 4, 4), 0);
}

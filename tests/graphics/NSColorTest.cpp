// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QPainter>

#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

namespace {

// Four pixels of four colours, one point wide and high each at a pixel ratio of 1: red and green above, blue and white
// below.
QImage fourColors() {
    QImage pixels(2, 2, QImage::Format_ARGB32_Premultiplied);
    pixels.setPixelColor(0, 0, Qt::red);
    pixels.setPixelColor(1, 0, Qt::green);
    pixels.setPixelColor(0, 1, Qt::blue);
    pixels.setPixelColor(1, 1, Qt::white);
    return pixels;
}

NSColor patternOf(QImage pixels, double pixelRatio) {
    pixels.setDevicePixelRatio(pixelRatio);
    return NSColor::colorWithPatternImage(NSImage::initWithQImage(pixels));
}

// The tiles laid by hand: the bottom left pixel of one of them at (left, bottom), counted from the top left.
QImage tiled(QSize size, const QImage& tile, int left, int bottom) {
    const auto wrapped = [](int value, int length) { return ((value % length) + length) % length; };
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QPoint from(wrapped(x - left, tile.width()), wrapped(y - bottom - 1, tile.height()));
            image.setPixelColor(x, y, tile.pixelColor(from));
        }
    }
    return image;
}

void fill(const NSColor& color, NSSize size) {
    color.set();
    NSRectFill({NSZeroPoint, size});
}

} // namespace

TEST(NSColor, KeepsItsComponentsAsDoubles) {
    const NSColor color = NSColor::colorWithCalibratedRed(0.573, 0.353, 0.122, 0.9);
    EXPECT_EQ(color.redComponent(), 0.573);
    EXPECT_EQ(color.greenComponent(), 0.353);
    EXPECT_EQ(color.blueComponent(), 0.122);
    EXPECT_EQ(color.alphaComponent(), 0.9);
}

TEST(NSColor, ClampsComponentsAndTakesNaNForZero) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const NSColor color = NSColor::colorWithCalibratedRed(-0.5, 1.5, none, std::numeric_limits<double>::infinity());
    EXPECT_EQ(color, NSColor::colorWithCalibratedRed(0, 1, 0, 1));
    EXPECT_EQ(NSColor::colorWithCalibratedWhite(1, 0.5).colorWithAlphaComponent(none).alphaComponent(), 0);
}

TEST(NSColor, IsEqualByItsComponentsAndItsPattern) {
    EXPECT_EQ(NSColor::colorWithCalibratedWhite(0.25, 1), NSColor::colorWithCalibratedRed(0.25, 0.25, 0.25, 1));
    EXPECT_EQ(NSColor::colorWithDeviceWhite(0.25, 1), NSColor::colorWithCalibratedWhite(0.25, 1));
    EXPECT_NE(NSColor::whiteColor(), NSColor::whiteColor().colorWithAlphaComponent(0.5));
    EXPECT_EQ(NSColor::clearColor(), NSColor::colorWithCalibratedWhite(0, 0));
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({1, 1});
    EXPECT_EQ(NSColor::colorWithPatternImage(image), NSColor::colorWithPatternImage(image));
    EXPECT_NE(NSColor::colorWithPatternImage(image), NSColor::colorWithPatternImage(NSImage::initWithSize({1, 1})));
    EXPECT_NE(NSColor::colorWithPatternImage(image), NSColor::blackColor());
}

TEST(NSColor, IsOpaqueBlackUnlessTold) {
    EXPECT_EQ(NSColor(), NSColor::blackColor());
}

TEST(NSColor, OfNoPatternImageIsClear) {
    EXPECT_EQ(NSColor::colorWithPatternImage(nullptr), NSColor::clearColor());
}

TEST(NSColor, FillsWithItsNearestPixelValue) {
    const QImage image = drawn({1, 1}, [] { fill(NSColor::colorWithCalibratedRed(0.573, 0.353, 0.122, 1), {1, 1}); });
    EXPECT_EQ(image.pixel(0, 0), qRgb(146, 90, 31));
}

TEST(NSColor, SetsFillAndStrokeColoursApartAndTogether) {
    drawn({1, 1}, [] {
        const NSGraphicsContext& context = *NSGraphicsContext::currentContext();
        NSColor::whiteColor().setFill();
        EXPECT_EQ(context.fillColor(), NSColor::whiteColor());
        EXPECT_EQ(context.strokeColor(), NSColor::blackColor());
        NSColor::clearColor().setStroke();
        EXPECT_EQ(context.fillColor(), NSColor::whiteColor());
        EXPECT_EQ(context.strokeColor(), NSColor::clearColor());
        NSColor::blackColor().set();
        EXPECT_EQ(context.fillColor(), NSColor::blackColor());
        EXPECT_EQ(context.strokeColor(), NSColor::blackColor());
    });
}

TEST(NSColor, DoesNothingWhenSetWithoutAContext) {
    NSColor::whiteColor().set();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSColorPattern, StartsAtTheBottomLeftWithUprightTiles) {
    for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
        const QImage image = drawn(
            {5, 5}, 1,
            [] {
                fill(patternOf(fourColors(), 1), {5, 5});
            },
            flipped);
        EXPECT_EQ(image, tiled({5, 5}, fourColors(), 0, 4));
    }
}

TEST(NSColorPattern, LaysPixelOnPixelAtEveryPixelRatio) {
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
            const QImage image = drawn(
                {6, 6}, ratio,
                [&] {
                    fill(patternOf(fourColors(), ratio), {6, 6});
                },
                flipped);
            EXPECT_EQ(image, tiled(image.size(), fourColors(), 0, image.height() - 1)) << ratio;
        }
    }
}

TEST(NSColorPattern, IsTheSameForEveryShapeItFills) {
    const QImage whole = tiled({8, 8}, fourColors(), 0, 7);
    const QImage image = drawn({8, 8}, [] {
        patternOf(fourColors(), 1).set();
        NSRectFill(NSMakeRect(3, 1, 4, 5));
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 7, 3, 1)).fill();
    });
    EXPECT_EQ(image.copy(3, 2, 4, 5), whole.copy(3, 2, 4, 5));
    EXPECT_EQ(image.copy(0, 0, 3, 1), whole.copy(0, 0, 3, 1));
    EXPECT_EQ(qAlpha(image.pixel(7, 7)), 0);
}

TEST(NSColorPattern, StartsAtThePhaseThatTheContextWasGiven) {
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = drawn({5, 5}, ratio, [&] {
            NSGraphicsContext::currentContext()->setPatternPhase({1, -2});
            fill(patternOf(fourColors(), ratio), {5, 5});
        });
        const int unit = qRound(ratio);
        EXPECT_EQ(image, tiled(image.size(), fourColors(), unit, image.height() - 1 + 2 * unit));
    }
}

TEST(NSColorPattern, JoinsAcrossTheViewsOfAWindow) {
    // A view of 3 by 2 points whose top left corner lies at (3, 1) in a window 7 points high.
    const QImage tile = fourColors();
    for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
        QImage window(7, 7, QImage::Format_ARGB32_Premultiplied);
        window.fill(Qt::transparent);
        QPainter painter(&window);
        painter.translate(3, 1);
        {
            NSGraphicsContext context(painter, 2, flipped == Flipped::Yes);
            context.setPatternPhase(flipped == Flipped::Yes ? NSMakePoint(-3, 6) : NSMakePoint(-3, -4));
            fill(patternOf(tile, 1), {3, 2});
        }
        painter.end();
        EXPECT_EQ(window.copy(3, 1, 3, 2), tiled({7, 7}, tile, 0, 6).copy(3, 1, 3, 2));
        EXPECT_EQ(inkOf(window), QRect(3, 1, 3, 2));
    }
}

TEST(NSColorPattern, IsDrawnAtTheOpacityOfItsAlpha) {
    const QImage image = drawn({2, 2}, [] { fill(patternOf(fourColors(), 1).colorWithAlphaComponent(0.5), {2, 2}); });
    EXPECT_NEAR(qAlpha(image.pixel(0, 0)), 128, 2);
    EXPECT_EQ(image.pixelColor(1, 0).green(), 255);
}

TEST(NSColorPattern, StrokesToo) {
    const QImage image = drawn({4, 4}, [] {
        patternOf(fourColors(), 1).set();
        NSBezierPath line;
        line.moveToPoint({0, 1});
        line.lineToPoint({4, 1});
        line.setLineWidth(2);
        line.stroke();
    });
    EXPECT_EQ(image.copy(0, 2, 4, 2), tiled({4, 4}, fourColors(), 0, 3).copy(0, 2, 4, 2));
    EXPECT_EQ(inkOf(image), QRect(0, 2, 4, 2));
}

TEST(NSColorPattern, ShowsWhatItsImageShowsWhenItIsDrawn) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({1, 1});
    const NSColor color = NSColor::colorWithPatternImage(image);
    image->lockFocus(1);
    fill(NSColor::whiteColor(), {1, 1});
    image->unlockFocus();
    EXPECT_EQ(drawn({1, 1}, [&] { fill(color, {1, 1}); }).pixelColor(0, 0), QColor(Qt::white));
}

TEST(NSColorPattern, OfAnInvalidImageDrawsNothing) {
    const NSColor color = NSColor::colorWithPatternImage(NSImage::initWithSize(NSZeroSize));
    const QImage image = drawn({2, 2}, [&] {
        color.set();
        NSBezierPath::fillRect(NSMakeRect(0, 0, 2, 2));
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
}

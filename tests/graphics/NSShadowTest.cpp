// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/GaussianBlur.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGradient.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QPainter>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

NSShadow shadowOf(const NSColor& color, double blurRadius, NSSize offset) {
    NSShadow shadow;
    shadow.setShadowColor(color);
    shadow.setShadowBlurRadius(blurRadius);
    shadow.setShadowOffset(offset);
    return shadow;
}

// What `work` must look like with a shadow: its own coverage, blurred, moved and coloured, and itself on top.
QImage withShadow(NSSize size, double ratio, const std::function<void()>& work, const NSShadow& shadow) {
    const double deviation = shadow.shadowBlurRadius() / 2 * ratio;
    const int margin = GaussianBlurReach(deviation) + 20;
    const QImage shape = drawn(size, ratio, work);
    QImage coverage = QImage(shape.size() + QSize(2, 2) * margin, QImage::Format_ARGB32_Premultiplied);
    coverage.fill(Qt::transparent);
    QPainter(&coverage).drawImage(margin, margin, shape);
    coverage = coverage.convertToFormat(QImage::Format_Alpha8);
    GaussianBlur(coverage, deviation);

    QImage image(shape.size(), QImage::Format_ARGB32_Premultiplied);
    const QPoint offset(qRound(shadow.shadowOffset().width * ratio), qRound(-shadow.shadowOffset().height * ratio));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QPoint from = QPoint(x + margin, y + margin) - offset;
            const int covered = coverage.constScanLine(from.y())[from.x()];
            const double alpha = covered / 255.0 * shadow.shadowColor().alphaComponent();
            image.setPixelColor(x, y, shadow.shadowColor().colorWithAlphaComponent(alpha).qtColor());
        }
    }
    QPainter(&image).drawImage(0, 0, shape);
    return image;
}

void setRed() {
    NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
}

// One drawing of every kind, in an area of 60 by 40 points.
struct Drawing {
    std::string name;
    std::function<void()> draw;
};

std::vector<Drawing> drawings() {
    const std::shared_ptr<NSImage> picture = NSImage::initWithSize({12, 10});
    picture->lockFocus(2);
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(2, 2, 6, 3));
    picture->unlockFocus();
    return {
        {"fill", [] { NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(15, 12, 25, 17), 5, 5).fill(); }},
        {"stroke",
         [] {
             NSBezierPath path = NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(15.5, 12.5, 25, 17), 4, 4);
             path.setLineWidth(0.5);
             path.stroke();
         }},
        {"rectangle", [] { NSRectFill(NSMakeRect(15, 12, 25, 17)); }},
        {"text", [] { drawAtPoint(QStringLiteral("gjQ"), NSMakePoint(14, 10)); }},
        {"image",
         [=] {
             picture->drawAtPoint({20, 15}, NSZeroRect, NSCompositeSourceOver, 1);
         }},
        {"stretched image",
         [=] { picture->drawInRect(NSMakeRect(10, 10, 36, 20), NSZeroRect, NSCompositeSourceOver, 0.5); }},
        {"gradient",
         [] { NSGradient(NSColor::clearColor(), NSColor::blackColor()).drawInRect(NSMakeRect(15, 12, 25, 17), 90); }},
    };
}

using NSShadowUnder = TestWithApplication;

} // namespace

TEST(NSShadow, BeginsAsAFaintBlackWithoutBlurOrOffset) {
    const NSShadow shadow;
    EXPECT_EQ(shadow.shadowColor(), NSColor::colorWithCalibratedWhite(0, 1.0 / 3));
    EXPECT_EQ(shadow.shadowBlurRadius(), 0);
    EXPECT_EQ(shadow.shadowOffset(), NSZeroSize);
}

TEST(NSShadow, KeepsWhatItIsGivenAndTakesABadRadiusForZero) {
    NSShadow shadow = shadowOf(NSColor::whiteColor(), 2.5, {1, -2});
    EXPECT_EQ(shadow.shadowColor(), NSColor::whiteColor());
    EXPECT_EQ(shadow.shadowBlurRadius(), 2.5);
    EXPECT_EQ(shadow.shadowOffset(), NSMakeSize(1, -2));
    for (const double radius : {-1.0, std::nan("")}) {
        shadow.setShadowBlurRadius(radius);
        EXPECT_EQ(shadow.shadowBlurRadius(), 0);
    }
}

TEST(NSShadow, IsMovedRightAndUpInFlippedContextsToo) {
    for (const int ratio : {1, 2}) {
        for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
            const QImage image = drawn(
                {10, 10}, ratio,
                [] {
                    shadowOf(NSColor::blackColor(), 0, {2, 3}).set();
                    setRed();
                    NSRectFill(NSMakeRect(4, 4, 2, 2));
                },
                flipped);
            QImage expected = plain(QSize(10, 10) * ratio, QRect(6 * ratio, ratio, 2 * ratio, 2 * ratio), Qt::black);
            QPainter(&expected).fillRect(QRect(4 * ratio, 4 * ratio, 2 * ratio, 2 * ratio), Qt::red);
            EXPECT_EQ(image, expected);
        }
    }
}

TEST(NSShadow, FadesAsAGaussianOfHalfItsRadius) {
    const double radius = 6;
    const QImage image = drawn({80, 60}, [&] {
        shadowOf(NSColor::blackColor(), radius, {0, 0}).set();
        NSColor::whiteColor().set();
        NSRectFill(NSMakeRect(40, -100, 200, 300));
    });
    for (int x = 20; x < 40; ++x) {
        const double expected = 127.5 * (1 + std::erf((x + 0.5 - 40) / (radius / 2) / std::sqrt(2)));
        EXPECT_NEAR(qAlpha(image.pixel(x, 30)), expected, 4) << x;
    }
    EXPECT_EQ(image.pixelColor(40, 30), QColor(Qt::white));
}

TEST(NSShadow, HasTheOpacityOfItsColourTimesThatOfWhatCastsIt) {
    const QImage image = drawn({6, 2}, [] {
        shadowOf(NSColor::colorWithCalibratedWhite(0, 0.5), 0, {3, 0}).set();
        NSColor::colorWithCalibratedRed(1, 0, 0, 0.5).set();
        NSBezierPath::fillRect(NSMakeRect(0, 0, 2, 2));
    });
    EXPECT_NEAR(qAlpha(image.pixel(3, 1)), 64, 1);
    EXPECT_NEAR(qAlpha(image.pixel(0, 0)), 128, 1);
}

TEST(NSShadow, EndsWhenOneWithoutBlurAndOffsetIsSetOrTheStateRestored) {
    const QImage image = drawn({8, 4}, [] {
        NSGraphicsContext::saveGraphicsState();
        shadowOf(NSColor::blackColor(), 2, {0, 0}).set();
        NSGraphicsContext::restoreGraphicsState();
        setRed();
        NSRectFill(NSMakeRect(1, 1, 2, 2));
        shadowOf(NSColor::blackColor(), 2, {0, 0}).set();
        NSShadow().set();
        NSRectFill(NSMakeRect(5, 1, 2, 2));
    });
    QImage expected = plain({8, 4}, {1, 1, 2, 2}, Qt::red);
    QPainter(&expected).fillRect(5, 1, 2, 2, Qt::red);
    EXPECT_EQ(image, expected);
}

TEST(NSShadow, OfNoColourOrAnOffsetBeyondEveryScreenIsNone) {
    for (const NSShadow& shadow :
         {shadowOf(NSColor::clearColor(), 4, {1, 1}), shadowOf(NSColor::blackColor(), 4, {std::nan(""), 0}),
          shadowOf(NSColor::blackColor(), 4, {0, std::numeric_limits<double>::infinity()})}) {
        const QImage image = drawn({8, 8}, [&] {
            shadow.set();
            NSRectFill(NSMakeRect(3, 3, 2, 2));
        });
        EXPECT_EQ(image, plain({8, 8}, {3, 3, 2, 2}, Qt::black));
    }
}

TEST(NSShadow, WithoutMeasureCoversNothingAndEndsSoon) {
    const QImage image = drawn({8, 8}, [] {
        shadowOf(NSColor::blackColor(), std::numeric_limits<double>::infinity(), {0, 0}).set();
        setRed();
        NSRectFill(NSMakeRect(3, 3, 2, 2));
    });
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::red));
}

TEST(NSShadow, FallsUnderWhatCopiesButNotUnderWhatClears) {
    const QImage image = drawn({6, 3}, [] {
        shadowOf(NSColor::blackColor(), 0, {1, 0}).set();
        setRed();
        NSRectFillUsingOperation(NSMakeRect(0, 0, 1, 3), NSCompositeCopy);
        NSRectFillUsingOperation(NSMakeRect(3, 0, 1, 3), NSCompositeClear);
    });
    EXPECT_EQ(image.pixelColor(0, 1), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(1, 1), QColor(Qt::black));
    EXPECT_EQ(qAlpha(image.pixel(4, 1)), 0);
}

TEST(NSShadow, OfWhatLiesOutsideStillReachesIn) {
    const QImage image = drawn({10, 4}, [] {
        shadowOf(NSColor::blackColor(), 0, {100, 0}).set();
        NSRectFill(NSMakeRect(-98, 0, 5, 4));
    });
    EXPECT_EQ(image, plain({10, 4}, {2, 0, 5, 4}, Qt::black));
}

TEST(NSShadow, KeepsToTheClip) {
    const QImage image = drawn({10, 4}, [] {
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 5, 4)).setClip();
        shadowOf(NSColor::blackColor(), 0, {2, 0}).set();
        setRed();
        NSRectFill(NSMakeRect(1, 0, 3, 4));
    });
    EXPECT_EQ(inkOf(image), QRect(1, 0, 4, 4));
    EXPECT_EQ(image.pixelColor(4, 1), QColor(Qt::black));
}

TEST(NSShadow, FallsInTheRightPlaceInAChildView) {
    // The painter of a child at (30, 20) in the window's pixels.
    const auto drawing = [] {
        shadowOf(NSColor::blackColor(), 4, {2, -3}).set();
        setRed();
        NSRectFill(NSMakeRect(8, 8, 6, 6));
    };
    const QImage alone = drawn({20, 20}, drawing);
    QImage window(60, 50, QImage::Format_ARGB32_Premultiplied);
    window.fill(Qt::transparent);
    QPainter painter(&window);
    painter.translate(30, 20);
    painter.setClipRect(0, 0, 20, 20);
    {
        const NSGraphicsContext context(painter, 20, false);
        drawing();
    }
    painter.end();
    EXPECT_EQ(window.copy(30, 20, 20, 20), alone);
    EXPECT_EQ(inkOf(window), inkOf(alone).translated(30, 20));
}

TEST_F(NSShadowUnder, EveryKindOfDrawingIsItsBlurredCoverage) {
    const NSShadow shadow = shadowOf(NSColor::colorWithCalibratedRed(0, 0, 1, 0.8), 5, {3, -2});
    for (const Drawing& drawing : drawings()) {
        for (const double ratio : {1.0, 2.0}) {
            const QImage expected = withShadow({60, 40}, ratio, drawing.draw, shadow);
            const QImage image = drawn({60, 40}, ratio, [&] {
                shadow.set();
                drawing.draw();
            });
            EXPECT_LE(difference(image, expected), 2) << drawing.name << " at " << ratio;
            EXPECT_GT(difference(image, drawn({60, 40}, ratio, drawing.draw)), 10) << drawing.name << " has a shadow";
        }
    }
}

TEST_F(NSShadowUnder, DrawingLeavesTheDrawingItselfAsItIs) {
    for (const Drawing& drawing : drawings()) {
        const QImage image = drawn({60, 40}, 1, [&] {
            shadowOf(NSColor::blackColor(), 3, {100, 0}).set();
            drawing.draw();
        });
        EXPECT_EQ(image, drawn({60, 40}, drawing.draw)) << drawing.name;
    }
}

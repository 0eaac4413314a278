// SPDX-License-Identifier: MIT
// Drawing into images.
#include "NSImageTestSupport.h"

#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QGuiApplication>
#include <QPainter>

#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(NSImageFocus, DrawsIntoTheImageInsteadOfTheContext) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
    const QImage outside = drawn({4, 3}, [&] {
        paint(*image, 1, NSColor::whiteColor(), NSMakeRect(0, 0, 2, 1));
        NSColor::blackColor().set();
        NSRectFill(NSMakeRect(3, 2, 1, 1));
    });
    EXPECT_EQ(outside, plain({4, 3}, {3, 0, 1, 1}, Qt::black));
    EXPECT_EQ(image->imageForScale(1), plain({4, 3}, {0, 2, 2, 1}, Qt::white));
}

TEST(NSImageFocus, LeavesTheContextAsItWas) {
    drawn({4, 4}, [] {
        const NSGraphicsContext* outer = NSGraphicsContext::currentContext();
        NSColor::whiteColor().set();
        const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
        image->lockFocus();
        EXPECT_NE(NSGraphicsContext::currentContext(), outer);
        EXPECT_EQ(NSGraphicsContext::currentContext()->fillColor(), NSColor::blackColor());
        image->unlockFocus();
        EXPECT_EQ(NSGraphicsContext::currentContext(), outer);
        EXPECT_EQ(outer->fillColor(), NSColor::whiteColor());
    });
}

TEST(NSImageFocus, HasThePixelRatioOfTheCurrentContext) {
    for (const double ratio : {1.0, 2.0}) {
        drawn({4, 4}, ratio, [&] {
            const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
            image->lockFocus();
            EXPECT_EQ(NSGraphicsContext::currentContext()->pixelRatio(), ratio);
            image->unlockFocus();
        });
    }
}

TEST(NSImageFocus, HasThePixelRatioOfTheMainScreenWithoutAContext) {
    qputenv("QT_SCALE_FACTOR", "2");
    int count = 1;
    std::string name = "test";
    char* arguments[] = {name.data(), nullptr};
    const QGuiApplication application(count, arguments);
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
    image->lockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext()->pixelRatio(), 2);
    image->unlockFocus();
}

TEST(NSImageFocus, TakesABadPixelRatioForOne) {
    for (const double ratio : {0.0, -2.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
        image->lockFocus(ratio);
        EXPECT_EQ(NSGraphicsContext::currentContext()->pixelRatio(), 1);
        image->unlockFocus();
    }
}

TEST(NSImageFocus, BeginsAtTheTopLeftInAFlippedImage) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 3});
    image->setFlipped(true);
    paint(*image, 1, NSColor::whiteColor(), NSMakeRect(0, 0, 2, 1));
    EXPECT_EQ(image->imageForScale(1), plain({4, 3}, {0, 0, 2, 1}, Qt::white));
}

TEST(NSImageFocus, AddsToWhatTheImageShows) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 4});
    paint(*image, 1, NSColor::whiteColor(), NSMakeRect(0, 0, 4, 4));
    paint(*image, 1, NSColor::blackColor(), NSMakeRect(0, 0, 1, 1));
    EXPECT_EQ(image->imageForScale(1), plain({4, 4}, {0, 3, 1, 1}, Qt::black, Qt::white));
}

TEST(NSImageFocus, IsDrawnPixelByPixelAtItsOwnRatio) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        const std::shared_ptr<NSImage> image = NSImage::initWithSize({13, 9});
        image->lockFocus(ratio);
        NSColor::blackColor().set();
        for (int x = 0; x < 13; x += 2) {
            NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(x, 0, 3, 9)).fill();
        }
        image->unlockFocus();
        const QImage pixels = image->imageForScale(ratio);
        const QSize canvas(60, 60);
        const QImage result = drawn(NSMakeSize(60 / ratio, 60 / ratio), ratio, [&] {
            image->drawAtPoint({2 / ratio, 4 / ratio}, NSZeroRect, NSCompositeSourceOver, 1);
        });
        QImage expected(canvas, QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::transparent);
        QPainter painter(&expected);
        painter.drawImage(QRect(QPoint(2, 60 - 4 - pixels.height()), pixels.size()), pixels);
        painter.end();
        EXPECT_EQ(result, expected) << ratio;
    }
}

TEST(NSImageFocus, NestsWithThatOfAnotherImage) {
    const std::shared_ptr<NSImage> outer = NSImage::initWithSize({4, 4});
    const std::shared_ptr<NSImage> inner = NSImage::initWithSize({4, 4});
    outer->lockFocus(1);
    inner->lockFocus(1);
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    inner->unlockFocus();
    NSRectFill(NSMakeRect(3, 3, 1, 1));
    outer->unlockFocus();
    EXPECT_EQ(inner->imageForScale(1), plain({4, 4}, {0, 3, 1, 1}, Qt::white));
    EXPECT_EQ(outer->imageForScale(1), plain({4, 4}, {3, 0, 1, 1}, Qt::black));
}

TEST(NSImageFocus, NestsInItself) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4, 4});
    image->lockFocus(2);
    NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)).setClip();
    image->lockFocus(1);
    NSColor::whiteColor().set();
    EXPECT_EQ(NSGraphicsContext::currentContext()->pixelRatio(), 2);
    NSRectFill(NSMakeRect(2, 2, 1, 1));
    image->unlockFocus();
    NSRectFill(NSMakeRect(0, 0, 4, 4));
    image->unlockFocus();
    QImage expected = plain({8, 8}, {4, 2, 2, 2}, Qt::white);
    QPainter(&expected).fillRect(0, 6, 2, 2, Qt::black);
    EXPECT_EQ(image->imageForScale(2), expected);
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSImageFocus, EndsInAnyOrder) {
    const std::shared_ptr<NSImage> first = NSImage::initWithSize({2, 2});
    const std::shared_ptr<NSImage> second = NSImage::initWithSize({2, 2});
    first->lockFocus(1);
    second->lockFocus(1);
    first->unlockFocus();
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    second->unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    EXPECT_TRUE(inkOf(first->imageForScale(1)).isEmpty());
    EXPECT_EQ(inkOf(second->imageForScale(1)), QRect(0, 1, 1, 1));
}

TEST(NSImageFocus, LogsAnUnlockTooManyAndIgnoresIt) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({2, 2});
    testing::internal::CaptureStderr();
    image->unlockFocus();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("unlocked"));
    paint(*image, 1, NSColor::whiteColor(), NSMakeRect(0, 0, 1, 1));
    EXPECT_EQ(inkOf(image->imageForScale(1)), QRect(0, 1, 1, 1));
}

TEST(NSImageFocus, EndsWithTheImage) {
    std::shared_ptr<NSImage> image = NSImage::initWithSize({2, 2});
    image->lockFocus(1);
    image->lockFocus(1);
    NSGraphicsContext::saveGraphicsState();
    image.reset();
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSImageFocus, LosesWhatIsDrawnIntoAnImageWithoutASize) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize(NSMakeSize(10, 0));
    testing::internal::CaptureStderr();
    const QImage outside = drawn({4, 4}, [&] { paint(*image, 1, NSColor::whiteColor(), NSMakeRect(0, 0, 4, 4)); });
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("is lost"));
    EXPECT_TRUE(inkOf(outside).isEmpty());
    EXPECT_FALSE(image->isValid());
}

TEST(NSImageFocus, ShowsThePictureBeforeUntilItEnds) {
    const std::shared_ptr<NSImage> image = redCorner();
    image->lockFocus(1);
    NSColor::blackColor().set();
    NSRectFill(NSMakeRect(0, 0, 4, 4));
    EXPECT_EQ(image->imageForScale(1).pixelColor(0, 3), QColor(Qt::red));
    image->unlockFocus();
    EXPECT_EQ(image->imageForScale(1).pixelColor(0, 3), QColor(Qt::black));
}

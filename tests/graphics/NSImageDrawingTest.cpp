// SPDX-License-Identifier: MIT
// Drawing images, and drawing into them; NSImageTest has where they come from.
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

// Every pixel its own colour and alpha.
QImage noise(QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixelColor(x, y,
                                QColor((x * 53) % 256, (y * 71) % 256, (x * y * 13) % 256, 255 - (x + y) % 3 * 60));
        }
    }
    return image;
}

std::shared_ptr<NSImage> imageOf(QImage pixels, double pixelRatio = 1) {
    pixels.setDevicePixelRatio(pixelRatio);
    return NSImage::initWithQImage(pixels);
}

// An image of 4 by 4 points whose lower left quarter is red.
std::shared_ptr<NSImage> redCorner() {
    return imageOf(plain({4, 4}, {0, 2, 2, 2}, Qt::red, Qt::white));
}

void drawWhole(const NSImage& image, const NSRect& rect, double fraction = 1) {
    image.drawInRect(rect, NSZeroRect, NSCompositeSourceOver, fraction);
}

void paint(NSImage& image, double pixelRatio, const NSColor& color, const NSRect& rect) {
    image.lockFocus(pixelRatio);
    color.set();
    NSRectFill(rect);
    image.unlockFocus();
}

// A drawing of 10 by 10 points, black to the left of x = 5.
class NSImageOfVectors : public testing::Test {
protected:
    std::shared_ptr<NSImage> halves() {
        QFile file(m_folder.filePath(QStringLiteral("halves.svg")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10" viewBox="0 0 10 10">
<path d="M0 0H5V10H0Z"/></svg>)");
        file.close();
        return NSImage::initByReferencingFile(file.fileName());
    }

    QByteArray fileBytes() {
        QFile file(m_folder.filePath(QStringLiteral("halves.svg")));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST(NSImageDrawing, CopiesPixelByPixelInItsOwnSize) {
    for (const int ratio : {1, 2, 3}) {
        const QImage pixels = noise(QSize(7, 5) * ratio);
        const std::shared_ptr<NSImage> image = imageOf(pixels, ratio);
        EXPECT_EQ(image->size(), NSMakeSize(7, 5));
        for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
            const QImage atPoint = drawn(
                {7, 5}, ratio,
                [&] {
                    image->drawAtPoint({0, 0}, NSZeroRect, NSCompositeSourceOver, 1);
                },
                flipped);
            EXPECT_EQ(atPoint, pixels) << ratio;
            const QImage inRect = drawn(
                {7, 5}, ratio, [&] { drawWhole(*image, NSMakeRect(0, 0, 7, 5)); }, flipped);
            EXPECT_EQ(inRect, pixels) << ratio;
        }
    }
}

TEST(NSImageDrawing, StandsOnItsPoint) {
    const auto inked = [](Flipped flipped) {
        return inkOf(drawn(
            {20, 20}, 1,
            [] {
                redCorner()->drawAtPoint({3, 5}, NSZeroRect, NSCompositeSourceOver, 1);
            },
            flipped));
    };
    EXPECT_EQ(inked(Flipped::No), QRect(3, 11, 4, 4));
    EXPECT_EQ(inked(Flipped::Yes), QRect(3, 5, 4, 4));
}

TEST(NSImageDrawing, TakesAPartOfItselfFromTheBottomLeft) {
    const QImage part = drawn({2, 2}, [] {
        redCorner()->drawAtPoint({0, 0}, NSMakeRect(0, 0, 2, 2), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(part, plain({2, 2}, {0, 0, 2, 2}, Qt::red));
    const QImage upper = drawn({4, 2}, [] {
        redCorner()->drawAtPoint({0, 0}, NSMakeRect(0, 2, 4, 2), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(upper, plain({4, 2}, {0, 0, 4, 2}, Qt::white));
}

TEST(NSImageDrawing, TakesAPartOfItselfFromTheTopLeftWhenItIsFlipped) {
    const std::shared_ptr<NSImage> image = redCorner();
    image->setFlipped(true);
    const QImage part = drawn({2, 2}, [&] {
        image->drawAtPoint({0, 0}, NSMakeRect(0, 2, 2, 2), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(part, plain({2, 2}, {0, 0, 2, 2}, Qt::red));
}

TEST(NSImageDrawing, StandsUprightHoweverItAndItsContextAreFlipped) {
    for (const bool imageFlipped : {false, true}) {
        for (const Flipped flipped : {Flipped::No, Flipped::Yes}) {
            const std::shared_ptr<NSImage> image = redCorner();
            image->setFlipped(imageFlipped);
            const QImage result = drawn(
                {4, 4}, 1, [&] { drawWhole(*image, NSMakeRect(0, 0, 4, 4)); }, flipped);
            EXPECT_EQ(result, plain({4, 4}, {0, 2, 2, 2}, Qt::red, Qt::white));
        }
    }
}

TEST(NSImageDrawing, HasNothingBeyondItsEdges) {
    const QImage image = drawn({10, 10}, [] {
        redCorner()->drawInRect(NSMakeRect(0, 0, 10, 10), NSMakeRect(-3, -4, 10, 10), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(inkOf(image), QRect(3, 2, 4, 4));
    EXPECT_EQ(image.copy(3, 2, 4, 4), plain({4, 4}, {0, 2, 2, 2}, Qt::red, Qt::white));
}

TEST(NSImageDrawing, StretchesToItsRectangle) {
    const QImage image = drawn({8, 12}, [] { drawWhole(*redCorner(), NSMakeRect(0, 0, 8, 12)); });
    EXPECT_EQ(inkOf(image), QRect(0, 0, 8, 12));
    EXPECT_EQ(image.pixelColor(0, 11), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(1, 9), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(7, 11), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::white));
}

TEST(NSImageDrawing, ShrinksByTheMeanOfItsPixels) {
    QImage checkered(64, 64, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            checkered.setPixelColor(x, y, (x + y) % 2 == 0 ? Qt::black : Qt::white);
        }
    }
    const QImage image = drawn({8, 8}, [&] { drawWhole(*imageOf(checkered), NSMakeRect(0, 0, 8, 8)); });
    for (int x = 0; x < 8; ++x) {
        EXPECT_NEAR(qRed(image.pixel(x, 4)), 128, 2);
    }
}

TEST(NSImageDrawing, GoesToTheNearestWholePixels) {
    const QImage pixels = noise({4, 4});
    const QImage image = drawn({10, 10}, [&] {
        imageOf(pixels)->drawAtPoint({2.4, 3.4}, NSZeroRect, NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(inkOf(image), QRect(2, 3, 4, 4));
    EXPECT_EQ(image.copy(2, 3, 4, 4), pixels);
}

TEST(NSImageDrawing, JoinsItsNeighboursOnAGridOfHalfPixels) {
    // Three parts side by side at a pixel and a half a point: no gap and no pixel twice.
    const QImage image = drawn({40, 4}, 1.5, [] {
        const std::shared_ptr<NSImage> half = imageOf(plain({13, 4}, {0, 0, 13, 4}, QColor::fromRgbF(1, 0, 0, 0.5F)));
        drawWhole(*half, NSMakeRect(0, 0, 13, 4));
        drawWhole(*half, NSMakeRect(13, 0, 14, 4));
        drawWhole(*half, NSMakeRect(27, 0, 13, 4));
    });
    for (int x = 0; x < 60; ++x) {
        EXPECT_EQ(qAlpha(image.pixel(x, 3)), 128) << x;
    }
}

TEST(NSImageDrawing, HasTheOpacityOfItsFraction) {
    const auto alphaAt = [](double fraction) {
        return qAlpha(drawn({4, 4}, [&] { drawWhole(*redCorner(), NSMakeRect(0, 0, 4, 4), fraction); }).pixel(1, 1));
    };
    EXPECT_NEAR(alphaAt(0.4), 102, 2);
    EXPECT_NEAR(alphaAt(0.39999992), 102, 2);
    EXPECT_EQ(alphaAt(1), 255);
    EXPECT_EQ(alphaAt(2), 255);
    EXPECT_EQ(alphaAt(0), 0);
    EXPECT_EQ(alphaAt(-1), 0);
    EXPECT_EQ(alphaAt(std::nan("")), 0);
}

TEST(NSImageDrawing, UsesItsCompositingOperation) {
    const QImage transparentCorner = plain({2, 2}, {0, 0, 1, 1}, Qt::transparent, Qt::red);
    const auto composited = [&](NSCompositingOperation operation) {
        return drawn(
            {2, 2}, 1,
            [&] {
                imageOf(transparentCorner)->drawAtPoint({0, 0}, NSZeroRect, operation, 1);
            },
            Flipped::No, Qt::blue);
    };
    EXPECT_EQ(composited(NSCompositeCopy), transparentCorner);
    EXPECT_EQ(composited(NSCompositeSourceOver), plain({2, 2}, {0, 0, 1, 1}, Qt::blue, Qt::red));
    EXPECT_EQ(composited(NSCompositeDestinationIn), plain({2, 2}, {0, 0, 1, 1}, Qt::transparent, Qt::blue));
}

TEST(NSImageDrawing, KeepsToTheClip) {
    const QImage image = drawn({4, 4}, [] {
        NSBezierPath::bezierPathWithRect(NSMakeRect(1, 0, 2, 4)).setClip();
        drawWhole(*redCorner(), NSMakeRect(0, 0, 4, 4));
    });
    EXPECT_EQ(inkOf(image), QRect(1, 0, 2, 4));
}

TEST(NSImageDrawing, DrawsNothingWithoutAContextOrAPicture) {
    redCorner()->drawAtPoint({0, 0}, NSZeroRect, NSCompositeSourceOver, 1);
    const double none = std::numeric_limits<double>::quiet_NaN();
    const QImage image = drawn({4, 4}, [&] {
        drawWhole(*NSImage::initWithQImage(QImage()), NSMakeRect(0, 0, 4, 4));
        drawWhole(*NSImage::initWithSize(NSZeroSize), NSMakeRect(0, 0, 4, 4));
        drawWhole(*redCorner(), NSMakeRect(0, 0, 0, 4));
        drawWhole(*redCorner(), NSMakeRect(none, 0, 4, 4));
        redCorner()->drawInRect(NSMakeRect(0, 0, 4, 4), NSMakeRect(1, 1, 0, 2), NSCompositeSourceOver, 1);
        redCorner()->drawInRect(NSMakeRect(0, 0, 4, 4), NSMakeRect(none, 1, 1, 2), NSCompositeSourceOver, 1);
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
}

TEST(NSImageDrawing, DrawsOnlyWhatCanBeSeenOfAnImmenseRectangle) {
    const QImage image = drawn({8, 8}, [] { drawWhole(*redCorner(), NSMakeRect(0, 0, 1e7, 1e7)); });
    EXPECT_EQ(image, plain({8, 8}, {0, 0, 8, 8}, Qt::red));
    const QImage far = drawn({8, 8}, [] { drawWhole(*redCorner(), NSMakeRect(1e300, 1e300, 1e300, 1e300)); });
    EXPECT_TRUE(inkOf(far).isEmpty());
}

TEST(NSImageDrawing, TurnsWithItsContext) {
    QImage pixels(20, 20, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    painter.translate(10, 10);
    painter.rotate(90);
    painter.translate(-10, -10);
    {
        const NSGraphicsContext context(painter, 20, false);
        drawWhole(*redCorner(), NSMakeRect(0, 0, 20, 20));
    }
    painter.end();
    // Clockwise by a quarter: what was at the bottom left is at the top left.
    EXPECT_EQ(pixels.pixelColor(4, 4), QColor(Qt::red));
    EXPECT_EQ(pixels.pixelColor(15, 4), QColor(Qt::white));
    EXPECT_EQ(pixels.pixelColor(4, 15), QColor(Qt::white));
    EXPECT_EQ(pixels.pixelColor(15, 15), QColor(Qt::white));
}

TEST_F(NSImageOfVectors, StaysSharpWhenStretched) {
    for (const int ratio : {1, 2}) {
        const QImage image = drawn({100, 20}, ratio, [&] { drawWhole(*halves(), NSMakeRect(0, 0, 100, 20)); });
        EXPECT_EQ(image, plain(QSize(100, 20) * ratio, QRect(0, 0, 50 * ratio, 20 * ratio), Qt::black));
    }
}

TEST_F(NSImageOfVectors, StaysSharpInPart) {
    const QImage image = drawn({60, 10}, [&] {
        halves()->drawInRect(NSMakeRect(0, 0, 60, 10), NSMakeRect(4, 0, 2, 10), NSCompositeSourceOver, 1);
    });
    EXPECT_EQ(image, plain({60, 10}, {0, 0, 30, 10}, Qt::black));
}

TEST_F(NSImageOfVectors, StaysSharpBeyondWhatCanBeSeen) {
    const QImage image = drawn({100, 4}, [&] { drawWhole(*halves(), NSMakeRect(-100000, -100000, 200100, 200100)); });
    EXPECT_EQ(image, plain({100, 4}, {0, 0, 50, 4}, Qt::black));
}

TEST_F(NSImageOfVectors, IsPaintedOverInMemoryOnly) {
    const std::shared_ptr<NSImage> image = halves();
    const QByteArray before = (static_cast<void>(image->size()), fileBytes());
    paint(*image, 2, NSColor::whiteColor(), NSMakeRect(0, 0, 2, 2));
    EXPECT_EQ(fileBytes(), before);
    QImage expected = plain({20, 20}, {0, 0, 10, 20}, Qt::black);
    QPainter(&expected).fillRect(0, 16, 4, 4, Qt::white);
    EXPECT_EQ(image->imageForScale(2), expected);
    EXPECT_EQ(image->size(), NSMakeSize(10, 10));
}

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

TEST(NSImageSize, BeginsTransparentInTheSizeAskedFor) {
    const std::shared_ptr<NSImage> image = NSImage::initWithSize({4.5, 3});
    EXPECT_TRUE(image->isValid());
    EXPECT_EQ(image->size(), NSMakeSize(4.5, 3));
    EXPECT_EQ(image->imageForScale(2).size(), QSize(9, 6));
    EXPECT_TRUE(inkOf(image->imageForScale(2)).isEmpty());
}

TEST(NSImageSize, StretchesThePictureWhenItScales) {
    const std::shared_ptr<NSImage> image = redCorner();
    image->setScalesWhenResized(true);
    image->setSize({8, 4});
    EXPECT_TRUE(image->scalesWhenResized());
    EXPECT_EQ(image->size(), NSMakeSize(8, 4));
    const QImage pixels = image->imageForScale(1);
    EXPECT_EQ(pixels.size(), QSize(8, 4));
    EXPECT_EQ(pixels.pixelColor(0, 3), QColor(Qt::red));
    EXPECT_EQ(pixels.pixelColor(7, 3), QColor(Qt::white));
    EXPECT_EQ(inkOf(pixels), QRect(0, 0, 8, 4));
}

TEST(NSImageSize, KeepsThePictureAtTheBottomLeftWhenItDoesNotScale) {
    const std::shared_ptr<NSImage> image = redCorner();
    image->setSize({6, 5});
    QImage larger = plain({6, 5}, {0, 1, 4, 4}, Qt::white);
    QPainter(&larger).fillRect(0, 3, 2, 2, Qt::red);
    EXPECT_EQ(image->imageForScale(1), larger);
    image->setSize({3, 1});
    EXPECT_EQ(image->imageForScale(1), plain({3, 1}, {0, 0, 2, 1}, Qt::red, Qt::white));
    image->setScalesWhenResized(true);
    EXPECT_EQ(inkOf(image->imageForScale(1)), QRect(0, 0, 3, 1));
}

TEST(NSImageSize, IsThatOfWhatIsPaintedAfterwards) {
    const std::shared_ptr<NSImage> image = redCorner();
    image->setSize({6, 5});
    paint(*image, 1, NSColor::blackColor(), NSMakeRect(5, 4, 1, 1));
    EXPECT_EQ(image->size(), NSMakeSize(6, 5));
    EXPECT_EQ(image->imageForScale(1).pixelColor(5, 0), QColor(Qt::black));
    EXPECT_EQ(image->imageForScale(1).pixelColor(0, 4), QColor(Qt::red));
}

TEST(NSImageSize, RefusesASizeThatIsNone) {
    const std::shared_ptr<NSImage> image = redCorner();
    testing::internal::CaptureStderr();
    for (const NSSize& size : {NSMakeSize(0, 4), NSMakeSize(4, -1), NSMakeSize(std::nan(""), 4)}) {
        image->setSize(size);
        EXPECT_EQ(image->size(), NSMakeSize(4, 4));
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3);
}

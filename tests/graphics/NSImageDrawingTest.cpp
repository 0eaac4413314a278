// SPDX-License-Identifier: MIT
// Drawing images; NSImageFocusTest has drawing into them, NSImageTest where they come from.
#include "NSImageTestSupport.h"

#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QFile>
#include <QPainter>
#include <QTemporaryDir>

#include <cmath>
#include <limits>
#include <memory>

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

void drawWhole(const NSImage& image, const NSRect& rect, double fraction = 1) {
    image.drawInRect(rect, NSZeroRect, NSCompositeSourceOver, fraction);
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

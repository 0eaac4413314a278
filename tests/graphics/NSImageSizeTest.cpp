// SPDX-License-Identifier: MIT
#include "NSImageTestSupport.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include <gtest/gtest.h>

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

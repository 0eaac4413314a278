// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDProgressIndicator.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

namespace {

class LTHUDProgressIndicatorTest : public AppKitHost {
protected:
    /// The disc by itself, over the panel.
    static QImage disc(NSSize size, double ratio) {
        return drawn(
            size, ratio,
            [&] {
                NSColor::colorWithCalibratedWhite(0.35, 0.35).set();
                NSBezierPath::bezierPathWithOvalInRect({NSZeroPoint, size}).fill();
            },
            Flipped::No, panelColor);
    }

    /// What the base class draws, in the same colours, over `ground`.
    static QImage over(const QImage& ground, const LTHUDProgressIndicator& indicator, double ratio) {
        NSProgressIndicator base(indicator.frame());
        base.setPalette(indicator.palette());
        base.setIndicatorStyle(indicator.indicatorStyle());
        base.setIndeterminate(indicator.isIndeterminate());
        base.setDoubleValue(indicator.doubleValue());
        QImage image = ground;
        image.setDevicePixelRatio(ratio);
        base.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }
};

} // namespace

TEST_F(LTHUDProgressIndicatorTest, ShowsTheBaseClassOnADisc) {
    for (const NSProgressIndicatorStyle style : {NSProgressIndicatorBarStyle, NSProgressIndicatorSpinningStyle}) {
        for (const bool isIndeterminate : {true, false}) {
            LTHUDProgressIndicator indicator(NSMakeRect(0, 0, 60, 32));
            indicator.setIndicatorStyle(style);
            indicator.setIndeterminate(isIndeterminate);
            indicator.setDoubleValue(40);
            for (const double ratio : {1.0, 2.0}) {
                const QImage ground = disc({60, 32}, ratio);
                const QImage picture = pictureOf(indicator, ratio);
                EXPECT_EQ(difference(picture, over(ground, indicator, ratio)), 0) << style << " at " << ratio;
                EXPECT_GE(difference(picture, ground), 30) << "and can be told from it";
            }
        }
    }
}

TEST_F(LTHUDProgressIndicatorTest, HasADiscThatTouchesItsSides) {
    LTHUDProgressIndicator indicator(NSMakeRect(0, 0, 80, 40));
    const QImage picture = pictureOf(indicator, 1);
    EXPECT_EQ(picture.pixelColor(0, 0), panelColor);
    EXPECT_EQ(picture.pixelColor(79, 39), panelColor);
    LTHUDProgressIndicator onBlack(NSMakeRect(0, 0, 80, 40));
    QImage black(80, 40, QImage::Format_ARGB32_Premultiplied);
    black.fill(Qt::black);
    onBlack.render(&black, QPoint(), QRegion(), QWidget::DrawChildren);
    EXPECT_EQ(black.pixelColor(40, 4), QColor(31, 31, 31));
    EXPECT_NE(black.pixelColor(40, 0), QColor(0, 0, 0));
    EXPECT_NE(black.pixelColor(0, 19), QColor(0, 0, 0));
    EXPECT_EQ(black.pixelColor(2, 2), QColor(0, 0, 0));
}

TEST_F(LTHUDProgressIndicatorTest, TakesTheDiscAwayWithItselfWhenItIsNotShown) {
    LTHUDProgressIndicator indicator(NSMakeRect(0, 0, 32, 32));
    indicator.setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    indicator.setDisplayedWhenStopped(false);
    const QImage picture = pictureOf(indicator, 1);
    EXPECT_EQ(difference(picture, plain(picture.size(), {}, panelColor, panelColor)), 0);
    indicator.startAnimation(nullptr);
    EXPECT_NE(difference(pictureOf(indicator, 1), picture), 0);
}

TEST_F(LTHUDProgressIndicatorTest, OutlastsFramesWithoutRoom) {
    for (const NSSize& size : {NSSize{0, 0}, NSSize{-5, 3}, NSSize{1, 1}}) {
        LTHUDProgressIndicator indicator({NSZeroPoint, size});
        QImage surface(10, 10, QImage::Format_ARGB32_Premultiplied);
        for (const auto style : {NSProgressIndicatorBarStyle, NSProgressIndicatorSpinningStyle}) {
            indicator.setIndicatorStyle(style);
            indicator.render(&surface);
        }
        EXPECT_EQ(indicator.frame().size, size);
    }
}

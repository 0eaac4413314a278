// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/HUDImage.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QHBoxLayout>

#include <array>
#include <cmath>

namespace {

class LTHUDButtonTest : public HUDButtonHost {
protected:
    /// Left cap, fill and right cap, the fill by one column of its image, all at `opacity`.
    static QImage body(const QWidget& button, double ratio, const QString& variant, double opacity) {
        QImage image = emptyPanel(button, ratio);
        image.setDevicePixelRatio(1);
        QPainter painter(&image);
        painter.setOpacity(opacity);
        const QImage left = kitPixels(QStringLiteral("HUDButtonLeftCap") + variant, ratio);
        const QImage fill = kitPixels(QStringLiteral("HUDButtonFill") + variant, ratio);
        const QImage right = kitPixels(QStringLiteral("HUDButtonRightCap") + variant, ratio);
        painter.drawImage(0, 0, left);
        for (int x = left.width(); x < image.width() - right.width(); ++x) {
            painter.drawImage(QPoint(x, 0), fill, QRect(fill.width() / 2, 0, 1, fill.height()));
        }
        painter.drawImage(image.width() - right.width(), 0, right);
        return image;
    }

    /// The title over the body that a button without a title shows.
    static QImage withTitle(const QImage& untitled, const LTHUDButton& button, double ratio, const QString& title,
                            double white) {
        QImage image = untitled;
        image.setDevicePixelRatio(ratio);
        QPainter painter(&image);
        {
            const double height = button.bounds().size.height;
            const double width = button.bounds().size.width;
            const NSGraphicsContext context(painter, height, true);
            const NSTextAttributes attributes{.font = NSFont::boldSystemFontOfSize(12),
                                              .foregroundColor = NSColor::colorWithCalibratedWhite(white, 1),
                                              .alignment = NSCenterTextAlignment};
            const double titleHeight = sizeWithAttributes(title, attributes).height;
            drawInRect(title, NSMakeRect(0, height / 2 - titleHeight / 2 - 3, width, titleHeight), attributes);
        }
        painter.end();
        image.setDevicePixelRatio(1);
        return image;
    }
};

constexpr std::array ratios{1.0, 2.0};

} // namespace

TEST_F(LTHUDButtonTest, IsTwoCapsAndAStretchedFill) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    for (const double ratio : ratios) {
        EXPECT_EQ(difference(pictureOf(button, ratio), body(button, ratio, {}, 1)), 0) << ratio;
    }
}

TEST_F(LTHUDButtonTest, ShowsItsHighlightedImagesWhilePressed) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setDown(true);
    for (const double ratio : ratios) {
        EXPECT_EQ(difference(pictureOf(button, ratio), body(button, ratio, QStringLiteral("Highlighted"), 1)), 0)
            << ratio;
    }
}

TEST_F(LTHUDButtonTest, FadesItsBodyToThirtyFivePercentWhenDisabled) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setEnabled(false);
    for (const double ratio : ratios) {
        EXPECT_LE(difference(pictureOf(button, ratio), body(button, ratio, {}, 0.35)), 2) << ratio;
    }
}

TEST_F(LTHUDButtonTest, DrawsItsTitleBoldInWhite) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    for (const double ratio : ratios) {
        button.setTitle({});
        const QImage untitled = pictureOf(button, ratio);
        button.setTitle(QStringLiteral("Remove"));
        EXPECT_EQ(difference(pictureOf(button, ratio), withTitle(untitled, button, ratio, button.title(), 1)), 0);
    }
}

TEST_F(LTHUDButtonTest, DrawsItsTitleInLightGreyWhenDisabled) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setEnabled(false);
    for (const double ratio : ratios) {
        button.setTitle({});
        const QImage untitled = pictureOf(button, ratio);
        button.setTitle(QStringLiteral("Remove"));
        EXPECT_EQ(difference(pictureOf(button, ratio), withTitle(untitled, button, ratio, button.title(), 0.75)), 0);
    }
}

TEST_F(LTHUDButtonTest, DrawsABodyOfTwentySixPointsAndItsTitleInTheMiddleWhenTaller) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 60));
    const QImage untitled = pictureOf(button, 1);
    EXPECT_EQ(difference(untitled, body(button, 1, {}, 1)), 0) << "from the top";
    button.setTitle(QStringLiteral("Remove"));
    EXPECT_EQ(difference(pictureOf(button, 1), withTitle(untitled, button, 1, button.title(), 1)), 0);
}

TEST_F(LTHUDButtonTest, HasItsTitleInTheMiddleOfItsRimAtTheHeightOfAnAlert) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    constexpr double ratio = 4;
    const QImage untitled = pictureOf(button, ratio);
    button.setTitle(QStringLiteral("HHH"));
    const QImage titled = pictureOf(button, ratio);
    QRect ink;
    for (int y = 0; y < titled.height(); ++y) {
        for (int x = 0; x < titled.width(); ++x) {
            if (titled.pixel(x, y) != untitled.pixel(x, y)) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    constexpr double rimHeight = 22;
    EXPECT_NEAR(ink.top() + ink.height() / 2.0, rimHeight / 2 * ratio, ratio);
    EXPECT_NEAR(ink.left() + ink.width() / 2.0, 110 / 2.0 * ratio, ratio);
}

TEST_F(LTHUDButtonTest, ShowsNoSeamAtAnyScale) {
    for (const double width : {96.0, 97.5, 110.25, 211.0}) {
        LTHUDButton button(NSMakeRect(0, 0, width, 28));
        for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
            const QImage picture = pictureOf(button, ratio);
            const int left = static_cast<int>(6 * ratio);
            const int right = static_cast<int>((width - 7) * ratio);
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = left; x < right; ++x) {
                    ASSERT_EQ(picture.pixel(x, y), picture.pixel(left, y)) << width << " at " << ratio << ": " << x;
                }
            }
        }
    }
}

TEST_F(LTHUDButtonTest, LooksDifferentInEachState) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setTitle(QStringLiteral("Remove"));
    const QImage normal = pictureOf(button, 1);
    button.setDown(true);
    const QImage pressed = pictureOf(button, 1);
    button.setDown(false);
    button.setEnabled(false);
    const QImage disabled = pictureOf(button, 1);
    EXPECT_GE(difference(normal, pressed), 30);
    EXPECT_GE(difference(normal, disabled), 30);
}

TEST_F(LTHUDButtonTest, DrawsItsTitleWithoutTheMarksOfTheMnemonic) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setTitle(QStringLiteral("Save && Quit"));
    const QImage marked = pictureOf(button, 1);
    const QImage untitled = [&] {
        button.setTitle({});
        return pictureOf(button, 1);
    }();
    EXPECT_EQ(difference(marked, withTitle(untitled, button, 1, QStringLiteral("Save & Quit"), 1)), 0);
}

TEST_F(LTHUDButtonTest, OutlastsFramesWithoutRoom) {
    for (const NSSize size : {NSSize{20, 10}, NSSize{3, 1}, NSSize{0, 0}, NSSize{-40, -5}}) {
        LTHUDButton button({NSZeroPoint, size});
        button.setTitle(QStringLiteral("Remove"));
        QImage surface(60, 60, QImage::Format_ARGB32_Premultiplied);
        button.render(&surface);
        EXPECT_EQ(button.frame().size, size);
    }
}

TEST_F(LTHUDButtonTest, OutlastsTitlesOfAnyLength) {
    LTHUDButton button(NSMakeRect(0, 0, 110, 28));
    button.setTitle(QString(100'000, u'w'));
    EXPECT_FALSE(pictureOf(button, 1).isNull());
    EXPECT_GT(button.sizeHint().width(), 100'000);
}

TEST_F(LTHUDButtonTest, WantsRoomForItsTitle) {
    LTHUDButton button;
    EXPECT_EQ(button.sizeHint(), QSize(96, 28));
    button.setTitle(QStringLiteral("&Move everything to the archive"));
    const double titleWidth = sizeWithAttributes(QStringLiteral("Move everything to the archive"),
                                                 {.font = NSFont::boldSystemFontOfSize(12), .underlinedCharacter = 0})
                                  .width;
    EXPECT_EQ(button.sizeHint(), QSize(static_cast<int>(std::ceil(titleWidth + 30)), 28));
}

TEST_F(LTHUDButtonTest, WorksInALayout) {
    NSView row;
    auto* const layout = new QHBoxLayout(&row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* const button = new LTHUDButton(&row);
    layout->addWidget(button);
    row.resize(300, 50);
    layout->activate();
    EXPECT_EQ(button->frame(), NSMakeRect(0, 11, 300, 28)) << "as wide as there is room, and no higher than it is";
    EXPECT_EQ(row.minimumSizeHint(), QSize(96, 28));
}

TEST_F(LTHUDButtonTest, ShowsARingOnItsRimWhileItHasTheKeyboard) {
    auto& button = add<LTHUDButton>(NSMakeRect(10, 10, 110, 28));
    show(window);
    button.clearFocus();
    const QImage without = pictureOf(button, 2);
    button.setFocus(Qt::TabFocusReason);
    const QImage with = pictureOf(button, 2);
    const auto differs = [&](int x, int y) { return with.pixel(x, y) != without.pixel(x, y); };
    EXPECT_TRUE(differs(0, 22)) << "its left side";
    EXPECT_TRUE(differs(219, 22)) << "its right side";
    EXPECT_TRUE(differs(110, 0)) << "its top";
    EXPECT_TRUE(differs(110, 43)) << "the bottom of its rim";
    EXPECT_FALSE(differs(110, 44)) << "its shadow";
    EXPECT_FALSE(differs(110, 22)) << "its middle";
    EXPECT_FALSE(differs(0, 0)) << "its corner";
}

TEST_F(LTHUDButtonTest, ShowsNoRingWhenItGotTheKeyboardByAClick) {
    auto& button = add<LTHUDButton>(NSMakeRect(10, 10, 110, 28));
    show(window);
    button.clearFocus();
    const QImage without = pictureOf(button, 1);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(60, 200 - 20));
    ASSERT_TRUE(button.hasFocus());
    EXPECT_EQ(difference(pictureOf(button, 1), without), 0);
}

TEST_F(LTHUDButtonTest, DrawsNothingForAnImageThatTheKitHasNot) {
    const LTHUDButton button(NSMakeRect(0, 0, 20, 20));
    const QImage picture = pictureOfDrawing(button, 1, [&] {
        drawHUDImage(QStringLiteral("HUDNoSuchImage"), NSZeroPoint, button);
        drawHUDImage(QStringLiteral("HUDNoSuchImage"), NSMakeRect(0, 0, 20, 20), button);
    });
    EXPECT_EQ(picture, emptyPanel(button, 1));
}

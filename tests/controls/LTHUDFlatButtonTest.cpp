// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <utility>

namespace {

constexpr int fillGrey = 28; // 0.11
constexpr int edgeGrey = 71; // 0.28

class LTHUDFlatButtonTest : public HUDButtonHost {
protected:
    static int greyAt(const QImage& picture, int x, int y) { return qRed(picture.pixel(x, y)); }
};

} // namespace

TEST_F(LTHUDFlatButtonTest, IsFilledDark) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    for (const int ratio : {1, 2}) {
        const QImage picture = pictureOf(button, ratio);
        EXPECT_EQ(greyAt(picture, 40 * ratio, 12 * ratio), fillGrey);
        EXPECT_EQ(greyAt(picture, 2 * ratio, 12 * ratio), fillGrey);
        EXPECT_EQ(greyAt(picture, 40 * ratio, 22 * ratio), fillGrey);
    }
}

TEST_F(LTHUDFlatButtonTest, LetsThePanelShineThroughWhilePressed) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    button.setDown(true);
    const double expected = 0.55 * 0.11 * 255 + 0.45 * panelColor.red();
    for (const int ratio : {1, 2}) {
        EXPECT_NEAR(greyAt(pictureOf(button, ratio), 40 * ratio, 12 * ratio), expected, 2);
    }
}

TEST_F(LTHUDFlatButtonTest, HasAThinEdgeHalfAPointInside) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    // Half a point at four pixels a point is two pixels, centred two pixels in.
    const QImage picture = pictureOf(button, 4);
    for (const auto& [x, expected] : {std::pair(0, panelColor.red()), {1, edgeGrey}, {2, edgeGrey}, {3, fillGrey}}) {
        EXPECT_NEAR(greyAt(picture, x, 48), expected, 2) << "left " << x;
        EXPECT_NEAR(greyAt(picture, 319 - x, 48), expected, 2) << "right " << x;
        EXPECT_NEAR(greyAt(picture, 160, x), expected, 2) << "top " << x;
        EXPECT_NEAR(greyAt(picture, 160, 95 - x), expected, 2) << "bottom " << x;
    }
}

TEST_F(LTHUDFlatButtonTest, KeepsItsEdgeOpaqueWhilePressed) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    button.setDown(true);
    EXPECT_NEAR(greyAt(pictureOf(button, 4), 1, 48), edgeGrey, 2);
}

TEST_F(LTHUDFlatButtonTest, HasCornersOfFourPoints) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    const QImage picture = pictureOf(button, 8);
    // On the diagonal the edge is 0.5 + 4 (1 - √½) = 1.67 points from both sides.
    EXPECT_EQ(greyAt(picture, 11, 11), panelColor.red());
    EXPECT_NEAR(greyAt(picture, 13, 13), edgeGrey, 12);
    EXPECT_EQ(greyAt(picture, 16, 16), fillGrey);
}

TEST_F(LTHUDFlatButtonTest, LooksTheSameWhenDisabled) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 24));
    button.setTitle(QStringLiteral("Copy"));
    const QImage enabled = pictureOf(button, 1);
    button.setEnabled(false);
    EXPECT_EQ(difference(pictureOf(button, 1), enabled), 0);
}

TEST_F(LTHUDFlatButtonTest, DrawsItsTitleInTheMiddle) {
    LTHUDFlatButton button(NSMakeRect(0, 0, 80, 30));
    const NSTextAttributes attributes{.font = NSFont::systemFontOfSize(11),
                                      .foregroundColor = NSColor::whiteColor(),
                                      .alignment = NSCenterTextAlignment};
    const QString title = QStringLiteral("Copy");
    const double height = sizeWithAttributes(title, attributes).height;
    for (const double ratio : {1.0, 2.0}) {
        const QImage expected = pictureOfDrawing(button, ratio, [&] {
            button.setTitle({});
            button.drawRect(button.bounds());
            drawInRect(title, NSMakeRect(0, 30.0 / 2 - height / 2, 80, height), attributes);
        });
        button.setTitle(title);
        EXPECT_EQ(difference(pictureOf(button, ratio), expected), 0) << ratio;
    }
}

TEST_F(LTHUDFlatButtonTest, OutlastsFramesWithoutRoom) {
    for (const NSSize size : {NSSize{5, 5}, NSSize{1, 1}, NSSize{0.5, 20}, NSSize{0, 0}, NSSize{-4, -5}}) {
        LTHUDFlatButton button({NSZeroPoint, size});
        button.setTitle(QStringLiteral("Copy"));
        QImage surface(60, 60, QImage::Format_ARGB32_Premultiplied);
        button.render(&surface);
        EXPECT_EQ(button.frame().size, size);
    }
}

TEST_F(LTHUDFlatButtonTest, WantsRoomForItsTitle) {
    LTHUDFlatButton button;
    EXPECT_EQ(button.sizeHint().height(), 20);
    const int before = button.sizeHint().width();
    button.setTitle(QStringLiteral("Copy"));
    EXPECT_GT(button.sizeHint().width(), before);
}

TEST_F(LTHUDFlatButtonTest, ShowsARingInsideItsFrameWhileItHasTheKeyboard) {
    auto& button = add<LTHUDFlatButton>(NSMakeRect(10, 10, 80, 24));
    show(window);
    button.setFocus(Qt::BacktabFocusReason);
    const QImage picture = pictureOf(button, 2);
    // White at 0.75 over the panel, at most: a point and a half from each side.
    for (const QPoint point : {QPoint(0, 24), QPoint(159, 24), QPoint(80, 0), QPoint(80, 47)}) {
        EXPECT_GE(greyAt(picture, point.x(), point.y()), 190) << point.x() << "," << point.y();
    }
    EXPECT_EQ(greyAt(picture, 3, 24), fillGrey);
    button.clearFocus();
    EXPECT_EQ(greyAt(pictureOf(button, 1), 2, 12), fillGrey);
    EXPECT_LE(greyAt(pictureOf(button, 1), 0, 12), panelColor.red());
}

TEST_F(LTHUDFlatButtonTest, ShowsNoRingWhereThereIsNoRoomForOne) {
    auto& button = add<LTHUDFlatButton>(NSMakeRect(10, 10, 1, 1));
    show(window);
    const QImage before = pictureOf(button, 2);
    button.setFocus(Qt::BacktabFocusReason);
    ASSERT_TRUE(button.showsFirstResponder());
    EXPECT_EQ(pictureOf(button, 2), before);
}

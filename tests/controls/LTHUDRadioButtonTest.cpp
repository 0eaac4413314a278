// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDRadioButtonCell.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <array>

namespace {

using LTHUDRadioButtonTest = HUDButtonHost;
using LTHUDRadioButtonCellTest = HUDButtonHost;

constexpr std::array radioLooks{Look{false, false, "HUDRadioNormal"}, Look{false, true, "HUDRadioSelectedNormal"},
                                Look{true, false, "HUDRadioPressed"}, Look{true, true, "HUDRadioSelectedPressed"}};

NSTextAttributes titleAttributes() {
    return {.font = NSFont::boldSystemFontOfSize(13), .foregroundColor = NSColor::whiteColor()};
}

} // namespace

TEST_F(LTHUDRadioButtonTest, ShowsTheImageOfItsStateAtItsTopLeft) {
    LTHUDRadioButton radio(NSMakeRect(0, 0, 100, 30));
    radio.setAutoExclusive(false); // so that it can be turned off
    for (const Look& look : radioLooks) {
        radio.setState(look.isOn ? NSOnState : NSOffState);
        radio.setDown(look.isPressed);
        for (const double ratio : {1.0, 2.0}) {
            const QImage expected = pictureOfImage(radio, ratio, QString::fromLatin1(look.name), QPointF(3, 2));
            EXPECT_EQ(difference(pictureOf(radio, ratio), expected), 0) << look.name << " at " << ratio;
        }
    }
}

TEST_F(LTHUDRadioButtonTest, HasFourImagesThatDiffer) {
    expectImagesToDiffer(radioLooks);
}

TEST_F(LTHUDRadioButtonTest, DrawsItsTitleBesideTheCircle) {
    LTHUDRadioButton radio(NSMakeRect(0, 0, 100, 30));
    const QString title = QStringLiteral("Weekly");
    for (const double ratio : {1.0, 2.0}) {
        const QImage expected = pictureOfDrawing(radio, ratio, [&] {
            radio.setTitle({});
            radio.drawRect(radio.bounds());
            drawAtPoint(title, {22, 0}, titleAttributes());
        });
        radio.setTitle(title);
        EXPECT_EQ(difference(pictureOf(radio, ratio), expected), 0) << ratio;
    }
}

TEST_F(LTHUDRadioButtonTest, LooksTheSameWhenDisabled) {
    LTHUDRadioButton radio(NSMakeRect(0, 0, 100, 20));
    radio.setTitle(QStringLiteral("Weekly"));
    const QImage enabled = pictureOf(radio, 1);
    radio.setEnabled(false);
    EXPECT_EQ(difference(pictureOf(radio, 1), enabled), 0);
}

TEST_F(LTHUDRadioButtonTest, HasTheCellOfItsClass) {
    const LTHUDRadioButton radio;
    EXPECT_NE(dynamic_cast<LTHUDRadioButtonCell*>(&radio.cell()), nullptr);
}

TEST_F(LTHUDRadioButtonTest, UsesTheSelectedPressedImageWhilePressedWhenOn) {
    auto& radio = add<LTHUDRadioButton>(NSMakeRect(10, 10, 100, 20));
    add<LTHUDRadioButton>(NSMakeRect(10, 40, 100, 20));
    radio.setState(NSOnState);
    show(window);
    radio.clearFocus();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 200 - 20));
    EXPECT_EQ(difference(pictureOf(radio, 1),
                         pictureOfImage(radio, 1, QStringLiteral("HUDRadioSelectedPressed"), QPointF(3, 2))),
              0);
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 200 - 20));
    EXPECT_EQ(radio.state(), NSOnState);
}

TEST_F(LTHUDRadioButtonTest, IsTheOnlyOneThatIsOnInItsSuperview) {
    auto& first = add<LTHUDRadioButton>(NSMakeRect(10, 60, 100, 20), QStringLiteral("Daily"));
    auto& second = add<LTHUDRadioButton>(NSMakeRect(10, 30, 100, 20), QStringLiteral("Weekly"));
    LTHUDRadioButton elsewhere;
    elsewhere.setState(NSOnState);
    first.setState(NSOnState);
    second.setState(NSOnState);
    EXPECT_EQ(first.state(), NSOffState);
    EXPECT_EQ(elsewhere.state(), NSOnState);
    second.setState(NSOffState);
    EXPECT_EQ(second.state(), NSOnState) << "one stays on";
}

TEST_F(LTHUDRadioButtonTest, LetsTheArrowKeysGoFromOneToTheNext) {
    auto& first = add<LTHUDRadioButton>(NSMakeRect(10, 60, 100, 20), QStringLiteral("Daily"));
    auto& second = add<LTHUDRadioButton>(NSMakeRect(10, 30, 100, 20), QStringLiteral("Weekly"));
    first.setState(NSOnState);
    show(window);
    first.setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.windowHandle(), Qt::Key_Down);
    EXPECT_EQ(window.firstResponder(), &second);
    EXPECT_EQ(second.state(), NSOnState);
    EXPECT_TRUE(second.showsFirstResponder());
    QTest::keyClick(window.windowHandle(), Qt::Key_Up);
    EXPECT_EQ(window.firstResponder(), &first);
    EXPECT_EQ(first.state(), NSOnState);
}

TEST_F(LTHUDRadioButtonTest, WantsRoomForCircleAndTitle) {
    LTHUDRadioButton radio;
    const int before = radio.sizeHint().width();
    EXPECT_GE(before, 22);
    EXPECT_GE(radio.sizeHint().height(), 18);
    radio.setTitle(QStringLiteral("Weekly"));
    EXPECT_NEAR(radio.sizeHint().width(),
                before + sizeWithAttributes(QStringLiteral("Weekly"), titleAttributes()).width, 1);
}

TEST_F(LTHUDRadioButtonTest, ShowsARingInsideItsFrameWhileItHasTheKeyboard) {
    auto& radio = add<LTHUDRadioButton>(NSMakeRect(10, 10, 100, 20));
    show(window);
    radio.clearFocus();
    const QImage without = pictureOf(radio, 1);
    radio.setFocus(Qt::TabFocusReason);
    const QImage with = pictureOf(radio, 1);
    EXPECT_NE(with.pixel(0, 10), without.pixel(0, 10));
    EXPECT_NE(with.pixel(99, 10), without.pixel(99, 10));
    EXPECT_EQ(with.copy(4, 2, 92, 16), without.copy(4, 2, 92, 16)) << "circle and title stay as they are";
}

TEST_F(LTHUDRadioButtonCellTest, DrawsInItsFrameOfAnyView) {
    NSView view;
    LTHUDRadioButtonCell cell;
    cell.setState(NSOnState);
    cell.setTitle(QStringLiteral("Weekly"));
    for (const double ratio : {1.0, 2.0}) {
        const QImage picture = drawn({120, 40}, ratio, [&] { cell.drawWithFrame(NSMakeRect(10, 5, 100, 20), view); });
        QImage expected = drawn({120, 40}, ratio, [] {
            drawAtPoint(QStringLiteral("Weekly"), {32, 5}, titleAttributes());
        });
        QPainter(&expected).drawImage(QPointF(13, 40 - 7 - 14) * ratio,
                                      kitPixels(QStringLiteral("HUDRadioSelectedNormal"), ratio));
        EXPECT_EQ(difference(picture, expected), 0) << ratio;
    }
}

// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDCheckBoxCell.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <array>
#include <limits>
#include <memory>

namespace {

using LTHUDCheckBoxTest = HUDButtonHost;
using LTHUDCheckBoxCellTest = HUDButtonHost;

constexpr std::array boxLooks{Look{false, false, "HUDCheckboxNormal"}, Look{false, true, "HUDCheckboxNormalChecked"},
                              Look{true, false, "HUDCheckboxPressed"}, Look{true, true, "HUDCheckboxPressedChecked"}};

NSTextAttributes whiteBold(double size) {
    return {.font = NSFont::boldSystemFontOfSize(size), .foregroundColor = NSColor::whiteColor()};
}

/// A view that the cells of a table would be drawn in.
class FlippedView : public NSView {
public:
    bool isFlipped() const override { return true; }
};

/// What `cell` draws in `frame` of `view`, at `ratio` pixels a point.
QImage pictureOf(NSButtonCell& cell, const NSRect& frame, ViewCore& view, double ratio) {
    return drawn(
        {60, 40}, ratio, [&] { cell.drawWithFrame(frame, view); }, view.isFlipped() ? Flipped::Yes : Flipped::No);
}

/// Nothing but the image `name`, `x` and `y` points from the top left.
QImage pictureOf(const char* name, double x, double y, double ratio) {
    QImage image = drawn({60, 40}, ratio, [] {});
    QPainter painter(&image);
    painter.drawImage(QPointF(x, y) * ratio, kitPixels(QString::fromLatin1(name), ratio));
    return image;
}

} // namespace

TEST_F(LTHUDCheckBoxTest, ShowsTheImageOfItsStateAtItsBottomLeft) {
    LTHUDCheckBox checkBox(NSMakeRect(0, 0, 100, 30));
    for (const Look& look : boxLooks) {
        checkBox.setState(look.isOn ? NSOnState : NSOffState);
        checkBox.setDown(look.isPressed);
        for (const double ratio : {1.0, 2.0}) {
            const QImage expected =
                pictureOfImage(checkBox, ratio, QString::fromLatin1(look.name), QPointF(2, 30 - 2 - 16));
            EXPECT_EQ(difference(pictureOf(checkBox, ratio), expected), 0) << look.name << " at " << ratio;
        }
    }
}

TEST_F(LTHUDCheckBoxTest, HasFourImagesThatDiffer) {
    expectImagesToDiffer(boxLooks);
}

TEST_F(LTHUDCheckBoxTest, LooksTheSameWhenDisabled) {
    LTHUDCheckBox checkBox(NSMakeRect(0, 0, 100, 20));
    checkBox.setTitle(QStringLiteral("Ask"));
    const QImage enabled = pictureOf(checkBox, 1);
    checkBox.setEnabled(false);
    EXPECT_EQ(difference(pictureOf(checkBox, 1), enabled), 0);
}

TEST_F(LTHUDCheckBoxTest, DrawsItsTitleBesideTheBox) {
    LTHUDCheckBox checkBox(NSMakeRect(0, 0, 100, 30));
    const QString title = QStringLiteral("Ask again");
    for (const double ratio : {1.0, 2.0}) {
        const QImage expected = pictureOfDrawing(checkBox, ratio, [&] {
            checkBox.setTitle({});
            checkBox.drawRect(checkBox.bounds());
            drawAtPoint(title, {21, 2}, whiteBold(13));
        });
        checkBox.setTitle(title);
        EXPECT_EQ(difference(pictureOf(checkBox, ratio), expected), 0) << ratio;
    }
}

TEST_F(LTHUDCheckBoxTest, MayHaveCellsOfASubclass) {
    class BadgeBox : public LTHUDCheckBox {
    public:
        NSCellClass cellClass() const override { return NSCellClassOf<LTHUDCheckBoxCell>(); }
    };
    const BadgeBox box;
    EXPECT_NE(dynamic_cast<LTHUDCheckBoxCell*>(&box.cell()), nullptr);
}

TEST_F(LTHUDCheckBoxTest, IsNotFlipped) {
    EXPECT_FALSE(LTHUDCheckBox().isFlipped());
}

TEST_F(LTHUDCheckBoxTest, TakesItsFontFromTheControlSize) {
    LTHUDCheckBox checkBox;
    checkBox.setTitle(QStringLiteral("Ask"));
    EXPECT_EQ(checkBox.attributedTitle(), NSAttributedString(QStringLiteral("Ask"), whiteBold(13)));
    checkBox.cell().setControlSize(NSSmallControlSize);
    EXPECT_EQ(checkBox.attributedTitle().attributes().font.pointSize(), 13) << "the title is as it was set";
    checkBox.setTitle(QStringLiteral("Ask"));
    EXPECT_EQ(checkBox.attributedTitle(), NSAttributedString(QStringLiteral("Ask"), whiteBold(11)));
    checkBox.cell().setControlSize(NSMiniControlSize);
    checkBox.awakeFromNib();
    EXPECT_EQ(checkBox.attributedTitle(), NSAttributedString(QStringLiteral("Ask"), whiteBold(9)));
}

TEST_F(LTHUDCheckBoxTest, GivesATitleOfAFormItsLooksWhenItAwakes) {
    LTHUDCheckBox checkBox;
    checkBox.setAttributedTitle(NSAttributedString(QStringLiteral("Ask")));
    ASSERT_EQ(checkBox.attributedTitle().attributes().foregroundColor, NSColor::blackColor());
    checkBox.awakeFromNib();
    EXPECT_EQ(checkBox.attributedTitle(), NSAttributedString(QStringLiteral("Ask"), whiteBold(13)));
    checkBox.setProperty("text", QStringLiteral("Other"));
    EXPECT_EQ(checkBox.attributedTitle(), NSAttributedString(QStringLiteral("Other"), whiteBold(13)));
}

TEST_F(LTHUDCheckBoxTest, IsToggledByTheSpaceBarAndTheMouse) {
    auto& checkBox = add<LTHUDCheckBox>(NSMakeRect(10, 10, 100, 20), QStringLiteral("&Ask"));
    show(window);
    checkBox.setFocus(Qt::TabFocusReason);
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(checkBox.state(), NSOnState);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(60, 200 - 20));
    EXPECT_EQ(checkBox.state(), NSOffState);
    QTest::keyClick(window.windowHandle(), Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return checkBox.state() == NSOnState; }));
}

TEST_F(LTHUDCheckBoxTest, LooksPressedWhileTheMouseIsDownOnIt) {
    auto& checkBox = add<LTHUDCheckBox>(NSMakeRect(10, 10, 100, 20));
    show(window);
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 200 - 20));
    EXPECT_TRUE(checkBox.cell().isHighlighted());
    EXPECT_EQ(checkBox.state(), NSOffState);
    QTest::mouseMove(window.windowHandle(), QPoint(250, 20));
    EXPECT_FALSE(checkBox.cell().isHighlighted());
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(250, 20));
    EXPECT_EQ(checkBox.state(), NSOffState);
}

TEST_F(LTHUDCheckBoxTest, WantsRoomForBoxAndTitle) {
    LTHUDCheckBox checkBox;
    EXPECT_EQ(checkBox.sizeHint().height(), 20);
    const int before = checkBox.sizeHint().width();
    EXPECT_GE(before, 21);
    const QString title = QStringLiteral("Do not ask again");
    checkBox.setTitle(title);
    EXPECT_NEAR(checkBox.sizeHint().width(), before + sizeWithAttributes(title, whiteBold(13)).width, 1);
}

TEST_F(LTHUDCheckBoxTest, ShowsARingInsideItsFrameWhileItHasTheKeyboard) {
    auto& checkBox = add<LTHUDCheckBox>(NSMakeRect(10, 10, 100, 20));
    show(window);
    checkBox.clearFocus();
    const QImage without = pictureOf(checkBox, 1);
    checkBox.setFocus(Qt::TabFocusReason);
    const QImage with = pictureOf(checkBox, 1);
    EXPECT_NE(with.pixel(0, 10), without.pixel(0, 10));
    EXPECT_NE(with.pixel(99, 10), without.pixel(99, 10));
    EXPECT_EQ(with.copy(4, 2, 92, 16), without.copy(4, 2, 92, 16)) << "box and title stay as they are";
}

TEST_F(LTHUDCheckBoxCellTest, ShowsTheImageOfItsState) {
    FlippedView view;
    for (const Look& look : boxLooks) {
        LTHUDCheckBoxCell cell;
        cell.setIntValue(look.isOn ? 1 : 0);
        cell.setHighlighted(look.isPressed);
        for (const double ratio : {1.0, 2.0}) {
            EXPECT_EQ(
                difference(pictureOf(cell, NSMakeRect(10, 5, 20, 20), view, ratio), pictureOf(look.name, 12, 7, ratio)),
                0)
                << look.name << " at " << ratio;
        }
    }
}

TEST_F(LTHUDCheckBoxCellTest, DrawsFromTheBottomOfAViewThatIsNotFlipped) {
    NSView view;
    LTHUDCheckBoxCell cell;
    EXPECT_EQ(difference(pictureOf(cell, NSMakeRect(10, 5, 20, 20), view, 1),
                         pictureOf("HUDCheckboxNormal", 12, 40 - 7 - 16, 1)),
              0);
}

TEST_F(LTHUDCheckBoxCellTest, ShowsWhatIsInstalledAlreadyAsABadge) {
    FlippedView view;
    LTHUDCheckBoxCell cell;
    cell.setIntValue(-1);
    EXPECT_FALSE(cell.isEnabled());
    EXPECT_EQ(cell.realValue(), -1);
    for (const double ratio : {1.0, 2.0}) {
        const QImage picture = pictureOf(cell, NSMakeRect(0, 0, 20, 20), view, ratio);
        EXPECT_EQ(difference(picture, pictureOf("AlreadyInstalled", 2, 2, ratio)), 0) << ratio;
    }
    cell.setHighlighted(true);
    EXPECT_EQ(difference(pictureOf(cell, NSMakeRect(0, 0, 20, 20), view, 1), pictureOf("AlreadyInstalled", 2, 2, 1)), 0)
        << "pressed, too";
}

TEST_F(LTHUDCheckBoxCellTest, HasABadgeUnlikeAnyCheckBox) {
    for (const Look& look : boxLooks) {
        EXPECT_GE(
            difference(kitPixels(QStringLiteral("AlreadyInstalled"), 1), kitPixels(QString::fromLatin1(look.name), 1)),
            60);
    }
}

TEST_F(LTHUDCheckBoxCellTest, IsACheckBoxAgainWithAnyOtherValue) {
    FlippedView view;
    LTHUDCheckBoxCell cell;
    cell.setIntValue(-1);
    cell.setIntValue(0);
    EXPECT_TRUE(cell.isEnabled());
    EXPECT_EQ(cell.state(), NSOffState);
    EXPECT_EQ(difference(pictureOf(cell, NSZeroRect, view, 1), pictureOf("HUDCheckboxNormal", 2, 2, 1)), 0);
    cell.setIntValue(-1);
    cell.setIntValue(1);
    EXPECT_TRUE(cell.isEnabled());
    EXPECT_EQ(cell.state(), NSOnState);
    EXPECT_EQ(difference(pictureOf(cell, NSZeroRect, view, 1), pictureOf("HUDCheckboxNormalChecked", 2, 2, 1)), 0);
}

TEST_F(LTHUDCheckBoxCellTest, TakesOnlyMinusOneForTheBadge) {
    FlippedView view;
    for (const int value : {-2, 2, 255, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        LTHUDCheckBoxCell cell;
        cell.setIntValue(value);
        EXPECT_TRUE(cell.isEnabled()) << value;
        EXPECT_EQ(cell.realValue(), value);
        EXPECT_EQ(cell.state(), NSOnState) << value;
        EXPECT_EQ(difference(pictureOf(cell, NSZeroRect, view, 1), pictureOf("HUDCheckboxNormalChecked", 2, 2, 1)), 0)
            << value;
    }
}

TEST_F(LTHUDCheckBoxCellTest, CannotBeToggledWhileItShowsTheBadge) {
    LTHUDCheckBoxCell cell;
    cell.setIntValue(-1);
    const int state = cell.state();
    cell.performClick(nullptr);
    EXPECT_EQ(cell.state(), state);
    cell.setIntValue(0);
    cell.performClick(nullptr);
    EXPECT_EQ(cell.state(), NSOnState);
}

TEST_F(LTHUDCheckBoxCellTest, DisablesTheButtonThatItDraws) {
    LTHUDCheckBox button(NSMakeRect(0, 0, 20, 20));
    button.setCell(std::make_unique<LTHUDCheckBoxCell>());
    button.cell().setIntValue(-1);
    EXPECT_FALSE(button.isEnabled());
    button.cell().setIntValue(1);
    EXPECT_TRUE(button.isEnabled());
    EXPECT_EQ(button.state(), NSOnState);
}

TEST_F(LTHUDCheckBoxCellTest, DrawsNoTitle) {
    FlippedView view;
    LTHUDCheckBoxCell cell;
    cell.setTitle(QStringLiteral("Ask"));
    EXPECT_EQ(difference(pictureOf(cell, NSZeroRect, view, 1), pictureOf("HUDCheckboxNormal", 2, 2, 1)), 0);
}

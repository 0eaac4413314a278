// SPDX-License-Identifier: MIT
#include "HUDFieldTestSupport.h"

#include <QAccessible>

namespace {

constexpr double shadowBlurRadius = 1;

class LTHUDSecureTextFieldTest : public HUDFieldTest<LTHUDSecureTextField> {};

class LTHUDSecureTextFieldAtTwoPixels : public TwoPixelsAPoint, public LTHUDSecureTextFieldTest {};

} // namespace

TEST_F(LTHUDSecureTextFieldTest, HasBoundsMovedToTheRight) {
    EXPECT_EQ(field.bounds(), NSMakeRect(4, 0, 200, 22));
    field.setFrame(NSMakeRect(3, 5, 61.5, 19.25));
    EXPECT_EQ(field.bounds(), NSMakeRect(4, 0, 61.5, 19.25));
    showWindow();
    EXPECT_EQ(field.bounds(), NSMakeRect(4, 0, 61.5, 19.25)) << "after drawing too";
}

TEST_F(LTHUDSecureTextFieldTest, HasNoFocusRing) {
    EXPECT_EQ(field.focusRingType(), NSFocusRingTypeNone);
    EXPECT_EQ(field.focusRingType(), 1);
}

TEST_F(LTHUDSecureTextFieldTest, LetsNobodyReadWhatWasTyped) {
    showFocused();
    type(QStringLiteral("secret"));
    EXPECT_EQ(field.stringValue(), QStringLiteral("secret"));
    EXPECT_EQ(field.displayText().count(QLatin1Char('s')), 0);
    copyToClipboard(QStringLiteral("before"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&field);
    EXPECT_TRUE(accessible->state().passwordEdit);
    EXPECT_FALSE(accessible->text(QAccessible::Value).contains(QLatin1Char('s')));
    EXPECT_TRUE(field.inputMethodHints().testFlag(Qt::ImhHiddenText));
}

TEST_F(LTHUDSecureTextFieldTest, DrawsItsWellOnItsTrueBounds) {
    showWindow();
    EXPECT_LE(difference(picture(), well(shadowBlurRadius)), 2);
}

TEST_F(LTHUDSecureTextFieldAtTwoPixels, DrawsItsWellOnItsTrueBounds) {
    showWindow();
    EXPECT_LE(difference(picture(), well(shadowBlurRadius)), 2);
}

TEST_F(LTHUDSecureTextFieldTest, ShowsItsPlaceholderWhileEmptyAndWithoutTheKeyboard) {
    const QString placeholder = QStringLiteral("Password");
    const QImage withPlaceholder = well(shadowBlurRadius, [&] { drawPlaceholder(placeholder, field.frame().size); });
    showWindow();
    field.setPlaceholderString(placeholder);
    EXPECT_LE(difference(picture(), withPlaceholder), 2);
    window.makeFirstResponder(&field);
    EXPECT_EQ(lightPixels(picture()).width(), 1) << "the caret alone";
}

TEST_F(LTHUDSecureTextFieldTest, DrawsWhiteDotsInTheMiddle) {
    field.setStringValue(QStringLiteral("secret"));
    for (const double height : {22, 30, 41}) {
        field.setFrame(NSMakeRect(10, 60, 200, height));
        showWindow();
        const QImage image = picture();
        const QRect ink = lightPixels(image);
        EXPECT_NEAR(ink.top(), height - 1 - ink.bottom(), 2) << height;
        EXPECT_NEAR(ink.left(), 10, 1);
        EXPECT_EQ(image.pixelColor(ink.left() + 4, ink.center().y()), QColor(Qt::white));
    }
}

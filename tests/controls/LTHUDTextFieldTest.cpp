// SPDX-License-Identifier: MIT
#include "HUDFieldTestSupport.h"

#include <QInputMethodEvent>
#include <QScreen>

namespace {

constexpr double plainShadowBlurRadius = 2;

class LTHUDTextFieldTest : public HUDFieldTest<LTHUDTextField> {};

class LTHUDTextFieldAtTwoPixels : public TwoPixelsAPoint, public LTHUDTextFieldTest {};

} // namespace

TEST_F(LTHUDTextFieldTest, HasBoundsMovedUpwards) {
    EXPECT_EQ(field.bounds(), NSMakeRect(0, 4, 200, 22));
    field.setFrame(NSMakeRect(3, 5, 61.5, 19.25));
    EXPECT_EQ(field.bounds(), NSMakeRect(0, 4, 61.5, 19.25));
    showWindow();
    EXPECT_EQ(field.bounds(), NSMakeRect(0, 4, 61.5, 19.25)) << "after drawing too";
}

TEST_F(LTHUDTextFieldTest, HasAWhiteCaret) {
    EXPECT_EQ(field.insertionPointColor(), NSColor::whiteColor());
}

TEST_F(LTHUDTextFieldTest, PastesOnCommandVWhateverIsHeldBesides) {
    showFocused();
    copyToClipboard(QStringLiteral("text"));
    press(Qt::Key_V, Qt::ControlModifier);
    press(Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(field.stringValue(), QStringLiteral("texttext"));
    field.paste(nullptr);
    EXPECT_EQ(field.stringValue(), QStringLiteral("texttexttext"));
}

TEST_F(LTHUDTextFieldTest, UndoesAPasteOfLinesInOneStep) {
    showFocused();
    copyToClipboard(QStringLiteral("x\r\ny"));
    type(QStringLiteral("ab"));
    press(Qt::Key_V, Qt::ControlModifier);
    type(QStringLiteral("c"));
    EXPECT_EQ(field.stringValue(), QStringLiteral("abx yc"));
    field.undo();
    EXPECT_EQ(field.stringValue(), QStringLiteral("abx y"));
    field.undo();
    EXPECT_EQ(field.stringValue(), QStringLiteral("ab"));
    EXPECT_EQ(field.cursorPosition(), 2);
    field.redo();
    EXPECT_EQ(field.stringValue(), QStringLiteral("abx y"));
}

TEST_F(LTHUDTextFieldTest, UndoesAPasteOverASelection) {
    showFocused();
    copyToClipboard(QStringLiteral("x\ny"));
    type(QStringLiteral("abcd"));
    field.setSelection(1, 2);
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(field.stringValue(), QStringLiteral("ax yd"));
    field.undo();
    EXPECT_EQ(field.stringValue(), QStringLiteral("abcd"));
}

TEST_F(LTHUDTextFieldTest, DrawsItsWellOnItsTrueBounds) {
    showWindow();
    EXPECT_LE(difference(picture(), well(plainShadowBlurRadius)), 2);
    EXPECT_EQ(picture().pixelColor(100, 11), QColor(66, 66, 66)) << "white 0.26";
}

TEST_F(LTHUDTextFieldAtTwoPixels, DrawsItsWellOnItsTrueBounds) {
    showWindow();
    EXPECT_LE(difference(picture(), well(plainShadowBlurRadius)), 2);
}

TEST_F(LTHUDTextFieldTest, ShowsItsPlaceholderWhileEmptyAndWithoutTheKeyboard) {
    const QString placeholder = QStringLiteral("Name of the snippet");
    const QImage empty = well(plainShadowBlurRadius);
    const QImage withPlaceholder =
        well(plainShadowBlurRadius, [&] { drawPlaceholder(placeholder, field.frame().size); });
    ASSERT_GT(difference(empty, withPlaceholder), 50);
    showWindow();
    field.setPlaceholderString(placeholder);
    EXPECT_LE(difference(picture(), withPlaceholder), 2);
    EXPECT_EQ(lightPixels(picture()).left(), 10 + 1) << "10 points from the left, and a P has a point before it";
    window.makeFirstResponder(&field);
    EXPECT_EQ(lightPixels(picture()).width(), 1) << "the caret alone";
    window.makeFirstResponder(&other);
    EXPECT_LE(difference(picture(), withPlaceholder), 2);
    field.setStringValue(QStringLiteral(" "));
    EXPECT_LE(difference(picture(), empty), 2);
    field.setStringValue(QString());
    field.setPlaceholderString(QString());
    EXPECT_LE(difference(picture(), empty), 2);
}

TEST_F(LTHUDTextFieldAtTwoPixels, ShowsItsPlaceholder) {
    const QString placeholder = QStringLiteral("Name of the snippet");
    showWindow();
    field.setPlaceholderString(placeholder);
    EXPECT_LE(
        difference(picture(), well(plainShadowBlurRadius, [&] { drawPlaceholder(placeholder, field.frame().size); })),
        2);
}

TEST_F(LTHUDTextFieldTest, ShowsNoPlaceholderWhileTextIsComposed) {
    showFocused();
    field.setPlaceholderString(QStringLiteral("Name"));
    QInputMethodEvent composing(QStringLiteral("ni"), {});
    QCoreApplication::sendEvent(&field, &composing);
    ASSERT_TRUE(field.text().isEmpty());
    const QRect ink = lightPixels(picture());
    EXPECT_LT(ink.right(), 10 + 20) << "what is composed, and no more";
    EXPECT_GT(ink.width(), 5);
}

TEST_F(LTHUDTextFieldTest, DrawsWhiteTextWithTheShadowOfItsWell) {
    const QString text = QStringLiteral("White");
    field.setFont(NSFont::boldSystemFontOfSize(11));
    field.setStringValue(text);
    showWindow();
    const QImage drawnText = picture();
    NSTextAttributes attributes;
    attributes.font = NSFont::boldSystemFontOfSize(11);
    attributes.foregroundColor = NSColor::whiteColor();
    const NSSize size = sizeWithAttributes(text, attributes);
    const QImage expected =
        well(plainShadowBlurRadius, [&] { drawAtPoint(text, NSMakePoint(10, 22 - 4 - size.height), attributes); });
    EXPECT_EQ(lightPixels(drawnText), lightPixels(expected)) << "10 from the left, 4 from the top";
    // Qt mixes the edges of signs with what is below a little otherwise than the text's own layer is mixed with it.
    EXPECT_LE(difference(drawnText, expected), 24);
}

TEST_F(LTHUDTextFieldTest, HasBoldTextOfElevenPointsInTheMiddleOfTwentyTwo) {
    field.setFont(NSFont::boldSystemFontOfSize(11));
    field.setStringValue(QStringLiteral("HEX"));
    showWindow();
    const QRect ink = lightPixels(picture());
    EXPECT_NEAR(ink.top(), 22 - 1 - ink.bottom(), 1);
}

TEST_F(LTHUDTextFieldTest, DrawsItsCaretWhiteWithAShadow) {
    showFocused();
    const QImage image = picture();
    EXPECT_EQ(image.pixelColor(10, 11), QColor(Qt::white));
    EXPECT_LT(image.pixelColor(9, 11).red(), 60);
    EXPECT_LT(image.pixelColor(11, 11).red(), 60);
    EXPECT_EQ(image.pixelColor(15, 11), QColor(66, 66, 66));
}

TEST_F(LTHUDTextFieldTest, DrawsItsSelectionSoThatItsTextCanBeRead) {
    field.setStringValue(QStringLiteral("mmmmmm"));
    showFocused();
    field.selectAll();
    const QImage image = picture();
    const QRect text = lightPixels(image);
    const QColor ground = image.pixelColor(text.left() + 20, 6);
    EXPECT_GT(ground.red(), 90) << "stands out from the well";
    EXPECT_LT(ground.red(), 128) << "under white";
    EXPECT_EQ(image.pixelColor(text.right() + 5, 6), QColor(66, 66, 66));
}

TEST_F(LTHUDTextFieldTest, DrawsTextPalerWhileDisabled) {
    field.setStringValue(QStringLiteral("mmmmmm"));
    field.setPlaceholderString(QStringLiteral("Name"));
    showWindow();
    ASSERT_FALSE(lightPixels(picture()).isEmpty());
    field.setEnabled(false);
    const QImage paler = picture();
    EXPECT_TRUE(lightPixels(paler).isEmpty());
    EXPECT_GT(difference(paler, well(plainShadowBlurRadius)), 40) << "but it is there";
    field.setStringValue(QString());
    EXPECT_TRUE(lightPixels(picture()).isEmpty());
    EXPECT_GT(difference(picture(), well(plainShadowBlurRadius)), 20);
}

TEST_F(LTHUDTextFieldTest, LeavesNothingOfItsCaretBehind) {
    // What lies in the window's pixels in each phase of the blinking is what would be drawn anew.
    QApplication::setCursorFlashTime(200);
    showFocused();
    const QRect place(field.mapTo(&window, QPoint()), field.size());
    const auto shown = [&] { return window.screen()->grabWindow(window.winId()).toImage().copy(place); };
    const auto anew = [&] { return window.grab().toImage().copy(place); };
    for (const bool caretIsThere : {true, false, true, false}) {
        EXPECT_TRUE(QTest::qWaitFor([&] {
            const QImage pixels = shown().convertToFormat(QImage::Format_RGB32);
            return (pixels.pixelColor(10, 11) == QColor(Qt::white)) == caretIsThere &&
                   difference(pixels, anew().convertToFormat(QImage::Format_RGB32)) == 0;
        })) << caretIsThere;
    }
}

TEST_F(LTHUDTextFieldTest, IsNotDrawnForEverWhereAPartOfItCannotBeSeen) {
    field.setFrame(NSMakeRect(-5, 80, 200, 22));
    QApplication::setCursorFlashTime(200);
    showFocused();
    const int before = field.drawings;
    ASSERT_TRUE(QTest::qWaitFor([&] { return field.drawings > before; })) << "it blinks";
    const int blinking = field.drawings;
    for (int round = 0; round < 20; ++round) {
        settle();
    }
    EXPECT_LT(field.drawings, blinking + 15);
}

// SPDX-License-Identifier: MIT
#include "LTHUDAlertTestSupport.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// How wide `text` is in one line.
NSSize sizeOf(const QString& text, const NSFont& font) {
    return sizeWithAttributes(text, {.font = font});
}

double buttonWidth(const QString& title) {
    return std::max(96.0, sizeOf(title, NSFont::systemFontOfSize(13)).width + 30);
}

/// Words until they take up more than `lines` lines, less one, of the alert's width.
QString textOfLines(int lines, const NSFont& font) {
    QString text = QStringLiteral("Word");
    while (sizeOf(text, font).width <= (lines - 1) * 358.0 + 20) {
        text += QStringLiteral(" word");
    }
    return text;
}

} // namespace

TEST_F(LTHUDAlertTest, IsMadeOfAPanelTwoTextsAndThreeButtons) {
    const LTHUDAlert alert;
    const LTHUDWindow& window = alert.window();
    EXPECT_EQ(window.frame(), NSMakeRect(0, 0, 422, 155));
    EXPECT_EQ(window.styleMask(), 0U);
    EXPECT_EQ(window.level(), 8);
    EXPECT_TRUE(window.hasShadow());
    EXPECT_EQ(alert.messageField().frame(), NSMakeRect(84, 0, 318, 20));
    EXPECT_EQ(alert.messageField().font(), NSFont::boldSystemFontOfSize(16));
    EXPECT_FALSE(alert.messageField().isSelectable());
    EXPECT_EQ(alert.informativeTextField().frame(), NSMakeRect(148, 0, 318, 20));
    EXPECT_EQ(alert.informativeTextField().font(), NSFont::systemFontOfSize(11));
    EXPECT_TRUE(alert.informativeTextField().isSelectable());
    for (const NSButton* button :
         {static_cast<NSButton*>(&alert.defaultButtonControl()),
          static_cast<NSButton*>(&alert.alternateButtonControl()), &alert.otherButtonControl()}) {
        EXPECT_EQ(button->frame(), NSMakeRect(0, 0, 100, 18));
        EXPECT_TRUE(dynamic_cast<const LTHUDButton*>(button));
    }
    EXPECT_EQ(alert.defaultButtonControl().tag(), 1);
    EXPECT_EQ(alert.alternateButtonControl().tag(), 0);
    EXPECT_EQ(alert.otherButtonControl().tag(), -1);
    EXPECT_EQ(alert.inputField(), nullptr);
    EXPECT_THAT(ViewCore::of(window.contentView())->subviews(),
                ElementsAre(&alert.messageField(), &alert.informativeTextField(), &alert.defaultButtonControl(),
                            &alert.alternateButtonControl(), &alert.otherButtonControl()));
}

TEST_F(LTHUDAlertTest, WithoutTextsIsAsLowAsItMayBe) {
    LTHUDAlert alert;
    alert.size(0);
    EXPECT_EQ(alert.window().frame().size, (NSSize{422, 148}));
    EXPECT_EQ(alert.messageField().frame(), NSMakeRect(32, 148 - 30, 358, 0));
    EXPECT_EQ(alert.informativeTextField().frame(), NSMakeRect(32, 148 - 30 - 7, 358, 0));
    alert.size(1);
    EXPECT_EQ(alert.window().frame().size, (NSSize{422, 148}));
    EXPECT_EQ(alert.messageField().frame().origin.y, 148 - 30 + 20);
}

TEST_F(LTHUDAlertTest, GrowsByWholeLinesOfItsTexts) {
    const QString message = textOfLines(3, NSFont::boldSystemFontOfSize(16));
    const QString informative = textOfLines(5, NSFont::systemFontOfSize(11));
    const auto alert = LTHUDAlert::alertWithMessageText(message, QStringLiteral("OK"), {}, {}, informative);
    const NSSize one = sizeOf(message, NSFont::boldSystemFontOfSize(16));
    const NSSize other = sizeOf(informative, NSFont::systemFontOfSize(11));
    ASSERT_EQ(std::ceil(one.width / 358), 3);
    ASSERT_EQ(std::ceil(other.width / 358), 5);
    const auto messageHeight = static_cast<double>(static_cast<float>(3 * one.height));
    const auto informativeHeight = static_cast<double>(static_cast<float>(5 * other.height));
    for (const int sheet : {0, 1}) {
        alert->size(sheet);
        const double height = messageHeight + 68 + informativeHeight - 20 * sheet;
        EXPECT_EQ(alert->window().frame().size, (NSSize{422, height})) << sheet;
        const double messageY = height - messageHeight - 30 + 20 * sheet;
        EXPECT_EQ(alert->messageField().frame(), NSMakeRect(32, messageY, 358, messageHeight)) << sheet;
        EXPECT_EQ(alert->informativeTextField().frame(),
                  NSMakeRect(32, messageY - informativeHeight - 7, 358, informativeHeight))
            << sheet;
    }
}

TEST_F(LTHUDAlertTest, ATextOfExactlyOneLinesWidthIsOneLine) {
    const auto alert = makeAlert();
    alert->size();
    const double lineHeight = sizeOf(QStringLiteral("Remove it?"), NSFont::boldSystemFontOfSize(16)).height;
    EXPECT_EQ(alert->messageField().frame().size.height, static_cast<double>(static_cast<float>(lineHeight)));
}

TEST_F(LTHUDAlertTest, IsCentredOnTheScreen) {
    const auto alert = makeAlert();
    alert->size();
    const NSRect laidOut = alert->window().frame();
    alert->window().center();
    EXPECT_EQ(alert->window().frame(), laidOut);
    EXPECT_NEAR(NSMidX(laidOut), NSMidX(NSScreen::mainScreen().visibleFrame()), 0.5);
}

TEST_F(LTHUDAlertTest, ShortTitlesGetNinetySixPoints) {
    const auto alert =
        LTHUDAlert::alertWithMessageText({}, QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), {});
    alert->size();
    EXPECT_EQ(alert->defaultButtonControl().frame(), NSMakeRect(311, 2, 96, 28));
    EXPECT_EQ(alert->alternateButtonControl().frame(), NSMakeRect(215, 2, 96, 28));
    EXPECT_EQ(alert->otherButtonControl().frame(), NSMakeRect(15, 2, 96, 28));
}

TEST_F(LTHUDAlertTest, LongTitlesGetThirtyPointsMoreThanTheyMeasure) {
    const QString longer = QStringLiteral("Replace every one");
    const QString longest = QStringLiteral("Keep all of them anyway");
    const auto alert = LTHUDAlert::alertWithMessageText({}, longer, longest, longer, {});
    alert->size();
    const double wide = buttonWidth(longer);
    const double wider = buttonWidth(longest);
    ASSERT_GT(wide, 96);
    EXPECT_EQ(alert->defaultButtonControl().frame(), NSMakeRect(407 - wide, 2, wide, 28));
    EXPECT_EQ(alert->alternateButtonControl().frame(), NSMakeRect(407 - wide - wider, 2, wider, 28));
    EXPECT_EQ(alert->otherButtonControl().frame(), NSMakeRect(15, 2, wide, 28));
}

TEST_F(LTHUDAlertTest, AMnemonicsMarkTakesNoRoom) {
    const QString title = QStringLiteral("Replace every one");
    const auto alert = LTHUDAlert::alertWithMessageText({}, QLatin1Char('&') + title, {}, {}, {});
    alert->size();
    EXPECT_EQ(alert->defaultButtonControl().frame().size.width, buttonWidth(title));
}

TEST_F(LTHUDAlertTest, HidesButtonsWithoutATitleAndMovesNoOther) {
    const auto alert =
        LTHUDAlert::alertWithMessageText({}, QStringLiteral("OK"), QString(), QString(), QStringLiteral("Text"));
    alert->size();
    EXPECT_TRUE(alert->alternateButtonControl().isHidden());
    EXPECT_TRUE(alert->otherButtonControl().isHidden());
    EXPECT_FALSE(alert->defaultButtonControl().isHidden());
    EXPECT_EQ(alert->defaultButtonControl().frame(), NSMakeRect(311, 2, 96, 28));
    EXPECT_EQ(alert->otherButtonControl().frame(), NSMakeRect(15, 2, 96, 28));
    alert->setAlternateButtonTitle(QStringLiteral("Cancel"));
    alert->size();
    EXPECT_FALSE(alert->alternateButtonControl().isHidden());
}

TEST_F(LTHUDAlertTest, ADefaultButtonWithoutATitleStays) {
    LTHUDAlert alert;
    alert.size();
    EXPECT_FALSE(alert.defaultButtonControl().isHidden());
}

TEST_F(LTHUDAlertTest, ACheckBoxInPlaceOfTheOtherButtonStandsSevenPointsHigher) {
    const auto alert = makeAlert();
    alert->setOtherButtonTitle(QStringLiteral("Do not ask me again"));
    alert->setOtherButtonIsDontShowAgain(true);
    NSButton& box = alert->otherButtonControl();
    EXPECT_TRUE(dynamic_cast<LTHUDCheckBox*>(&box));
    EXPECT_EQ(box.tag(), 0);
    EXPECT_EQ(box.title(), QStringLiteral("Do not ask me again"));
    EXPECT_EQ(box.frame(), NSMakeRect(0, 0, 100, 18));
    alert->size();
    EXPECT_EQ(box.frame(), NSMakeRect(15, 9, buttonWidth(QStringLiteral("Do not ask me again")), 28));
    EXPECT_FALSE(alert->dontShowAgainIsChecked());
    box.setState(NSOnState);
    EXPECT_TRUE(alert->dontShowAgainIsChecked());
}

TEST_F(LTHUDAlertTest, PlacesTheInputFieldAfterTheWholeInformativeText) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("old"));
    EXPECT_EQ(alert->inputField(), nullptr);
    alert->size(1);
    const LTHUDTextField* const field = alert->inputField();
    ASSERT_TRUE(field);
    const double end = 32 + sizeOf(QStringLiteral("Name:"), NSFont::systemFontOfSize(11)).width;
    const double textY = alert->informativeTextField().frame().origin.y;
    EXPECT_EQ(field->frame(), NSMakeRect(end + 10, textY - 3, 422 - (end + 30), 22));
    EXPECT_EQ(field->stringValue(), QStringLiteral("old"));
    EXPECT_EQ(field->selectedText(), QStringLiteral("old"));
    alert->size(0);
    EXPECT_EQ(alert->inputField(), field) << "made once";
    EXPECT_EQ(field->frame().origin.y, textY - 3) << "and left where it was";
}

TEST_F(LTHUDAlertTest, ASheetIsTwentyPointsLowerAndHangsUnderItsParentsTop) {
    const auto alert =
        LTHUDAlert::alertWithMessageText(textOfLines(3, NSFont::boldSystemFontOfSize(16)), QStringLiteral("OK"), {}, {},
                                         textOfLines(4, NSFont::systemFontOfSize(11)));
    alert->size(0);
    const double height = alert->window().frame().size.height;
    NSWindow parent(NSMakeRect(200, 100, 600, 400), 0, NSBackingStoreBuffered, false);
    parent.orderFront(nullptr);
    alert->window().setHasShadow(false);
    whenRunning([&] {
        EXPECT_EQ(alert->window().frame(), NSMakeRect(289, 457 - (height - 20), 422, height - 20));
        EXPECT_TRUE(alert->window().hasShadow());
        EXPECT_TRUE(alert->window().isSheet());
        click(alert->defaultButtonControl());
    });
    EXPECT_EQ(alert->runSheetModalForWindow(parent), 1);
}

TEST_F(LTHUDAlertTest, VeryLongTextsAndTitlesLayOutByTheSameRules) {
    const QString endless = QString(4000, QLatin1Char('x'));
    const auto alert = LTHUDAlert::alertWithMessageText(endless, endless, endless, endless, endless);
    alert->size();
    EXPECT_EQ(alert->window().frame().size.width, 422);
    EXPECT_GT(alert->window().frame().size.height, 2000);
    whenRunning([&] { press(*alert, Qt::Key_Escape); });
    EXPECT_EQ(alert->runModal(), 0);
}

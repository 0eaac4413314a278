// SPDX-License-Identifier: MIT
#include "../ModalRun.h"
#include "../app/ShellHost.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QPointer>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

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

class BellApplication : public ShellApplication {
public:
    void soundBell() override { told.emplace_back("beep"); }
};

class LTHUDAlertTest : public testing::Test {
protected:
    /// Does `inside` when the alert is there and its run has begun.
    void whenRunning(const std::function<void()>& inside) {
        whenNextModalRunHasBegun(application, [this, inside] {
            ++runs;
            inside();
        });
    }

    static std::shared_ptr<LTHUDAlert> makeAlert() {
        return LTHUDAlert::alertWithMessageText(QStringLiteral("Remove it?"), QStringLiteral("Remove"),
                                                QStringLiteral("Cancel"), QStringLiteral("Later"),
                                                QStringLiteral("It cannot be brought back."));
    }

    static void press(LTHUDAlert& alert, Qt::Key key) {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert.window()));
        QTest::keyClick(alert.window().windowHandle(), key);
    }

    static void click(NSButton& button) {
        QWidget& window = *button.QWidget::window();
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, button.mapTo(&window, button.rect().center()));
    }

    BellApplication application;
    const AnimationDurationsForTesting none{0};
    int runs = 0;
};

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

TEST_F(LTHUDAlertTest, ShowsAPercentSignInItsTextAsItIs) {
    const auto alert = LTHUDAlert::alertWithMessageText(QStringLiteral("%@ %d"), {}, {}, {}, QStringLiteral("100 %@"));
    EXPECT_EQ(alert->messageField().stringValue(), QStringLiteral("%@ %d"));
    EXPECT_EQ(alert->informativeTextField().stringValue(), QStringLiteral("100 %@"));
}

TEST_F(LTHUDAlertTest, TakesItsTitlesAsTheyAre) {
    const auto alert = makeAlert();
    EXPECT_EQ(alert->defaultButtonControl().title(), QStringLiteral("Remove"));
    EXPECT_EQ(alert->alternateButtonControl().title(), QStringLiteral("Cancel"));
    EXPECT_EQ(alert->otherButtonControl().title(), QStringLiteral("Later"));
}

TEST_F(LTHUDAlertTest, AnInputAlertPutsItsMessageIntoTheInformativeText) {
    NSProcessInfo::processInfo().setProcessName(QStringLiteral("Snippets %1"));
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("old"));
    NSProcessInfo::processInfo().setProcessName(QString());
    EXPECT_EQ(alert->messageField().stringValue(), QStringLiteral("Snippets %1 needs your input."));
    EXPECT_EQ(alert->informativeTextField().stringValue(), QStringLiteral("Name:"));
    EXPECT_EQ(alert->defaultButtonControl().title(), QStringLiteral("OK"));
    EXPECT_EQ(alert->alternateButtonControl().title(), QStringLiteral("Cancel"));
    alert->size();
    EXPECT_TRUE(alert->otherButtonControl().isHidden());
    EXPECT_FALSE(alert->alternateButtonControl().isHidden());
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

TEST_F(LTHUDAlertTest, TheCheckBoxBecomesAButtonAgain) {
    const auto alert = makeAlert();
    alert->setOtherButtonIsDontShowAgain(true);
    alert->setOtherButtonIsDontShowAgain(false);
    EXPECT_TRUE(dynamic_cast<LTHUDButton*>(&alert->otherButtonControl()));
    EXPECT_EQ(alert->otherButtonControl().tag(), -1);
    EXPECT_EQ(alert->otherButtonControl().title(), QStringLiteral("Later"));
    EXPECT_FALSE(alert->dontShowAgainIsChecked());
    whenRunning([&] { click(alert->otherButtonControl()); });
    EXPECT_EQ(alert->runModal(), -1);
}

TEST_F(LTHUDAlertTest, TogglingTheCheckBoxDoesNotEndTheAlert) {
    const auto alert = makeAlert();
    alert->setOtherButtonIsDontShowAgain(true);
    whenRunning([&] {
        click(alert->otherButtonControl());
        EXPECT_TRUE(alert->dontShowAgainIsChecked());
        EXPECT_EQ(application.modalWindow(), &alert->window());
        click(alert->defaultButtonControl());
    });
    EXPECT_EQ(alert->runModal(), 1);
    EXPECT_TRUE(alert->dontShowAgainIsChecked());
}

TEST_F(LTHUDAlertTest, AnswersWithTheTagOfTheButtonThatEndedIt) {
    const auto alert = makeAlert();
    whenRunning([&] { click(alert->defaultButtonControl()); });
    EXPECT_EQ(alert->runModal(), 1);
    whenRunning([&] { click(alert->alternateButtonControl()); });
    EXPECT_EQ(alert->runModal(), 0);
    whenRunning([&] { click(alert->otherButtonControl()); });
    EXPECT_EQ(alert->runModal(), -1);
    EXPECT_EQ(runs, 3);
    EXPECT_FALSE(alert->window().isVisible());
}

TEST_F(LTHUDAlertTest, ReturnPressesTheDefaultAndEscapeTheAlternateButton) {
    const auto alert = makeAlert();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        whenRunning([&] { press(*alert, key); });
        EXPECT_EQ(alert->runModal(), 1);
        whenRunning([&] { press(*alert, Qt::Key_Escape); });
        EXPECT_EQ(alert->runModal(), 0);
    }
}

TEST_F(LTHUDAlertTest, ReturnPressesTheDefaultButtonWhereverTheKeyboardIs) {
    const auto alert = makeAlert();
    whenRunning([&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert->window()));
        alert->window().makeFirstResponder(&alert->otherButtonControl());
        press(*alert, Qt::Key_Return);
    });
    EXPECT_EQ(alert->runModal(), 1);
}

TEST_F(LTHUDAlertTest, SpacePressesTheButtonThatHasTheKeyboard) {
    const auto alert = makeAlert();
    whenRunning([&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert->window()));
        alert->window().makeFirstResponder(&alert->otherButtonControl());
        press(*alert, Qt::Key_Space);
    });
    EXPECT_EQ(alert->runModal(), -1);
}

TEST_F(LTHUDAlertTest, AReturnKeyStillHeldFromBeforeDoesNotAnswerIt) {
    const auto alert = makeAlert();
    whenRunning([&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert->window()));
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
        QCoreApplication::sendEvent(alert->window().windowHandle(), &held);
        QTest::qWait(200); // longer than a button looks pressed
        EXPECT_EQ(application.modalWindow(), &alert->window());
        click(alert->alternateButtonControl());
    });
    EXPECT_EQ(alert->runModal(), 0);
}

TEST_F(LTHUDAlertTest, TabReachesEveryButton) {
    const auto alert = makeAlert();
    std::vector<const QWidget*> reached;
    whenRunning([&] {
        for (int tab = 0; tab < 3; ++tab) {
            press(*alert, Qt::Key_Tab);
            reached.push_back(alert->window().firstResponder());
        }
        click(alert->defaultButtonControl());
    });
    alert->runModal();
    std::sort(reached.begin(), reached.end());
    EXPECT_EQ(std::unique(reached.begin(), reached.end()) - reached.begin(), 3);
    for (const QWidget* each : {static_cast<QWidget*>(&alert->defaultButtonControl()),
                                static_cast<QWidget*>(&alert->alternateButtonControl()),
                                static_cast<QWidget*>(&alert->otherButtonControl())}) {
        EXPECT_NE(std::find(reached.begin(), reached.end(), each), reached.end());
    }
}

TEST_F(LTHUDAlertTest, ActivatesTheApplicationBeforeItPops) {
    const auto alert = makeAlert();
    application.told.clear();
    whenRunning([&] {
        EXPECT_THAT(application.told, testing::Contains("activate"));
        EXPECT_TRUE(alert->window().isVisible());
        click(alert->defaultButtonControl());
    });
    alert->runModal();
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

TEST_F(LTHUDAlertTest, AnInputAlertTakesTypingAtOnce) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("old"));
    whenRunning([&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&alert->window()));
        for (const char letter : {'n', 'e', 'w'}) {
            QTest::keyClick(alert->window().windowHandle(), letter);
        }
        press(*alert, Qt::Key_Return);
    });
    EXPECT_EQ(alert->runModal(), 1);
    EXPECT_EQ(alert->inputField()->stringValue(), QStringLiteral("new"));
}

TEST_F(LTHUDAlertTest, ReturnInAnEmptyInputFieldBeepsAndKeepsTheAlert) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QString());
    NSWindow parent(NSMakeRect(200, 100, 600, 400), 0, NSBackingStoreBuffered, false);
    parent.orderFront(nullptr);
    whenRunning([&] {
        press(*alert, Qt::Key_Return);
        EXPECT_TRUE(QTest::qWaitFor(
            [this] { return std::count(application.told.begin(), application.told.end(), "beep") == 1; }));
        EXPECT_EQ(application.modalWindow(), &alert->window());
        click(alert->defaultButtonControl());
        EXPECT_EQ(std::count(application.told.begin(), application.told.end(), "beep"), 2) << "a click the same";
        EXPECT_EQ(application.modalWindow(), &alert->window());
        press(*alert, Qt::Key_Escape);
    });
    EXPECT_EQ(alert->runInputSheetModalForWindow(parent), std::nullopt);
}

TEST_F(LTHUDAlertTest, AnswersTheTextOnlyForTheDefaultButton) {
    NSWindow parent(NSMakeRect(200, 100, 600, 400), 0, NSBackingStoreBuffered, false);
    parent.orderFront(nullptr);
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("text"));
    whenRunning([&] { click(alert->defaultButtonControl()); });
    EXPECT_EQ(alert->runInputSheetModalForWindow(parent), QStringLiteral("text"));
    whenRunning([&] { click(alert->alternateButtonControl()); });
    EXPECT_EQ(alert->runInputSheetModalForWindow(parent), std::nullopt);
}

TEST_F(LTHUDAlertTest, RunningAnInputAlertTwiceKeepsItsFieldAndItsText) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("first"));
    whenRunning([&] {
        alert->inputField()->setStringValue(QStringLiteral("second"));
        click(alert->defaultButtonControl());
    });
    alert->runModal();
    const LTHUDTextField* const field = alert->inputField();
    whenRunning([&] { click(alert->defaultButtonControl()); });
    alert->runModal();
    EXPECT_EQ(alert->inputField(), field);
    EXPECT_EQ(field->stringValue(), QStringLiteral("second"));
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

TEST_F(LTHUDAlertTest, ASheetWhoseParentDiesAnswersAlternate) {
    const auto alert = makeAlert();
    auto parent = std::make_unique<NSWindow>(NSMakeRect(200, 100, 600, 400), 0, NSBackingStoreBuffered, false);
    parent->orderFront(nullptr);
    whenRunning([&] { parent.reset(); });
    EXPECT_EQ(alert->runSheetModalForWindow(*parent), 0);
}

TEST_F(LTHUDAlertTest, AnAlertThatDiesWhileItRunsEndsItsRun) {
    auto alert = makeAlert();
    whenRunning([&] { alert.reset(); });
    LTHUDAlert& running = *alert;
    EXPECT_EQ(running.runModal(), 0);
    EXPECT_EQ(application.modalWindow(), nullptr);
}

TEST_F(LTHUDAlertTest, RunsFourDeepAndEndsFromTheInnermostOut) {
    std::vector<std::shared_ptr<LTHUDAlert>> alerts;
    std::vector<int> ended;
    std::function<void()> deeper = [&] {
        alerts.push_back(makeAlert());
        const std::shared_ptr<LTHUDAlert> alert = alerts.back();
        const int depth = static_cast<int>(alerts.size());
        whenRunning([&, alert] {
            EXPECT_EQ(application.modalWindow(), &alert->window());
            if (alerts.size() < 4) {
                deeper();
                EXPECT_EQ(application.modalWindow(), &alert->window());
                EXPECT_TRUE(QTest::qWaitFor([&] { return alert->window().isKeyWindow(); }))
                    << "the keyboard comes back to the one before";
            }
            press(*alert, Qt::Key_Return);
        });
        EXPECT_EQ(alert->runModal(), 1);
        ended.push_back(depth);
    };
    deeper();
    EXPECT_THAT(ended, ElementsAre(4, 3, 2, 1));
    EXPECT_EQ(application.modalWindow(), nullptr);
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

TEST(LTHUDAlertInAPlainProgram, AnswersAlternateWhereNothingCanRunIt) {
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    int count = 1;
    const QApplication application(count, arguments);
    LTHUDAlert alert;
    EXPECT_EQ(alert.runModal(), 0);
    EXPECT_FALSE(alert.window().isVisible());
}

TEST_F(LTHUDAlertTest, GoesInTheOrderOfItsParts) {
    std::vector<std::string> gone;
    {
        LTHUDAlert alert;
        alert.setIsInput(true);
        alert.size();
        const auto watch = [&](QObject& part, const char* name) {
            QObject::connect(&part, &QObject::destroyed, &application, [&gone, name] { gone.emplace_back(name); });
        };
        watch(alert.window(), "window");
        watch(*alert.inputField(), "input");
        watch(alert.alternateButtonControl(), "alternate");
        watch(alert.otherButtonControl(), "other");
        watch(alert.defaultButtonControl(), "default");
        watch(alert.informativeTextField(), "informative");
        watch(alert.messageField(), "message");
    }
    EXPECT_THAT(gone, ElementsAre("message", "informative", "default", "other", "alternate", "input", "window"));
}

// SPDX-License-Identifier: MIT
// What alerts say and answer; LTHUDAlertLayoutTest has where their parts are.
#include "LTHUDAlertTestSupport.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;

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

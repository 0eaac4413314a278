// SPDX-License-Identifier: MIT
// What the tests of alerts share.
#pragma once

#include "../ModalRun.h"
#include "../app/ShellHost.h"

#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSButton.h>

#include <QTest>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

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

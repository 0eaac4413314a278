// SPDX-License-Identifier: MIT
// Alerts and sheets on a real X server, answered by a keyboard and a mouse. The test is the application that shows
// them; what it does not do itself is done from outside.
#include "../ModalRun.h"
#include "../ServerFocus.h"
#include "../app/ShellHost.h"
#include "Desktop.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <QProcess>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

namespace {

void click(QWidget& view) {
    click(view.mapToGlobal(view.rect().center()));
}

/// A window of the host's, with a view that counts presses.
class HostWindow : public NSWindow {
public:
    HostWindow(const NSRect& frame, unsigned styleMask) : NSWindow(frame, styleMask, NSBackingStoreBuffered, false) {
        setBackgroundColor(NSColor::colorWithCalibratedRed(0.2, 0.4, 0.9, 1));
    }
    bool canBecomeKeyWindow() const override { return true; }
    void mouseDown(const NSEvent& /*event*/) override { ++presses; }

    int presses = 0;
};

class AlertOnDesktop : public testing::Test {
protected:
    ~AlertOnDesktop() override {
        other.kill();
        other.waitForFinished(waitingTime);
    }

    static std::shared_ptr<LTHUDAlert> makeAlert() {
        return LTHUDAlert::alertWithMessageText(
            QStringLiteral("Remove “Postal address”?"), QStringLiteral("&Remove"), QStringLiteral("Cancel"),
            QStringLiteral("Keep a copy"),
            QStringLiteral("The snippet is taken out of your collection on every machine "
                           "that syncs with this one. It cannot be brought back."));
    }

    /// Does `inside` when the alert stands and has the keyboard.
    void whenRunning(LTHUDAlert& alert, const std::function<void()>& inside) {
        whenNextModalRunHasBegun(application, [this, &alert, inside] {
            EXPECT_TRUE(waitFor([&] { return alert.window().isKeyWindow() && hasServerFocus(alert.window()); }))
                << "it does not get the keyboard";
            ++runs;
            inside();
            // What is not answered would wait for ever.
            QTimer::singleShot(waitingTime, &alert, [this, &alert] {
                if (application.modalWindow() == &alert.window()) {
                    ADD_FAILURE() << "the alert is not answered";
                    application.abortModal();
                }
            });
        });
    }

    /// Another program gets the keyboard.
    void startOther() {
        other.start(QStringLiteral(X11_CLIENT),
                    {QStringLiteral("900"), QStringLiteral("500"), QStringLiteral("200"), QStringLiteral("150")});
        ASSERT_TRUE(waitFor([&] { return other.readAllStandardOutput().contains("painted"); }));
        ASSERT_TRUE(waitFor([] { return !QGuiApplication::focusWindow(); }));
    }

    [[nodiscard]] QString focusedWindow() const {
        QProcess asked;
        asked.start(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus"), QStringLiteral("getwindowpid")});
        asked.waitForFinished(waitingTime);
        return QString::fromLatin1(asked.readAllStandardOutput().trimmed());
    }

    ShellApplication application;
    QProcess other;
    int runs = 0;
};

/// Once with windows of the window manager's, once with such as pass it by.
class SheetOnDesktop : public AlertOnDesktop, public testing::WithParamInterface<NSWindowManagement> {
protected:
    void SetUp() override {
        parent =
            std::make_unique<HostWindow>(NSMakeRect(300, 250, 640, 420), GetParam() == NSWindowManagement::Managed
                                                                             ? NSTitledWindowMask | NSClosableWindowMask
                                                                             : NSBorderlessWindowMask);
        parent->setManagement(GetParam());
        parent->makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(waitFor([this] { return parent->isKeyWindow(); }));
    }

    /// Whether the sheet is seen above its parent, where both are.
    static bool isSeen(const LTHUDAlert& alert) {
        const QRect global = NSScreenRectToGlobal(alert.window().frame()).toRect();
        const QPoint inside = global.topLeft() + QPoint(8, global.height() / 2);
        const QColor color(pictureOfScreen().pixel(inside));
        return color.blue() < 120;
    }

    std::unique_ptr<HostWindow> parent;
};

} // namespace

TEST_F(AlertOnDesktop, IsAnsweredByTheKeyboardAlone) {
    const auto alert = makeAlert();
    whenRunning(*alert, [&] {
        keepPicture("alert");
        pressKey("Return");
    });
    EXPECT_EQ(alert->runModal(), 1);
    whenRunning(*alert, [] { pressKey("Escape"); });
    EXPECT_EQ(alert->runModal(), 0);
    whenRunning(*alert, [] { pressKey("KP_Enter"); });
    EXPECT_EQ(alert->runModal(), 1);
    whenRunning(*alert, [&] {
        for (int tab = 0; tab < 5 && alert->window().firstResponder() != &alert->otherButtonControl(); ++tab) {
            QWidget* const before = alert->window().firstResponder();
            pressKey("Tab");
            EXPECT_TRUE(waitFor([&] { return alert->window().firstResponder() != before; }));
        }
        keepPicture("alert-focus");
        pressKey("space");
    });
    EXPECT_EQ(alert->runModal(), -1);
    whenRunning(*alert, [] { pressKey("alt+r"); });
    EXPECT_EQ(alert->runModal(), 1) << "its mnemonic";
    EXPECT_EQ(runs, 5);
}

TEST_F(AlertOnDesktop, IsAnsweredByTheMouseAlone) {
    const auto alert = makeAlert();
    alert->setOtherButtonTitle(QStringLiteral("Do not ask again"));
    alert->setOtherButtonIsDontShowAgain(true);
    whenRunning(*alert, [&] {
        click(alert->otherButtonControl());
        EXPECT_TRUE(waitFor([&] { return alert->dontShowAgainIsChecked(); }));
        keepPicture("alert-checkbox");
        click(alert->defaultButtonControl());
    });
    EXPECT_EQ(alert->runModal(), 1);
    whenRunning(*alert, [&] { click(alert->alternateButtonControl()); });
    EXPECT_EQ(alert->runModal(), 0);
}

TEST_F(AlertOnDesktop, IsDraggedByItsBackgroundWithThePointerOnIt) {
    const auto alert = makeAlert();
    whenRunning(*alert, [&] {
        const NSRect before = alert->window().frame();
        const QPoint start = alert->window().mapToGlobal(QPoint(12, 60));
        xdotool({QStringLiteral("mousemove"), QString::number(start.x()), QString::number(start.y()),
                 QStringLiteral("mousedown"), QStringLiteral("1")});
        for (int step = 1; step <= 20; ++step) {
            xdotool({QStringLiteral("mousemove"), QString::number(start.x() - 7 * step),
                     QString::number(start.y() + 5 * step)});
            QTest::qWait(5);
        }
        xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
        EXPECT_TRUE(waitFor([&] {
            return alert->window().frame().origin == NSPoint{before.origin.x - 140, before.origin.y - 100};
        })) << alert->window().frame().origin.x - before.origin.x
            << " " << alert->window().frame().origin.y - before.origin.y;
        pressKey("Escape");
    });
    EXPECT_EQ(alert->runModal(), 0);
}

TEST_F(AlertOnDesktop, AsksForTextAndTakesTyping) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("Old name"));
    whenRunning(*alert, [&] {
        keepPicture("input-selected");
        pressKey("BackSpace");
        EXPECT_TRUE(waitFor([&] { return alert->inputField()->stringValue().isEmpty(); }));
        pressKey("Return"); // nothing to take
        xdotool({QStringLiteral("type"), QStringLiteral("New name")});
        EXPECT_TRUE(waitFor([&] { return alert->inputField()->stringValue() == QStringLiteral("New name"); }));
        EXPECT_EQ(application.modalWindow(), &alert->window());
        keepPicture("input");
        pressKey("Return");
    });
    EXPECT_EQ(alert->runModal(), 1);
    EXPECT_EQ(alert->inputField()->stringValue(), QStringLiteral("New name"));
}

TEST_F(AlertOnDesktop, ComesToTheFrontOfAnInactiveApplicationAndGivesTheKeyboardBack) {
    startOther();
    const auto alert = makeAlert();
    whenRunning(*alert, [] { pressKey("Return"); });
    EXPECT_EQ(alert->runModal(), 1);
    EXPECT_TRUE(waitFor([&] { return focusedWindow() == QString::number(other.processId()); }))
        << focusedWindow().toStdString();
}

TEST_F(AlertOnDesktop, GivesTheKeyboardBackToTheWindowBefore) {
    HostWindow managed(NSMakeRect(100, 100, 300, 200), NSTitledWindowMask);
    HostWindow bypassing(NSMakeRect(100, 400, 300, 200), NSBorderlessWindowMask);
    bypassing.setManagement(NSWindowManagement::Bypassing);
    for (HostWindow* window : {&managed, &bypassing}) {
        window->makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(waitFor([&] { return window->isKeyWindow(); }));
        const auto alert = makeAlert();
        whenRunning(*alert, [] { pressKey("Return"); });
        EXPECT_EQ(alert->runModal(), 1);
        EXPECT_TRUE(waitFor([&] { return window->isKeyWindow(); }));
        QTest::qWait(300); // the window manager may have another idea
        EXPECT_TRUE(window->isKeyWindow());
        EXPECT_TRUE(application.isActive());
    }
}

TEST_F(AlertOnDesktop, StandsAboveAWindowThatPassesTheWindowManagerBy) {
    HostWindow below(NSMakeRect(200, 200, 900, 500), NSBorderlessWindowMask);
    below.setManagement(NSWindowManagement::Bypassing);
    below.setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    below.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(waitFor([&] { return below.isKeyWindow(); }));
    const auto alert = makeAlert();
    whenRunning(*alert, [&] {
        const auto isSeen = [&] {
            const QPoint inside = alert->window().mapToGlobal(QPoint(8, alert->window().height() / 2));
            return QColor(pictureOfScreen().pixel(inside)).blue() < 120;
        };
        EXPECT_TRUE(waitFor(isSeen));
        keepPicture("alert-above");
        // A click on it reaches it, wherever the other one is.
        click(alert->defaultButtonControl());
    });
    EXPECT_EQ(alert->runModal(), 1);
}

TEST_F(AlertOnDesktop, PopsInAndOutWithoutAMomentOfNothing) {
    const auto alert = makeAlert();
    alert->size();
    NSWindow& window = alert->window();
    std::vector<bool> seen; // at every turn of the event loop
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &application, [&] {
        const auto windows = NSWindow::windows();
        seen.push_back(std::any_of(windows.begin(), windows.end(), [&](NSWindow* each) {
            return each->isVisible() && each->windowHandle() && each->windowHandle()->isExposed() &&
                   (each == &window || dynamic_cast<NoodleZoomWindow*>(each));
        }));
    });
    watch.start(0);
    pop(window);
    const auto firstSeen = std::find(seen.begin(), seen.end(), true);
    EXPECT_NE(firstSeen, seen.end());
    EXPECT_EQ(std::find(firstSeen, seen.end(), false), seen.end());
    EXPECT_TRUE(window.windowHandle()->isExposed());
    seen.clear();
    popAway(window);
    EXPECT_EQ(std::find(seen.begin(), seen.end(), false), seen.end());
}

TEST_P(SheetOnDesktop, HangsUnderItsParentsTopAndMovesWithIt) {
    const auto alert = makeAlert();
    whenRunning(*alert, [&] {
        EXPECT_TRUE(waitFor([&] { return isSeen(*alert); }));
        const NSRect parentFrame = parent->frame();
        const auto hangs = [&] {
            const NSRect now = parent->frame();
            const std::optional<QRect> server = WindowEffects::sharedEffects().serverFrame(alert->window());
            const QRect wanted = NSScreenRectToGlobal(NSMakeRect(NSMidX(now) - 211,
                                                                 NSMaxY(now) - 43 - alert->window().frame().size.height,
                                                                 422, alert->window().frame().size.height))
                                     .toRect();
            return server && std::abs(server->left() - wanted.left()) <= 1 &&
                   std::abs(server->top() - wanted.top()) <= 1;
        };
        EXPECT_TRUE(waitFor(hangs));
        keepPicture(GetParam() == NSWindowManagement::Managed ? "sheet-managed" : "sheet-bypassing");
        parent->setFrameOrigin({parentFrame.origin.x + 90, parentFrame.origin.y - 60});
        EXPECT_TRUE(waitFor(hangs));
        if (GetParam() == NSWindowManagement::Managed) {
            // As a person drags it by its title bar.
            xdotool({QStringLiteral("windowmove"), QString::number(parent->winId()), QStringLiteral("120"),
                     QStringLiteral("160")});
            EXPECT_TRUE(waitFor([&] { return parent->frame().origin.x < 200; }));
            EXPECT_TRUE(waitFor(hangs));
        }
        keepPicture(GetParam() == NSWindowManagement::Managed ? "sheet-managed-moved" : "sheet-bypassing-moved");
        EXPECT_TRUE(waitFor([&] { return isSeen(*alert); }));
        click(alert->defaultButtonControl());
    });
    EXPECT_EQ(alert->runSheetModalForWindow(*parent), 1);
    EXPECT_TRUE(waitFor([&] { return parent->isKeyWindow(); }));
    EXPECT_EQ(parent->presses, 0);
}

TEST_P(SheetOnDesktop, KeysReachItAfterAClickOnItsBlockedParent) {
    const auto alert = makeAlert();
    whenRunning(*alert, [&] {
        const QPoint blocked = parent->mapToGlobal(QPoint(20, parent->height() - 20));
        click(blocked);
        QTest::qWait(200); // whatever the click sets in motion
        EXPECT_EQ(parent->presses, 0);
        EXPECT_TRUE(isSeen(*alert));
        pressKey("Escape");
    });
    EXPECT_EQ(alert->runSheetModalForWindow(*parent), 0);
    EXPECT_TRUE(waitFor([&] { return parent->isKeyWindow(); }));
    click(parent->mapToGlobal(QPoint(20, parent->height() - 20)));
    EXPECT_TRUE(waitFor([&] { return parent->presses == 1; })) << "it is blocked no more";
}

TEST_P(SheetOnDesktop, IsRenamedIn) {
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("Name:"), QStringLiteral("Old"));
    whenRunning(*alert, [&] {
        xdotool({QStringLiteral("type"), QStringLiteral("New")});
        EXPECT_TRUE(waitFor([&] { return alert->inputField()->stringValue() == QStringLiteral("New"); }));
        keepPicture("sheet-input");
        pressKey("Return");
    });
    EXPECT_EQ(alert->runInputSheetModalForWindow(*parent), QStringLiteral("New"));
}

INSTANTIATE_TEST_SUITE_P(Over, SheetOnDesktop,
                         testing::Values(NSWindowManagement::Managed, NSWindowManagement::Bypassing),
                         [](const auto& each) {
                             return each.param == NSWindowManagement::Managed ? "AManagedWindow"
                                                                              : "AWindowPastTheManager";
                         });

// SPDX-License-Identifier: MIT
#include "../ServerFocus.h"
#include "AppKitHost.h"

#include <VXKit/platform/desktop/WindowEffects.h>

#include <QMenu>
#include <QPointer>
#include <QTimer>

#include <array>
#include <utility>

#include <gmock/gmock.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ModalRuns : public AppKitHost {
protected:
    ModalRuns() {
        show(background);
        backgroundView = &addHostView(background.content(), NSMakeRect(0, 0, 200, 100), "background", log);
        settle();
        log.clear();
    }

    /// Does `work` when the event loop next comes to it.
    void later(std::function<void()> work) { QTimer::singleShot(0, &application, std::move(work)); }

    static void click(const HostWindow& window) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    }

    std::vector<std::string> log;
    HostWindow background{NSMakeRect(100, 100, 200, 100)};
    HostView* backgroundView;
    HostWindow panel{NSMakeRect(300, 100, 200, 100)};
    HostWindow innerPanel{NSMakeRect(320, 120, 200, 100)};
};

} // namespace

TEST_F(ModalRuns, ShowTheirWindowWithTheKeyboardAndAnswerTheCode) {
    bool wasShown = false;
    later([&] {
        wasShown = QTest::qWaitFor([&] { return panel.isKeyWindow(); }) && panel.isVisible() &&
                   application.modalWindow() == &panel;
        application.stopModalWithCode(42);
    });
    EXPECT_EQ(application.modalWindow(), nullptr);
    EXPECT_EQ(application.runModalForWindow(panel), 42);
    EXPECT_TRUE(wasShown);
    EXPECT_EQ(application.modalWindow(), nullptr);
    EXPECT_TRUE(panel.isVisible()) << "it stays on the screen";
}

TEST_F(ModalRuns, HaveCodesOfTheirOwnForTheOtherEnds) {
    later([&] { application.stopModal(); });
    EXPECT_EQ(application.runModalForWindow(panel), -1000);
    later([&] { application.abortModal(); });
    EXPECT_EQ(application.runModalForWindow(panel), -1001);
    later([&] { application.stopModalWithCode(0); });
    EXPECT_EQ(application.runModalForWindow(panel), 0);
}

TEST_F(ModalRuns, LeaveAWindowOutThatWasOrderedOutWithTheKeyboard) {
    later([&] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return panel.isKeyWindow(); }));
        panel.orderOut(nullptr);
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_FALSE(panel.isVisible());
}

TEST_F(ModalRuns, AreStoppedFromAClickInTheirWindow) {
    HostView& button = addHostView(panel.content(), NSMakeRect(0, 0, 200, 100), "button", log);
    bool returned = false;
    button.handler = [&](const NSEvent& event) {
        if (event.type() == NSLeftMouseUp) {
            application.stopModalWithCode(7);
            returned = true;
        }
    };
    later([&] { click(panel); });
    EXPECT_EQ(application.runModalForWindow(panel), 7);
    EXPECT_TRUE(returned) << "the run ends when control comes back to it";
}

TEST_F(ModalRuns, Nest) {
    int inner = 0;
    later([&] {
        later([&] {
            EXPECT_EQ(application.modalWindow(), &innerPanel);
            application.stopModalWithCode(1);
        });
        inner = application.runModalForWindow(innerPanel);
        EXPECT_EQ(application.modalWindow(), &panel);
        application.stopModalWithCode(2);
    });
    EXPECT_EQ(application.runModalForWindow(panel), 2);
    EXPECT_EQ(inner, 1);
}

TEST_F(ModalRuns, EndFromTheInnermostOutWhenStoppedTwiceInOneGo) {
    int inner = 0;
    later([&] {
        later([&] {
            application.stopModalWithCode(1);
            application.stopModalWithCode(2);
            application.stopModalWithCode(3);
        });
        inner = application.runModalForWindow(innerPanel);
    });
    EXPECT_EQ(application.runModalForWindow(panel), 2);
    EXPECT_EQ(inner, 1);
}

TEST_F(ModalRuns, EndWithTheirWindow) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    later([&] { delete brief; });
    EXPECT_EQ(application.runModalForWindow(*brief), -1001);
    EXPECT_FALSE(brief);
    EXPECT_EQ(application.modalWindow(), nullptr);
    click(background);
    EXPECT_THAT(log, Contains("background.mouseUp")) << "the others are live again";
}

TEST_F(ModalRuns, EndWithAWindowThatDiesInARunWithin) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    int inner = 0;
    later([&] {
        later([&] {
            delete brief;
            later([&] { application.stopModalWithCode(1); });
        });
        inner = application.runModalForWindow(innerPanel);
    });
    EXPECT_EQ(application.runModalForWindow(*brief), -1001);
    EXPECT_EQ(inner, 1);
}

TEST_F(ModalRuns, EndWithAWindowThatDiesWhenItIsShown) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    struct Watcher : QObject {
        bool eventFilter(QObject* watched, QEvent* event) override {
            if (event->type() == QEvent::WindowActivate) {
                watched->deleteLater();
            }
            return false;
        }
    } watcher;
    brief->installEventFilter(&watcher);
    EXPECT_EQ(application.runModalForWindow(*brief), -1001);
    EXPECT_FALSE(brief);
}

TEST_F(ModalRuns, KeepInputFromTheOtherWindows) {
    std::vector<std::string> during;
    std::vector<int> sentDuring;
    later([&] {
        background.sent.clear();
        click(background);
        QTest::keyClick(background.windowHandle(), Qt::Key_A);
        during = log;
        sentDuring = background.sentTypes();
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_THAT(during, IsEmpty());
    log.clear();
    click(background);
    EXPECT_THAT(log, Contains("background.mouseUp")) << "it is live again";
}

TEST_F(ModalRuns, KeepKeyEquivalentsFromTheOtherWindows) {
    backgroundView->answersKeys = true;
    std::vector<std::string> during;
    later([&] {
        log.clear();
        QTest::keyClick(background.windowHandle(), Qt::Key_Return);
        during = log;
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_THAT(during, IsEmpty());
}

TEST_F(ModalRuns, KeepInputFromWindowsShownSince) {
    HostWindow late(NSMakeRect(0, 0, 200, 100));
    addHostView(late.content(), NSMakeRect(0, 0, 200, 100), "late", log);
    later([&] {
        late.orderFront(nullptr);
        settle();
        log.clear();
        click(late);
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_THAT(log, testing::Not(Contains("late.mouseDown")));
    click(late);
    EXPECT_THAT(log, Contains("late.mouseDown"));
}

TEST_F(ModalRuns, GiveInputToTheInnermostWindowOnly) {
    addHostView(panel.content(), NSMakeRect(0, 0, 200, 100), "panel", log);
    addHostView(innerPanel.content(), NSMakeRect(0, 0, 200, 100), "innerPanel", log);
    std::vector<std::string> inInner;
    later([&] {
        later([&] {
            settle();
            log.clear();
            click(panel);
            click(innerPanel);
            inInner = log;
            application.stopModal();
        });
        application.runModalForWindow(innerPanel);
        innerPanel.orderOut(nullptr);
        settle();
        log.clear();
        click(panel);
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_THAT(inInner, ElementsAre("innerPanel.mouseDown", "innerPanel.mouseUp"));
    EXPECT_THAT(log, Contains("panel.mouseDown")) << "the outer one takes input again";
}

TEST_F(ModalRuns, OfAWindowThatIsShownAlreadyBlockTheOthersToo) {
    show(panel);
    const NSRect frame = panel.frame();
    later([&] {
        settle();
        log.clear();
        click(background);
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(panel.frame(), frame);
    EXPECT_TRUE(panel.isVisible());
}

TEST_F(ModalRuns, LeaveTheKeyboardToTheirWindow) {
    const auto panelIsKey = [&] { return panel.isKeyWindow(); };
    later([&] {
        EXPECT_TRUE(QTest::qWaitFor(panelIsKey));
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_TRUE(QTest::qWaitFor(panelIsKey));
}

TEST_F(ModalRuns, HandTheKeyboardBackFromAWindowThatTakesNoInput) {
    if (QGuiApplication::platformName() != u"offscreen") {
        GTEST_SKIP() << "elsewhere only the window manager can do this";
    }
    const auto panelHasIt = [&] { return QGuiApplication::focusWindow() == panel.windowHandle(); };
    bool wasTaken = false;
    QObject::connect(&application, &QGuiApplication::focusWindowChanged, &panel,
                     [&](const QWindow* focused) { wasTaken |= focused == background.windowHandle(); });
    later([&] {
        EXPECT_TRUE(QTest::qWaitFor(panelHasIt));
        wasTaken = false;
        background.windowHandle()->requestActivate();
        EXPECT_TRUE(QTest::qWaitFor([&] { return wasTaken && panelHasIt(); }));
        application.stopModal();
    });
    application.runModalForWindow(panel);
}

TEST_F(ModalRuns, LeaveTheKeyboardToWhatBelongsToTheirWindow) {
    later([&] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return panel.isKeyWindow() && hasServerFocus(panel); }));
        QWidget tool(&panel, Qt::Dialog);
        const auto toolHasIt = [&] { return QGuiApplication::focusWindow() == tool.windowHandle(); };
        tool.show();
        // Not by Qt's activateWindow, which a window manager may refuse for its time.
        WindowEffects::sharedEffects().takeKeyboard(tool);
        EXPECT_TRUE(QTest::qWaitFor(toolHasIt));
        settle();
        EXPECT_TRUE(toolHasIt()) << "and keeps it";
        application.stopModal();
    });
    application.runModalForWindow(panel);
}

TEST_F(ModalRuns, EndWithTheApplication) {
    later([&] { application.terminate(nullptr); });
    EXPECT_EQ(application.runModalForWindow(panel), -1001);
}

TEST_F(ModalRuns, AreNotStoppedBeforeTheyBegin) {
    application.stopModal();
    application.stopModalWithCode(5);
    application.abortModal();
    later([&] { application.stopModalWithCode(3); });
    EXPECT_EQ(application.runModalForWindow(panel), 3);
}

TEST_F(ModalRuns, TakeTheirChildWindowsAlong) {
    HostWindow child(NSMakeRect(310, 110, 20, 20));
    show(panel);
    panel.addChildWindow(&child, NSWindowAbove);
    bool wasShown = false;
    later([&] {
        wasShown = child.isVisible();
        application.stopModal();
    });
    application.runModalForWindow(panel);
    EXPECT_TRUE(wasShown);
    EXPECT_TRUE(child.isVisible());
}

namespace {

struct Session {
    const char* waylandDisplay;
    const char* sessionType;
    const char* xDisplay;
    const char* platform;
    const char* expected;
};

void setOrUnset(const char* name, const char* value) {
    if (value) {
        qputenv(name, value);
    } else {
        qunsetenv(name);
    }
}

/// The variables of the session are as they were when it ends.
class WaylandSession : public testing::Test {
protected:
    ~WaylandSession() override {
        for (const auto& [name, value] : m_before) {
            setOrUnset(name, value.isNull() ? nullptr : value.constData());
        }
    }

private:
    static std::pair<const char*, QByteArray> asItIs(const char* name) { return {name, qgetenv(name)}; }

    std::array<std::pair<const char*, QByteArray>, 4> m_before{asItIs("WAYLAND_DISPLAY"), asItIs("XDG_SESSION_TYPE"),
                                                               asItIs("DISPLAY"), asItIs("QT_QPA_PLATFORM")};
};

} // namespace

TEST_F(WaylandSession, IsMetThroughX11WhereThereIsAnXServerAndNobodyChose) {
    for (const Session& session : {
             Session{"wayland-0", nullptr, ":0", nullptr, "xcb"},
             Session{nullptr, "wayland", ":0", nullptr, "xcb"},
             Session{"wayland-0", "wayland", ":1", "", "xcb"},
             Session{"wayland-0", "wayland", ":0", "wayland", "wayland"},
             Session{"wayland-0", "wayland", ":0", "offscreen", "offscreen"},
             Session{"wayland-0", "wayland", nullptr, nullptr, ""},
             Session{"wayland-0", "wayland", "", nullptr, ""},
             Session{nullptr, "x11", ":0", nullptr, ""},
             Session{nullptr, nullptr, nullptr, nullptr, ""},
         }) {
        SCOPED_TRACE(testing::Message() << (session.waylandDisplay ? session.waylandDisplay : "-") << " "
                                        << (session.sessionType ? session.sessionType : "-") << " "
                                        << (session.xDisplay ? session.xDisplay : "-") << " "
                                        << (session.platform ? session.platform : "-"));
        setOrUnset("WAYLAND_DISPLAY", session.waylandDisplay);
        setOrUnset("XDG_SESSION_TYPE", session.sessionType);
        setOrUnset("DISPLAY", session.xDisplay);
        setOrUnset("QT_QPA_PLATFORM", session.platform);
        NSApplication::preferX11InWaylandSession();
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM").toStdString(), session.expected);
    }
}

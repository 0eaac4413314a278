// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSButton.h>

#include <QProcess>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Who has the keyboard, and in which order one hears of it.
class KeyWindows : public AppKitHost {
protected:
    static bool isOffscreen() { return QGuiApplication::platformName() == u"offscreen"; }

    ~KeyWindows() override {
        m_otherProgram.closeWriteChannel();
        m_otherProgram.waitForFinished();
    }

    /// Another program gets the keyboard. The offscreen platform has none: what the windows hear is all there is.
    void leave() {
        if (isOffscreen()) {
            QApplication::setActiveWindow(nullptr);
            return;
        }
        m_otherProgram.start(QStringLiteral(X11_CLIENT), {QStringLiteral("400"), QStringLiteral("300"),
                                                          QStringLiteral("100"), QStringLiteral("80")});
        EXPECT_TRUE(QTest::qWaitFor([] { return NSWindow::keyWindow() == nullptr; }));
    }
    static void comeBack(NSWindow& activated) {
        if (isOffscreen()) {
            QApplication::setActiveWindow(&activated);
            return;
        }
        activated.makeKeyWindow();
        EXPECT_TRUE(QTest::qWaitFor([&] { return activated.isKeyWindow(); }));
    }

    HostWindow window{NSMakeRect(0, 0, 100, 80)};
    HostWindow other{NSMakeRect(0, 0, 100, 80)};

private:
    QProcess m_otherProgram;
};

} // namespace

TEST_F(KeyWindows, AreToldOfBetweenTheTwoTurnsOfTheApplication) {
    const Posts posts;
    show(window);
    EXPECT_THAT(posts.names, ElementsAre(NSApplicationWillBecomeActiveNotification, NSWindowDidBecomeKeyNotification,
                                         NSWindowDidBecomeMainNotification, NSApplicationDidBecomeActiveNotification));
    EXPECT_TRUE(window.isKeyWindow());
    EXPECT_TRUE(window.isMainWindow());
    EXPECT_EQ(NSWindow::keyWindow(), &window);
    EXPECT_EQ(NSWindow::mainWindow(), &window);
    EXPECT_TRUE(application.isActive());
}

TEST_F(KeyWindows, ResignWhenSomebodyElseGetsTheKeyboard) {
    show(window);
    const Posts posts(&window);
    leave();
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResignKeyNotification, NSWindowDidResignMainNotification));
    EXPECT_EQ(NSWindow::keyWindow(), nullptr);
    EXPECT_EQ(NSWindow::mainWindow(), nullptr);
}

TEST_F(KeyWindows, ResignBetweenTheTwoTurnsOfTheApplication) {
    if (isOffscreen()) {
        GTEST_SKIP() << "nobody else can take the keyboard here";
    }
    show(window);
    const Posts posts;
    leave();
    EXPECT_TRUE(QTest::qWaitFor([&] { return posts.names.size() >= 4; }));
    EXPECT_THAT(posts.names, ElementsAre(NSApplicationWillResignActiveNotification, NSWindowDidResignKeyNotification,
                                         NSWindowDidResignMainNotification, NSApplicationDidResignActiveNotification));
    EXPECT_FALSE(application.isActive());
    settle();
    EXPECT_EQ(posts.names.size(), 4U);
}

TEST_F(KeyWindows, HandTheKeyboardOn) {
    show(window);
    const Posts posts;
    show(other);
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResignKeyNotification, NSWindowDidBecomeKeyNotification,
                                         NSWindowDidResignMainNotification, NSWindowDidBecomeMainNotification));
    EXPECT_EQ(NSWindow::keyWindow(), &other);
    EXPECT_EQ(NSWindow::mainWindow(), &other);
}

TEST_F(KeyWindows, LeaveTheMainWindowTheMainOneWhenTheyAreNone) {
    show(window);
    other.takesCommands = false;
    show(other);
    EXPECT_TRUE(other.isKeyWindow());
    EXPECT_FALSE(window.isKeyWindow());
    EXPECT_TRUE(window.isMainWindow());
}

TEST_F(KeyWindows, AreTheMainOneNoLongerWhenThePanelInFrontLosesTheKeyboardToAnotherProgram) {
    show(window);
    other.takesCommands = false;
    show(other);
    const Posts posts(&window);
    leave();
    EXPECT_EQ(NSWindow::mainWindow(), nullptr);
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResignMainNotification));
    comeBack(other);
    EXPECT_TRUE(other.isKeyWindow());
    EXPECT_TRUE(window.isMainWindow()) << "it is again with its application";
}

TEST_F(KeyWindows, AreTheMainOneNoLongerWhenTheyAreOrderedOut) {
    show(window);
    other.takesCommands = false;
    show(other);
    const Posts posts(&window);
    window.orderOut(nullptr);
    EXPECT_EQ(NSWindow::mainWindow(), nullptr);
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResignMainNotification));
}

TEST_F(KeyWindows, ResignWhenTheyAreOrderedOut) {
    show(window);
    const Posts posts(&window);
    window.orderOut(nullptr);
    settle();
    EXPECT_EQ(NSWindow::keyWindow(), nullptr);
    EXPECT_EQ(NSWindow::mainWindow(), nullptr);
    EXPECT_THAT(posts.names, ElementsAre(NSWindowDidResignKeyNotification, NSWindowDidResignMainNotification));
}

TEST_F(KeyWindows, TakeTheKeyboardAgainWhenTheyAreOrderedOutAndInInOneGo) {
    show(window);
    window.orderOut(nullptr);
    EXPECT_FALSE(window.isKeyWindow());
    window.makeKeyAndOrderFront(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); }));
}

TEST_F(KeyWindows, AreNoneWhenTheyDie) {
    auto brief = std::make_unique<HostWindow>(NSMakeRect(0, 0, 100, 80));
    show(*brief);
    brief.reset();
    EXPECT_EQ(NSWindow::keyWindow(), nullptr);
    EXPECT_EQ(NSWindow::mainWindow(), nullptr);
}

TEST_F(KeyWindows, HaveATitleUnlessASubclassSaysOtherwise) {
    NSWindow borderless(NSMakeRect(0, 0, 10, 10), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    NSWindow titled(NSMakeRect(0, 0, 10, 10), NSTitledWindowMask, NSBackingStoreBuffered, false);
    EXPECT_FALSE(borderless.canBecomeKeyWindow());
    EXPECT_FALSE(borderless.canBecomeMainWindow());
    EXPECT_TRUE(titled.canBecomeKeyWindow());
    EXPECT_FALSE(titled.canBecomeMainWindow()) << "not while it is out";
    const Posts posts(&borderless);
    show(borderless);
    EXPECT_FALSE(borderless.isKeyWindow());
    EXPECT_FALSE(borderless.isMainWindow());
    borderless.becomeKeyWindow();
    settle();
    EXPECT_FALSE(borderless.isKeyWindow());
    EXPECT_THAT(posts.names, IsEmpty());
    show(titled);
    EXPECT_TRUE(titled.isKeyWindow());
    EXPECT_TRUE(titled.canBecomeMainWindow());
}

TEST_F(KeyWindows, TakeTheKeyboardWhenToldThatTheyBecomeKey) {
    show(window);
    show(other);
    ASSERT_FALSE(window.isKeyWindow());
    window.becomeKeyWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); }));
    EXPECT_TRUE(window.isActiveWindow());
    EXPECT_FALSE(other.isKeyWindow());
    const Posts posts;
    window.becomeKeyWindow();
    settle();
    EXPECT_THAT(posts.names, IsEmpty()) << "it is already";
}

TEST_F(KeyWindows, TakeNothingWhileTheyAreOut) {
    window.becomeKeyWindow();
    window.makeKeyWindow();
    settle();
    EXPECT_FALSE(window.isKeyWindow());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(KeyWindows, HearOfTheChangeInTheirOwnOperations) {
    struct Told : HostWindow {
        using HostWindow::HostWindow;
        void becomeKeyWindow() override {
            calls.emplace_back("become");
            HostWindow::becomeKeyWindow();
        }
        void resignKeyWindow() override {
            calls.emplace_back("resign");
            HostWindow::resignKeyWindow();
        }
        std::vector<std::string> calls;
    } told{NSMakeRect(0, 0, 10, 10)};
    show(told);
    show(other);
    EXPECT_THAT(told.calls, ElementsAre("become", "resign"));
}

TEST_F(KeyWindows, AreActivatedByTheApplicationFromTheTopmostDown) {
    show(window);
    show(other);
    other.takesKeyboard = false;
    window.orderFront(nullptr);
    other.orderFront(nullptr);
    leave();
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); })) << "the one above takes no keys";
    EXPECT_FALSE(other.isKeyWindow());
}

TEST_F(KeyWindows, PassTheKeyboardToTheTopmostThatTakesItWhenTheyAreOrderedOut) {
    HostWindow last{NSMakeRect(0, 0, 100, 80)};
    show(window);
    show(other);
    show(last);
    other.takesKeyboard = false;
    last.orderOut(nullptr);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); }));
    settle();
    EXPECT_FALSE(other.isKeyWindow());
    EXPECT_TRUE(application.isActive());
}

TEST_F(KeyWindows, PassTheKeyboardOnWhenTheyAreClosed) {
    show(window);
    show(other);
    other.close();
    EXPECT_FALSE(other.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.isKeyWindow(); }));
}

TEST_F(KeyWindows, PassNothingOnWhenTheApplicationHasBeenLeft) {
    show(window);
    show(other);
    // As a click elsewhere does it, before the keyboard itself has gone.
    application.deactivate();
    other.orderOut(nullptr);
    settle();
    EXPECT_FALSE(window.isKeyWindow());
}

namespace {

class PressedView : public NSView {
public:
    explicit PressedView(std::vector<std::string>& log) : m_log(log) { setFocusPolicy(Qt::StrongFocus); }
    void keyDown(const NSEvent& event) override {
        constexpr std::uint16_t returnKey = 36;
        if (event.keyCode() == returnKey) {
            m_log.emplace_back("view");
        }
    }

private:
    std::vector<std::string>& m_log;
};

class DefaultButtons : public KeyWindows {
protected:
    void SetUp() override {
        auto view = std::make_unique<PressedView>(log);
        view->setFrame(NSMakeRect(0, 0, 40, 40));
        focused = view.get();
        window.content().addSubview(view.release());
        auto made = std::make_unique<NSButton>(NSMakeRect(50, 0, 40, 20));
        button = made.get();
        window.content().addSubview(made.release());
        QObject::connect(button, &QAbstractButton::clicked, button, [this] { log.emplace_back("button"); });
        window.setDefaultButtonCell(&button->cell());
        show(window);
        window.makeFirstResponder(focused);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    std::vector<std::string> log;
    PressedView* focused = nullptr;
    NSButton* button = nullptr;
};

} // namespace

TEST_F(DefaultButtons, AnswerReturnAndEnterWhereverTheKeyboardIs) {
    EXPECT_EQ(window.defaultButtonCell(), &button->cell());
    press(Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([this] { return log.size() == 1; }));
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return log.size() == 2; }));
    EXPECT_THAT(log, ElementsAre("button", "button"));
}

TEST_F(DefaultButtons, LeaveReturnWithAModifierToTheView) {
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_THAT(log, ElementsAre("view"));
}

TEST_F(DefaultButtons, LeaveReturnToTheViewWhereTheyCannotBeSeenOrAreNoMore) {
    button->hide();
    press(Qt::Key_Return);
    EXPECT_THAT(log, ElementsAre("view"));
    delete button;
    EXPECT_EQ(window.defaultButtonCell(), nullptr);
    press(Qt::Key_Return);
    EXPECT_THAT(log, ElementsAre("view", "view"));
}

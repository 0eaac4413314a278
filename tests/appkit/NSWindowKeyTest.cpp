// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

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

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QTest>
#include <QTimer>
#include <QWidget>

#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class PlatformApplication : public testing::Test {
protected:
    void whenRunning(std::function<void()> work) { QTimer::singleShot(0, &application, std::move(work)); }

    char name[5] = "host";
    char* argv[2] = {name, nullptr};
    int argc = 1;
    NSApplication application{argc, argv};
    std::vector<std::string> posts;
    NSNotificationObservation observation = NSNotificationCenter::defaultCenter().addObserverForName(
        "", &application, [this](const NSNotification& notification) { posts.emplace_back(notification.name); });
};

} // namespace

TEST_F(PlatformApplication, AnnouncesItsLaunchAndItsEndOnce) {
    whenRunning([this] { application.terminate(nullptr); });
    EXPECT_EQ(application.run(), 0);
    EXPECT_THAT(posts,
                ElementsAre(NSApplicationWillFinishLaunchingNotification, NSApplicationDidFinishLaunchingNotification,
                            NSApplicationWillTerminateNotification));
}

TEST_F(PlatformApplication, AnnouncesItsEndByQuitToo) {
    whenRunning([] { QCoreApplication::quit(); });
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(posts.back(), NSApplicationWillTerminateNotification);
    EXPECT_EQ(posts.size(), 3U);
}

TEST_F(PlatformApplication, DoesNotRunWhenItWasTerminatedBefore) {
    application.terminate(nullptr);
    EXPECT_EQ(application.run(), 0);
}

TEST_F(PlatformApplication, EndsWhenASignalAsksForIt) {
    whenRunning([] { ::raise(SIGTERM); });
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(posts.back(), NSApplicationWillTerminateNotification);
}

TEST_F(PlatformApplication, EndsInSpiteOfAnObserverThatFails) {
    const auto failing = NSNotificationCenter::defaultCenter().addObserverForName(
        NSApplicationWillTerminateNotification, nullptr, [](const NSNotification&) { throw std::runtime_error("no"); });
    whenRunning([this] { application.terminate(nullptr); });
    testing::internal::CaptureStderr();
    EXPECT_EQ(application.run(), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("no"));
}

TEST_F(PlatformApplication, OutlivesItsLastWindow) {
    QWidget window;
    window.show();
    bool closed = false;
    whenRunning([&] {
        window.close();
        closed = true;
        QTimer::singleShot(10, &application, [this] { application.terminate(nullptr); });
    });
    application.run();
    EXPECT_TRUE(closed);
    EXPECT_EQ(posts.back(), NSApplicationWillTerminateNotification);
}

TEST_F(PlatformApplication, AnnouncesActivationBeforeAndAfterTheChange) {
    std::vector<bool> active;
    const auto recorder = NSNotificationCenter::defaultCenter().addObserverForName(
        "", &application, [&](const NSNotification&) { active.push_back(application.isActive()); });
    NSWindow window(NSMakeRect(0, 0, 100, 80), NSTitledWindowMask, NSBackingStoreBuffered, false);
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_THAT(posts,
                ElementsAre(NSApplicationWillBecomeActiveNotification, NSApplicationDidBecomeActiveNotification));
    application.deactivate();
    EXPECT_THAT(posts,
                ElementsAre(NSApplicationWillBecomeActiveNotification, NSApplicationDidBecomeActiveNotification,
                            NSApplicationWillResignActiveNotification, NSApplicationDidResignActiveNotification));
    EXPECT_THAT(active, ElementsAre(false, true, true, false));
}

TEST_F(PlatformApplication, HasChangedItsWindowsBeforeItAnnouncesThatItChanged) {
    std::vector<std::string> all;
    const auto recorder = NSNotificationCenter::defaultCenter().addObserverForName(
        "", nullptr, [&](const NSNotification& notification) { all.emplace_back(notification.name); });
    NSWindow window(NSMakeRect(50, 50, 100, 80), NSTitledWindowMask, NSBackingStoreBuffered, false);
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_THAT(all, ElementsAre(NSApplicationWillBecomeActiveNotification, NSWindowDidBecomeKeyNotification,
                                 NSWindowDidBecomeMainNotification, NSApplicationDidBecomeActiveNotification));
}

TEST_F(PlatformApplication, BecomesActiveAgainAfterItResignedByItself) {
    NSWindow window(NSMakeRect(50, 50, 100, 80), NSTitledWindowMask, NSBackingStoreBuffered, false);
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    application.deactivate();
    application.deactivate();
    posts.clear();
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(application.isActive());
    QCoreApplication::processEvents();
    EXPECT_THAT(posts,
                ElementsAre(NSApplicationWillBecomeActiveNotification, NSApplicationDidBecomeActiveNotification));
}

TEST(PlatformApplicationObject, IsNullWithoutOne) {
    EXPECT_EQ(NSApplication::sharedApplication(), nullptr);
}

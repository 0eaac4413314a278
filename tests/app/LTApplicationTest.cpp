// SPDX-License-Identifier: MIT
#include <VXKit/app/LTApplication.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QWidget>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

NSDictionary applicationAt(const char* path, std::uint32_t high, std::uint32_t low, const char* name = "Other") {
    return {{NSApplicationNameKey, name},
            {NSApplicationPathKey, path},
            {NSApplicationProcessSerialNumberHighKey, high},
            {NSApplicationProcessSerialNumberLowKey, low}};
}

/// What the desktop tells, and what was asked of it, in the hands of the test.
struct Desktop {
    std::optional<NSDictionary> frontmost;
    std::vector<NSDictionary> launched;
    std::vector<ProcessSerialNumber> broughtToFront;
    std::vector<QString> launches;
    std::function<void()> whenBroughtToFront = [] {};
    std::function<void()> whenFrontmostIsAsked = [] {};
};

class FakeWorkspace : public NSWorkspace {
public:
    explicit FakeWorkspace(Desktop& desktop) : m_desktop(desktop) {}
    bool knowsApplications() const override { return true; }
    std::optional<NSDictionary> activeApplication() const override {
        m_desktop.whenFrontmostIsAsked();
        return m_desktop.frontmost;
    }
    std::vector<NSDictionary> launchedApplications() const override { return m_desktop.launched; }
    bool launchApplication(const QString& path) override {
        m_desktop.launches.push_back(path);
        return true;
    }
    void setFrontProcess(ProcessSerialNumber process) override {
        m_desktop.broughtToFront.push_back(process);
        m_desktop.whenBroughtToFront();
    }

private:
    Desktop& m_desktop;
};

class HostApplication : public LTApplication {
public:
    HostApplication() : LTApplication(s_argc, s_argv) {}

    using LTApplication::_theOtherApp;

    bool supportsSwitchingBackToPreviousApplication() const override { return supportsSwitchingBack; }
    bool shouldSwitchBackGracefully() const override { return gracefully; }

    bool supportsSwitchingBack = true;
    bool gracefully = true;

private:
    static inline char s_name[] = "host";
    static inline char* s_argv[] = {s_name, nullptr};
    static inline int s_argc = 1;
};

class Application : public testing::Test {
protected:
    Application() {
        NSWorkspace::setSharedWorkspace(std::make_unique<FakeWorkspace>(desktop));
        application.awakeFromNib();
    }
    ~Application() override { NSWorkspace::setSharedWorkspace(nullptr); }

    static void willResignActive() {
        NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationWillResignActiveNotification, nullptr);
    }

    /// The dictionary of this very process.
    static NSDictionary itself() {
        return {{NSApplicationNameKey, NSProcessInfo::processInfo().processName()}, {NSApplicationPathKey, "/itself"}};
    }

    Desktop desktop;
    HostApplication application;
};

template <class Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

} // namespace

TEST_F(Application, StartsInactiveWithNoOtherApplicationNoted) {
    EXPECT_FALSE(application.isActive());
    EXPECT_TRUE(application._theOtherApp.isNull());
}

TEST_F(Application, NotesTheFrontmostApplicationAndKeepsItWhileItselfIsFrontmost) {
    desktop.frontmost = applicationAt("/a", 0, 1);
    application.activateIgnoringOtherApps(true);
    application.activateIgnoringOtherApps(true);
    desktop.frontmost = itself();
    application.activateIgnoringOtherApps(true);
    EXPECT_EQ(application._theOtherApp, QStringLiteral("/a"));
    desktop.frontmost = applicationAt("/b", 0, 1);
    application.activateIgnoringOtherApps(true);
    EXPECT_EQ(application._theOtherApp, QStringLiteral("/b"));
}

TEST_F(Application, NotesItselfWhereItsDisplayNameIsNotItsProcessName) {
    desktop.frontmost = applicationAt("/itself", 0, 1, "Nice Name");
    application.activateIgnoringOtherApps(true);
    EXPECT_EQ(application._theOtherApp, QStringLiteral("/itself"));
}

TEST_F(Application, NotesNothingOnADesktopThatTellsNothing) {
    desktop.frontmost = applicationAt("/a", 0, 1);
    application.activateIgnoringOtherApps(true);
    desktop.frontmost = std::nullopt;
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(application._theOtherApp.isNull());
    application.switchBackToApp();
    EXPECT_THAT(desktop.broughtToFront, IsEmpty());
}

TEST_F(Application, IsActiveBeforeItAsksForTheFrontmostApplication) {
    bool wasActive = false;
    desktop.whenFrontmostIsAsked = [&] { wasActive = application.isActive(); };
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(wasActive);
}

TEST_F(Application, IsActiveFromActivationUntilItWillResignWhateverTheWindowServerThinks) {
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(application.isActive());
    EXPECT_TRUE(VXApplicationIsActive());
    EXPECT_FALSE(application.NSApplication::isActive());
    willResignActive();
    EXPECT_FALSE(application.isActive());
    EXPECT_FALSE(VXApplicationIsActive());
}

TEST_F(Application, ActivatesAWindowOfItsOwn) {
    QWidget window;
    window.show();
    QWidget other;
    other.show();
    application.activateIgnoringOtherApps(true);
    waitUntil([] { return QApplication::activeWindow() != nullptr; });
    EXPECT_TRUE(application.NSApplication::isActive());
}

TEST_F(Application, WithoutSwitchingBackNotesNothingAndStillActivates) {
    application.supportsSwitchingBack = false;
    desktop.frontmost = applicationAt("/a", 0, 1);
    QWidget window;
    window.show();
    application.activateIgnoringOtherApps(true);
    EXPECT_TRUE(application._theOtherApp.isNull());
    EXPECT_TRUE(application.isActive());
    waitUntil([] { return QApplication::activeWindow() != nullptr; });
    application._theOtherApp = QStringLiteral("/a");
    desktop.launched = {applicationAt("/a", 0, 1)};
    application.switchBackToApp();
    application.gracefully = false;
    application.switchBackToApp();
    EXPECT_THAT(desktop.broughtToFront, IsEmpty());
    EXPECT_THAT(desktop.launches, IsEmpty());
}

TEST_F(Application, BringsEveryRunningProcessOfTheOtherApplicationForwardInOrder) {
    application._theOtherApp = QStringLiteral("/a");
    desktop.launched = {applicationAt("/a", 1, 2), applicationAt("/b", 3, 4), applicationAt("/a", 0xFFFFFFFFU, 6),
                        NSDictionary{{NSApplicationNameKey, "no path"}}};
    application.switchBackToApp();
    EXPECT_THAT(desktop.broughtToFront, ElementsAre(ProcessSerialNumber{1, 2}, ProcessSerialNumber{0xFFFFFFFFU, 6}));
    EXPECT_THAT(desktop.launches, IsEmpty());
}

TEST_F(Application, ReadsTheListOfApplicationsAgainAfterEachEntry) {
    application._theOtherApp = QStringLiteral("/a");
    desktop.launched = {applicationAt("/a", 0, 1), applicationAt("/a", 0, 2), applicationAt("/a", 0, 3)};
    desktop.whenBroughtToFront = [this] {
        desktop.launched.pop_back();
        if (desktop.launched.size() == 2) {
            desktop.launched[1] = applicationAt("/a", 0, 9);
        }
    };
    application.switchBackToApp();
    EXPECT_THAT(desktop.broughtToFront, ElementsAre(ProcessSerialNumber{0, 1}, ProcessSerialNumber{0, 9}));
}

TEST_F(Application, DoesNothingWithAnEmptyListOfApplications) {
    application._theOtherApp = QStringLiteral("/a");
    application.switchBackToApp();
    EXPECT_THAT(desktop.broughtToFront, IsEmpty());
}

TEST_F(Application, LaunchesTheOtherApplicationWhenNotGraceful) {
    application.gracefully = false;
    application.switchBackToApp();
    application._theOtherApp = QStringLiteral("/a");
    desktop.launched = {applicationAt("/a", 0, 1)};
    application.switchBackToApp();
    EXPECT_THAT(desktop.launches, ElementsAre(QString(), QStringLiteral("/a")));
    EXPECT_THAT(desktop.broughtToFront, IsEmpty());
}

TEST_F(Application, AnswersTheDefaultsOfItsHooks) {
    int argc = 0;
    const LTApplicationProtocol& hooks = static_cast<LTApplication&>(application);
    EXPECT_EQ(&VXApplicationHooks(), &hooks);
    EXPECT_TRUE(hooks.helpURL().isEmpty());
    EXPECT_EQ(hooks.applicationController(), nullptr);
    EXPECT_EQ(hooks.syncManagerClass(), nullptr);
    EXPECT_EQ(hooks.mainWindowOpacity(), 1.0F);
    EXPECT_TRUE(application.LTApplication::supportsSwitchingBackToPreviousApplication());
    EXPECT_TRUE(application.LTApplication::shouldSwitchBackGracefully());
    static_cast<void>(argc);
}

TEST_F(Application, ClosesTheMainWindowOnDeactivationUnlessTheDefaultsSayNo) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    EXPECT_TRUE(application.shouldCloseMainWindowOnDeactivate());
    defaults.setBool(false, "VXCloseMainWindowOnDeactivate");
    EXPECT_FALSE(application.shouldCloseMainWindowOnDeactivate());
    defaults.setObject("YES", "VXCloseMainWindowOnDeactivate");
    EXPECT_TRUE(application.shouldCloseMainWindowOnDeactivate());
    defaults.setObject(0, "VXCloseMainWindowOnDeactivate");
    EXPECT_FALSE(application.shouldCloseMainWindowOnDeactivate());
}

TEST(ApplicationHooks, AnswerTheDefaultsWithoutAnApplication) {
    EXPECT_TRUE(VXApplicationHooks().supportsSwitchingBackToPreviousApplication());
    EXPECT_EQ(VXApplicationHooks().syncManagerClass(), nullptr);
    EXPECT_FALSE(VXApplicationIsActive());
}

// SPDX-License-Identifier: MIT
// What the workspace does on a real X server, beside another program.
#include "X11DesktopTestSupport.h"

#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <unistd.h>

namespace {

std::string nameOf(const std::optional<NSDictionary>& application) {
    const auto* name = application ? application->objectOfType<std::string>(NSApplicationNameKey) : nullptr;
    return name ? *name : std::string();
}

/// How many processes of the other program have a window.
std::ptrdiff_t numberOfClients() {
    const std::vector<NSDictionary> applications = NSWorkspace::sharedWorkspace().launchedApplications();
    return std::count_if(applications.begin(), applications.end(), [](const NSDictionary& application) {
        const auto* path = application.objectOfType<std::string>(NSApplicationPathKey);
        return path && *path == X11_CLIENT;
    });
}

} // namespace

TEST(X11Workspace, TellsTheActiveApplicationAndTheOthers) {
    const NSWorkspace& workspace = NSWorkspace::sharedWorkspace();
    ASSERT_TRUE(workspace.knowsApplications());
    const Client first(QRect(100, 100, 100, 80));
    const Client second(QRect(250, 100, 100, 80));
    const auto active = workspace.activeApplication();
    ASSERT_TRUE(active);
    EXPECT_EQ(*active->objectOfType<std::string>(NSApplicationPathKey), X11_CLIENT);
    EXPECT_EQ(nameOf(active), QFileInfo(QStringLiteral(X11_CLIENT)).fileName().toStdString());
    EXPECT_EQ(active->objectForKey(NSApplicationProcessSerialNumberHighKey)->integerValue(), 0);
    EXPECT_EQ(active->objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue(), second.process());

    std::vector<std::int64_t> processes;
    for (const NSDictionary& application : workspace.launchedApplications()) {
        processes.push_back(application.objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue());
    }
    const auto firstPlace = std::find(processes.begin(), processes.end(), first.process());
    const auto secondPlace = std::find(processes.begin(), processes.end(), second.process());
    ASSERT_NE(secondPlace, processes.end());
    EXPECT_LT(firstPlace, secondPlace);
}

TEST(X11Workspace, BringsAProcessToTheFront) {
    const Client first(QRect(100, 100, 100, 80));
    const Client second(QRect(250, 100, 100, 80));
    ASSERT_TRUE(second.isActive());
    SetFrontProcess({0, first.process()});
    EXPECT_TRUE(waitFor([&] { return first.isActive(); }));
    SetFrontProcess({0, second.process()});
    EXPECT_TRUE(waitFor([&] { return second.isActive(); }));
}

TEST(X11Workspace, BringsTheRunningProgramForwardInsteadOfStartingIt) {
    const Client client(QRect(100, 100, 100, 80));
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    WindowEffects::sharedEffects().takeKeyboard(own);
    ASSERT_TRUE(waitFor([&] { return own.isActiveWindow() && !client.isActive(); }));
    EXPECT_TRUE(NSWorkspace::sharedWorkspace().launchApplication(QStringLiteral(X11_CLIENT)));
    EXPECT_TRUE(waitFor([&] { return client.isActive(); }));
    EXPECT_EQ(numberOfClients(), 1);
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QString()));
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QStringLiteral("/nowhere/program")));
}

TEST(X11Workspace, IsItselfActiveInAWindowThatBypassesTheWindowManager) {
    const Client client(QRect(100, 100, 100, 80));
    ASSERT_TRUE(client.isActive());
    QWidget own;
    show(own, QRect(300, 300, 100, 80), bypassing);
    WindowEffects::sharedEffects().takeKeyboard(own);
    const std::string ownName = NSProcessInfo::processInfo().processName().toStdString();
    EXPECT_TRUE(waitFor([&] { return nameOf(NSWorkspace::sharedWorkspace().activeApplication()) == ownName; }));
    SetFrontProcess({0, client.process()});
    EXPECT_TRUE(waitFor([&] { return client.isActive(); }));
}

TEST(X11Workspace, DoesNotTakeAProcessOfAnotherMachineForOneOfThisOne) {
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    const auto ownProcess = static_cast<std::uint32_t>(getpid());
    ASSERT_TRUE(waitFor([&] { return launched(ownProcess).has_value(); }));
    const std::string elsewhere = "elsewhere.example.org";
    xcb_change_property(x(), XCB_PROP_MODE_REPLACE, nativeOf(own), XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(elsewhere.size()), elsewhere.c_str());
    EXPECT_FALSE(launched(ownProcess));
    xcb_delete_property(x(), nativeOf(own), XCB_ATOM_WM_CLIENT_MACHINE);
    EXPECT_TRUE(launched(ownProcess));
}

TEST(X11Workspace, LeavesOutAProcessThatIsGone) {
    QProcess gone;
    gone.start(QStringLiteral("true"), QStringList());
    ASSERT_TRUE(gone.waitForStarted());
    const auto process = static_cast<std::uint32_t>(gone.processId());
    ASSERT_TRUE(gone.waitForFinished());
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    ASSERT_TRUE(waitFor([&] { return launched(static_cast<std::uint32_t>(getpid())).has_value(); }));
    xcb_change_property(x(), XCB_PROP_MODE_REPLACE, nativeOf(own), atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                        &process);
    EXPECT_FALSE(launched(process));
    EXPECT_FALSE(launched(static_cast<std::uint32_t>(getpid())));
}

TEST(X11Workspace, TellsThePathOfAProgramWhoseFileIsGone) {
    const QTemporaryDir folder;
    const QString program = folder.filePath(QStringLiteral("program"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(X11_CLIENT), program));
    const Client client(QRect(100, 100, 100, 80), program);
    ASSERT_TRUE(QFile::remove(program));
    const auto application = launched(client.process());
    ASSERT_TRUE(application);
    EXPECT_EQ(*application->objectOfType<std::string>(NSApplicationPathKey), program.toStdString());
    EXPECT_EQ(nameOf(application), "program");
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/NSWorkspace.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(Workspace, KnowsNoApplicationsWhereTheDesktopTellsNothing) {
    NSWorkspace& workspace = NSWorkspace::sharedWorkspace();
    EXPECT_FALSE(workspace.knowsApplications());
    EXPECT_EQ(workspace.activeApplication(), std::nullopt);
    EXPECT_TRUE(workspace.launchedApplications().empty());
    SetFrontProcess({1, 2});
}

TEST(Workspace, LaunchesAProgram) {
    const QTemporaryDir folder;
    QFile script(folder.filePath(QStringLiteral("program")));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\ntouch \"$0.ran\"\n");
    script.close();
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    EXPECT_TRUE(NSWorkspace::sharedWorkspace().launchApplication(script.fileName()));
    while (!QFileInfo::exists(script.fileName() + QStringLiteral(".ran"))) {
    }
}

TEST(Workspace, DoesNotLaunchWhatIsNotThere) {
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QString()));
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QStringLiteral("/nowhere/program")));
}

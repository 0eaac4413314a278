// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QCoreApplication>

#include <unistd.h>

#include <gtest/gtest.h>

TEST(NSProcessInfo, IsNamedAfterTheExecutableWithoutAnApplication) {
    EXPECT_EQ(NSProcessInfo::processInfo().processName(), QStringLiteral("vxkit_foundation_tests"));
}

TEST(NSProcessInfo, IsNamedAfterTheApplication) {
    QCoreApplication::setApplicationName(QStringLiteral("Notes"));
    EXPECT_EQ(NSProcessInfo::processInfo().processName(), QStringLiteral("Notes"));
}

TEST(NSProcessInfo, PrefersTheNameThatWasSet) {
    QCoreApplication::setApplicationName(QStringLiteral("Notes"));
    NSProcessInfo::processInfo().setProcessName(QStringLiteral("Renamed"));
    EXPECT_EQ(NSProcessInfo::processInfo().processName(), QStringLiteral("Renamed"));
    NSProcessInfo::processInfo().setProcessName(QString());
    EXPECT_EQ(NSProcessInfo::processInfo().processName(), QStringLiteral("Notes"));
}

TEST(NSProcessInfo, HasTheKernelsNumber) {
    EXPECT_EQ(NSProcessInfo::processInfo().processIdentifier(), ::getpid());
}

TEST(NSProcessInfo, UptimeAdvances) {
    const double before = NSProcessInfo::processInfo().systemUptime();
    EXPECT_GT(before, 0);
    while (NSProcessInfo::processInfo().systemUptime() == before) {
    }
    EXPECT_GT(NSProcessInfo::processInfo().systemUptime(), before);
}

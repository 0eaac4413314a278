// SPDX-License-Identifier: MIT
#include <VXKit/support/VXLog.h>

#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <gtest/gtest.h>

namespace {

constexpr std::string_view loggingKey = "VXLoggingEnabled";

// Each test is the first to log in its process, so the switch has not been read yet.
void setLogging(bool enabled) {
    NSUserDefaults::standardUserDefaults().setBool(enabled, loggingKey);
}

template <class Action>
std::string logOf(Action action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

void logInBothWays() {
    VXLog("Found %@ of %d", QStringLiteral("two"), 3);
    VXLogv("Passed on %@", NSMakeFormatArguments(4));
}

// Counts how often it is asked to describe itself.
struct Described {
    int* count;
    [[nodiscard]] QString description() const {
        ++*count;
        return QStringLiteral("described");
    }
};

} // namespace

TEST(VXLog, IsOffWhenTheSwitchIsAbsent) {
    EXPECT_EQ(logOf(logInBothWays), "");
    EXPECT_FALSE(VXShouldLog());
}

TEST(VXLog, IsOffWhenTheSwitchIsOff) {
    setLogging(false);
    EXPECT_FALSE(VXShouldLog());
    EXPECT_EQ(logOf(logInBothWays), "");
}

TEST(VXLog, WritesOneLineACallWithoutAPrefixOfItsOwn) {
    setLogging(true);
    EXPECT_TRUE(VXShouldLog());
    const std::string log = logOf(logInBothWays);
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
    EXPECT_NE(log.find("] Found two of 3\n"), std::string::npos) << log;
    EXPECT_NE(log.find("] Passed on 4\n"), std::string::npos) << log;
}

TEST(VXLog, StaysOffInAProcessThatFoundItOff) {
    EXPECT_FALSE(VXShouldLog());
    setLogging(true);
    EXPECT_FALSE(VXShouldLog());
    EXPECT_EQ(logOf(logInBothWays), "");
}

TEST(VXLog, StaysOnInAProcessThatFoundItOn) {
    setLogging(true);
    EXPECT_TRUE(VXShouldLog());
    setLogging(false);
    EXPECT_TRUE(VXShouldLog());
    EXPECT_NE(logOf(logInBothWays), "");
}

TEST(VXLog, ReadsTheSwitchForAllWhenItIsTheFirstToBeCalled) {
    setLogging(true);
    EXPECT_NE(logOf([] { VXLog("first"); }), "");
    setLogging(false);
    EXPECT_NE(logOf([] { VXLogv("second", {}); }), "");
    EXPECT_TRUE(VXShouldLog());
}

TEST(VXLogv, ReadsTheSwitchForAllWhenItIsTheFirstToBeCalled) {
    EXPECT_EQ(logOf([] { VXLogv("first", {}); }), "");
    setLogging(true);
    EXPECT_EQ(logOf([] { VXLog("second"); }), "");
    EXPECT_FALSE(VXShouldLog());
}

TEST(VXLog, DoesNotFormatItsArgumentsWhenItIsOff) {
    int count = 0;
    const Described object{&count};
    VXLog("%@", object);
    VXLogv("%@", NSMakeFormatArguments(object));
    EXPECT_EQ(count, 0);
}

TEST(VXLog, FormatsItsArgumentsOnceWhenItIsOn) {
    setLogging(true);
    int count = 0;
    const Described object{&count};
    EXPECT_NE(logOf([&] { VXLog("%@", object); }).find("] described\n"), std::string::npos);
    EXPECT_EQ(count, 1);
}

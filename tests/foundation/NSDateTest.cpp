// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/platform/foundation/NSException.h>

#include <chrono>
#include <limits>

#include <gtest/gtest.h>

TEST(NSDate, KeepsEveryBitOfItsSeconds) {
    for (const double seconds : {0.1, 1.0e6 + 0.25, -1.0e-300, 1732147200.123456789, std::numeric_limits<double>::max(),
                                 std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(seconds).timeIntervalSince1970(), seconds);
    }
}

TEST(NSDate, IsEqualOnlyToTheVerySameInstant) {
    const double seconds = 1732147200.5;
    const NSDate date = NSDate::dateWithTimeIntervalSince1970(seconds);
    EXPECT_TRUE(date.isEqualToDate(NSDate::dateWithTimeIntervalSince1970(seconds)));
    EXPECT_FALSE(date.isEqualToDate(NSDate::dateWithTimeIntervalSince1970(std::nextafter(seconds, 0))));
}

TEST(NSDate, TakesNegativeZeroForZero) {
    EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(-0.0), NSDate::dateWithTimeIntervalSince1970(0.0));
}

TEST(NSDate, RefusesNotANumber) {
    EXPECT_THROW(static_cast<void>(NSDate::dateWithTimeIntervalSince1970(std::numeric_limits<double>::quiet_NaN())),
                 NSException);
}

TEST(NSDate, OrdersByTime) {
    EXPECT_LT(NSDate::dateWithTimeIntervalSince1970(-1), NSDate::dateWithTimeIntervalSince1970(1));
}

TEST(NSDate, NowLiesBetweenTwoReadingsOfTheClock) {
    const auto clock = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const double before = clock();
    const double now = NSDate::date().timeIntervalSince1970();
    EXPECT_LE(before, now);
    EXPECT_LE(now, clock());
}

// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <cmath>
#include <limits>
#include <type_traits>

using namespace std::string_literals;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

double real(const NSPropertyList& value) {
    return value.doubleValue();
}

std::int64_t whole(const NSPropertyList& value) {
    return value.integerValue();
}

bool truth(const NSPropertyList& value) {
    return value.boolValue();
}

} // namespace

TEST(NSPropertyList, HoldsWholeNumbersSignedWhereTheyFit) {
    EXPECT_TRUE(NSPropertyList(3U).as<std::int64_t>());
    EXPECT_TRUE(NSPropertyList(std::uint64_t{highest}).as<std::int64_t>());
    EXPECT_TRUE(NSPropertyList(std::uint64_t{highest} + 1).as<std::uint64_t>());
    EXPECT_EQ(NSPropertyList(3U), NSPropertyList(std::int64_t{3}));
}

TEST(NSPropertyList, KindsAreNotEqual) {
    EXPECT_NE(NSPropertyList(true), NSPropertyList(1));
    EXPECT_NE(NSPropertyList(1), NSPropertyList(1.0));
    EXPECT_NE(NSPropertyList("1"), NSPropertyList(1));
    EXPECT_NE(NSPropertyList(dateAt(1)), NSPropertyList(1.0));
    EXPECT_NE(NSPropertyList(NSArray{}), NSPropertyList(NSDictionary{}));
    EXPECT_NE(NSPropertyList(""), NSPropertyList(NSData{}));
}

TEST(NSPropertyList, EqualsItsCopy) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(NSPropertyList(nan), NSPropertyList(-nan));
    EXPECT_EQ(NSPropertyList(-0.0), NSPropertyList(0.0));
    EXPECT_NE(NSPropertyList(nan), NSPropertyList(0.0));
    for (unsigned seed = 0; seed < 200; ++seed) {
        const NSPropertyList value = RandomValues(seed).value();
        const NSPropertyList copy = value; // NOLINT(performance-unnecessary-copy-initialization): what is tested
        EXPECT_EQ(copy, value);
        EXPECT_NE(NSPropertyList(NSArray{value}), value);
    }
}

TEST(NSPropertyList, MovesWithoutThrowing) {
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<NSPropertyList>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<NSPropertyList>);
}

TEST(NSPropertyList, DoubleValueOfNumbersAndStrings) {
    EXPECT_EQ(real(2.5), 2.5);
    EXPECT_EQ(real(-3), -3.0);
    EXPECT_EQ(real(std::numeric_limits<std::uint64_t>::max()), 18446744073709551616.0);
    EXPECT_EQ(real(true), 1.0);
    EXPECT_EQ(real(" \t\n-2.5e1 apples"), -25.0);
    EXPECT_EQ(real("+.5"), 0.5);
    EXPECT_EQ(real("1,5"), 1.0);
    EXPECT_EQ(real("12e"), 12.0);
    EXPECT_EQ(real("1e999"), infinity);
    EXPECT_EQ(real("-1e999"), -infinity);
    EXPECT_EQ(real("1e-999"), 0.0);
    EXPECT_EQ(real(std::string(400, '9')), infinity);
    EXPECT_EQ(real("0." + std::string(400, '0') + "1"), 0.0);
    for (const char* text : {"", " ", "apples", "inf", "nan", "-", "--1", "+-1", ".", "e5"}) {
        EXPECT_EQ(real(text), 0.0) << text;
    }
    EXPECT_EQ(real(dateAt(5)), 0.0);
    EXPECT_EQ(real(NSArray{1}), 0.0);
}

TEST(NSPropertyList, IntegerValueIsCutOffAndHeldWithinItsRange) {
    EXPECT_EQ(whole(2.9), 2);
    EXPECT_EQ(whole(-2.9), -2);
    EXPECT_EQ(whole(1e300), highest);
    EXPECT_EQ(whole(9223372036854775808.0), highest);
    EXPECT_EQ(whole(-9223372036854775808.0), lowest);
    EXPECT_EQ(whole(-infinity), lowest);
    EXPECT_EQ(whole(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(whole(std::numeric_limits<std::uint64_t>::max()), highest);
    EXPECT_EQ(whole(true), 1);
    EXPECT_EQ(whole(" -42.9 apples"), -42);
    EXPECT_EQ(whole("9223372036854775807"), highest);
    EXPECT_EQ(whole("9223372036854775808"), highest);
    EXPECT_EQ(whole("-9223372036854775808"), lowest);
    EXPECT_EQ(whole("99999999999999999999999"), highest);
    EXPECT_EQ(whole("-99999999999999999999999"), lowest);
    EXPECT_EQ(whole("apples"), 0);
    EXPECT_EQ(whole(""), 0);
    EXPECT_EQ(whole(NSData{1}), 0);
}

TEST(NSPropertyList, BoolValueOfNumbersAndStrings) {
    EXPECT_TRUE(truth(true));
    EXPECT_TRUE(truth(0.1));
    EXPECT_TRUE(truth(-1));
    EXPECT_FALSE(truth(0));
    EXPECT_FALSE(truth(-0.0));
    for (const char* text : {"Y", "yes", "T", "true", "1", "9x", " \t+0003", "-00Y"}) {
        EXPECT_TRUE(truth(text)) << text;
    }
    for (const char* text : {"", " ", "0", "000", "N", "no", "false", "x1", "--1", "0 1"}) {
        EXPECT_FALSE(truth(text)) << text;
    }
    EXPECT_FALSE(truth(dateAt(1)));
    EXPECT_FALSE(truth(NSArray{1}));
}

TEST(NSPropertyList, TellsItsTypeByPointer) {
    NSPropertyList value = NSArray{1};
    ASSERT_TRUE(value.as<NSArray>());
    value.as<NSArray>()->push_back("two");
    EXPECT_EQ(value, (NSArray{1, "two"}));
    EXPECT_FALSE(value.as<std::string>());
}

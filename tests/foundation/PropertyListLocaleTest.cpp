// SPDX-License-Identifier: MIT
// The readers and writers in a locale with a decimal comma, and in one where the capital of i is no I.
#include "PropertyListTestSupport.h"

#include <clocale>

namespace {

class PropertyListLocale : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!std::setlocale(LC_ALL, GetParam())) {
            GTEST_SKIP() << "the locale " << GetParam() << " is not installed";
        }
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

} // namespace

TEST_P(PropertyListLocale, WritesNumbersWithAPoint) {
    EXPECT_EQ(xmlOf(1234567.5), xmlHead + "<real>1234567.5</real>\n" + xmlTail);
    EXPECT_EQ(NSPropertyList(NSArray{0.5}).description(), QStringLiteral("(\n    0.5\n)"));
    EXPECT_EQ(xmlOf(1e22), xmlHead + "<real>1e+22</real>\n" + xmlTail);
}

TEST_P(PropertyListLocale, ReadsNumbersWithAPoint) {
    EXPECT_EQ(readPropertyList(xmlDocument("<real>0.5</real>")), 0.5);
    EXPECT_EQ(readPropertyList("<*R0.5>"), 0.5);
    EXPECT_EQ(NSPropertyList("2.5 apples").doubleValue(), 2.5);
    EXPECT_FALSE(readingError(xmlDocument("<real>0,5</real>")).empty());
}

TEST_P(PropertyListLocale, KnowsInfinityAndEncodingsWhateverTheirCase) {
    EXPECT_EQ(readPropertyList(xmlDocument("<real>INFINITY</real>")), std::numeric_limits<double>::infinity());
    EXPECT_EQ(readPropertyList("<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><plist><string>\xDD</string></plist>"),
              "Ý");
}

TEST_P(PropertyListLocale, RoundTripsValues) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        const NSPropertyList value = RandomValues(seed).value();
        ASSERT_EQ(readPropertyList(xmlOf(value)), value) << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(German, PropertyListLocale, testing::Values("de_DE.UTF-8"));
INSTANTIATE_TEST_SUITE_P(Turkish, PropertyListLocale, testing::Values("tr_TR.UTF-8"));

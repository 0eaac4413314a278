// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// What stands between `<plist>` and `</plist>`.
std::string written(const NSPropertyList& value) {
    const std::string xml = xmlOf(value);
    EXPECT_THAT(xml, StartsWith(xmlHead));
    return xml.substr(xmlHead.size(), xml.size() - xmlHead.size() - xmlTail.size());
}

std::string description(const NSPropertyList& value) {
    return value.description().toStdString();
}

} // namespace

TEST(PropertyListXMLWriter, WritesTheWholeDocument) {
    const NSDictionary value{{"title", "a<b & c>d"},
                             {"count", 3},
                             {"list", NSArray{true, false, NSArray{}, NSDictionary{}, 0.5}},
                             {"Zulu", dateAt(1795176000)},
                             {"data", NSData{'A', 'B', 'C'}}};
    EXPECT_EQ(xmlOf(value), xmlHead +
                                "<dict>\n"
                                "\t<key>Zulu</key>\n"
                                "\t<date>2026-11-20T12:00:00Z</date>\n"
                                "\t<key>count</key>\n"
                                "\t<integer>3</integer>\n"
                                "\t<key>data</key>\n"
                                "\t<data>\n"
                                "\tQUJD\n"
                                "\t</data>\n"
                                "\t<key>list</key>\n"
                                "\t<array>\n"
                                "\t\t<true/>\n"
                                "\t\t<false/>\n"
                                "\t\t<array/>\n"
                                "\t\t<dict/>\n"
                                "\t\t<real>0.5</real>\n"
                                "\t</array>\n"
                                "\t<key>title</key>\n"
                                "\t<string>a&lt;b &amp; c&gt;d</string>\n"
                                "</dict>\n" +
                                xmlTail);
}

TEST(PropertyListXMLWriter, WritesTheShortestRealThatReadsBack) {
    const std::vector<std::pair<double, std::string>> cases{
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {1, "1.0"},
        {0.1, "0.1"},
        {100000, "100000.0"},
        {1e15, "1000000000000000.0"},
        {1e16, "1e+16"},
        {9007199254740993.0, "9007199254740992.0"},
        {123456789012345680.0, "1.2345678901234568e+17"},
        {1e22, "1e+22"},
        {1e100, "1e+100"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {0.00012345, "0.00012345"},
        {-12.75, "-12.75"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"}};
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(written(value), "<real>" + text + "</real>\n");
        EXPECT_EQ(readPropertyList(xmlOf(value)), value);
    }
}

TEST(PropertyListXMLWriter, WritesIntegersOfBothSigns) {
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "<integer>-9223372036854775808</integer>\n");
    EXPECT_EQ(written(std::numeric_limits<std::uint64_t>::max()), "<integer>18446744073709551615</integer>\n");
}

TEST(PropertyListXMLWriter, KeepsEveryLineEnd) {
    EXPECT_EQ(written("a\r\nb\rc\n\td"), "<string>a&#13;\nb&#13;c\n\td</string>\n");
    for (const char* text : {"\r", "\n", "\r\n", "\n\r", "a\r", "\r\r\n\n"}) {
        EXPECT_EQ(readPropertyList(xmlOf(text)), text);
        EXPECT_EQ(readPropertyList(xmlOf(NSDictionary{{text, text}})), (NSDictionary{{text, text}}));
    }
}

TEST(PropertyListXMLWriter, WritesAnEmptyStringAsATagPair) {
    EXPECT_EQ(written(""), "<string></string>\n");
    EXPECT_EQ(written(NSDictionary{{"", ""}}), "<dict>\n\t<key></key>\n\t<string></string>\n</dict>\n");
}

TEST(PropertyListXMLWriter, SortsKeysByCodePoint) {
    const NSDictionary value{{"😀", 1}, {"\uFFFD", 1}, {"é", 1}, {"b", 1}, {"B", 1}, {"a1", 1}, {"a", 1}, {"", 1}};
    std::string keys;
    const std::string xml = written(value);
    for (std::size_t at = xml.find("<key>"); at != std::string::npos; at = xml.find("<key>", at + 1)) {
        keys += xml.substr(at + 5, xml.find("</key>", at) - at - 5) + "|";
    }
    EXPECT_EQ(keys, "|B|a|a1|b|é|\uFFFD|😀|");
}

TEST(PropertyListXMLWriter, GivesTheSameBytesForEqualDictionaries) {
    const NSDictionary one{{"b", 1}, {"a", 2}, {"c", NSArray{1.0}}};
    const NSDictionary other{{"c", NSArray{1.0}}, {"a", 2}, {"b", 1}};
    EXPECT_EQ(one, other);
    EXPECT_EQ(xmlOf(one), xmlOf(other));
}

TEST(PropertyListXMLWriter, CutsDatesDownToTheirSecond) {
    EXPECT_EQ(written(dateAt(0.999)), "<date>1970-01-01T00:00:00Z</date>\n");
    EXPECT_EQ(written(dateAt(-0.001)), "<date>1969-12-31T23:59:59Z</date>\n");
    EXPECT_EQ(written(dateAt(951782400)), "<date>2000-02-29T00:00:00Z</date>\n");
    EXPECT_EQ(written(dateAt(-62135596800)), "<date>0001-01-01T00:00:00Z</date>\n");
    EXPECT_EQ(written(dateAt(253402300799.9)), "<date>9999-12-31T23:59:59Z</date>\n");
}

TEST(PropertyListXMLWriter, RefusesDatesOutsideTheYears1To9999) {
    for (const double seconds : {-62135596800.5, 253402300800.0, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(writingError(NSDictionary{{"a", NSArray{true, dateAt(seconds)}}}),
                  "a[1]: the date lies outside the years 1 to 9999");
    }
}

TEST(PropertyListXMLWriter, RefusesControlCharactersAndSaysWhere) {
    for (char character = 0; character < 0x20; ++character) {
        if (character == '\t' || character == '\n' || character == '\r') {
            continue;
        }
        std::string text(40, 'a');
        text.push_back(character);
        EXPECT_THAT(writingError(NSDictionary{{"list", NSArray{NSDictionary{{"body", text}}}}}),
                    StartsWith("list[0].body: the text holds the control character U+00"));
        EXPECT_THAT(writingError(NSDictionary{{text, true}}), HasSubstr("control character"));
    }
    EXPECT_EQ(writingError("\x1B"), "the text holds the control character U+001b, which XML cannot hold");
    EXPECT_EQ(written("\x7F"), "<string>\x7F</string>\n");
}

TEST(PropertyListXMLWriter, RefusesTextThatIsNotUTF8) {
    EXPECT_EQ(writingError(NSArray{"a\xC3"}), "[0]: the text is not valid UTF-8");
    EXPECT_THAT(writingError("\xED\xA0\x80"), HasSubstr("not valid UTF-8"));
    EXPECT_THAT(writingError(NSDictionary{{"\xFF", true}}), HasSubstr("not valid UTF-8"));
}

TEST(PropertyListXMLWriter, RefusesWhatIsTooDeepToBeReadBack) {
    NSPropertyList value = true;
    for (int level = 0; level < 512; ++level) {
        value = NSArray{std::move(value)};
    }
    EXPECT_EQ(readPropertyList(xmlOf(value)), value);
    EXPECT_THAT(writingError(NSArray{value}), HasSubstr("more than 512 levels"));
    EXPECT_THAT(writingError(NSDictionary{{"a", value}}), HasSubstr("more than 512 levels"));
}

TEST(PropertyListXMLWriter, BreaksDataIntoLinesThatGetShorterAsItIsIndented) {
    NSPropertyList value = NSData(100, 0);
    for (const std::size_t columns : {76U, 68U, 60U, 52U, 44U, 36U, 28U, 20U, 16U, 16U, 16U}) {
        const std::string xml = written(value);
        const std::size_t line = xml.find("AAAA");
        EXPECT_EQ(xml.find('\n', line) - line, columns / 4 * 4);
        value = NSArray{std::move(value)};
    }
}

TEST(PropertyListXMLWriter, WhatIsWrittenReadsBackAsTheSame) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        const NSPropertyList value = RandomValues(seed).value();
        const std::string xml = xmlOf(value);
        const NSPropertyList read = readPropertyList(xml);
        ASSERT_EQ(read, value) << seed;
        ASSERT_EQ(xmlOf(read), xml) << seed;
    }
}

TEST(PropertyListDescription, IndentsContainersByFourSpaces) {
    const NSDictionary value{{"b", NSArray{1, NSDictionary{{"c", "d"}}, NSArray{}}}, {"a", "text"}};
    EXPECT_EQ(description(value), "{\n"
                                  "    a = text;\n"
                                  "    b = (\n"
                                  "        1,\n"
                                  "        {\n"
                                  "            c = d;\n"
                                  "        },\n"
                                  "        (\n"
                                  "        )\n"
                                  "    );\n"
                                  "}");
    EXPECT_EQ(description(NSDictionary{}), "{\n}");
}

TEST(PropertyListDescription, QuotesOnlyWhatWouldNotReadBack) {
    const auto inArray = [](const char* text) {
        const std::string whole = description(NSArray{text});
        return whole.substr(6, whole.size() - 8);
    };
    EXPECT_EQ(inArray("word"), "word");
    EXPECT_EQ(inArray("a.b-c_$d/e:f"), "a.b-c_$d/e:f");
    EXPECT_EQ(inArray(""), "\"\"");
    EXPECT_EQ(inArray("two words"), "\"two words\"");
    EXPECT_EQ(inArray("a+b"), "\"a+b\"");
    EXPECT_EQ(inArray("//comment"), "\"//comment\"");
    EXPECT_EQ(inArray("say \"\\\""), "\"say \\\"\\\\\\\"\"");
    EXPECT_EQ(inArray("a\n\t\x01\x7F"), "\"a\\n\\t\\001\\U007f\"");
    EXPECT_EQ(inArray("é日😀"), "\"\\U00e9\\U65e5\\Ud83d\\Ude00\"");
    EXPECT_EQ(inArray("\uFEFFa"), "\"\\Ufeffa\"");
    EXPECT_EQ(inArray("a\xFF"), "\"a\\Ufffd\"");
}

TEST(PropertyListDescription, WritesScalarsAsText) {
    const NSArray value{true,
                        false,
                        -3,
                        0.5,
                        1.0,
                        1e16,
                        dateAt(1795176000.75),
                        NSData{0x0F, 0xBD, 0x77, 0x7F, 0x1C},
                        std::numeric_limits<std::uint64_t>::max()};
    EXPECT_EQ(description(value),
              "(\n    1,\n    0,\n    -3,\n    0.5,\n    1,\n    \"1e+16\",\n"
              "    \"2026-11-20 12:00:00 +0000\",\n    <0fbd777f 1c>,\n    18446744073709551615\n)");
}

TEST(PropertyListDescription, StringAtTheTopStandsAsItIs) {
    EXPECT_EQ(description("two \"words\" é"), "two \"words\" é");
    EXPECT_EQ(description("\uFEFFa"), "\uFEFFa");
    EXPECT_EQ(description(""), "");
    EXPECT_EQ(description(2.5), "2.5");
    EXPECT_EQ(description(true), "1");
    EXPECT_EQ(description(dateAt(0)), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(description(dateAt(1e300)), "1e+300");
    EXPECT_EQ(description(NSData{}), "<>");
}

TEST(PropertyListDescription, ReadsBackAsTheSameText) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        const NSPropertyList value = NSArray{RandomValues(seed).value()};
        ASSERT_EQ(description(readPropertyList(description(value))), description(value)) << seed;
    }
}

TEST(PropertyListDescription, LeavesOutWhatIsTooDeep) {
    NSPropertyList value = true;
    for (int level = 0; level < 600; ++level) {
        value = NSArray{std::move(value)};
    }
    EXPECT_THAT(description(value), StartsWith("(\n    (\n"));
}

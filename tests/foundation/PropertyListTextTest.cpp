// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <limits>

#include <gmock/gmock.h>

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string textSample = "{\n"
                               "    a = (one, \"t\\U00e9 \\\"w\\\"o\", <0fbd777f 1c>, {});\n"
                               "    /* c */ \"b c\" = <*I-3>; // d\n"
                               "    e = <*D2026-11-20 13:00:00 +0100>;\n"
                               "}";

} // namespace

TEST(PropertyListText, ReadsEveryKindOfValue) {
    const NSPropertyList expected =
        NSDictionary{{"a", NSArray{"one", "té \"w\"o", NSData{0x0F, 0xBD, 0x77, 0x7F, 0x1C}, NSDictionary{}}},
                     {"b c", -3},
                     {"e", dateAt(1795176000)}};
    NSPropertyListFormat format{};
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(textSample, &format, nullptr), expected);
    EXPECT_EQ(format, NSPropertyListFormat::OpenStep);
}

TEST(PropertyListText, EveryTruncationIsAnErrorThatNamesALine) {
    for (std::size_t length = 0; length < textSample.size(); ++length) {
        NSError error;
        const std::vector<char> bytes(textSample.begin(), textSample.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(NSPropertyListSerialization::propertyListWithData({bytes.data(), length}, nullptr, &error))
            << length;
        EXPECT_THAT(error.localizedDescription.toStdString(), StartsWith("line ")) << length;
    }
}

TEST(PropertyListText, AnyChangedByteIsAValueOrAnError) {
    for (std::size_t position = 0; position < textSample.size(); ++position) {
        for (const char byte : {'\0', '<', '"', '\\', '\xFF', '*', '/', ')', '}'}) {
            std::string bytes = textSample;
            bytes[position] = byte;
            NSError error;
            if (!NSPropertyListSerialization::propertyListWithData(bytes, nullptr, &error)) {
                EXPECT_FALSE(error.localizedDescription.isEmpty());
            }
        }
    }
}

TEST(PropertyListText, NothingButCommentsIsAnError) {
    EXPECT_EQ(readingError("/* a */\n// b"), "line 2: the text holds no value");
    EXPECT_EQ(readingError("\n/* a"), "line 2: a comment does not end");
}

TEST(PropertyListText, ReadsBareStrings) {
    EXPECT_EQ(readPropertyList(" word "), "word");
    EXPECT_EQ(readPropertyList("(a.b-c_$d/e:f+g@h, 0.5, http://example.org/a)"),
              (NSArray{"a.b-c_$d/e:f+g@h", "0.5", "http://example.org/a"}));
    EXPECT_EQ(readPropertyList("(a/* b */, //c\nd)"), (NSArray{"a", "d"}));
}

TEST(PropertyListText, DecodesEscapes) {
    EXPECT_EQ(readPropertyList(R"("\a\b\f\n\r\t\v\"\\\'\q")"), "\a\b\f\n\r\t\v\"\\'q");
    EXPECT_EQ(readPropertyList(R"('it "is"')"), "it \"is\"");
    EXPECT_EQ(readPropertyList(R"("\U65E5\u00e9\Ud83d\Ude00\U41")"), "日é😀A");
    EXPECT_EQ(readPropertyList("\"a\\\nb\""), "a\nb");
    EXPECT_EQ(readPropertyList("\"\""), "");
}

TEST(PropertyListText, TakesOctalEscapesForCharactersOfTheNeXTSTEPSet) {
    EXPECT_EQ(readPropertyList(R"("\101\12\7Z\351\200\256\375")"), "A\n\7ZØ\u00A0\uFB01ÿ");
    EXPECT_EQ(readPropertyList(R"("\0011")"), "\x01"
                                              "1");
    EXPECT_THAT(readingError(R"("\376")"), HasSubstr("octal"));
    EXPECT_THAT(readingError(R"("\777")"), HasSubstr("octal"));
}

TEST(PropertyListText, RefusesHalvesOfUTF16Pairs) {
    EXPECT_THAT(readingError(R"("\Ud83d")"), HasSubstr("pair"));
    EXPECT_THAT(readingError(R"("\Ude00")"), HasSubstr("pair"));
    EXPECT_THAT(readingError(R"("\Ud83d\U0041")"), HasSubstr("pair"));
    EXPECT_THAT(readingError(R"("\Ux")"), HasSubstr("hexadecimal digit"));
}

TEST(PropertyListText, ReadsTypedValues) {
    EXPECT_EQ(readPropertyList("(<*I3>, <*I-3>, <*I18446744073709551615>, <*R1.5e3>, <*R-1>, <*BY>, <*BN>)"),
              (NSArray{3, -3, std::numeric_limits<std::uint64_t>::max(), 1500.0, -1.0, true, false}));
    EXPECT_EQ(readPropertyList("<*D1970-01-01 01:30:00 +0130>"), dateAt(0));
    EXPECT_EQ(readPropertyList("<*D1969-12-31 18:30:00 -0530>"), dateAt(0));
    EXPECT_EQ(readPropertyList("<*I\"3\">"), 3);
    EXPECT_EQ(readPropertyList("<[QUJD]>"), (NSData{'A', 'B', 'C'}));
}

TEST(PropertyListText, RefusesMalformedTypedValues) {
    for (const char* text :
         {"<*>", "<*I>", "<*Ix>", "<*I1.5>", "<*I18446744073709551616>", "<*R1,5>", "<*Rx>", "<*BX>", "<*B>",
          "<*D2024-05-01>", "<*D2024-05-01 12:00:00>", "<*D2024-05-01 12:00:00 0000>", "<*X1>", "<*I3", "<*",
          "<*I\"3\"", "<*D2024-02-30 12:00:00 +0000>", "<*D2024-05-01 12:00:00 +0075>"}) {
        EXPECT_THAT(readingError("\n"s + text), HasSubstr("a typed value")) << text;
    }
    EXPECT_THAT(readingError("<[Q]>"), HasSubstr("base 64"));
    EXPECT_THAT(readingError("<[QUJD"), HasSubstr("base 64"));
}

TEST(PropertyListText, ReadsData) {
    EXPECT_EQ(readPropertyList("<>"), NSData{});
    EXPECT_EQ(readPropertyList("< 0 F\n/* c */ fF >"), (NSData{0x0F, 0xFF}));
    EXPECT_THAT(readingError("<0>"), HasSubstr("odd number"));
    EXPECT_THAT(readingError("<0g>"), HasSubstr("odd number"));
    EXPECT_THAT(readingError("<00"), HasSubstr("data does not end"));
    EXPECT_THAT(readingError("<00 x>"), HasSubstr("no hexadecimal digit"));
}

TEST(PropertyListText, PassesOverTheSeparatorsOfLinesAndParagraphs) {
    EXPECT_EQ(readPropertyList("\u2028(a,\u2029b\u2028)"), (NSArray{"a", "b"}));
}

TEST(PropertyListText, ReadsPairsWithoutBraces) {
    EXPECT_EQ(readPropertyList("/* greeting */\n\"Hello\" = \"Bonjour\";\nalone;\nlist = (a);\n"),
              (NSDictionary{{"Hello", "Bonjour"}, {"alone", "alone"}, {"list", NSArray{"a"}}}));
    EXPECT_THAT(readingError("a = b"), HasSubstr("semicolon"));
    EXPECT_THAT(readingError("a = b; c"), HasSubstr("semicolon"));
    EXPECT_THAT(readingError("a = b; }"), StartsWith("line 1: "));
}

TEST(PropertyListText, LastSeparatorMayBeLeftOutOrWritten) {
    EXPECT_EQ(readPropertyList("{ a = b }"), (NSDictionary{{"a", "b"}}));
    EXPECT_EQ(readPropertyList("{ a; b }"), (NSDictionary{{"a", "a"}, {"b", "b"}}));
    EXPECT_EQ(readPropertyList("( a, b, )"), (NSArray{"a", "b"}));
    EXPECT_EQ(readPropertyList("()"), NSArray{});
}

TEST(PropertyListText, LaterValueOfAKeyWins) {
    EXPECT_EQ(readPropertyList("{ a = 1; b = 2; \"a\" = 3; }"), (NSDictionary{{"a", "3"}, {"b", "2"}}));
}

TEST(PropertyListText, MalformedTextIsAnErrorThatNamesTheLine) {
    for (const char* text : {"{",        "(",       "{ a", "{ a =",        "{ a = }",       "{ a = b; ", "{ = b; }",
                             "{ a b }",  "( a b )", "(,)", "( a,, )",      "{ a = b, }",    "(a;)",      "(a}",
                             "{a = b;)", "\"a",     "'a",  "\"a\\",        "a b",           "(a) b",     ")",
                             "}",        ";",       "=",   "{ (a) = b; }", "{ <00> = b; }", "*",         "{;}"}) {
        EXPECT_THAT(readingError("\n\n"s + text), StartsWith("line 3: ")) << text;
    }
}

TEST(PropertyListText, RefusesInvalidUTF8WithItsLine) {
    EXPECT_EQ(readingError("{\n a = \"\xC3\"; }"), "line 2: the text is not valid UTF-8");
}

TEST(PropertyListText, ReadsUTF16) {
    std::string bytes = "\xFE\xFF";
    for (const char character : "\"k\" = \"v\";"s) {
        bytes += {'\0', character};
    }
    EXPECT_EQ(readPropertyList(bytes), (NSDictionary{{"k", "v"}}));
    EXPECT_EQ(readPropertyList("\xEF\xBB\xBF{ k = \"é\"; }"), (NSDictionary{{"k", "é"}}));
}

TEST(PropertyListText, ReadsAsDeepAsTheLimitAndNoDeeper) {
    const auto arrays = [](std::size_t depth) { return std::string(depth, '(') + std::string(depth, ')'); };
    const NSPropertyList deepest = readPropertyList(arrays(512));
    EXPECT_EQ(readPropertyList(deepest.description().toStdString()), deepest);
    EXPECT_THAT(readingError(arrays(513)), HasSubstr("too many levels"));
    EXPECT_THAT(readingError(arrays(1000000)), HasSubstr("too many levels"));
    std::string dictionaries;
    for (int level = 0; level < 1000000; ++level) {
        dictionaries += "{a=";
    }
    EXPECT_THAT(readingError(dictionaries), HasSubstr("too many levels"));
    EXPECT_THAT(readingError("a = " + arrays(512) + ";"), HasSubstr("too many levels"));
}

// With each key compared to each other this would take hours, and the test would be ended before that.
TEST(PropertyListText, ReadsAMillionKeysInOneDictionary) {
    constexpr int count = 1000000;
    std::string text = "{";
    for (int index = 0; index < count; ++index) {
        text += std::to_string(index * 7 % count) + ";";
    }
    const NSPropertyList value = readPropertyList(text + "0 = last; }");
    ASSERT_TRUE(value.as<NSDictionary>());
    EXPECT_EQ(value.as<NSDictionary>()->count(), std::size_t{count});
    EXPECT_EQ(value.as<NSDictionary>()->begin()->object, "last");
}

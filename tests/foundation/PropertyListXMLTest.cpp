// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string xmlSample = xmlHead +
                              "<dict>\n"
                              "\t<key>a</key>\n\t<integer>-1</integer>\n"
                              "\t<key>b</key>\n\t<array><true/><real>1.5</real></array>\n"
                              "\t<key>c</key>\n\t<data>QUJD</data>\n"
                              "\t<key>d</key>\n\t<date>2026-11-20T12:00:00Z</date>\n"
                              "\t<key>e &amp;</key>\n\t<string>é<![CDATA[<]]></string>\n"
                              "</dict>\n" +
                              xmlTail;

NSPropertyList readXML(std::string_view content) {
    return readPropertyList(xmlDocument(content));
}

std::string xmlError(std::string_view content) {
    return readingError(xmlDocument(content));
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(static_cast<unsigned char>(unit >> 8));
        const char low = static_cast<char>(static_cast<unsigned char>(unit & 0xFF));
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

} // namespace

TEST(PropertyListXML, ReadsEveryKindOfValue) {
    const NSPropertyList expected = NSDictionary{
        {"a", -1}, {"b", NSArray{true, 1.5}}, {"c", NSData{'A', 'B', 'C'}}, {"d", dateAt(1795176000)}, {"e &", "é<"}};
    NSPropertyListFormat format{};
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(xmlSample, &format, nullptr), expected);
    EXPECT_EQ(format, NSPropertyListFormat::XML);
}

TEST(PropertyListXML, EveryTruncationIsAnError) {
    const std::size_t end = xmlSample.rfind('>');
    for (std::size_t length = 0; length <= end; ++length) {
        NSError error;
        // A copy of its own, so that a sanitizer sees any step beyond the end.
        const std::vector<char> bytes(xmlSample.begin(), xmlSample.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(NSPropertyListSerialization::propertyListWithData({bytes.data(), length}, nullptr, &error))
            << length;
        EXPECT_THAT(error.localizedDescription.toStdString(), StartsWith("line ")) << length;
    }
}

TEST(PropertyListXML, AnyChangedByteIsAValueOrAnError) {
    for (std::size_t position = 0; position < xmlSample.size(); ++position) {
        for (const char byte : {'\0', '<', '>', '&', '\xFF', '\x80', '/'}) {
            std::string bytes = xmlSample;
            bytes[position] = byte;
            NSError error;
            if (!NSPropertyListSerialization::propertyListWithData(bytes, nullptr, &error)) {
                EXPECT_FALSE(error.localizedDescription.isEmpty());
            }
        }
    }
}

TEST(PropertyListXML, EmptyInputIsAnError) {
    EXPECT_EQ(readingError(""), "line 1: the text holds no value");
    EXPECT_EQ(readingError(" \n \n"), "line 3: the text holds no value");
    EXPECT_EQ(readingError("\xEF\xBB\xBF"), "line 1: the text holds no value");
    EXPECT_EQ(readingError("\xFF\xFE"), "line 1: the text holds no value");
    EXPECT_EQ(readingError("\xFE\xFF"), "line 1: the text holds no value");
    EXPECT_EQ(readingError("<?xml version=\"1.0\"?>\n"), "line 2: the text ends too early");
    EXPECT_EQ(readingError("<plist/>"), "line 1: <plist> holds no value");
    EXPECT_THAT(readingError("<plist>\n</plist>"), StartsWith("line 2: "));
}

TEST(PropertyListXML, ReadsIntegersFromTheLowestSignedToTheHighestUnsigned) {
    EXPECT_EQ(readXML("<integer> 42 </integer>"), 42);
    EXPECT_EQ(readXML("<integer>+42</integer>"), 42);
    EXPECT_EQ(readXML("<integer>0x2A</integer>"), 42);
    EXPECT_EQ(readXML("<integer>-0X2a</integer>"), -42);
    EXPECT_EQ(readXML("<integer>007</integer>"), 7);
    EXPECT_EQ(readXML("<integer>-9223372036854775808</integer>"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(readXML("<integer>9223372036854775807</integer>"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(readXML("<integer>18446744073709551615</integer>"), std::numeric_limits<std::uint64_t>::max());
}

TEST(PropertyListXML, RefusesWhatIsNoInteger) {
    for (const char* text : {"", " ", "x", "1x", "1 2", "1.0", "--1", "+-1", "0x", "1e3", "18446744073709551616",
                             "-9223372036854775809", "0x10000000000000000"}) {
        EXPECT_THAT(xmlError("\n<integer>"s + text + "</integer>"), StartsWith("line 3: ")) << text;
    }
    EXPECT_THAT(xmlError("<integer/>"), HasSubstr("is no integer"));
}

TEST(PropertyListXML, ReadsRealsExactly) {
    EXPECT_EQ(readXML("<real>0.1</real>"), 0.1);
    EXPECT_EQ(readXML("<real> +1e3 </real>"), 1000.0);
    EXPECT_EQ(readXML("<real>5e-324</real>"), 5e-324);
    EXPECT_EQ(readXML("<real>1.7976931348623157e+308</real>"), std::numeric_limits<double>::max());
    EXPECT_EQ(readXML("<real>-inf</real>"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(readXML("<real>Infinity</real>"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(readXML("<real>nan</real>"), std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::signbit(readXML("<real>-0.0</real>").doubleValue()));
}

TEST(PropertyListXML, RefusesWhatIsNoReal) {
    for (const char* text :
         {"", "x", "1,5", "1.5.", "1e400", "-1e400", "1e-400", "0x10", "nan(1)", "+-1", "1 2", "e5"}) {
        EXPECT_THAT(xmlError("<real>"s + text + "</real>"), HasSubstr("is no real")) << text;
    }
}

TEST(PropertyListXML, ReadsDates) {
    EXPECT_EQ(readXML("<date>1970-01-01T00:00:00Z</date>"), dateAt(0));
    EXPECT_EQ(readXML("<date>\n0001-01-01T00:00:00Z </date>"), dateAt(-62135596800));
    EXPECT_EQ(readXML("<date>9999-12-31T23:59:59Z</date>"), dateAt(253402300799));
    EXPECT_EQ(readXML("<date>2024-02-29T00:00:00.25Z</date>"), dateAt(1709164800.25));
}

TEST(PropertyListXML, RefusesWhatIsNoDate) {
    for (const char* text :
         {"", "x", "2024-05-01", "2024-05-01T12:00:00", "2024-05-01 12:00:00Z", "2023-02-29T00:00:00Z",
          "2024-13-01T00:00:00Z", "2024-00-01T00:00:00Z", "2024-01-00T00:00:00Z", "2024-01-01T24:00:00Z",
          "2024-01-01T00:60:00Z", "2024-01-01T00:00:60Z", "0000-01-01T00:00:00Z", "-001-01-01T00:00:00Z",
          "10000-01-01T00:00:00Z", "2024-1-1T00:00:00Z", "2024-01-01T00:00:00.Z", "2024-01-01T00:00:00Zx"}) {
        EXPECT_THAT(xmlError("<date>"s + text + "</date>"), HasSubstr("is no date")) << text;
    }
}

TEST(PropertyListXML, ReadsData) {
    EXPECT_EQ(readXML("<data/>"), NSData{});
    EXPECT_EQ(readXML("<data> </data>"), NSData{});
    EXPECT_EQ(readXML("<data>QQ==</data>"), NSData{'A'});
    EXPECT_EQ(readXML("<data>\n\tQU\n\tI=\n</data>"), (NSData{'A', 'B'}));
    EXPECT_EQ(readXML("<data>/+8=</data>"), (NSData{0xFF, 0xEF}));
}

TEST(PropertyListXML, RefusesDataThatIsNotInBase64) {
    for (const char* text : {"Q", "QQ", "QQ=", "QQ===", "=", "====", "Q===", "QQ==QQ==", "QUJD=", "QU-D", "é"}) {
        EXPECT_THAT(xmlError("<data>"s + text + "</data>"), HasSubstr("is no data")) << text;
    }
}

TEST(PropertyListXML, DecodesReferencesCDATAAndComments) {
    EXPECT_EQ(readXML("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x1F600;&#x00041;&#13;</string>"), "<>&\"'A😀A\r");
    EXPECT_EQ(readXML("<string>a<![CDATA[<b>&amp;]]>c<!-- <d> --><?e?>&lt;</string>"), "a<b>&amp;c<");
    EXPECT_EQ(readXML("<!-- x --><string>]]&gt;</string ><?y?>"), "]]>");
    EXPECT_EQ(readXML("<dict><key>a&amp;<![CDATA[b]]></key><true></true></dict>"), (NSDictionary{{"a&b", true}}));
}

TEST(PropertyListXML, TurnsEveryLineEndIntoANewline) {
    EXPECT_EQ(readXML("<string>a\r\nb\rc\nd\r\r\n&#13;&#10;</string>"), "a\nb\nc\nd\n\n\r\n");
    EXPECT_EQ(readXML("<string><![CDATA[a\r\nb\r]]>\r\n</string>"), "a\nb\n\n");
}

TEST(PropertyListXML, KeepsWhiteSpaceOfStrings) {
    EXPECT_EQ(readXML("<string> a\t\n </string>"), " a\t\n ");
    EXPECT_EQ(readXML("<string/>"), "");
    EXPECT_EQ(readXML("<string></string>"), "");
}

TEST(PropertyListXML, RefusesReferencesThatXMLDoesNotKnow) {
    for (const char* text : {"&nbsp;", "&;", "&", "& amp;", "&amp", "&#;", "&#x;", "&#xZ;", "&#0;", "&#1;", "&#xD800;",
                             "&#x110000;", "&#99999999999999999999;", "&#X41;", "&#-1;"}) {
        EXPECT_THAT(xmlError("\n\n<string>"s + text + "</string>"), StartsWith("line 4: ")) << text;
    }
    EXPECT_THAT(xmlError("<string>&nbsp;</string>"), HasSubstr("&nbsp; is not defined"));
}

TEST(PropertyListXML, RefusesEntityDefinitions) {
    const std::string laughs =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [\n<!ENTITY a \"ha\">\n"
        "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">\n<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">\n]>\n"
        "<plist><string>&c;</string></plist>";
    EXPECT_EQ(readingError(laughs), "line 2: a document type with definitions of its own is not allowed");
    EXPECT_THAT(readingError("<!DOCTYPE plist SYSTEM \"file:///etc/passwd\" [<!ENTITY x SYSTEM \"y\">]><plist/>"),
                HasSubstr("not allowed"));
}

TEST(PropertyListXML, SkipsADocumentTypeWithoutDefinitions) {
    EXPECT_EQ(readPropertyList("<!DOCTYPE plist SYSTEM \"a>b[c\"><plist><true/></plist>"), true);
}

TEST(PropertyListXML, SkipsAttributes) {
    EXPECT_EQ(readPropertyList("<plist version='1.0' a = \"x>y/>\" ><string  b=\"<\"/></plist >"), "");
}

TEST(PropertyListXML, LaterValueOfAKeyWinsInThePlaceOfTheFirst) {
    const NSPropertyList value = readXML("<dict><key>a</key><integer>1</integer><key>b</key><integer>2</integer>"
                                         "<key>a</key><integer>3</integer></dict>");
    EXPECT_EQ(value, (NSDictionary{{"a", 3}, {"b", 2}}));
    EXPECT_EQ(value.as<NSDictionary>()->begin()->key.text(), "a");
}

TEST(PropertyListXML, KeepsKeysThatFollowARepeatedOne) {
    std::string content = "<dict>";
    NSDictionary expected;
    for (int index = 0; index < 40; ++index) {
        // Every other key twice in a row.
        const std::string key = "key " + std::to_string(index);
        for (int pass = 0; pass <= index % 2; ++pass) {
            content += "<key>" + key + "</key><integer>" + std::to_string(index + 100 * pass) + "</integer>";
            expected.setObject(index + 100 * pass, key);
        }
    }
    EXPECT_EQ(readXML(content + "</dict>"), expected);
}

TEST(PropertyListXML, MergesTheSameKeyAmongMany) {
    std::string content = "<dict>";
    NSDictionary expected;
    for (int pass = 0; pass < 3; ++pass) {
        for (int index = 0; index < 50; ++index) {
            const std::string key = "key " + std::to_string(index);
            content += "<key>" + key + "</key><integer>" + std::to_string(100 * pass + index) + "</integer>";
            expected.setObject(100 * pass + index, key);
        }
    }
    const NSPropertyList value = readXML(content + "</dict>");
    EXPECT_EQ(value, expected);
    ASSERT_EQ(value.as<NSDictionary>()->count(), 50U);
    EXPECT_EQ(value.as<NSDictionary>()->begin()[7].key.text(), "key 7");
}

TEST(PropertyListXML, MalformedDocumentsAreErrorsThatNameTheLine) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"<string>a</strin>", "not ended by </string>"},
        {"<string>a<b/></string>", "a tag stands inside <string>"},
        {"<string>a", "a tag stands inside <string>|<string> is not ended"},
        {"<dict><key>a</key></dict>", "a <key> has no value"},
        {"<dict><string>a</string></dict>", "<string> has no <key> before it"},
        {"<dict><key>a</key><key>b</key></dict>", "<key> stands where a value is expected"},
        {"<array><key>a</key></array>", "<key> stands where a value is expected"},
        {"<key>a</key>", "<key> stands where a value is expected"},
        {"<array></dict>", "</dict> stands where </array> is expected"},
        {"<dict></array>", "</array> stands where </dict> is expected"},
        {"</array>", "</array> ends what has no value"},
        {"<true/><true/>", "more than one value"},
        {"<true/>text", "text stands where only a tag may stand"},
        {"<array>text</array>", "text stands where only a tag may stand"},
        {"<array><![CDATA[x]]></array>", "a tag has no name"},
        {"<true>no</true>", "\"no\" is no true"},
        {"<null/>", "<null> is no element of a property list"},
        {"<set></set>", "<set> is no element"},
        {"<plist><true/></plist>", "<plist> is no element"},
        {"<string", "malformed"},
        {"<string a>x</string>", "malformed"},
        {"<string a=b>x</string>", "not quoted"},
        {"<string a=\"b>x</string>", "quoted|attribute"},
        {"<!-- x", "a comment does not end"},
        {"<?x", "a processing instruction does not end"},
        {"<string><![CDATA[x</string>", "a CDATA section does not end"},
        {"<string>a\x01</string>", "control character U+0001"},
        {"< string>a</string>", "a tag has no name"},
    };
    for (const auto& [content, reason] : cases) {
        const std::string error = xmlError(content);
        EXPECT_THAT(error, StartsWith("line ")) << content;
        const std::size_t bar = reason.find('|');
        EXPECT_TRUE(error.find(reason.substr(0, bar)) != std::string::npos ||
                    (bar != std::string::npos && error.find(reason.substr(bar + 1)) != std::string::npos))
            << content << " -> " << error;
    }
    EXPECT_THAT(readingError(xmlDocument("<true/>") + "x"), HasSubstr("something follows </plist>"));
    EXPECT_THAT(readingError("<dict></dict>"), HasSubstr("<dict> stands where <plist> is expected"));
    EXPECT_THAT(readingError("<html></html>"), StartsWith("line 1: "));
}

TEST(PropertyListXML, CountsLinesOfEveryKind) {
    EXPECT_THAT(readingError("<plist>\r\n\r\n\r\n<x/>"), StartsWith("line 4: "));
    EXPECT_THAT(readingError("<plist>\r\r\n\n<x/>"), StartsWith("line 4: "));
}

TEST(PropertyListXML, RefusesInvalidUTF8WithItsLine) {
    for (const char* bad : {"\x80", "\xC0\x80", "\xC3", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80",
                            "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xE2\x82"}) {
        EXPECT_EQ(xmlError("\n\n<string>"s + bad + "</string>"), "line 4: the text is not valid UTF-8");
        // Far enough from the start to be met by the fast path.
        std::string farther(200, '\n');
        farther.append("<string>é").append(100, 'a').append(bad).append("</string>");
        EXPECT_EQ(xmlError(farther), "line 202: the text is not valid UTF-8");
    }
}

TEST(PropertyListXML, ReadsTheEncodingsThatMarkOrPrologName) {
    const NSPropertyList expected = "é日😀";
    const std::u16string text = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>é日😀</string></plist>";
    const std::u16string plain = u"<plist><string>é日😀</string></plist>";
    for (const bool bigEndian : {false, true}) {
        EXPECT_EQ(readPropertyList(utf16(u"\uFEFF" + text, bigEndian)), expected);
        EXPECT_EQ(readPropertyList(utf16(text, bigEndian)), expected);
        EXPECT_EQ(readPropertyList(utf16(u"\uFEFF" + plain, bigEndian)), expected);
    }
    EXPECT_EQ(readPropertyList("\xEF\xBB\xBF" + xmlDocument("<string>é日😀</string>")), expected);
    EXPECT_EQ(readPropertyList("<?xml version='1.0' encoding='utf-8'?><plist><string>é日😀</string></plist>"), expected);
    EXPECT_EQ(
        readPropertyList("<?xml version=\"1.0\" encoding = \"ISO-8859-1\" ?><plist><string>\xE9</string></plist>"),
        "é");
    EXPECT_EQ(
        readPropertyList("\n <?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>\xE9</string></plist>"),
        "é");
    EXPECT_EQ(readPropertyList("<?xml version=\"1.0\" encoding=\"us-ascii\"?><plist><string>&#233;</string></plist>"),
              "é");
}

TEST(PropertyListXML, RefusesOtherEncodingsByName) {
    EXPECT_EQ(readingError("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><plist><true/></plist>"),
              "line 1: the encoding Shift_JIS is not supported");
    EXPECT_THAT(readingError("<?xml version=\"1.0\" encoding=\"windows-1252\"?><plist><true/></plist>"),
                HasSubstr("windows-1252"));
    EXPECT_THAT(readingError("\xFF\xFE\0\0<\0\0\0"s), HasSubstr("UTF-32"));
    EXPECT_THAT(readingError("\0\0\xFE\xFF\0\0\0<"s), HasSubstr("UTF-32"));
    EXPECT_THAT(readingError("\0\0\0<\0\0\0?"s), HasSubstr("UTF-32"));
    EXPECT_THAT(readingError("\x4C\x6F\xA7\x94\x93"), HasSubstr("EBCDIC"));
}

TEST(PropertyListXML, RefusesTextThatIsNotInItsEncoding) {
    EXPECT_THAT(readingError("<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><true/></plist>"), HasSubstr("UTF-16"));
    EXPECT_THAT(readingError(utf16(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist><true/></plist>", true)),
                HasSubstr("UTF-8"));
    EXPECT_THAT(readingError("<?xml version=\"1.0\" encoding=\"US-ASCII\"?>\n<plist><string>é</string></plist>"),
                StartsWith("line 2: "));
    EXPECT_THAT(readingError(utf16(u"\uFEFF<plist>\n<string>\xD83D</string></plist>", false)), StartsWith("line 2: "));
    EXPECT_THAT(readingError(utf16(u"\uFEFF<plist>\n<string>\xDE00</string></plist>", true)), HasSubstr("pair"));
    EXPECT_THAT(readingError(utf16(u"\uFEFF<plist><true/></plist>", true) + "x"), HasSubstr("middle of a character"));
}

TEST(PropertyListXML, ReadsAsDeepAsTheLimitAndNoDeeper) {
    const auto nested = [](std::size_t depth) {
        std::string content;
        for (std::size_t level = 0; level < depth; ++level) {
            content += "<array>";
        }
        for (std::size_t level = 0; level < depth; ++level) {
            content += "</array>";
        }
        return content;
    };
    const NSPropertyList deepest = readXML(nested(512));
    EXPECT_EQ(readPropertyList(xmlOf(deepest)), deepest);
    EXPECT_THAT(xmlError(nested(513)), HasSubstr("more than 512 levels"));
    EXPECT_THAT(xmlError(nested(1000000)), HasSubstr("more than 512 levels"));
    EXPECT_THAT(xmlError(nested(511) + "<true/>"), HasSubstr("more than one value"));
}

// With each key compared to each other this would take hours, and the test would be ended before that.
TEST(PropertyListXML, ReadsAMillionKeysInOneDictionary) {
    constexpr int count = 1000000;
    std::string content = "<dict>";
    for (int index = 0; index < count; ++index) {
        content += "<key>" + std::to_string(index * 7 % count) + "</key><true/>";
    }
    content += "<key>0</key><false/></dict>";
    const NSPropertyList value = readXML(content);
    ASSERT_TRUE(value.as<NSDictionary>());
    EXPECT_EQ(value.as<NSDictionary>()->count(), std::size_t{count});
    EXPECT_EQ(value.as<NSDictionary>()->begin()->object, false);
}

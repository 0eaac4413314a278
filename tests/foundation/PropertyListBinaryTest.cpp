// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <limits>

#include <gmock/gmock.h>

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// A file whose top is the one object `bytes`.
std::string single(std::string_view bytes) {
    BinaryFile file;
    return file.bytes(file.add(bytes));
}

std::string binarySample() {
    BinaryFile file;
    const std::size_t key = file.add("\x53"
                                     "key");
    const std::size_t other = file.add("\x62\x00\xE9\x65\xE5"s);
    const std::size_t text = file.add("\x5F\x10\x10"
                                      "sixteen letters.");
    const std::size_t number = file.add("\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE");
    const std::size_t real = file.add("\x23\x3F\xB9\x99\x99\x99\x99\x99\x9A");
    const std::size_t date = file.add("\x33\x3F\xE0\0\0\0\0\0\0"s);
    const std::size_t data = file.add("\x43\0\xFF\x7F"s);
    const std::size_t yes = file.add("\x09");
    const std::size_t list = file.addContainer('A', {text, number, real, date, data, yes, text});
    return file.bytes(file.addContainer('D', {key, other, list, yes}));
}

const NSPropertyList sampleValue = NSDictionary{
    {"key", NSArray{"sixteen letters.", -2, 0.1, dateAt(978307200.5), NSData{0, 0xFF, 0x7F}, true, "sixteen letters."}},
    {"é日", true}};

} // namespace

TEST(PropertyListBinary, ReadsEveryKindOfValue) {
    NSPropertyListFormat format{};
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(binarySample(), &format, nullptr), sampleValue);
    EXPECT_EQ(format, NSPropertyListFormat::Binary);
}

TEST(PropertyListBinary, EveryTruncationIsAnErrorThatNamesAByte) {
    const std::string whole = binarySample();
    for (std::size_t length = 6; length < whole.size(); ++length) {
        NSError error;
        const std::vector<char> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(NSPropertyListSerialization::propertyListWithData({bytes.data(), length}, nullptr, &error))
            << length;
        EXPECT_THAT(error.localizedDescription.toStdString(), StartsWith("byte ")) << length;
    }
}

TEST(PropertyListBinary, AnyChangedByteIsAValueOrAnError) {
    const std::string whole = binarySample();
    for (std::size_t position = 0; position < whole.size(); ++position) {
        for (int byte = 0; byte < 256; ++byte) {
            std::vector<char> bytes(whole.begin(), whole.end());
            bytes[position] = static_cast<char>(byte);
            NSError error;
            if (!NSPropertyListSerialization::propertyListWithData({bytes.data(), bytes.size()}, nullptr, &error)) {
                EXPECT_FALSE(error.localizedDescription.isEmpty());
            }
        }
    }
}

TEST(PropertyListBinary, ReadsIntegersOfEveryWidth) {
    EXPECT_EQ(readPropertyList(single("\x10\xFF")), 255);
    EXPECT_EQ(readPropertyList(single("\x11\xFF\xFF")), 65535);
    EXPECT_EQ(readPropertyList(single("\x12\xFF\xFF\xFF\xFF")), 4294967295);
    EXPECT_EQ(readPropertyList(single("\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")), -1);
    EXPECT_EQ(readPropertyList(single("\x14" + std::string(8, '\0') + std::string(8, '\xFF'))),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(readPropertyList(single("\x14" + std::string(16, '\xFF'))), -1);
    EXPECT_THAT(readingError(single("\x14" + std::string(7, '\0') + "\x01" + std::string(8, '\0'))),
                HasSubstr("does not fit into 64 bits"));
    EXPECT_THAT(readingError(single("\x14" + std::string(8, '\xFF') + std::string(8, '\0'))), HasSubstr("64 bits"));
    EXPECT_THAT(readingError(single("\x15" + std::string(32, '\0'))), HasSubstr("impossible width"));
}

TEST(PropertyListBinary, ReadsRealsOfBothWidths) {
    EXPECT_EQ(readPropertyList(single("\x22\x3F\x80\0\0"s)), 1.0);
    EXPECT_EQ(readPropertyList(single("\x23\x7F\xF8\0\0\0\0\0\0"s)), std::numeric_limits<double>::quiet_NaN());
    EXPECT_THAT(readingError(single("\x21\0\0"s)), HasSubstr("impossible width"));
    EXPECT_THAT(readingError(single("\x24" + std::string(16, '\0'))), HasSubstr("impossible width"));
}

TEST(PropertyListBinary, RefusesDatesThatAreNotANumber) {
    EXPECT_EQ(readPropertyList(single("\x33" + std::string(8, '\0'))), dateAt(978307200));
    EXPECT_EQ(readingError(single("\x33\x7F\xF8\0\0\0\0\0\0"s)), "byte 8: a date is not a number");
    EXPECT_THAT(readingError(single("\x32\0\0\0\0"s)), HasSubstr("impossible width"));
}

TEST(PropertyListBinary, DecodesUTF16) {
    EXPECT_EQ(readPropertyList(single("\x64\x00\x61\x00\xE9\xD8\x3D\xDE\x00"s)), "aé😀");
    EXPECT_EQ(readPropertyList(single("\x60")), "");
    EXPECT_EQ(readPropertyList(single("\x61\xFE\xFF")), "\uFEFF");
    EXPECT_EQ(readingError(single("\x62\x00\x61\xD8\x3D"s)), "byte 11: half of a UTF-16 pair stands alone");
    EXPECT_THAT(readingError(single("\x61\xDE\x00"s)), HasSubstr("pair stands alone"));
    EXPECT_THAT(readingError(single("\x62\xD8\x3D\x00\x61"s)), HasSubstr("pair stands alone"));
    EXPECT_THAT(readingError(single("\x52\xC3\xA9")), HasSubstr("should be ASCII"));
}

TEST(PropertyListBinary, RefusesObjectsThatAPropertyListCannotHold) {
    EXPECT_THAT(readingError(single("\0"s)), HasSubstr("null"));
    EXPECT_THAT(readingError(single("\x0F")), HasSubstr("null"));
    EXPECT_THAT(readingError(single("\x80\x01")), HasSubstr("keyed archive"));
    EXPECT_THAT(readingError(single("\xC0")), HasSubstr("unknown type 12"));
    EXPECT_THAT(readingError(single("\x70")), HasSubstr("unknown type 7"));
}

TEST(PropertyListBinary, BelievesNoLengthBeforeTheBytesAreThere) {
    for (const char kind : {'4', '5', '6', 'A', 'D'}) {
        for (const std::uint64_t count :
             {std::uint64_t{0x7FFFFFFF}, std::uint64_t{0x80000000}, std::uint64_t{1} << 61, std::uint64_t{1} << 62,
              std::uint64_t{1} << 63, ~std::uint64_t{0}, std::uint64_t{24}}) {
            EXPECT_THAT(readingError(single(BinaryFile::longMarker(kind, count))),
                        HasSubstr("reaches beyond the objects' end"))
                << kind << count;
        }
    }
    EXPECT_THAT(readingError(single("\x4F")), StartsWith("byte "));
    EXPECT_THAT(readingError(single("\x4F\x11\xFF")), StartsWith("byte "));
    EXPECT_THAT(readingError(single("\x4F\x14" + std::string(16, '\0'))), HasSubstr("a count is no whole number"));
    EXPECT_THAT(readingError(single("\x4F\x53"
                                    "abc")),
                HasSubstr("a count is no whole number"));
}

TEST(PropertyListBinary, RefusesImpossibleTrailers) {
    const auto withTrailer = [](const std::string& trailer) { return "bplist00\x09\x08"s + trailer; };
    EXPECT_EQ(readPropertyList(withTrailer(BinaryFile::trailer(1, 0, 9, 1, 1))), true);
    const std::uint64_t huge = ~std::uint64_t{0};
    for (const std::string& trailer :
         {BinaryFile::trailer(1, 1, 9, 1, 1), BinaryFile::trailer(0, 0, 9, 1, 1), BinaryFile::trailer(2, 0, 9, 1, 1),
          BinaryFile::trailer(1, 0, 8, 1, 1), BinaryFile::trailer(1, 0, 0, 1, 1), BinaryFile::trailer(1, 0, 10, 1, 1),
          BinaryFile::trailer(1, 0, 11, 1, 1), BinaryFile::trailer(1, 0, huge, 1, 1),
          BinaryFile::trailer(huge, 0, 9, 1, 1), BinaryFile::trailer(std::uint64_t{1} << 61, 0, 9, 8, 1),
          BinaryFile::trailer(1, huge, 9, 1, 1), BinaryFile::trailer(1, 0, 9, 0, 1), BinaryFile::trailer(1, 0, 9, 1, 0),
          BinaryFile::trailer(1, 0, 9, 9, 1), BinaryFile::trailer(1, 0, 9, 1, 9), BinaryFile::trailer(1, 0, 9, 2, 1)}) {
        EXPECT_THAT(readingError(withTrailer(trailer)), StartsWith("byte "));
    }
    EXPECT_THAT(readingError("bplist00"), HasSubstr("ends too early"));
    EXPECT_THAT(readingError("bplist15" + single("\x09").substr(8)), HasSubstr("version"));
}

TEST(PropertyListBinary, RefusesReferencesAndOffsetsThatLeadNowhere) {
    BinaryFile file;
    EXPECT_THAT(readingError(file.bytes(file.addContainer('A', {1}))), HasSubstr("a reference leads to object 1 of 1"));
    for (const char offset : {'\0', '\x07', '\x09', '\x7F'}) {
        EXPECT_THAT(readingError("bplist00\x09"s + offset + BinaryFile::trailer(1, 0, 9, 1, 1)),
                    HasSubstr("leads outside the objects"));
    }
}

TEST(PropertyListBinary, RefusesKeysThatAreNoText) {
    BinaryFile file;
    const std::size_t number = file.add("\x10\x01");
    EXPECT_THAT(readingError(file.bytes(file.addContainer('D', {number, number}))),
                HasSubstr("the key of a dictionary"));
}

TEST(PropertyListBinary, LaterValueOfAKeyWins) {
    BinaryFile file;
    const std::size_t key = file.add("\x51"
                                     "a");
    const std::size_t sameKey = file.add("\x61\0a"s);
    const std::size_t one = file.add("\x10\x01");
    const std::size_t two = file.add("\x10\x02");
    EXPECT_EQ(readPropertyList(file.bytes(file.addContainer('D', {key, sameKey, one, two}))), (NSDictionary{{"a", 2}}));
}

TEST(PropertyListBinary, RefusesContainersInsideThemselves) {
    BinaryFile own;
    EXPECT_THAT(readingError(own.bytes(own.addContainer('A', {0}))), HasSubstr("a container holds itself"));
    BinaryFile mutual;
    mutual.addContainer('A', {1});
    mutual.addContainer('A', {0});
    EXPECT_THAT(readingError(mutual.bytes(0)), HasSubstr("a container holds itself"));
    BinaryFile dictionary;
    dictionary.add("\x51"
                   "a");
    EXPECT_THAT(readingError(dictionary.bytes(dictionary.addContainer('D', {0, 1}))), HasSubstr("holds itself"));
}

TEST(PropertyListBinary, ReadsAsDeepAsTheLimitAndNoDeeper) {
    const auto nested = [](std::size_t depth) {
        BinaryFile file;
        std::size_t top = file.addContainer('A', {});
        for (std::size_t level = 1; level < depth; ++level) {
            top = file.addContainer('A', {top});
        }
        return file.bytes(top);
    };
    const NSPropertyList deepest = readPropertyList(nested(512));
    EXPECT_EQ(readPropertyList(xmlOf(deepest)), deepest);
    EXPECT_THAT(readingError(nested(513)), HasSubstr("more than 512 levels"));
    EXPECT_THAT(readingError(nested(1000000)), HasSubstr("more than 512 levels"));
}

TEST(PropertyListBinary, ReadsSharedObjects) {
    BinaryFile file;
    const std::size_t text = file.add("\x5F\x10\x10"
                                      "sixteen letters.");
    const std::size_t list = file.addContainer('A', {text, text});
    const NSPropertyList inner = NSArray{"sixteen letters.", "sixteen letters."};
    EXPECT_EQ(readPropertyList(file.bytes(file.addContainer('A', {list, list}))), (NSArray{inner, inner}));
}

// What one file of any size may do to memory: these two would otherwise ask for a thousand times their size and more.
TEST(PropertyListBinary, RefusesContainersThatExpandBeyondTheFilesSize) {
    for (const std::size_t fanOut : {10U, 1000U}) {
        BinaryFile file;
        std::size_t top = file.add("\x09");
        for (int level = 0; level < 20; ++level) {
            top = file.addContainer('A', std::vector<std::size_t>(fanOut, top));
        }
        EXPECT_THAT(readingError(file.bytes(top)), HasSubstr("expand to too many values"));
    }
    // Twice only, so that it is a thousandfold and no more.
    BinaryFile thousand;
    const std::size_t leaf = thousand.add("\x09");
    const std::size_t list = thousand.addContainer('A', std::vector<std::size_t>(3000, leaf));
    EXPECT_THAT(readingError(thousand.bytes(thousand.addContainer('A', std::vector<std::size_t>(3000, list)))),
                HasSubstr("expand to too many values"));
}

TEST(PropertyListBinary, RefusesTextAndDataThatExpandBeyondTheFilesSize) {
    for (const char kind : {'4', '5', '6'}) {
        BinaryFile file;
        const std::size_t count = kind == '6' ? 5000 : 10000;
        const std::size_t shared = file.add(BinaryFile::longMarker(kind, count) + std::string(10000, 'a'));
        EXPECT_THAT(readingError(file.bytes(file.addContainer('A', std::vector<std::size_t>(10000, shared)))),
                    HasSubstr("expands to too many bytes"))
            << kind;
    }
}

TEST(PropertyListBinary, LongKeysCountAsExpandedText) {
    BinaryFile file;
    const std::size_t key = file.add(BinaryFile::longMarker('5', 100000) + std::string(100000, 'k'));
    const std::size_t yes = file.add("\x09");
    const std::size_t dictionary = file.addContainer('D', {key, yes});
    EXPECT_THAT(readingError(file.bytes(file.addContainer('A', std::vector<std::size_t>(20000, dictionary)))),
                HasSubstr("expands to too many bytes"));
}

TEST(PropertyListBinary, ReadsATextThatManyRecordsShare) {
    BinaryFile file;
    const std::size_t shared = file.add(BinaryFile::longMarker('5', 2000) + std::string(2000, 'a'));
    const NSPropertyList value =
        readPropertyList(file.bytes(file.addContainer('A', std::vector<std::size_t>(500, shared))));
    ASSERT_TRUE(value.as<NSArray>());
    EXPECT_EQ(value.as<NSArray>()->back(), std::string(2000, 'a'));
}

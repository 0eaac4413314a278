// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListBinaryReader.h>

#include <VXKit/platform/foundation/PropertyListEncoding.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::uint64_t trailerSize = 32;
constexpr unsigned widestNumber = 8;

/// Dates of this form count from 2001-01-01 00:00:00 UTC.
constexpr double secondsFrom1970To2001 = 978307200;

/// A file can mention a value no more often than it has bytes, unless it shares containers, which no known writer does.
constexpr std::uint64_t valuesPerByte = 4;
constexpr std::uint64_t valuesAlways = 4096;

/// Equal texts are shared by every writer, so a small file may rightly be many times larger when it is read; a large
/// one with the same proportion would fill the memory.
constexpr std::uint64_t copiedBytesPerByte = 4;
constexpr std::uint64_t sharedBytesPerByte = 256;
constexpr std::uint64_t sharedBytesAtMost = std::uint64_t{64} << 20;
constexpr std::uint64_t sharedBytesAlways = std::uint64_t{64} << 10;

enum Kind : unsigned {
    Singleton = 0x0,
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    ASCIIText = 0x5,
    UTF16Text = 0x6,
    Identifier = 0x8,
    Array = 0xA,
    Dictionary = 0xD,
};
constexpr unsigned markerFalse = 0x08;
constexpr unsigned markerTrue = 0x09;
constexpr unsigned countFollows = 0xF;

constexpr bool hasCount(unsigned kind) {
    return kind == Data || kind == ASCIIText || kind == UTF16Text || kind == Array || kind == Dictionary;
}

bool isASCII(std::string_view text) {
    unsigned char bits = 0;
    for (const char character : text) {
        bits |= static_cast<unsigned char>(character);
    }
    return bits < 0x80;
}

} // namespace

PropertyListBinaryReader::PropertyListBinaryReader(std::string_view bytes)
    : m_bytes(bytes), m_valuesLeft(valuesAlways + valuesPerByte * bytes.size()),
      m_bytesLeft(sharedBytesAlways + copiedBytesPerByte * bytes.size() +
                  std::min<std::uint64_t>(sharedBytesPerByte * bytes.size(), sharedBytesAtMost)) {}

NSPropertyList PropertyListBinaryReader::read() {
    readTrailer();
    readObject(m_topObject, m_bytes.size() - 16);
    while (!m_containers.empty()) {
        continueContainer();
    }
    return m_builder.takeTop();
}

void PropertyListBinaryReader::fail(std::uint64_t offset, const QString& reason) {
    throw PropertyListSyntaxError{QStringLiteral("byte %1: %2").arg(offset).arg(reason)};
}

/// The big-endian number of `width` bytes, at most eight, which are known to be there.
std::uint64_t PropertyListBinaryReader::number(std::uint64_t offset, unsigned width) const {
    std::uint64_t value = 0;
    for (unsigned index = 0; index < width; ++index) {
        value = value << 8 | static_cast<unsigned char>(m_bytes[offset + index]);
    }
    return value;
}

/// Refuses `count` bytes from `offset` on, at which an object lies, unless all are there. Neither number can overflow:
/// the offset is known to lie before the offset table.
void PropertyListBinaryReader::requireBytes(std::uint64_t offset, std::uint64_t count) const {
    if (offset > m_objectsEnd || count > m_objectsEnd - offset) {
        fail(offset, QStringLiteral("an object reaches beyond the objects' end"));
    }
}

void PropertyListBinaryReader::chargeValues(std::uint64_t offset, std::uint64_t count) {
    if (count > m_valuesLeft) {
        fail(offset, QStringLiteral("shared objects expand to too many values"));
    }
    m_valuesLeft -= count;
}

void PropertyListBinaryReader::chargeBytes(std::uint64_t offset, std::uint64_t count) {
    if (count > m_bytesLeft) {
        fail(offset, QStringLiteral("shared text or data expands to too many bytes"));
    }
    m_bytesLeft -= count;
}

void PropertyListBinaryReader::readTrailer() {
    if (!m_bytes.starts_with(magic)) {
        fail(0, QStringLiteral("this version of the binary form is not supported"));
    }
    if (m_bytes.size() < magic.size() + trailerSize) {
        fail(m_bytes.size(), QStringLiteral("the file ends too early"));
    }
    const std::uint64_t trailer = m_bytes.size() - trailerSize;
    m_offsetWidth = static_cast<unsigned>(number(trailer + 6, 1));
    m_referenceWidth = static_cast<unsigned>(number(trailer + 7, 1));
    m_objectCount = number(trailer + 8, 8);
    m_topObject = number(trailer + 16, 8);
    m_objectsEnd = number(trailer + 24, 8);
    if (m_offsetWidth < 1 || m_offsetWidth > widestNumber || m_referenceWidth < 1 || m_referenceWidth > widestNumber) {
        fail(trailer + 6, QStringLiteral("offsets or references have an impossible width"));
    }
    if (m_objectsEnd < magic.size() || m_objectsEnd > trailer ||
        m_objectCount > (trailer - m_objectsEnd) / m_offsetWidth) {
        fail(trailer + 8, QStringLiteral("the offset table reaches beyond the file"));
    }
    m_isOpen.resize(m_objectCount);
}

/// Where object number `object` lies; `askedAt` is the offset of the reference to it.
std::uint64_t PropertyListBinaryReader::offsetOfObject(std::uint64_t object, std::uint64_t askedAt) const {
    if (object >= m_objectCount) {
        fail(askedAt, QStringLiteral("a reference leads to object %1 of %2").arg(object).arg(m_objectCount));
    }
    const std::uint64_t entry = m_objectsEnd + object * m_offsetWidth;
    const std::uint64_t offset = number(entry, m_offsetWidth);
    if (offset < magic.size() || offset >= m_objectsEnd) {
        fail(entry, QStringLiteral("the offset of object %1 leads outside the objects").arg(object));
    }
    return offset;
}

PropertyListBinaryReader::Head PropertyListBinaryReader::readHead(std::uint64_t offset) const {
    const auto marker = static_cast<unsigned>(number(offset, 1));
    Head head{marker >> 4, marker & 0xF, marker & 0xF, offset + 1};
    if (!hasCount(head.kind) || head.detail != countFollows) {
        return head;
    }
    requireBytes(head.content, 1);
    const auto countMarker = static_cast<unsigned>(number(head.content, 1));
    const unsigned width = 1U << (countMarker & 0xF);
    if (countMarker >> 4 != Integer || width > widestNumber) {
        fail(head.content, QStringLiteral("a count is no whole number"));
    }
    requireBytes(head.content + 1, width);
    head.count = number(head.content + 1, width);
    head.content += 1 + width;
    return head;
}

void PropertyListBinaryReader::readObject(std::uint64_t object, std::uint64_t askedAt) {
    const std::uint64_t offset = offsetOfObject(object, askedAt);
    chargeValues(offset, 1);
    const Head head = readHead(offset);
    switch (head.kind) {
    case Singleton:
        if (head.detail != markerFalse && head.detail != markerTrue) {
            fail(offset, QStringLiteral("an object is null, which a property list cannot hold"));
        }
        m_builder.addValue(head.detail == markerTrue);
        return;
    case Integer:
    case Real:
        readNumber(offset, head);
        return;
    case Date:
        readDate(offset, head);
        return;
    case Data: {
        requireBytes(head.content, head.count);
        chargeBytes(offset, head.count);
        const std::string_view bytes = m_bytes.substr(head.content, head.count);
        m_builder.addValue(NSData(bytes.begin(), bytes.end()));
        return;
    }
    case ASCIIText:
    case UTF16Text:
        m_builder.addValue(text(offset, head));
        return;
    case Array:
    case Dictionary:
        openContainer(object, offset, head);
        return;
    case Identifier:
        fail(offset, QStringLiteral("the file is a keyed archive, not a property list"));
    default:
        fail(offset, QStringLiteral("an object is of the unknown type %1").arg(head.kind));
    }
}

void PropertyListBinaryReader::readNumber(std::uint64_t offset, const Head& head) {
    const bool isInteger = head.kind == Integer;
    const unsigned widest = isInteger ? 4 : 3;
    if (head.detail > widest || (!isInteger && head.detail < 2)) {
        fail(offset, QStringLiteral("a number has an impossible width"));
    }
    const unsigned width = 1U << head.detail;
    requireBytes(head.content, width);
    if (!isInteger) {
        const std::uint64_t bits = number(head.content, width);
        const double value = width == 4 ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                                        : std::bit_cast<double>(bits);
        m_builder.addValue(value);
        return;
    }
    if (width < 8) {
        m_builder.addValue(number(head.content, width));
        return;
    }
    if (width == 8) {
        m_builder.addValue(static_cast<std::int64_t>(number(head.content, 8)));
        return;
    }
    // Sixteen bytes are how a number above 2^63 − 1 is kept from being taken for a negative one.
    constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t high = number(head.content, 8);
    const std::uint64_t low = number(head.content + 8, 8);
    if (high == 0) {
        m_builder.addValue(low);
    } else if (high == allOnes && low >> 63 == 1) {
        m_builder.addValue(static_cast<std::int64_t>(low));
    } else {
        fail(offset, QStringLiteral("a whole number does not fit into 64 bits"));
    }
}

void PropertyListBinaryReader::readDate(std::uint64_t offset, const Head& head) {
    if (head.detail != 3) {
        fail(offset, QStringLiteral("a date has an impossible width"));
    }
    requireBytes(head.content, 8);
    const auto seconds = std::bit_cast<double>(number(head.content, 8));
    if (std::isnan(seconds)) {
        fail(offset, QStringLiteral("a date is not a number"));
    }
    m_builder.addValue(NSDate::dateWithTimeIntervalSince1970(seconds + secondsFrom1970To2001));
}

void PropertyListBinaryReader::readKey(std::uint64_t object, std::uint64_t askedAt) {
    const std::uint64_t offset = offsetOfObject(object, askedAt);
    chargeValues(offset, 1);
    const Head head = readHead(offset);
    if (head.kind != ASCIIText && head.kind != UTF16Text) {
        fail(offset, QStringLiteral("the key of a dictionary is no text"));
    }
    m_builder.addKey(text(offset, head));
}

void PropertyListBinaryReader::openContainer(std::uint64_t object, std::uint64_t offset, const Head& head) {
    const bool isDictionary = head.kind == Dictionary;
    const std::uint64_t widthOfEntry = std::uint64_t{m_referenceWidth} * (isDictionary ? 2 : 1);
    if (head.count > m_objectsEnd / widthOfEntry) {
        fail(offset, QStringLiteral("an object reaches beyond the objects' end"));
    }
    requireBytes(head.content, head.count * widthOfEntry);
    if (m_isOpen[object]) {
        fail(offset, QStringLiteral("a container holds itself"));
    }
    if (!(isDictionary ? m_builder.beginDictionary() : m_builder.beginArray())) {
        fail(offset, QStringLiteral("more than %1 levels of dictionaries and arrays").arg(VXPropertyListMaximumDepth));
    }
    m_isOpen[object] = true;
    m_containers.push_back({object, head.content, head.count, 0});
}

/// Reads the next child of the innermost container, or closes it.
void PropertyListBinaryReader::continueContainer() {
    Container& container = m_containers.back();
    if (container.next == container.count) {
        m_isOpen[container.object] = false;
        m_containers.pop_back();
        m_builder.end();
        return;
    }
    std::uint64_t reference = container.references + container.next * m_referenceWidth;
    const std::uint64_t widthOfKeys = container.count * m_referenceWidth;
    ++container.next;
    if (m_builder.isInDictionary()) {
        readKey(number(reference, m_referenceWidth), reference);
        reference += widthOfKeys;
    }
    readObject(number(reference, m_referenceWidth), reference);
}

/// The UTF-8 of a text object. It lies in the file itself where that is ASCII, else in a buffer that the next call
/// overwrites.
std::string_view PropertyListBinaryReader::text(std::uint64_t offset, const Head& head) {
    if (head.kind == UTF16Text) {
        if (head.count > m_objectsEnd / 2) {
            fail(offset, QStringLiteral("an object reaches beyond the objects' end"));
        }
        requireBytes(head.content, 2 * head.count);
        chargeBytes(offset, 2 * head.count);
        return decodeUTF16(head.content, head.count);
    }
    requireBytes(head.content, head.count);
    chargeBytes(offset, head.count);
    const std::string_view ascii = m_bytes.substr(head.content, head.count);
    if (!isASCII(ascii)) {
        fail(offset, QStringLiteral("a text that should be ASCII is not"));
    }
    return ascii;
}

std::string_view PropertyListBinaryReader::decodeUTF16(std::uint64_t offset, std::uint64_t count) {
    // A unit becomes three bytes at most, and a pair of units four.
    if (m_decoded.size() < 3 * count) {
        m_decoded.resize(3 * count);
    }
    const char* const units = m_bytes.data();
    const auto unitAt = [units](std::uint64_t position) {
        return static_cast<char32_t>(static_cast<unsigned char>(units[position])) << 8 |
               static_cast<unsigned char>(units[position + 1]);
    };
    const std::uint64_t end = offset + 2 * count;
    char* output = m_decoded.data();
    for (std::uint64_t position = offset; position < end; position += 2) {
        char32_t character = unitAt(position);
        if (VXIsHighSurrogate(character) && position + 2 < end && VXIsLowSurrogate(unitAt(position + 2))) {
            position += 2;
            character = VXCombinedSurrogates(character, unitAt(position));
        } else if (VXIsHighSurrogate(character) || VXIsLowSurrogate(character)) {
            fail(position, QStringLiteral("half of a UTF-16 pair stands alone"));
        }
        output = VXPutUTF8(output, character);
    }
    return {m_decoded.data(), static_cast<std::size_t>(output - m_decoded.data())};
}

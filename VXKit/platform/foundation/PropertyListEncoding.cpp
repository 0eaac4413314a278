// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListEncoding.h>

#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

using namespace std::string_view_literals;

constexpr std::size_t blockSize = 64;

constexpr bool isForbiddenControl(unsigned char character) {
    return character < 0x20 && character != '\t' && character != '\n' && character != '\r';
}

bool isContinuation(const char* position, const char* end) {
    return position < end && (static_cast<unsigned char>(*position) & 0xC0) == 0x80;
}

/// The number of bytes of the UTF-8 sequence that begins at `position` with a byte above 7F; 0 where there is none.
std::size_t sequenceLength(const char* position, const char* end) {
    const auto first = static_cast<unsigned char>(*position);
    if (first < 0xC2 || first > 0xF4 || !isContinuation(position + 1, end)) {
        return 0;
    }
    const auto second = static_cast<unsigned char>(position[1]);
    if (first < 0xE0) {
        return 2;
    }
    if (!isContinuation(position + 2, end)) {
        return 0;
    }
    if (first < 0xF0) {
        const bool overlong = first == 0xE0 && second < 0xA0;
        const bool surrogate = first == 0xED && second > 0x9F;
        return overlong || surrogate ? 0 : 3;
    }
    const bool overlong = first == 0xF0 && second < 0x90;
    const bool tooLarge = first == 0xF4 && second > 0x8F;
    return overlong || tooLarge || !isContinuation(position + 3, end) ? 0 : 4;
}

/// How many ASCII bytes stand at `position`, at least one of them.
std::size_t leadingASCII(const char* position, const char* end) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    const char* const begin = position;
    for (std::uint64_t word = 0; end - position >= 8; position += 8) {
        std::memcpy(&word, position, 8);
        if ((word & highBits) != 0) {
            break;
        }
    }
    while (position < end && static_cast<unsigned char>(*position) < 0x80) {
        ++position;
    }
    return static_cast<std::size_t>(position - begin);
}

/// The value of the pseudo-attribute `encoding` in the XML declaration at the head of `text`, or nothing.
std::string_view declaredEncoding(std::string_view text) {
    while (!text.empty() && VXIsXMLSpace(text.front())) {
        text.remove_prefix(1);
    }
    if (!text.starts_with("<?xml") || text.size() < 6 || !VXIsXMLSpace(text[5])) {
        return {};
    }
    text = text.substr(5, text.find("?>") - 5);
    while (true) {
        text = VXTrimmed(text);
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) {
            return {};
        }
        const std::string_view name = VXTrimmed(text.substr(0, equals));
        text = VXTrimmed(text.substr(equals + 1));
        if (text.empty() || (text.front() != '"' && text.front() != '\'')) {
            return {};
        }
        const std::size_t end = text.find(text.front(), 1);
        if (end == std::string_view::npos) {
            return {};
        }
        if (name == "encoding") {
            return text.substr(1, end - 1);
        }
        text.remove_prefix(end + 1);
    }
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
    });
    return result;
}

template <std::size_t Count>
bool isOneOf(std::string_view name, const std::array<std::string_view, Count>& names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array utf8Names{"UTF-8"sv, "UTF8"sv};
constexpr std::array utf16Names{"UTF-16"sv, "UTF-16LE"sv, "UTF-16BE"sv, "UTF16"sv};
constexpr std::array asciiNames{"US-ASCII"sv, "ASCII"sv, "ANSI_X3.4-1968"sv};
constexpr std::array latin1Names{"ISO-8859-1"sv, "ISO_8859-1"sv, "LATIN1"sv};

/// Openings by which a text is taken for XML. No old-style data begins like one of them: each has a letter that is no
/// hexadecimal digit.
constexpr std::array xmlOpenings{"<?xml"sv,    "<!DOCTYPE"sv, "<!--"sv,  "<plist"sv, "<dict"sv, "<array"sv, "<string"sv,
                                 "<integer"sv, "<real"sv,     "<date"sv, "<data"sv,  "<true"sv, "<false"sv};

void requireUTF8(std::string_view text) {
    if (const char* invalid = VXFirstInvalidUTF8(text)) {
        VXFailAtLine(text, invalid, QStringLiteral("the text is not valid UTF-8"));
    }
}

} // namespace

void VXFailAtLine(std::string_view text, const char* position, const QString& reason) {
    const char* const begin = text.data();
    qsizetype line = 1;
    for (const char* at = begin; at < position; ++at) {
        const bool ends = *at == '\n' || (*at == '\r' && !(at + 1 < position && at[1] == '\n'));
        line += ends ? 1 : 0;
    }
    throw PropertyListSyntaxError{QStringLiteral("line %1: %2").arg(line).arg(reason)};
}

const char* VXFirstInvalidUTF8(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    while (position < end) {
        if (static_cast<std::size_t>(end - position) >= blockSize) {
            unsigned char bits = 0;
            for (std::size_t index = 0; index < blockSize; ++index) {
                bits |= static_cast<unsigned char>(position[index]);
            }
            if (bits < 0x80) {
                position += blockSize;
                continue;
            }
        }
        const char* const blockEnd =
            position + std::min<std::size_t>(blockSize, static_cast<std::size_t>(end - position));
        while (position < blockEnd) {
            if (static_cast<unsigned char>(*position) < 0x80) {
                position += leadingASCII(position, blockEnd);
                continue;
            }
            const std::size_t length = sequenceLength(position, end);
            if (length == 0) {
                return position;
            }
            position += length;
        }
    }
    return nullptr;
}

const char* VXFirstForbiddenControl(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    // Whole blocks without a branch, which the compiler turns into a handful of vector instructions.
    while (static_cast<std::size_t>(end - position) >= blockSize) {
        unsigned char found = 0;
        for (std::size_t index = 0; index < blockSize; ++index) {
            const auto character = static_cast<unsigned char>(position[index]);
            found |= static_cast<unsigned char>((character < 0x20) & (character != '\t') & (character != '\n') &
                                                (character != '\r'));
        }
        if (found) {
            break;
        }
        position += blockSize;
    }
    const char* const found = std::find_if(
        position, end, [](char character) { return isForbiddenControl(static_cast<unsigned char>(character)); });
    return found == end ? nullptr : found;
}

QString VXStringWithUTF8(std::string_view text) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

PropertyListEncoding::PropertyListEncoding(std::string_view bytes) : m_text(bytes) {
    const auto refuse = [&](const char* name) {
        VXFailAtLine(bytes, bytes.data(), QStringLiteral("the encoding %1 is not supported").arg(QLatin1String(name)));
    };
    if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv) || bytes.starts_with("\0\0\0<"sv) ||
        bytes.starts_with("<\0\0\0"sv)) {
        refuse("UTF-32");
    }
    if (bytes.starts_with("\x4C\x6F\xA7\x94"sv)) {
        refuse("EBCDIC");
    }
    if (bytes.starts_with("\xEF\xBB\xBF"sv)) {
        m_source = Source::MarkedUTF8;
        m_text.remove_prefix(3);
    } else if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv)) {
        decodeUTF16(bytes.substr(2), bytes.front() == '\xFE');
    } else if (bytes.size() >= 2 && (bytes[0] == '\0') != (bytes[1] == '\0')) {
        decodeUTF16(bytes, bytes[0] == '\0');
    }
}

bool PropertyListEncoding::looksLikeXML() const {
    const std::string_view head = m_text.substr(std::min(m_text.find_first_not_of(" \t\r\n"), m_text.size()));
    return std::any_of(xmlOpenings.begin(), xmlOpenings.end(),
                       [head](std::string_view opening) { return head.starts_with(opening); });
}

std::string_view PropertyListEncoding::textOfXML() {
    const std::string_view declared = declaredEncoding(m_text);
    const std::string name = upperCase(declared);
    const auto refuse = [&](const QString& reason) {
        VXFailAtLine(m_text, declared.data(),
                     reason.arg(QString::fromLatin1(declared.data(), qsizetype(declared.size()))));
    };
    if (m_source == Source::UTF16) {
        if (!name.empty() && !isOneOf(name, utf16Names)) {
            refuse(QStringLiteral("the text is UTF-16 and says that it is %1"));
        }
        return m_text;
    }
    if (isOneOf(name, utf16Names) || (m_source == Source::MarkedUTF8 && !name.empty() && !isOneOf(name, utf8Names))) {
        refuse(QStringLiteral("the text says that it is %1, but is not"));
    }
    if (isOneOf(name, latin1Names)) {
        decodeLatin1();
        return m_text;
    }
    if (isOneOf(name, asciiNames)) {
        const auto found = std::find_if(m_text.begin(), m_text.end(),
                                        [](char character) { return static_cast<unsigned char>(character) > 0x7F; });
        if (found != m_text.end()) {
            VXFailAtLine(m_text, &*found, QStringLiteral("the text says that it is US-ASCII, but is not"));
        }
        return m_text;
    }
    if (!name.empty() && !isOneOf(name, utf8Names)) {
        refuse(QStringLiteral("the encoding %1 is not supported"));
    }
    requireUTF8(m_text);
    return m_text;
}

std::string_view PropertyListEncoding::textOfPlain() {
    if (m_source != Source::UTF16) {
        requireUTF8(m_text);
    }
    return m_text;
}

void PropertyListEncoding::decodeUTF16(std::string_view bytes, bool bigEndian) {
    const auto fail = [this](const char* reason) {
        VXFailAtLine(m_converted, m_converted.data() + m_converted.size(), QString::fromLatin1(reason));
    };
    const auto unitAt = [&](std::size_t position) {
        const auto first = static_cast<unsigned char>(bytes[position]);
        const auto second = static_cast<unsigned char>(bytes[position + 1]);
        return static_cast<char32_t>(bigEndian ? first << 8 | second : second << 8 | first);
    };
    m_source = Source::UTF16;
    m_converted.reserve(bytes.size() / 2);
    std::size_t position = 0;
    for (; position + 1 < bytes.size(); position += 2) {
        char32_t character = unitAt(position);
        if (VXIsHighSurrogate(character) && position + 3 < bytes.size() && VXIsLowSurrogate(unitAt(position + 2))) {
            position += 2;
            character = VXCombinedSurrogates(character, unitAt(position));
        } else if (VXIsHighSurrogate(character) || VXIsLowSurrogate(character)) {
            fail("half of a UTF-16 pair stands alone");
        }
        VXAppendUTF8(m_converted, character);
    }
    if (position != bytes.size()) {
        fail("the UTF-16 text ends in the middle of a character");
    }
    m_text = m_converted;
}

void PropertyListEncoding::decodeLatin1() {
    m_converted.reserve(m_text.size() + m_text.size() / 8);
    for (const char character : m_text) {
        VXAppendUTF8(m_converted, static_cast<unsigned char>(character));
    }
    m_text = m_converted;
}

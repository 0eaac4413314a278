// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <string>
#include <string_view>

/// Why bytes are no property list and where, in words: "line 12: </key> is missing".
///
/// A reader throws one from however deep it is in its input; NSPropertyListSerialization catches every one of them, so
/// none reaches a caller.
struct PropertyListSyntaxError {
    QString description;
};

/// Throws a PropertyListSyntaxError with `reason` and the line of `text` in which `position` lies. Lines count from 1.
[[noreturn]] void VXFailAtLine(std::string_view text, const char* position, const QString& reason);

/// The first byte that is not part of a well-formed UTF-8 sequence (overlong forms, surrogates and numbers above
/// 10FFFF are none), or null.
[[nodiscard]] const char* VXFirstInvalidUTF8(std::string_view text);

/// The first control character below U+0020 other than tab, newline and carriage return, or null: XML has no place for
/// them.
[[nodiscard]] const char* VXFirstForbiddenControl(std::string_view text);

/// Puts the UTF-8 form of `character`, which is no surrogate and at most 10FFFF, at `output` and answers where it ends:
/// one to four bytes further on.
[[nodiscard]] inline char* VXPutUTF8(char* output, char32_t character) {
    const auto put = [&output](char32_t byte) { *output++ = static_cast<char>(static_cast<unsigned char>(byte)); };
    const auto putContinuation = [&](unsigned shift) { put(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | (character >> 6));
        putContinuation(0);
    } else if (character < 0x10000) {
        put(0xE0 | (character >> 12));
        putContinuation(6);
        putContinuation(0);
    } else {
        put(0xF0 | (character >> 18));
        putContinuation(12);
        putContinuation(6);
        putContinuation(0);
    }
    return output;
}

/// Appends the UTF-8 form of `character`, under the same conditions.
inline void VXAppendUTF8(std::string& output, char32_t character) {
    char bytes[4];
    output.append(bytes, static_cast<std::size_t>(VXPutUTF8(bytes, character) - bytes));
}

/// `text`, which is UTF-8, in UTF-16. A byte-order mark at its head stays, which QString::fromUtf8 takes away; what is
/// not valid becomes U+FFFD.
[[nodiscard]] QString VXStringWithUTF8(std::string_view text);

/// Whether a UTF-16 unit is the first or the second half of a pair.
[[nodiscard]] constexpr bool VXIsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
[[nodiscard]] constexpr bool VXIsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}
[[nodiscard]] constexpr char32_t VXCombinedSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

/// The bytes of a text form as UTF-8.
///
/// Borrows the bytes where they are UTF-8 already, which is the rule, and owns a converted copy where they are not.
/// UTF-16 is known by its byte-order mark or by the zero bytes of its first character; any other encoding must be named
/// by an XML declaration. Every operation throws a PropertyListSyntaxError where the bytes are not what they say.
class PropertyListEncoding {
public:
    /// Takes a byte-order mark away and decodes UTF-16. UTF-32 and EBCDIC are refused by name.
    explicit PropertyListEncoding(std::string_view bytes);
    PropertyListEncoding(const PropertyListEncoding&) = delete;
    PropertyListEncoding& operator=(const PropertyListEncoding&) = delete;

    /// Whether the text begins as XML does.
    [[nodiscard]] bool looksLikeXML() const;

    /// The text as UTF-8, with the encoding that its XML declaration names: UTF-8, UTF-16, US-ASCII or ISO-8859-1.
    /// Any other is refused by name.
    [[nodiscard]] std::string_view textOfXML();

    /// The text as UTF-8, for a form that cannot name its encoding.
    [[nodiscard]] std::string_view textOfPlain();

private:
    enum class Source { Bytes, MarkedUTF8, UTF16 };

    void decodeUTF16(std::string_view bytes, bool bigEndian);
    void decodeLatin1();

    Source m_source = Source::Bytes;
    std::string m_converted;
    std::string_view m_text;
};

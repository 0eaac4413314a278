// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <optional>
#include <string>
#include <string_view>

// Numbers and dates of property lists to text and back. Nothing here looks at the locale, and nothing guesses: what is
// not wholly a number or a date gives nothing.

/// White space of XML: space, tab, newline and carriage return.
[[nodiscard]] constexpr bool VXIsXMLSpace(char character) {
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

/// `text` without the white space at either end.
[[nodiscard]] std::string_view VXTrimmed(std::string_view text);

/// The value of a hexadecimal digit, or −1.
[[nodiscard]] constexpr int VXHexadecimalDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const int letter = character | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// A whole number from −2^63 to 2^64 − 1, decimal or after `0x` hexadecimal, with an optional sign.
[[nodiscard]] std::optional<NSPropertyList> VXParseInteger(std::string_view text);

/// A decimal number with an optional sign, or one of `inf`, `infinity` and `nan` in any case. A number too large for a
/// double, or too small to differ from 0 as one, gives nothing.
[[nodiscard]] std::optional<double> VXParseReal(std::string_view text);

/// The bytes that text in base 64 stands for; white space counts for nothing, padding must be there.
[[nodiscard]] std::optional<NSData> VXParseBase64(std::string_view text);

/// The date `2026-11-20T12:00:00Z`, with a fraction of a second allowed; the years are 1 to 9999.
[[nodiscard]] std::optional<NSDate> VXParseXMLDate(std::string_view text);

/// The date `2026-11-20 12:00:00 +0100`; the years are 1 to 9999.
[[nodiscard]] std::optional<NSDate> VXParseTextDate(std::string_view text);

/// How a real number that is whole is written.
enum class VXWholeReal {
    WithPoint,    ///< `1.0`
    WithoutPoint, ///< `1`
};

/// Appends the shortest text that reads back as the same double, with an exponent where the decimal point would stand
/// more than sixteen digits to the right or four zeros to the left: `0.0001`, `1e-05`, `1e+16`, `inf`, `nan`.
void VXAppendReal(std::string& output, double value, VXWholeReal style);

/// Appends a whole number in decimal.
void VXAppendInteger(std::string& output, std::int64_t value);
void VXAppendInteger(std::string& output, std::uint64_t value);

/// Appends `count` bytes in base 64, in one line.
void VXAppendBase64(std::string& output, const std::uint8_t* bytes, std::size_t count);

/// Appends the second in which `date` lies as `2026-11-20T12:00:00Z`. False, and nothing appended, for years before 1
/// and after 9999.
[[nodiscard]] bool VXAppendXMLDate(std::string& output, NSDate date);

/// Appends the second in which `date` lies as `2026-11-20 12:00:00 +0000`; for years before 1 and after 9999 the count
/// of seconds since 1970 instead.
void VXAppendTextDate(std::string& output, NSDate date);

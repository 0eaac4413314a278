// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

namespace {

constexpr double secondsPerDay = 86400;
constexpr double firstSecond = -62135596800;  // 0001-01-01 00:00:00
constexpr double endOfSeconds = 253402300800; // 10000-01-01 00:00:00

constexpr std::string_view base64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
/// The value of what is no digit of base 64.
constexpr unsigned notBase64 = 64;

constexpr std::array<std::uint8_t, 256> base64Values() {
    std::array<std::uint8_t, 256> values{};
    values.fill(notBase64);
    for (std::size_t index = 0; index < base64Alphabet.size(); ++index) {
        values[static_cast<unsigned char>(base64Alphabet[index])] = static_cast<std::uint8_t>(index);
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> base64Value = base64Values();

/// Reads a date from the left, field by field; one missed field makes all that follow fail.
class DateScanner {
public:
    explicit DateScanner(std::string_view text) : m_rest(text) {}

    int digits(std::size_t count) {
        int value = 0;
        if (m_rest.size() < count) {
            m_failed = true;
            return 0;
        }
        for (std::size_t index = 0; index < count; ++index) {
            const char digit = m_rest[index];
            m_failed |= digit < '0' || digit > '9';
            value = 10 * value + (digit - '0');
        }
        m_rest.remove_prefix(count);
        return m_failed ? 0 : value;
    }

    void literal(char character) {
        if (!optional(character)) {
            m_failed = true;
        }
    }

    bool optional(char character) {
        if (m_rest.empty() || m_rest.front() != character) {
            return false;
        }
        m_rest.remove_prefix(1);
        return true;
    }

    /// The fraction of a second after its point.
    double fraction() {
        double value = 0;
        double unit = 1;
        const std::size_t count = std::min(m_rest.find_first_not_of("0123456789"), m_rest.size());
        m_failed |= count == 0;
        for (const char digit : m_rest.substr(0, std::min<std::size_t>(count, 15))) {
            unit *= 10;
            value = 10 * value + (digit - '0');
        }
        m_rest.remove_prefix(count);
        return value / unit;
    }

    /// Midnight of `2026-11-20`, in seconds since 1970.
    double day() {
        const int year = digits(4);
        literal('-');
        const int month = digits(2);
        literal('-');
        const int dayOfMonth = digits(2);
        const std::chrono::year_month_day date(std::chrono::year(year),
                                               std::chrono::month(static_cast<unsigned>(month)),
                                               std::chrono::day(static_cast<unsigned>(dayOfMonth)));
        if (m_failed || year < 1 || !date.ok()) {
            m_failed = true;
            return 0;
        }
        return secondsPerDay * static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count());
    }

    /// `12:00:00`, in seconds.
    double timeOfDay() {
        const int hour = digits(2);
        literal(':');
        const int minute = digits(2);
        literal(':');
        const int second = digits(2);
        m_failed |= hour > 23 || minute > 59 || second > 59;
        return hour * 3600 + minute * 60 + second;
    }

    [[nodiscard]] bool isWhole() const { return !m_failed && m_rest.empty(); }

private:
    std::string_view m_rest;
    bool m_failed = false;
};

void appendDigits(std::string& output, int value, int count) {
    char digits[8];
    for (int index = count - 1; index >= 0; --index) {
        digits[index] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    output.append(digits, static_cast<std::size_t>(count));
}

/// Appends day and time of `second` with `separator` between them. The second lies in the years 1 to 9999.
void appendDayAndTime(std::string& output, double second, char separator) {
    const double day = std::floor(second / secondsPerDay);
    const int timeOfDay = static_cast<int>(second - day * secondsPerDay);
    const std::chrono::year_month_day date(std::chrono::sys_days(std::chrono::days(static_cast<int>(day))));
    appendDigits(output, static_cast<int>(date.year()), 4);
    output += '-';
    appendDigits(output, static_cast<int>(static_cast<unsigned>(date.month())), 2);
    output += '-';
    appendDigits(output, static_cast<int>(static_cast<unsigned>(date.day())), 2);
    output += separator;
    appendDigits(output, timeOfDay / 3600, 2);
    output += ':';
    appendDigits(output, timeOfDay / 60 % 60, 2);
    output += ':';
    appendDigits(output, timeOfDay % 60, 2);
}

template <class T>
void appendWholeNumber(std::string& output, T value) {
    char digits[24];
    output.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace

std::string_view VXTrimmed(std::string_view text) {
    while (!text.empty() && VXIsXMLSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && VXIsXMLSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<NSPropertyList> VXParseInteger(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) {
        text.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const char* end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
    if (problem != std::errc() || stop != end) {
        return std::nullopt;
    }
    if (!negative) {
        return NSPropertyList(magnitude);
    }
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
    if (magnitude > lowest) {
        return std::nullopt;
    }
    return NSPropertyList(static_cast<std::int64_t>(0 - magnitude));
}

std::optional<double> VXParseReal(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, problem] = std::from_chars(text.data(), end, value);
    // "nan(payload)" is from_chars' own and no number of any property list.
    if (problem != std::errc() || stop != end || text.ends_with(')')) {
        return std::nullopt;
    }
    return value;
}

std::optional<NSData> VXParseBase64(std::string_view text) {
    NSData bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    int digits = 0;
    int padding = 0;
    for (const char character : text) {
        const unsigned value = base64Value[static_cast<unsigned char>(character)];
        if (value != notBase64 && padding == 0) {
            group = group << 6 | value;
            if (++digits == 4) {
                bytes.push_back(static_cast<std::uint8_t>(group >> 16));
                bytes.push_back(static_cast<std::uint8_t>(group >> 8));
                bytes.push_back(static_cast<std::uint8_t>(group));
                group = 0;
                digits = 0;
            }
        } else if (character == '=' && digits >= 2 && digits + padding < 4) {
            ++padding;
        } else if (!VXIsXMLSpace(character)) {
            return std::nullopt;
        }
    }
    if (digits != 0 && digits + padding != 4) {
        return std::nullopt;
    }
    if (digits == 3) {
        bytes.push_back(static_cast<std::uint8_t>(group >> 10));
        bytes.push_back(static_cast<std::uint8_t>(group >> 2));
    } else if (digits == 2) {
        bytes.push_back(static_cast<std::uint8_t>(group >> 4));
    }
    return bytes;
}

std::optional<NSDate> VXParseXMLDate(std::string_view text) {
    DateScanner scanner(text);
    double seconds = scanner.day();
    scanner.literal('T');
    seconds += scanner.timeOfDay();
    if (scanner.optional('.')) {
        seconds += scanner.fraction();
    }
    scanner.literal('Z');
    if (!scanner.isWhole()) {
        return std::nullopt;
    }
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

std::optional<NSDate> VXParseTextDate(std::string_view text) {
    DateScanner scanner(text);
    double seconds = scanner.day();
    scanner.literal(' ');
    seconds += scanner.timeOfDay();
    scanner.literal(' ');
    const bool west = scanner.optional('-');
    if (!west) {
        scanner.literal('+');
    }
    const int hours = scanner.digits(2);
    const int minutes = scanner.digits(2);
    if (!scanner.isWhole() || minutes > 59) {
        return std::nullopt;
    }
    const double offset = hours * 3600 + minutes * 60;
    return NSDate::dateWithTimeIntervalSince1970(west ? seconds + offset : seconds - offset);
}

void VXAppendReal(std::string& output, double value, VXWholeReal style) {
    if (std::isnan(value)) {
        output += "nan";
        return;
    }
    if (std::signbit(value)) {
        output += '-';
        value = -value;
    }
    if (std::isinf(value)) {
        output += "inf";
        return;
    }
    // The shortest digits, as "d.ddde±xx"; only where the point goes differs from what is wanted.
    char text[32];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    const std::string_view scientific(text, static_cast<std::size_t>(end - text));
    const std::size_t mark = scientific.find('e');
    int exponent = 0;
    const char* exponentText = text + mark + (scientific[mark + 1] == '+' ? 2 : 1);
    std::from_chars(exponentText, end, exponent);
    if (exponent < -4 || exponent >= 16) {
        output += scientific;
        return;
    }

    std::string digits(1, scientific[0]);
    if (mark > 2) {
        digits += scientific.substr(2, mark - 2);
    }
    if (exponent < 0) {
        output += "0.";
        output.append(static_cast<std::size_t>(-exponent - 1), '0');
        output += digits;
        return;
    }
    const std::size_t whole = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= whole) {
        output += digits;
        output.append(whole - digits.size(), '0');
        output += style == VXWholeReal::WithPoint ? ".0" : "";
        return;
    }
    output.append(digits, 0, whole);
    output += '.';
    output.append(digits, whole);
}

void VXAppendInteger(std::string& output, std::int64_t value) {
    appendWholeNumber(output, value);
}

void VXAppendInteger(std::string& output, std::uint64_t value) {
    appendWholeNumber(output, value);
}

void VXAppendBase64(std::string& output, const std::uint8_t* bytes, std::size_t count) {
    while (count > 0) {
        const std::size_t taken = std::min<std::size_t>(count, 3);
        const unsigned group = static_cast<unsigned>(bytes[0]) << 16 |
                               (taken > 1 ? static_cast<unsigned>(bytes[1]) << 8 : 0U) |
                               (taken > 2 ? static_cast<unsigned>(bytes[2]) : 0U);
        output += base64Alphabet[group >> 18];
        output += base64Alphabet[group >> 12 & 63];
        output += taken > 1 ? base64Alphabet[group >> 6 & 63] : '=';
        output += taken > 2 ? base64Alphabet[group & 63] : '=';
        bytes += taken;
        count -= taken;
    }
}

bool VXAppendXMLDate(std::string& output, NSDate date) {
    const double second = std::floor(date.timeIntervalSince1970());
    if (second < firstSecond || second >= endOfSeconds) {
        return false;
    }
    appendDayAndTime(output, second, 'T');
    output += 'Z';
    return true;
}

void VXAppendTextDate(std::string& output, NSDate date) {
    const double second = std::floor(date.timeIntervalSince1970());
    if (second < firstSecond || second >= endOfSeconds) {
        VXAppendReal(output, second, VXWholeReal::WithoutPoint);
        return;
    }
    appendDayAndTime(output, second, ' ');
    output += " +0000";
}

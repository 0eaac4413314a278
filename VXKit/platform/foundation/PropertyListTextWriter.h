// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <string>
#include <string_view>

/// Writes a property list as old-style text, for people to read: `{`, newline, four spaces, `key = value;`, newline,
/// `}`, and arrays in the same way between round brackets.
///
/// A string stands bare where it is not empty, consists of ASCII letters, digits and `_$/:.-` alone and does not begin
/// with two slashes: such a string reads back as itself. Any other is quoted, with `\Uxxxx` for what is not ASCII, so
/// the text is ASCII throughout. Numbers, booleans (1 and 0) and dates are text like any other and read back as
/// strings.
class PropertyListTextWriter {
public:
    /// Writes `value`; a string at the top stands as it is, UTF-8 and unquoted.
    void write(const NSPropertyList& value);

    /// What was written. Call it once.
    [[nodiscard]] std::string takeText() { return std::move(m_output); }

private:
    void writeValue(const NSPropertyList& value, std::size_t level);
    void writeArray(const NSArray& array, std::size_t level);
    void writeDictionary(const NSDictionary& dictionary, std::size_t level);
    void writeData(const NSData& data);
    void writeString(std::string_view text);
    void writeEscaped(char32_t unit);
    void writeIndent(std::size_t level);
    [[nodiscard]] static std::string scalarText(const NSPropertyList& value);

    std::string m_output;
};

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListTextWriter.h>

#include <VXKit/platform/foundation/PropertyListBuilder.h>
#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListOrder.h>
#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <vector>

namespace {

constexpr std::string_view hexadecimalDigits = "0123456789abcdef";

constexpr bool staysBare(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') ||
           std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

bool mayStandBare(std::string_view text) {
    if (text.empty() || text.starts_with("//")) {
        return false;
    }
    for (const char character : text) {
        if (!staysBare(character)) {
            return false;
        }
    }
    return true;
}

} // namespace

void PropertyListTextWriter::write(const NSPropertyList& value) {
    if (value.as<NSArray>() || value.as<NSDictionary>() || value.as<NSData>()) {
        writeValue(value, 0);
    } else {
        m_output += scalarText(value);
    }
}

/// The text of a value that is neither a container nor data, before it is quoted.
std::string PropertyListTextWriter::scalarText(const NSPropertyList& value) {
    std::string text;
    if (const auto* string = value.as<std::string>()) {
        text = *string;
    } else if (const auto* date = value.as<NSDate>()) {
        VXAppendTextDate(text, *date);
    } else if (const auto* real = value.as<double>()) {
        VXAppendReal(text, *real, VXWholeReal::WithoutPoint);
    } else if (const auto* integer = value.as<std::int64_t>()) {
        VXAppendInteger(text, *integer);
    } else if (const auto* large = value.as<std::uint64_t>()) {
        VXAppendInteger(text, *large);
    } else {
        text += value.boolValue() ? '1' : '0';
    }
    return text;
}

void PropertyListTextWriter::writeValue(const NSPropertyList& value, std::size_t level) {
    if (const auto* dictionary = value.as<NSDictionary>()) {
        writeDictionary(*dictionary, level);
    } else if (const auto* array = value.as<NSArray>()) {
        writeArray(*array, level);
    } else if (const auto* data = value.as<NSData>()) {
        writeData(*data);
    } else {
        writeString(scalarText(value));
    }
}

void PropertyListTextWriter::writeArray(const NSArray& array, std::size_t level) {
    m_output += "(\n";
    // No reader makes a value as deep as this; of one put together in memory the innermost levels are left out.
    const std::size_t count = level < VXPropertyListMaximumDepth ? array.size() : 0;
    for (std::size_t index = 0; index < count; ++index) {
        writeIndent(level + 1);
        writeValue(array[index], level + 1);
        m_output += index + 1 < count ? ",\n" : "\n";
    }
    writeIndent(level);
    m_output += ')';
}

void PropertyListTextWriter::writeDictionary(const NSDictionary& dictionary, std::size_t level) {
    m_output += "{\n";
    std::vector<const NSDictionary::Entry*> entries;
    if (level < VXPropertyListMaximumDepth) {
        VXAppendSortedEntries(entries, dictionary);
    }
    for (const NSDictionary::Entry* entry : entries) {
        writeIndent(level + 1);
        writeString(entry->key.text());
        m_output += " = ";
        writeValue(entry->object, level + 1);
        m_output += ";\n";
    }
    writeIndent(level);
    m_output += '}';
}

/// Hexadecimal digits in groups of four bytes.
void PropertyListTextWriter::writeData(const NSData& data) {
    m_output += '<';
    for (std::size_t index = 0; index < data.size(); ++index) {
        if (index > 0 && index % 4 == 0) {
            m_output += ' ';
        }
        m_output += hexadecimalDigits[data[index] >> 4];
        m_output += hexadecimalDigits[data[index] & 0xF];
    }
    m_output += '>';
}

void PropertyListTextWriter::writeString(std::string_view text) {
    if (mayStandBare(text)) {
        m_output += text;
        return;
    }
    m_output += '"';
    // UTF-16, because a \U escape holds one unit of it. What is not valid UTF-8 becomes U+FFFD.
    const QString units = VXStringWithUTF8(text);
    for (const QChar unit : units) {
        writeEscaped(unit.unicode());
    }
    m_output += '"';
}

void PropertyListTextWriter::writeEscaped(char32_t unit) {
    constexpr std::string_view controls = "\a\b\f\n\r\t\v\"\\";
    constexpr std::string_view letters = "abfnrtv\"\\";
    if (unit > 0x7E) {
        m_output += "\\U";
        for (int shift = 12; shift >= 0; shift -= 4) {
            m_output += hexadecimalDigits[unit >> shift & 0xF];
        }
        return;
    }
    const char character = static_cast<char>(unit);
    if (const std::size_t index = controls.find(character); index != std::string_view::npos) {
        m_output += '\\';
        m_output += letters[index];
    } else if (unit < 0x20) {
        m_output += "\\0";
        m_output += hexadecimalDigits[unit >> 3];
        m_output += hexadecimalDigits[unit & 7];
    } else {
        m_output += character;
    }
}

void PropertyListTextWriter::writeIndent(std::size_t level) {
    m_output.append(4 * level, ' ');
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListXMLWriter.h>

#include <VXKit/platform/foundation/PropertyListBuilder.h>
#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListOrder.h>
#include <VXKit/platform/foundation/PropertyListScalars.h>

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view documentHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

/// Lines of base 64 end at this column, with tabs eight columns wide, but hold at least sixteen characters.
constexpr std::size_t dataColumns = 76;
constexpr std::size_t shortestDataLine = 16;
constexpr std::size_t tabColumns = 8;

/// Text is searched in blocks of this many bytes, without a branch, which the compiler turns into vector instructions.
constexpr std::size_t searchBlockSize = 32;

/// Whether a character is escaped or forbidden. The operators are the plain ones, so that nothing is skipped.
constexpr bool isSpecial(unsigned char character) {
    const bool isControl = (character < 0x20) & (character != '\n') & (character != '\t');
    return isControl | (character == '&') | (character == '<') | (character == '>');
}

constexpr std::array<bool, 256> specialCharacters() {
    std::array<bool, 256> table{};
    for (std::size_t character = 0; character < table.size(); ++character) {
        table[character] = isSpecial(static_cast<unsigned char>(character));
    }
    return table;
}

constexpr std::array<bool, 256> special = specialCharacters();

const char* findSpecial(const char* position, const char* end) {
    while (static_cast<std::size_t>(end - position) >= searchBlockSize) {
        unsigned char found = 0;
        for (std::size_t index = 0; index < searchBlockSize; ++index) {
            found |= static_cast<unsigned char>(isSpecial(static_cast<unsigned char>(position[index])));
        }
        if (found) {
            break;
        }
        position += searchBlockSize;
    }
    while (position < end && !special[static_cast<unsigned char>(*position)]) {
        ++position;
    }
    return position;
}

/// Bytes, for the estimate below.
constexpr std::size_t sizeOfTags = 20;
constexpr std::size_t sizeOfScalar = 46;

std::size_t estimatedSize(const NSPropertyList& value, std::size_t level);

std::size_t estimatedSize(const NSDictionary& dictionary, std::size_t level) {
    if (level >= VXPropertyListMaximumDepth) {
        return 0;
    }
    std::size_t size = 2 * (level + sizeOfTags);
    for (const NSDictionary::Entry& entry : dictionary) {
        size += level + sizeOfTags + entry.key.text().size() + estimatedSize(entry.object, level + 1);
    }
    return size;
}

/// About as many bytes as `value` takes, so that the document is not copied as it grows. Escapes make it larger, which
/// then costs one copy.
std::size_t estimatedSize(const NSPropertyList& value, std::size_t level) {
    if (const auto* text = value.as<std::string>()) {
        return level + sizeOfTags + text->size();
    }
    if (const auto* data = value.as<NSData>()) {
        return 2 * level + sizeOfTags + data->size() / 3 * 4 + data->size() / 9 * (level + 1);
    }
    if (const auto* dictionary = value.as<NSDictionary>()) {
        return estimatedSize(*dictionary, level);
    }
    const auto* array = value.as<NSArray>();
    if (!array) {
        return level + sizeOfScalar;
    }
    if (level >= VXPropertyListMaximumDepth) {
        return 0;
    }
    std::size_t size = 2 * (level + sizeOfTags);
    for (const NSPropertyList& element : *array) {
        size += estimatedSize(element, level + 1);
    }
    return size;
}

} // namespace

bool PropertyListXMLWriter::write(const NSPropertyList& value) {
    begin(estimatedSize(value, 0));
    return writeValue(value, 0) && end();
}

bool PropertyListXMLWriter::write(const NSDictionary& dictionary) {
    begin(estimatedSize(dictionary, 0));
    return writeDictionary(dictionary, 0) && end();
}

void PropertyListXMLWriter::begin(std::size_t sizeOfValue) {
    m_output.reserve(2 * documentHead.size() + sizeOfValue);
    m_output = documentHead;
}

bool PropertyListXMLWriter::end() {
    m_output += "</plist>\n";
    return true;
}

QString PropertyListXMLWriter::problem() const {
    const QString path = m_path.startsWith(QLatin1Char('.')) ? m_path.mid(1) : m_path;
    return path.isEmpty() ? m_reason : path + QStringLiteral(": ") + m_reason;
}

bool PropertyListXMLWriter::fail(const QString& reason) {
    m_reason = reason;
    return false;
}

bool PropertyListXMLWriter::writeValue(const NSPropertyList& value, std::size_t level) {
    if (const auto* dictionary = value.as<NSDictionary>()) {
        return writeDictionary(*dictionary, level);
    }
    if (const auto* array = value.as<NSArray>()) {
        return writeArray(*array, level);
    }
    if (const auto* data = value.as<NSData>()) {
        writeData(*data, level);
        return true;
    }
    m_output.append(level, '\t');
    if (const auto* text = value.as<std::string>()) {
        m_output += "<string>";
        if (!writeText(*text)) {
            return false;
        }
        m_output += "</string>\n";
    } else if (const auto* date = value.as<NSDate>()) {
        m_output += "<date>";
        if (!VXAppendXMLDate(m_output, *date)) {
            return fail(QStringLiteral("the date lies outside the years 1 to 9999"));
        }
        m_output += "</date>\n";
    } else if (const auto* real = value.as<double>()) {
        m_output += "<real>";
        VXAppendReal(m_output, *real, VXWholeReal::WithPoint);
        m_output += "</real>\n";
    } else if (const auto* integer = value.as<std::int64_t>()) {
        m_output += "<integer>";
        VXAppendInteger(m_output, *integer);
        m_output += "</integer>\n";
    } else if (const auto* large = value.as<std::uint64_t>()) {
        m_output += "<integer>";
        VXAppendInteger(m_output, *large);
        m_output += "</integer>\n";
    } else {
        m_output += std::get<bool>(value.variant()) ? "<true/>\n" : "<false/>\n";
    }
    return true;
}

bool PropertyListXMLWriter::writeArray(const NSArray& array, std::size_t level) {
    if (level >= VXPropertyListMaximumDepth) {
        return fail(QStringLiteral("more than %1 levels of dictionaries and arrays").arg(VXPropertyListMaximumDepth));
    }
    m_output.append(level, '\t');
    if (array.empty()) {
        m_output += "<array/>\n";
        return true;
    }
    m_output += "<array>\n";
    for (std::size_t index = 0; index < array.size(); ++index) {
        if (!writeValue(array[index], level + 1)) {
            m_path.prepend(QStringLiteral("[%1]").arg(index));
            return false;
        }
    }
    m_output.append(level, '\t');
    m_output += "</array>\n";
    return true;
}

bool PropertyListXMLWriter::writeDictionary(const NSDictionary& dictionary, std::size_t level) {
    if (level >= VXPropertyListMaximumDepth) {
        return fail(QStringLiteral("more than %1 levels of dictionaries and arrays").arg(VXPropertyListMaximumDepth));
    }
    m_output.append(level, '\t');
    if (dictionary.isEmpty()) {
        m_output += "<dict/>\n";
        return true;
    }
    m_output += "<dict>\n";
    // One stack of entries for all levels: inner dictionaries may move it, so it is looked at by index.
    const std::size_t first = m_entries.size();
    VXAppendSortedEntries(m_entries, dictionary);
    for (std::size_t index = first; index < first + dictionary.count(); ++index) {
        const NSDictionary::Entry* const entry = m_entries[index];
        m_output.append(level + 1, '\t');
        m_output += "<key>";
        const bool hasKey = writeText(entry->key.text());
        m_output += "</key>\n";
        if (!hasKey || !writeValue(entry->object, level + 1)) {
            const std::string_view key = entry->key.text();
            m_path.prepend(QLatin1Char('.') + QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())));
            return false;
        }
    }
    m_entries.resize(first);
    m_output.append(level, '\t');
    m_output += "</dict>\n";
    return true;
}

void PropertyListXMLWriter::writeData(const NSData& data, std::size_t level) {
    const std::size_t indent = level * tabColumns;
    const std::size_t line = std::max(shortestDataLine, indent < dataColumns ? dataColumns - indent : 0);
    const std::size_t bytesPerLine = line / 4 * 3;
    m_output.append(level, '\t');
    m_output += "<data>\n";
    for (std::size_t position = 0; position < data.size(); position += bytesPerLine) {
        m_output.append(level, '\t');
        VXAppendBase64(m_output, data.data() + position, std::min(bytesPerLine, data.size() - position));
        m_output += '\n';
    }
    m_output.append(level, '\t');
    m_output += "</data>\n";
}

bool PropertyListXMLWriter::writeText(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    for (;;) {
        const char* const found = findSpecial(position, end);
        m_output.append(position, static_cast<std::size_t>(found - position));
        position = found;
        if (position == end) {
            break;
        }
        switch (*position) {
        case '&':
            m_output += "&amp;";
            break;
        case '<':
            m_output += "&lt;";
            break;
        case '>':
            m_output += "&gt;";
            break;
        case '\r':
            m_output += "&#13;";
            break;
        default:
            return fail(QStringLiteral("the text holds the control character U+%1, which XML cannot hold")
                            .arg(int{*position}, 4, 16, QLatin1Char('0')));
        }
        ++position;
    }
    if (VXFirstInvalidUTF8(text)) {
        return fail(QStringLiteral("the text is not valid UTF-8"));
    }
    return true;
}

// SPDX-License-Identifier: MIT
#include "PropertyListTestSupport.h"

#include <bit>
#include <cmath>

const std::string xmlHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

NSPropertyList readPropertyList(std::string_view bytes) {
    NSError error;
    auto value = NSPropertyListSerialization::propertyListWithData(bytes, nullptr, &error);
    if (!value) {
        ADD_FAILURE() << "cannot be read: " << error.localizedDescription.toStdString();
        return "not readable";
    }
    return *std::move(value);
}

std::string readingError(std::string_view bytes) {
    NSError error;
    if (NSPropertyListSerialization::propertyListWithData(bytes, nullptr, &error)) {
        ADD_FAILURE() << "can be read";
    }
    return error.localizedDescription.toStdString();
}

std::string xmlOf(const NSPropertyList& value) {
    NSError error;
    auto bytes = NSPropertyListSerialization::dataWithPropertyList(value, &error);
    EXPECT_TRUE(bytes.has_value()) << error.localizedDescription.toStdString();
    return bytes ? *std::move(bytes) : std::string();
}

std::string writingError(const NSPropertyList& value) {
    NSError error;
    EXPECT_FALSE(NSPropertyListSerialization::dataWithPropertyList(value, &error).has_value());
    return error.localizedDescription.toStdString();
}

std::string xmlDocument(std::string_view content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + std::string(content) + "</plist>\n";
}

std::size_t BinaryFile::add(std::string_view bytes) {
    m_offsets.push_back(m_objects.size());
    m_objects += bytes;
    return m_offsets.size() - 1;
}

std::size_t BinaryFile::addContainer(char marker, const std::vector<std::size_t>& references) {
    const std::size_t count = marker == 'D' ? references.size() / 2 : references.size();
    std::string object = longMarker(marker, count);
    for (const std::size_t reference : references) {
        object += bigEndian(reference, 4);
    }
    return add(object);
}

std::string BinaryFile::bytes(std::size_t top) const {
    std::string file = m_objects;
    for (const std::size_t offset : m_offsets) {
        file += bigEndian(offset, 4);
    }
    return file + trailer(m_offsets.size(), top, m_objects.size());
}

std::string BinaryFile::bigEndian(std::uint64_t value, int width) {
    std::string bytes;
    for (int index = width - 1; index >= 0; --index) {
        bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * index)));
    }
    return bytes;
}

std::string BinaryFile::longMarker(char kind, std::uint64_t count) {
    const int nibble = kind >= 'A' ? kind - 'A' + 10 : kind - '0';
    return bigEndian(static_cast<std::uint64_t>(nibble << 4 | 0xF), 1) + "\x13" + bigEndian(count, 8);
}

std::string BinaryFile::trailer(std::uint64_t count, std::uint64_t top, std::uint64_t table, int offsetWidth,
                                int referenceWidth) {
    return std::string(6, '\0') + static_cast<char>(offsetWidth) + static_cast<char>(referenceWidth) +
           bigEndian(count, 8) + bigEndian(top, 8) + bigEndian(table, 8);
}

std::string RandomValues::text() {
    static const std::vector<std::string> pieces{
        "a",  "Z", "9",      " ",    "_",   "-",     "&",
        "<",  ">", "\"",     "'",    "\\",  "\n",    "\t",
        "{",  "=", ";",      ",",    "é",   "ß",     "İ",
        "日", "😀", "\u2028", "\x7F", "]]>", "&amp;", "longer text without anything in it that must be escaped"};
    std::string result;
    for (std::uint64_t count = below(12); count > 0; --count) {
        result += pieces[below(pieces.size())];
    }
    return result;
}

NSPropertyList RandomValues::scalar() {
    switch (below(8)) {
    case 0:
        return below(2) == 0;
    case 1:
        return static_cast<std::int64_t>(m_engine()) >> below(64);
    case 2:
        return m_engine();
    case 3: {
        const auto real = std::bit_cast<double>(m_engine());
        return std::isnan(real) ? 0.5 : real;
    }
    case 4:
        return static_cast<double>(static_cast<std::int64_t>(below(2000000)) - 1000000) / 1000;
    case 5:
        return dateAt(static_cast<double>(below(315537897600)) - 62135596800.0);
    case 6: {
        NSData data(below(200));
        for (std::uint8_t& byte : data) {
            byte = static_cast<std::uint8_t>(m_engine());
        }
        return data;
    }
    default:
        return text();
    }
}

NSPropertyList RandomValues::value(int depth) {
    const std::uint64_t kind = depth > 0 ? below(4) : 3;
    if (kind == 0) {
        NSArray array;
        for (std::uint64_t count = below(5); count > 0; --count) {
            array.push_back(value(depth - 1));
        }
        return array;
    }
    if (kind == 1) {
        NSDictionary dictionary;
        for (std::uint64_t count = below(6); count > 0; --count) {
            dictionary.setObject(value(depth - 1), text());
        }
        return dictionary;
    }
    return scalar();
}

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Writes the XML form of a property list, byte for byte the same for equal values.
///
/// The bytes are those that Python's `plistlib.dumps(value, sort_keys=True)` writes, with one difference: a carriage
/// return is written as `&#13;`, where plistlib turns it into a newline and so changes the text. Line ends of every
/// kind survive a round trip.
class PropertyListXMLWriter {
public:
    /// Writes the document; false where `value` holds something that XML cannot, see `problem`.
    [[nodiscard]] bool write(const NSPropertyList& value);
    [[nodiscard]] bool write(const NSDictionary& dictionary);

    /// What was written. Call it once.
    [[nodiscard]] std::string takeDocument() { return std::move(m_output); }

    /// Why nothing was written, and at which place in the value: `contents[12].body: …`.
    [[nodiscard]] QString problem() const;

private:
    void begin(std::size_t sizeOfValue);
    bool end();
    bool writeValue(const NSPropertyList& value, std::size_t level);
    bool writeArray(const NSArray& array, std::size_t level);
    bool writeDictionary(const NSDictionary& dictionary, std::size_t level);
    void writeData(const NSData& data, std::size_t level);
    bool writeText(std::string_view text);
    bool fail(const QString& reason);

    std::string m_output;
    std::vector<const NSDictionary::Entry*> m_entries;
    QString m_path;
    QString m_reason;
};

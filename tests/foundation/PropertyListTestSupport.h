// SPDX-License-Identifier: MIT
// What the tests of the property-list readers and writers have in common.
#pragma once

#include <VXKit/platform/foundation/NSPropertyListSerialization.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

/// The value that `bytes` hold. Fails the test where they hold none, and answers a string that says so.
NSPropertyList readPropertyList(std::string_view bytes);

/// The reason why `bytes` hold no property list. Fails the test where they hold one.
std::string readingError(std::string_view bytes);

/// The XML form of `value`. Fails the test where it has none.
std::string xmlOf(const NSPropertyList& value);

/// The reason why `value` has no XML form. Fails the test where it has one.
std::string writingError(const NSPropertyList& value);

/// `content` between the tags of a document whose first line ends before it.
std::string xmlDocument(std::string_view content);

/// The document's head as the writer writes it, `<plist>` included, and its end.
extern const std::string xmlHead;
inline const std::string xmlTail = "</plist>\n";

inline NSDate dateAt(double seconds) {
    return NSDate::dateWithTimeIntervalSince1970(seconds);
}

/// Puts a file of the binary form together, object by object.
class BinaryFile {
public:
    /// Adds an object and answers its number. `bytes` are its marker and content.
    std::size_t add(std::string_view bytes);
    /// Adds an array (marker A) or dictionary (marker D) of references.
    std::size_t addContainer(char marker, const std::vector<std::size_t>& references);
    /// The whole file, with references and offsets of four bytes.
    [[nodiscard]] std::string bytes(std::size_t top) const;

    static std::string bigEndian(std::uint64_t value, int width);
    /// A marker whose count stands in the following eight bytes.
    static std::string longMarker(char kind, std::uint64_t count);
    static std::string trailer(std::uint64_t count, std::uint64_t top, std::uint64_t table, int offsetWidth = 4,
                               int referenceWidth = 4);

private:
    std::string m_objects = "bplist00";
    std::vector<std::size_t> m_offsets;
};

/// Makes values of every kind at random, the same for the same seed: whole-second dates, text of every plane of Unicode
/// without control characters, every kind of double but not-a-number, containers up to four levels deep.
class RandomValues {
public:
    explicit RandomValues(unsigned seed) : m_engine(seed) {}
    NSPropertyList value(int depth = 4);
    std::string text();

private:
    std::uint64_t below(std::uint64_t limit) { return m_engine() % limit; }
    NSPropertyList scalar();

    std::mt19937_64 m_engine;
};

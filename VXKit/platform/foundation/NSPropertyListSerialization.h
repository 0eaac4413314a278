// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

/// The three forms of a property list. AppKit: `NSPropertyListFormat`.
enum class NSPropertyListFormat {
    OpenStep, ///< old-style text
    XML,      ///< the one that is written
    Binary,   ///< read, not written
};

/// Turns property lists into bytes and bytes into property lists.
///
/// Reading is safe with bytes from anywhere: nesting is limited to 512 levels, what shared references of the binary
/// form expand to is limited, entity definitions are refused, and no length is believed before the bytes are there.
/// Where a dictionary holds a key twice, the later value wins. Text is UTF-8, or UTF-16 with a byte-order mark or plain
/// to see; XML may also say that it is US-ASCII or ISO-8859-1, and any other encoding is refused by name. Reading takes
/// time in proportion to the number of bytes. Nothing here depends on the locale. Stands for the AppKit class of the
/// same name.
class VXKIT_EXPORT NSPropertyListSerialization {
public:
    NSPropertyListSerialization() = delete;

    /// Reads `bytes`, whichever form they have; `format`, where given, is told which it was. When they are no property
    /// list, gives nothing and fills `error` with the reason and the line (text forms) or byte offset (binary form).
    /// AppKit: `+propertyListWithData:options:format:error:`.
    [[nodiscard]] static std::optional<NSPropertyList>
    propertyListWithData(std::string_view bytes, NSPropertyListFormat* format, NSError* error);

    /// Reads a regular file. Errors name its path. AppKit: `+propertyListWithData:…` of the file's data.
    [[nodiscard]] static std::optional<NSPropertyList>
    propertyListWithContentsOfFile(const QString& path, NSPropertyListFormat* format, NSError* error);

    /// The XML form, byte for byte the same for equal values: sorted keys, tabs, shortest exact doubles, whole-second
    /// dates in UTC. Gives nothing and fills `error`, with the place in the value, for what the form cannot hold:
    /// control characters other than tab, newline and carriage return, text that is not UTF-8, dates before year 1 or
    /// after year 9999, and more than 512 levels. AppKit: `+dataWithPropertyList:format:options:error:` with the XML
    /// format.
    [[nodiscard]] static std::optional<std::string> dataWithPropertyList(const NSPropertyList& value, NSError* error);
    /// The same for a dictionary as it stands, which need not be copied into a value first.
    [[nodiscard]] static std::optional<std::string> dataWithPropertyList(const NSDictionary& dictionary,
                                                                         NSError* error);
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/platform/foundation/NSError.h>

#include <QExplicitlySharedDataPointer>
#include <QSharedData>
#include <QString>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

class NSPropertyList;

/// Bytes. AppKit: `NSData`.
using NSData = std::vector<std::uint8_t>;

/// An ordered list of property-list values. AppKit: `NSArray`.
using NSArray = std::vector<NSPropertyList>;

/// The key of a dictionary entry: immutable UTF-8 text, shared between the dictionaries that hold it.
///
/// A file of a hundred thousand records names the same handful of keys over and over, so a key is one pointer and
/// copying it copies no text.
class VXKIT_EXPORT NSDictionaryKey {
public:
    /// A new key with a copy of `text`, UTF-8.
    explicit NSDictionaryKey(std::string_view text);

    /// The text, for as long as some copy of the key lives.
    [[nodiscard]] std::string_view text() const { return m_shared->text; }

    /// Whether the texts are the same, byte for byte.
    friend bool operator==(const NSDictionaryKey& left, const NSDictionaryKey& right) {
        return left.m_shared == right.m_shared || left.text() == right.text();
    }

private:
    struct Shared : QSharedData {
        explicit Shared(std::string_view value) : text(value) {}
        std::string text;
    };
    QExplicitlySharedDataPointer<Shared> m_shared;
};

/// Property-list values under text keys, in the order in which the keys were first set. AppKit: `NSDictionary`.
///
/// Entries lie flat in one block, because a record has few of them: a look-up compares keys one after the other. For
/// thousands of keys in one dictionary build a map of your own over it. Two dictionaries are equal when they hold equal
/// values under the same keys, whatever the order.
class VXKIT_EXPORT NSDictionary {
public:
    struct Entry;
    /// A place among the entries; good until the dictionary changes.
    using const_iterator = const Entry*;

    /// An empty dictionary. AppKit: `+dictionary`.
    NSDictionary();
    /// The later of two entries with the same key wins.
    NSDictionary(std::initializer_list<std::pair<std::string_view, NSPropertyList>> entries);
    /// Copies the values and shares the keys. AppKit: `-copy`.
    NSDictionary(const NSDictionary& other);
    /// Leaves `other` empty.
    NSDictionary(NSDictionary&& other) noexcept;
    /// Copies the values and shares the keys.
    NSDictionary& operator=(const NSDictionary& other);
    /// Takes over the entries of `other`.
    NSDictionary& operator=(NSDictionary&& other) noexcept;
    ~NSDictionary();

    /// The number of entries. AppKit: `-count`.
    [[nodiscard]] std::size_t count() const;
    /// Whether there is no entry.
    [[nodiscard]] bool isEmpty() const { return count() == 0; }

    /// The value under `key`, or null; borrowed until the dictionary changes. AppKit: `-objectForKey:`.
    [[nodiscard]] const NSPropertyList* objectForKey(std::string_view key) const;

    /// The value under `key` where it is of type T, else null: `objectOfType<std::string>("title")`.
    template <class T>
    [[nodiscard]] const T* objectOfType(std::string_view key) const;

    /// Puts `object` under `key`, in place of what was there. AppKit: `-setObject:forKey:`.
    void setObject(NSPropertyList object, std::string_view key);

    /// Takes the entry of `key` away; does nothing where there is none. AppKit: `-removeObjectForKey:`.
    void removeObjectForKey(std::string_view key);

    /// The entry whose key was set first, for loops.
    [[nodiscard]] const_iterator begin() const;
    /// Behind the entry whose key was set last.
    [[nodiscard]] const_iterator end() const;

    /// Reads the dictionary at the top of a property-list file of any form. Anything else (no such file, not a regular
    /// file, malformed, another type at the top) gives nothing, and the reason goes to the log with the file's path.
    /// AppKit: `+dictionaryWithContentsOfFile:`.
    [[nodiscard]] static std::optional<NSDictionary> dictionaryWithContentsOfFile(const QString& path);

    /// Writes the XML form to `path`. With `atomically`, the file there is whole at every moment: the old one until the
    /// new one has reached the disk. False when nothing was written; the reason goes to the log with the file's path.
    /// AppKit: `-writeToFile:atomically:`.
    bool writeToFile(const QString& path, bool atomically) const;

    /// Appends an entry without looking whether its key is there already: for readers, which look themselves.
    void appendEntry(NSDictionaryKey key, NSPropertyList object);
    /// Makes room for `count` entries in all, so that appending them moves none.
    void reserve(std::size_t count);

    /// Takes n log n comparisons at most, and n where both hold their keys in the same order.
    friend VXKIT_EXPORT bool operator==(const NSDictionary& left, const NSDictionary& right);

private:
    std::vector<Entry> m_entries;
};

/// One value of a property list: dictionary, array, string, date, number, boolean or data.
///
/// A value type that owns all it holds. Strings are UTF-8. Numbers keep their kind: a whole number that fits is a
/// signed 64-bit integer, one above 2^63 − 1 an unsigned one, everything else a double; a boolean is no number, and an
/// absent value is no value (use a pointer or `std::optional`).
class VXKIT_EXPORT NSPropertyList {
public:
    /// The kinds of values there are, in no order that means anything.
    using Variant =
        std::variant<bool, std::int64_t, std::uint64_t, double, NSDate, std::string, NSData, NSArray, NSDictionary>;

    /// A boolean, from a `bool` alone and nothing that would become one.
    NSPropertyList(std::same_as<bool> auto value) : m_value(bool(value)) {}
    /// Any other integer type; held signed wherever it fits, so that equal numbers are equal values.
    template <std::integral T>
    requires(!std::same_as<T, bool>) NSPropertyList(T value) : m_value(wholeNumber(value)) {}
    /// A number, NaN and infinity included. AppKit: `+numberWithDouble:` of `NSNumber`.
    NSPropertyList(double value) : m_value(value) {}
    /// A date.
    NSPropertyList(NSDate value) : m_value(value) {}
    /// A string, UTF-8.
    NSPropertyList(std::string value) : m_value(std::move(value)) {}
    /// A string, UTF-8; copied.
    NSPropertyList(std::string_view value) : m_value(std::in_place_type<std::string>, value) {}
    /// A string, UTF-8 up to its NUL; copied. Must not be null.
    NSPropertyList(const char* value) : m_value(std::in_place_type<std::string>, value) {}
    /// A string; a null one is the empty one.
    NSPropertyList(const QString& value) : m_value(value.toStdString()) {}
    /// Bytes.
    NSPropertyList(NSData value) : m_value(std::move(value)) {}
    /// An array.
    NSPropertyList(NSArray value) : m_value(std::move(value)) {}
    /// A dictionary.
    NSPropertyList(NSDictionary value) : m_value(std::move(value)) {}

    /// The value itself, for std::visit.
    [[nodiscard]] const Variant& variant() const { return m_value; }

    /// The value where it is of type T, else null.
    template <class T>
    [[nodiscard]] const T* as() const {
        return std::get_if<T>(&m_value);
    }
    /// The same, to change it in place.
    template <class T>
    [[nodiscard]] T* as() {
        return std::get_if<T>(&m_value);
    }

    /// A number or boolean as a double, and a string by the number it begins with; 0 for anything else.
    /// AppKit: `-doubleValue`.
    [[nodiscard]] double doubleValue() const;

    /// A number or boolean as a whole number, cut off towards zero and held within the type's range; a string by the
    /// number it begins with; 0 for anything else. AppKit: `-integerValue`.
    [[nodiscard]] std::int64_t integerValue() const;

    /// A boolean as it is, a number by whether it differs from 0, a string by whether it begins (after blanks, a sign
    /// and zeros) with one of Y, y, T, t or a digit from 1 to 9; false for anything else. AppKit: `-boolValue`.
    [[nodiscard]] bool boolValue() const;

    /// Old-style text: `{`, newline, four spaces, `key = value;`, newline, `}` with keys sorted, strings quoted only
    /// where they must be; a string at the top stands as it is. AppKit: `-description`.
    [[nodiscard]] QString description() const;

    /// Whether both are of the same kind and hold the same: 1 differs from 1.0 and from true. Unlike bare doubles, two
    /// values that are not a number are equal, so that a value always equals its copy.
    friend VXKIT_EXPORT bool operator==(const NSPropertyList& left, const NSPropertyList& right);

private:
    template <std::integral T>
    static Variant wholeNumber(T value) {
        if (std::in_range<std::int64_t>(value)) {
            return static_cast<std::int64_t>(value);
        }
        return static_cast<std::uint64_t>(value);
    }

    Variant m_value;
};

/// A key and its value.
struct NSDictionary::Entry {
    NSDictionaryKey key;   ///< the key
    NSPropertyList object; ///< the value under it
};

inline NSDictionary::NSDictionary() = default;
inline NSDictionary::NSDictionary(const NSDictionary& other) = default;
inline NSDictionary::NSDictionary(NSDictionary&& other) noexcept = default;
inline NSDictionary& NSDictionary::operator=(const NSDictionary& other) = default;
inline NSDictionary& NSDictionary::operator=(NSDictionary&& other) noexcept = default;
inline NSDictionary::~NSDictionary() = default;

inline std::size_t NSDictionary::count() const {
    return m_entries.size();
}

inline NSDictionary::const_iterator NSDictionary::begin() const {
    return m_entries.data();
}

inline NSDictionary::const_iterator NSDictionary::end() const {
    return m_entries.data() + m_entries.size();
}

template <class T>
const T* NSDictionary::objectOfType(std::string_view key) const {
    const NSPropertyList* object = objectForKey(key);
    return object ? object->as<T>() : nullptr;
}

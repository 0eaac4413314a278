// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

/// Levels of dictionaries and arrays that a property list may have, read or written. Far above what a program writes,
/// far below what the stack of a thread carries when such a value is compared, copied or destroyed.
inline constexpr std::size_t VXPropertyListMaximumDepth = 512;

/// Puts a property list together from the inside out, without recursion, for the readers of the three forms.
///
/// The children of a container that is still open lie on one stack and move into a block of exactly their size when it
/// ends. When a dictionary is given a key twice, the later value takes the place of the earlier one. Keys of the same
/// text are shared within a property list by a small cache; one that has been pushed out of it is made anew, which
/// costs memory but is never wrong.
class PropertyListBuilder {
public:
    PropertyListBuilder();

    /// Opens a container as the next value; false where that would be one level too many.
    [[nodiscard]] bool beginArray() { return begin(Kind::Array); }
    [[nodiscard]] bool beginDictionary() { return begin(Kind::Dictionary); }

    /// Closes the innermost container, which is open and has no key without a value.
    void end();

    /// How many containers are open.
    [[nodiscard]] std::size_t depth() const { return m_containers.size(); }
    [[nodiscard]] bool isInContainer() const { return !m_containers.empty(); }
    [[nodiscard]] bool isInDictionary() const {
        return isInContainer() && m_containers.back().kind == Kind::Dictionary;
    }
    [[nodiscard]] bool isInArray() const { return isInContainer() && m_containers.back().kind == Kind::Array; }

    /// Whether the innermost container is a dictionary whose last key has no value yet.
    [[nodiscard]] bool hasPendingKey() const { return m_hasPendingKey; }

    /// The key of the next value; a dictionary is open and waits for a key.
    void addKey(std::string_view text);

    /// Adds a value: to the open array, under the pending key, or as the top.
    template <class T>
    void addValue(T&& value) {
        m_values.emplace_back(std::forward<T>(value));
        m_hasPendingKey = false;
    }

    /// Whether the value at the top is complete.
    [[nodiscard]] bool isComplete() const { return m_containers.empty() && !m_values.empty(); }
    [[nodiscard]] NSPropertyList takeTop() { return std::move(m_values.front()); }

private:
    enum class Kind { Array, Dictionary };
    struct Container {
        Kind kind;
        std::size_t firstValue;
        std::size_t firstKey;
    };

    [[nodiscard]] bool begin(Kind kind);
    [[nodiscard]] NSArray takeArray(const Container& container);
    [[nodiscard]] NSDictionary takeDictionary(const Container& container);
    std::size_t mergeDuplicateKeys(const Container& container);

    std::vector<Container> m_containers;
    std::vector<NSPropertyList> m_values;
    std::vector<NSDictionaryKey> m_keys;
    std::array<std::optional<NSDictionaryKey>, 256> m_knownKeys;
    bool m_hasPendingKey = false;
};

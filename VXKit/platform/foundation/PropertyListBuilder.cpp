// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/PropertyListBuilder.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <numeric>

namespace {

/// Up to this many keys are compared each with each, which is faster than sorting them.
constexpr std::size_t fewKeys = 16;

bool haveDuplicates(const NSDictionaryKey* keys, std::size_t count) {
    for (std::size_t later = 1; later < count; ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            if (keys[later] == keys[earlier]) {
                return true;
            }
        }
    }
    return false;
}

/// A cheap number that tells apart the keys of a record: length and the characters at its ends.
std::size_t slotOfKey(std::string_view text, std::size_t slots) {
    if (text.empty()) {
        return 0;
    }
    const auto character = [text](std::size_t index) {
        return static_cast<std::size_t>(static_cast<unsigned char>(text[index]));
    };
    return (text.size() * 7 + character(0) * 31 + character(text.size() / 2) * 5 + character(text.size() - 1)) % slots;
}

} // namespace

PropertyListBuilder::PropertyListBuilder() = default;

bool PropertyListBuilder::begin(Kind kind) {
    if (m_containers.size() >= VXPropertyListMaximumDepth) {
        return false;
    }
    m_containers.push_back({kind, m_values.size(), m_keys.size()});
    m_hasPendingKey = false;
    return true;
}

void PropertyListBuilder::end() {
    const Container container = m_containers.back();
    m_containers.pop_back();
    if (container.kind == Kind::Array) {
        addValue(takeArray(container));
    } else {
        addValue(takeDictionary(container));
    }
}

void PropertyListBuilder::addKey(std::string_view text) {
    std::optional<NSDictionaryKey>& known = m_knownKeys[slotOfKey(text, m_knownKeys.size())];
    if (!known || known->text() != text) {
        known.emplace(text);
    }
    m_keys.push_back(*known);
    m_hasPendingKey = true;
}

NSArray PropertyListBuilder::takeArray(const Container& container) {
    const auto first = m_values.begin() + static_cast<std::ptrdiff_t>(container.firstValue);
    NSArray array(std::make_move_iterator(first), std::make_move_iterator(m_values.end()));
    m_values.erase(first, m_values.end());
    return array;
}

NSDictionary PropertyListBuilder::takeDictionary(const Container& container) {
    const std::size_t count = mergeDuplicateKeys(container);
    NSDictionary dictionary;
    dictionary.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        dictionary.appendEntry(std::move(m_keys[container.firstKey + index]),
                               std::move(m_values[container.firstValue + index]));
    }
    m_keys.erase(m_keys.begin() + static_cast<std::ptrdiff_t>(container.firstKey), m_keys.end());
    m_values.erase(m_values.begin() + static_cast<std::ptrdiff_t>(container.firstValue), m_values.end());
    return dictionary;
}

/// Moves the last value of each key that was given more than once to the place of the first, closes the gaps, and
/// answers how many entries are left. Sorting keeps this from being quadratic in a dictionary made to make it so.
std::size_t PropertyListBuilder::mergeDuplicateKeys(const Container& container) {
    NSDictionaryKey* const keys = m_keys.data() + container.firstKey;
    NSPropertyList* const values = m_values.data() + container.firstValue;
    const std::size_t count = m_keys.size() - container.firstKey;
    if (count <= fewKeys && !haveDuplicates(keys, count)) {
        return count;
    }

    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [keys](std::size_t left, std::size_t right) {
        const int comparison = keys[left].text().compare(keys[right].text());
        return comparison != 0 ? comparison < 0 : left < right;
    });
    std::vector<bool> superseded(count);
    std::size_t run = 0;
    for (std::size_t index = 1; index <= count; ++index) {
        if (index < count && keys[order[index]] == keys[order[run]]) {
            superseded[order[index]] = true;
            continue;
        }
        if (index - run > 1) {
            values[order[run]] = std::move(values[order[index - 1]]);
        }
        run = index;
    }
    std::size_t kept = 0;
    for (std::size_t index = 0; index < count; ++index) {
        if (superseded[index]) {
            continue;
        }
        if (kept != index) {
            keys[kept] = std::move(keys[index]);
            values[kept] = std::move(values[index]);
        }
        ++kept;
    }
    return kept;
}

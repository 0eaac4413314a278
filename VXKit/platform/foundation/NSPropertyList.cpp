// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/platform/foundation/PropertyListEncoding.h>
#include <VXKit/platform/foundation/PropertyListOrder.h>
#include <VXKit/platform/foundation/PropertyListTextWriter.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r";
constexpr std::int64_t highestInteger = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t lowestInteger = std::numeric_limits<std::int64_t>::min();

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

/// Takes a sign away from the head of `text` and tells whether it was a minus.
bool takeSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

/// The number that `text` begins with; one beyond the range of a double becomes infinite, one below it 0.
double leadingReal(std::string_view text) {
    text = withoutBlanks(text);
    const bool negative = takeSign(text);
    const bool isNumber = !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '.');
    if (!isNumber) {
        return 0;
    }
    double value = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (problem == std::errc::result_out_of_range) {
        // Which end of the range it has left is told by the exponent, and without one by the number being large.
        const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
        const std::size_t exponent = number.find_first_of("eE");
        const bool isSmall = exponent != std::string_view::npos ? number.substr(exponent + 1).starts_with('-')
                                                                : number.find_first_of("123456789") > number.find('.');
        value = isSmall ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

/// The whole number that `text` begins with, held within the range of its type.
std::int64_t leadingInteger(std::string_view text) {
    text = withoutBlanks(text);
    const bool negative = takeSign(text);
    std::uint64_t magnitude = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    constexpr std::uint64_t tooLarge = std::uint64_t{1} << 63;
    if (problem == std::errc::result_out_of_range || magnitude >= tooLarge) {
        return negative ? lowestInteger : highestInteger;
    }
    const auto value = static_cast<std::int64_t>(magnitude);
    return negative ? -value : value;
}

bool leadingBool(std::string_view text) {
    text = withoutBlanks(text);
    takeSign(text);
    text = text.substr(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::int64_t wholePart(double value) {
    constexpr double tooLarge = 9223372036854775808.0; // 2^63
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= tooLarge) {
        return highestInteger;
    }
    return value < -tooLarge ? lowestInteger : static_cast<std::int64_t>(value);
}

bool keysAreInOrder(const std::vector<const NSDictionary::Entry*>& entries, std::size_t first) {
    for (std::size_t index = first + 1; index < entries.size(); ++index) {
        if (entries[index]->key.text() < entries[index - 1]->key.text()) {
            return false;
        }
    }
    return true;
}

bool areEqual(const NSDictionary::Entry& left, const NSDictionary::Entry& right) {
    return left.key == right.key && left.object == right.object;
}

} // namespace

NSDictionaryKey::NSDictionaryKey(std::string_view text) : m_shared(new Shared(text)) {}

NSDictionary::NSDictionary(std::initializer_list<std::pair<std::string_view, NSPropertyList>> entries) {
    m_entries.reserve(entries.size());
    for (const auto& [key, object] : entries) {
        setObject(object, key);
    }
}

const NSPropertyList* NSDictionary::objectForKey(std::string_view key) const {
    for (const Entry& entry : m_entries) {
        if (entry.key.text() == key) {
            return &entry.object;
        }
    }
    return nullptr;
}

void NSDictionary::setObject(NSPropertyList object, std::string_view key) {
    for (Entry& entry : m_entries) {
        if (entry.key.text() == key) {
            entry.object = std::move(object);
            return;
        }
    }
    m_entries.push_back({NSDictionaryKey(key), std::move(object)});
}

void NSDictionary::removeObjectForKey(std::string_view key) {
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(),
                                    [key](const Entry& candidate) { return candidate.key.text() == key; });
    if (entry != m_entries.end()) {
        m_entries.erase(entry);
    }
}

std::optional<NSDictionary> NSDictionary::dictionaryWithContentsOfFile(const QString& path) {
    NSError error;
    std::optional<NSPropertyList> value =
        NSPropertyListSerialization::propertyListWithContentsOfFile(path, nullptr, &error);
    if (!value) {
        NSLog("Cannot read a dictionary: %@", error.localizedDescription);
        return std::nullopt;
    }
    auto* dictionary = value->as<NSDictionary>();
    if (!dictionary) {
        NSLog("Cannot read a dictionary: %@: another kind of value stands at the top", path);
        return std::nullopt;
    }
    return std::move(*dictionary);
}

bool NSDictionary::writeToFile(const QString& path, bool atomically) const {
    NSError error;
    const std::optional<std::string> bytes = NSPropertyListSerialization::dataWithPropertyList(*this, &error);
    if (!bytes) {
        NSLog("Cannot write a dictionary: %@: %@", path, error.localizedDescription);
        return false;
    }
    const bool written =
        atomically ? VXWriteFileAtomically(path, *bytes, &error) : VXWriteFileInPlace(path, *bytes, &error);
    if (!written) {
        NSLog("Cannot write a dictionary: %@", error.localizedDescription);
    }
    return written;
}

void NSDictionary::appendEntry(NSDictionaryKey key, NSPropertyList object) {
    m_entries.push_back({std::move(key), std::move(object)});
}

void NSDictionary::reserve(std::size_t count) {
    m_entries.reserve(count);
}

bool operator==(const NSDictionary& left, const NSDictionary& right) {
    if (left.count() != right.count()) {
        return false;
    }
    const bool sameOrder = std::equal(left.begin(), left.end(), right.begin(),
                                      [](const auto& one, const auto& other) { return one.key == other.key; });
    if (sameOrder) {
        return std::equal(left.begin(), left.end(), right.begin(), areEqual);
    }
    std::vector<const NSDictionary::Entry*> leftEntries;
    std::vector<const NSDictionary::Entry*> rightEntries;
    VXAppendSortedEntries(leftEntries, left);
    VXAppendSortedEntries(rightEntries, right);
    return std::equal(leftEntries.begin(), leftEntries.end(), rightEntries.begin(),
                      [](const auto* one, const auto* other) { return areEqual(*one, *other); });
}

double NSPropertyList::doubleValue() const {
    if (const auto* real = as<double>()) {
        return *real;
    }
    if (const auto* integer = as<std::int64_t>()) {
        return static_cast<double>(*integer);
    }
    if (const auto* large = as<std::uint64_t>()) {
        return static_cast<double>(*large);
    }
    if (const auto* boolean = as<bool>()) {
        return *boolean ? 1 : 0;
    }
    const auto* text = as<std::string>();
    return text ? leadingReal(*text) : 0;
}

std::int64_t NSPropertyList::integerValue() const {
    if (const auto* integer = as<std::int64_t>()) {
        return *integer;
    }
    if (as<std::uint64_t>()) {
        return highestInteger;
    }
    if (const auto* text = as<std::string>()) {
        return leadingInteger(*text);
    }
    return wholePart(doubleValue());
}

bool NSPropertyList::boolValue() const {
    if (const auto* text = as<std::string>()) {
        return leadingBool(*text);
    }
    return doubleValue() != 0;
}

QString NSPropertyList::description() const {
    PropertyListTextWriter writer;
    writer.write(*this);
    return VXStringWithUTF8(writer.takeText());
}

bool operator==(const NSPropertyList& left, const NSPropertyList& right) {
    const auto* one = left.as<double>();
    const auto* other = right.as<double>();
    if (one && other && std::isnan(*one) && std::isnan(*other)) {
        return true;
    }
    return left.variant() == right.variant();
}

void VXAppendSortedEntries(std::vector<const NSDictionary::Entry*>& entries, const NSDictionary& dictionary) {
    const std::size_t first = entries.size();
    for (const NSDictionary::Entry& entry : dictionary) {
        entries.push_back(&entry);
    }
    // Most dictionaries come from a file that was written sorted.
    if (keysAreInOrder(entries, first)) {
        return;
    }
    std::sort(entries.begin() + static_cast<std::ptrdiff_t>(first), entries.end(),
              [](const auto* left, const auto* right) { return left->key.text() < right->key.text(); });
}

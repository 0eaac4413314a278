// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSArrayController.h>

#include <QCollator>
#include <QString>

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

namespace {

/// What objects are ordered by, worked out once for each.
struct SortKey {
    enum class Kind { None, Number, Text } kind = Kind::None;
    double number = 0;
    std::optional<QCollatorSortKey> text;
};

SortKey sortKeyOf(const NSPropertyList& object, std::string_view key, const QCollator& collator) {
    const auto* const dictionary = object.as<NSDictionary>();
    const NSPropertyList* const value = dictionary ? dictionary->objectForKey(key) : nullptr;
    if (!value) {
        return {};
    }
    if (const auto* const text = value->as<std::string>()) {
        return {SortKey::Kind::Text, 0, collator.sortKey(QString::fromStdString(*text).toCaseFolded())};
    }
    const double number = value->doubleValue();
    // Numbers that are none would leave the others without an order.
    return number == number ? SortKey{SortKey::Kind::Number, number, {}} : SortKey{};
}

bool comesBefore(const SortKey& left, const SortKey& right) {
    if (left.kind != right.kind) {
        return left.kind < right.kind;
    }
    switch (left.kind) {
    case SortKey::Kind::None:
        return false;
    case SortKey::Kind::Number:
        return left.number < right.number;
    case SortKey::Kind::Text:
        return left.text->compare(*right.text) < 0;
    }
    return false;
}

} // namespace

NSArrayController::NSArrayController(NSArray content, QObject* parent)
    : QObject(parent), m_content(std::move(content)) {}

NSArrayController::~NSArrayController() = default;

const NSArray& NSArrayController::arrangedObjects() const {
    return m_content;
}

void NSArrayController::setContent(NSArray content) {
    Q_EMIT contentWillChange();
    m_content = std::move(content);
    Q_EMIT contentDidChange();
}

void NSArrayController::addObject(NSPropertyList object) {
    Q_EMIT contentWillChange();
    m_content.push_back(std::move(object));
    Q_EMIT contentDidChange();
}

void NSArrayController::removeObjectAtArrangedObjectIndex(std::size_t index) {
    if (index >= m_content.size()) {
        return;
    }
    Q_EMIT contentWillChange();
    m_content.erase(m_content.begin() + static_cast<std::ptrdiff_t>(index));
    Q_EMIT contentDidChange();
}

bool NSArrayController::setValue(const NSPropertyList& value, std::string_view key, std::size_t index) {
    auto* const dictionary = index < m_content.size() ? m_content[index].as<NSDictionary>() : nullptr;
    if (!dictionary) {
        return false;
    }
    dictionary->setObject(value, key);
    Q_EMIT valueDidChange(static_cast<int>(index));
    return true;
}

void NSArrayController::sort(std::string_view key, bool ascending) {
    // Whose own disregard for case not every locale's rules have.
    const QCollator collator;
    std::vector<SortKey> keys;
    keys.reserve(m_content.size());
    for (const NSPropertyList& object : m_content) {
        keys.push_back(sortKeyOf(object, key, collator));
    }
    std::vector<int> order(m_content.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int left, int right) {
        const SortKey& one = keys[static_cast<std::size_t>(left)];
        const SortKey& other = keys[static_cast<std::size_t>(right)];
        return ascending ? comesBefore(one, other) : comesBefore(other, one);
    });
    Q_EMIT orderWillChange();
    NSArray arranged;
    arranged.reserve(m_content.size());
    for (const int index : order) {
        arranged.push_back(std::move(m_content[static_cast<std::size_t>(index)]));
    }
    m_content = std::move(arranged);
    Q_EMIT orderDidChange(order);
}

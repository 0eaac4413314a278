// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QObject>

#include <utility>
#include <vector>

NSNotificationObservation::NSNotificationObservation(NSNotificationCenter& centre, std::string name,
                                                     std::uint64_t sequence)
    : m_centre(&centre), m_name(std::move(name)), m_sequence(sequence) {}

NSNotificationObservation::NSNotificationObservation(NSNotificationObservation&& other) noexcept
    : m_centre(std::exchange(other.m_centre, nullptr)), m_name(std::move(other.m_name)), m_sequence(other.m_sequence) {}

NSNotificationObservation& NSNotificationObservation::operator=(NSNotificationObservation&& other) noexcept {
    NSNotificationObservation(std::move(other)).swap(*this);
    return *this;
}

NSNotificationObservation::~NSNotificationObservation() {
    if (m_centre) {
        m_centre->unsubscribe(m_name, m_sequence);
    }
}

void NSNotificationObservation::swap(NSNotificationObservation& other) noexcept {
    std::swap(m_centre, other.m_centre);
    std::swap(m_name, other.m_name);
    std::swap(m_sequence, other.m_sequence);
}

NSNotificationCenter::NSNotificationCenter() = default;

NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    // Never destroyed: subscriptions of other process-wide objects may end after every static is gone.
    static NSNotificationCenter& centre = *new NSNotificationCenter;
    return centre;
}

void NSNotificationCenter::addObserver(QObject* observer, Handler selector, std::string_view name,
                                       NSNotificationSender object) {
    if (!m_byObserver.contains(observer)) {
        QObject::connect(observer, &QObject::destroyed, observer, [this, observer] { removeObserver(observer); });
    }
    const std::uint64_t sequence = subscribe(name, {object, std::move(selector)});
    m_byObserver.emplace(observer, std::pair(std::string(name), sequence));
}

NSNotificationObservation NSNotificationCenter::addObserverForName(std::string_view name, NSNotificationSender object,
                                                                   Handler block) {
    return {*this, std::string(name), subscribe(name, {object, std::move(block)})};
}

void NSNotificationCenter::removeObserver(const QObject* observer) {
    // Taken out first: letting go of a handler may let go of objects that unsubscribe in turn.
    std::vector<std::pair<std::string, std::uint64_t>> subscriptions;
    const auto [first, last] = m_byObserver.equal_range(observer);
    for (auto entry = first; entry != last; ++entry) {
        subscriptions.push_back(std::move(entry->second));
    }
    m_byObserver.erase(first, last);
    for (const auto& [name, sequence] : subscriptions) {
        unsubscribe(name, sequence);
    }
}

void NSNotificationCenter::postNotificationName(std::string_view name, NSNotificationSender object,
                                                const NSDictionary& userInfo) {
    const NSNotification notification{name, object, userInfo};
    const std::string ownName(name);
    const std::uint64_t end = m_nextSequence;

    // Handlers may add and remove anything, so nothing is kept between two of them but the number of the last one.
    for (std::uint64_t last = 0;;) {
        std::uint64_t sequence = end;
        std::shared_ptr<const Subscription> next;
        const auto considerNextUnder = [&](const std::string& key) {
            const auto found = m_byName.find(key);
            if (found == m_byName.end()) {
                return;
            }
            const auto candidate = found->second.upper_bound(last);
            if (candidate != found->second.end() && candidate->first < sequence) {
                sequence = candidate->first;
                next = candidate->second;
            }
        };
        considerNextUnder(ownName);
        considerNextUnder({});
        if (!next) {
            return;
        }
        last = sequence;
        if (!next->object || next->object == object) {
            next->handler(notification);
        }
    }
}

std::uint64_t NSNotificationCenter::subscribe(std::string_view name, Subscription subscription) {
    const std::uint64_t sequence = m_nextSequence++;
    m_byName[std::string(name)].emplace(sequence, std::make_shared<const Subscription>(std::move(subscription)));
    return sequence;
}

void NSNotificationCenter::unsubscribe(const std::string& name, std::uint64_t sequence) {
    const auto found = m_byName.find(name);
    if (found == m_byName.end()) {
        return;
    }
    const auto entry = found->second.find(sequence);
    if (entry == found->second.end()) {
        return;
    }
    // The handler goes last of all: what it holds may unsubscribe in turn.
    const std::shared_ptr<const Subscription> keptUntilReturn = entry->second;
    found->second.erase(entry);
    if (found->second.empty()) {
        m_byName.erase(found);
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTSnippetIndex.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

/// The records of each ID, in the order of the list, as chains through one block.
struct _LTSnippetIndex::Order {
    struct Place {
        _LTSnippet* snippet;
        std::size_t next; // of the same ID
    };
    struct Chain {
        std::size_t first;
        std::size_t last;
    };

    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    void append(_LTSnippet& snippet, NSDate snippetID) {
        const std::size_t place = places.size();
        places.push_back({&snippet, none});
        const auto chain = chains.find(snippetID.timeIntervalSince1970());
        if (chain == chains.end()) {
            chains.insert(snippetID.timeIntervalSince1970(), {place, place});
            return;
        }
        places[chain->last].next = place;
        chain->last = place;
    }

    [[nodiscard]] _LTSnippet* first(NSDate snippetID) const {
        const auto chain = chains.constFind(snippetID.timeIntervalSince1970());
        return chain == chains.constEnd() ? nullptr : places[chain->first].snippet;
    }

    _LTSnippet* takeFirst(NSDate snippetID) {
        const auto chain = chains.find(snippetID.timeIntervalSince1970());
        if (chain == chains.end()) {
            return nullptr;
        }
        const Place taken = places[chain->first];
        if (taken.next == none) {
            chains.erase(chain);
        } else {
            chain->first = taken.next;
        }
        return taken.snippet;
    }

    std::vector<Place> places;
    QHash<double, Chain> chains;
};

_LTSnippetIndex::_LTSnippetIndex() = default;

_LTSnippetIndex::~_LTSnippetIndex() = default;

void _LTSnippetIndex::add(_LTSnippet& snippet) {
    snippet.snipID.addIndex(*this);
    // Once asked, always asked: its class may have become known while the list held it.
    const auto asked = m_askedRecords.find(&snippet.snipID);
    if (asked != m_askedRecords.end()) {
        ++asked->count;
    } else if (!_LTSnippetIdentity::fieldIsAnswer(typeid(snippet))) {
        m_askedRecords.insert(&snippet.snipID, {&snippet, 1, std::nullopt});
    } else if (const std::optional<NSDate> snippetID = snippet.snipID) {
        count(*snippetID, snippet.snipID);
    }
    if (m_order) {
        appendToOrder(snippet);
    }
}

void _LTSnippetIndex::remove(_LTSnippet& snippet) {
    forgetOrder();
    release(snippet.snipID);
}

bool _LTSnippetIndex::contains(NSDate snippetID) const {
    return m_holders.find(snippetID.timeIntervalSince1970()) || anAskedRecordHas(snippetID);
}

bool _LTSnippetIndex::knowsFirst(NSDate snippetID) const {
    if (m_order) {
        const _LTSnippet* first = m_order->first(snippetID);
        return !first || first->snippetID() == snippetID;
    }
    if (!m_askedRecords.isEmpty()) {
        return false;
    }
    const _LTSnippetTable::Entry* entry = m_holders.find(snippetID.timeIntervalSince1970());
    return !entry || entry->holder;
}

_LTSnippetIdentity* _LTSnippetIndex::takeFirst(NSDate snippetID) {
    _LTSnippetIdentity* first = nullptr;
    if (m_order) {
        if (_LTSnippet* snippet = m_order->takeFirst(snippetID)) {
            first = &snippet->snipID;
        }
    } else if (const _LTSnippetTable::Entry* entry = m_holders.find(snippetID.timeIntervalSince1970())) {
        first = entry->holder;
    }
    if (first) {
        release(*first);
    }
    return first;
}

void _LTSnippetIndex::learnOrder(const std::vector<std::shared_ptr<_LTSnippet>>& list) {
    m_order = std::make_unique<Order>();
    m_order->places.reserve(list.size());
    for (AskedRecord& asked : m_askedRecords) {
        asked.answer = asked.snippet->snippetID();
    }
    for (const std::shared_ptr<_LTSnippet>& snippet : list) {
        const auto asked = m_askedRecords.constFind(&snippet->snipID);
        const std::optional<NSDate> snippetID =
            asked == m_askedRecords.constEnd() ? snippet->snipID.date() : asked->answer;
        if (snippetID) {
            m_order->append(*snippet, *snippetID);
        }
    }
}

void _LTSnippetIndex::forgetOrder() {
    m_order.reset();
}

double _LTSnippetIndex::freeTimeAtOrBefore(double time) {
    while (contains(NSDate::dateWithTimeIntervalSince1970(time))) {
        if (!m_runs) {
            buildRuns();
        }
        if (const std::optional<Link> link = linkOf(time)) {
            const auto run = m_runs->lower_bound(*link);
            if (run != m_runs->end() && run->first.first == link->first && run->second <= link->second) {
                time = link->first + run->second;
            }
        }
        const std::optional<double> before = oneSecondBefore(time);
        if (!before) {
            return time;
        }
        time = *before;
    }
    return time;
}

void _LTSnippetIndex::identityChanged(_LTSnippetIdentity& identity, std::optional<NSDate> old) {
    forgetOrder();
    if (m_askedRecords.contains(&identity)) {
        return;
    }
    if (old) {
        discount(*old);
    }
    if (identity.date()) {
        count(*identity.date(), identity);
    }
}

std::optional<double> _LTSnippetIndex::oneSecondBefore(double time) {
    constexpr double beginningOfTime = -std::numeric_limits<double>::infinity();
    if (time == beginningOfTime) {
        return std::nullopt;
    }
    const double before = time - 1.0;
    return before < time ? before : std::nextafter(time, beginningOfTime);
}

void _LTSnippetIndex::appendToOrder(_LTSnippet& snippet) {
    const std::optional<NSDate> snippetID = snippet.snippetID();
    if (const auto asked = m_askedRecords.find(&snippet.snipID); asked != m_askedRecords.end()) {
        if (asked->count > 1 && asked->answer != snippetID) {
            // The list holds it elsewhere too, in a place that is no longer right.
            forgetOrder();
            return;
        }
        asked->answer = snippetID;
    }
    if (snippetID) {
        m_order->append(snippet, *snippetID);
    }
}

void _LTSnippetIndex::release(_LTSnippetIdentity& identity) {
    identity.removeIndex(*this);
    if (const auto asked = m_askedRecords.find(&identity); asked != m_askedRecords.end()) {
        if (--asked->count == 0) {
            m_askedRecords.erase(asked);
        }
        return;
    }
    if (const std::optional<NSDate> snippetID = identity.date()) {
        discount(*snippetID);
    }
}

void _LTSnippetIndex::count(NSDate snippetID, _LTSnippetIdentity& identity) {
    const double time = snippetID.timeIntervalSince1970();
    const auto [entry, isNew] = m_holders.findOrInsert(time);
    if (isNew) {
        entry.holder = &identity;
        if (m_runs) {
            addToRuns(time);
        }
    } else if (entry.holder) {
        entry.holder = nullptr;
        m_shared.insert(time, 2);
    } else {
        ++m_shared[time];
    }
}

void _LTSnippetIndex::discount(NSDate snippetID) {
    const double time = snippetID.timeIntervalSince1970();
    _LTSnippetTable::Entry& entry = *m_holders.find(time);
    if (!entry.holder) {
        const auto shared = m_shared.find(time);
        if (--*shared > 0) {
            return;
        }
        m_shared.erase(shared);
    }
    m_holders.erase(entry);
    if (m_runs) {
        removeFromRuns(time);
    }
}

bool _LTSnippetIndex::anAskedRecordHas(NSDate snippetID) const {
    return std::any_of(m_askedRecords.begin(), m_askedRecords.end(),
                       [&](const AskedRecord& asked) { return asked.snippet->snippetID() == snippetID; });
}

/// Where a time lies on its chain, or nothing where going back a second may change the fraction by rounding and chains
/// mean nothing: fractional times before 1970, and times without whole seconds.
std::optional<_LTSnippetIndex::Link> _LTSnippetIndex::linkOf(double time) {
    constexpr double wholeSecondsEnd = 9007199254740992.0; // 2^53
    const double seconds = std::floor(time);
    if (std::abs(time) >= wholeSecondsEnd || (time < 0 && time != seconds)) {
        return std::nullopt;
    }
    return Link(time - seconds, seconds);
}

void _LTSnippetIndex::buildRuns() {
    std::vector<Link> links;
    links.reserve(m_holders.size());
    for (const _LTSnippetTable::Entry& entry : m_holders.entries()) {
        if (const std::optional<Link> link = entry.isFree() ? std::nullopt : linkOf(entry.time)) {
            links.push_back(*link);
        }
    }
    std::sort(links.begin(), links.end());

    m_runs.emplace();
    for (std::size_t first = 0; first < links.size();) {
        std::size_t last = first;
        while (last + 1 < links.size() && links[last + 1] == Link(links[last].first, links[last].second + 1.0)) {
            ++last;
        }
        m_runs->emplace_hint(m_runs->end(), links[last], links[first].second);
        first = last + 1;
    }
}

void _LTSnippetIndex::addToRuns(double time) {
    const std::optional<Link> link = linkOf(time);
    if (!link) {
        return;
    }
    const auto [fraction, second] = *link;
    double firstSecond = second;
    if (const auto below = m_runs->find({fraction, second - 1.0}); below != m_runs->end()) {
        firstSecond = below->second;
        m_runs->erase(below);
    }
    const auto above = m_runs->upper_bound(*link);
    if (above != m_runs->end() && above->first.first == fraction && above->second == second + 1.0) {
        above->second = firstSecond;
    } else {
        m_runs->emplace_hint(above, *link, firstSecond);
    }
}

void _LTSnippetIndex::removeFromRuns(double time) {
    const std::optional<Link> link = linkOf(time);
    if (!link) {
        return;
    }
    const auto [fraction, second] = *link;
    const auto run = m_runs->lower_bound(*link);
    const double firstSecond = run->second;
    if (run->first.second == second) {
        m_runs->erase(run);
    } else {
        run->second = second + 1.0;
    }
    if (firstSecond < second) {
        m_runs->emplace(Link(fraction, second - 1.0), firstSecond);
    }
}

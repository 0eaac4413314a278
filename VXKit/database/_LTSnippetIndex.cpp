// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTSnippetIndex.h>

#include <VXKit/database/_LTSnippet.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

void _LTSnippetIndex::add(_LTSnippet& snippet) {
    if (!_LTSnippetIdentity::fieldIsAnswer(typeid(snippet))) {
        ++m_askedRecords[&snippet];
        return;
    }
    snippet.snipID.m_indexes.push_back(this);
    if (const std::optional<NSDate> snippetID = snippet.snipID) {
        count(*snippetID);
    }
}

void _LTSnippetIndex::remove(_LTSnippet& snippet) {
    if (const auto asked = m_askedRecords.find(&snippet); asked != m_askedRecords.end()) {
        if (--*asked == 0) {
            m_askedRecords.erase(asked);
        }
        return;
    }
    auto& indexes = snippet.snipID.m_indexes;
    indexes.erase(std::find(indexes.begin(), indexes.end(), this));
    if (const std::optional<NSDate> snippetID = snippet.snipID) {
        discount(*snippetID);
    }
}

bool _LTSnippetIndex::contains(NSDate snippetID) const {
    return m_counts.contains(snippetID.timeIntervalSince1970()) || anAskedRecordHas(snippetID);
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

void _LTSnippetIndex::identityChanged(std::optional<NSDate> from, std::optional<NSDate> to) {
    if (from) {
        discount(*from);
    }
    if (to) {
        count(*to);
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

void _LTSnippetIndex::count(NSDate snippetID) {
    if (++m_counts[snippetID.timeIntervalSince1970()] == 1 && m_runs) {
        addToRuns(snippetID.timeIntervalSince1970());
    }
}

void _LTSnippetIndex::discount(NSDate snippetID) {
    const auto entry = m_counts.find(snippetID.timeIntervalSince1970());
    if (--*entry > 0) {
        return;
    }
    m_counts.erase(entry);
    if (m_runs) {
        removeFromRuns(snippetID.timeIntervalSince1970());
    }
}

bool _LTSnippetIndex::anAskedRecordHas(NSDate snippetID) const {
    return std::any_of(m_askedRecords.keyBegin(), m_askedRecords.keyEnd(),
                       [&](const _LTSnippet* snippet) { return snippet->snippetID() == snippetID; });
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
    links.reserve(static_cast<std::size_t>(m_counts.size()));
    for (auto entry = m_counts.keyBegin(); entry != m_counts.keyEnd(); ++entry) {
        if (const std::optional<Link> link = linkOf(*entry)) {
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

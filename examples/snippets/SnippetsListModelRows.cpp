// SPDX-License-Identifier: MIT
// How the rows come and go.
#include "SnippetsListModel.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace {

/// Where more runs of rows than this come and go, all rows between those that are held are replaced: each run costs a
/// view as much as all of its rows.
constexpr std::size_t mostRuns = 16;

} // namespace

SnippetsListModel::Entries::const_iterator SnippetsListModel::rowOf(const Entry& entry) const {
    const auto begin = std::partition_point(m_rows.begin(), m_rows.end(), [&](const std::shared_ptr<Entry>& other) {
        return other->created > entry.created;
    });
    const auto end = std::partition_point(
        begin, m_rows.end(), [&](const std::shared_ptr<Entry>& other) { return other->created >= entry.created; });
    const auto row =
        std::find_if(begin, end, [&](const std::shared_ptr<Entry>& other) { return other.get() == &entry; });
    return row == end ? m_rows.end() : row;
}

void SnippetsListModel::showOne(const std::shared_ptr<Entry>& entry) {
    const auto place = std::upper_bound(m_rows.begin(), m_rows.end(), entry, isBefore);
    const int row = static_cast<int>(place - m_rows.begin());
    beginInsertRows({}, row, row);
    m_rows.insert(place, entry);
    endInsertRows();
}

void SnippetsListModel::hideOne(const Entry& entry) {
    const auto place = rowOf(entry);
    if (place != m_rows.end()) {
        const int row = static_cast<int>(place - m_rows.cbegin());
        beginRemoveRows({}, row, row);
        m_rows.erase(place);
        endRemoveRows();
    }
}

/// Brings the rows to what m_entries has of matches: those that stay are left alone, the others come and go in runs, or
/// all together where those would be many.
void SnippetsListModel::showMatches() {
    Entries wanted;
    wanted.reserve(m_entries.size());
    std::size_t runs = 0;
    bool isInRun = false;
    // Both are in the order of m_entries, but for rows of what is gone from there.
    auto row = m_rows.cbegin();
    const auto passRemoved = [&] {
        while (row != m_rows.cend() && !(*row)->isMatch) {
            runs += std::exchange(isInRun, true) ? 0U : 1U;
            ++row;
        }
    };
    for (const std::shared_ptr<Entry>& entry : m_entries) {
        if (!entry->isMatch) {
            continue;
        }
        wanted.push_back(entry);
        passRemoved();
        if (row != m_rows.cend() && *row == entry) {
            isInRun = false;
            ++row;
        } else {
            runs += std::exchange(isInRun, true) ? 0U : 1U;
        }
    }
    passRemoved();
    if (runs > mostRuns) {
        replaceRows(wanted);
    } else if (runs > 0) {
        showMatchesInRuns(wanted);
    }
}

void SnippetsListModel::showMatchesInRuns(const Entries& wanted) {
    const auto stays = [&](std::size_t row) { return m_rows[row]->isMatch; };
    for (std::size_t end = m_rows.size(); end > 0;) {
        if (stays(end - 1)) {
            --end;
            continue;
        }
        std::size_t begin = end - 1;
        while (begin > 0 && !stays(begin - 1)) {
            --begin;
        }
        replaceStretch(begin, end, wanted, 0, 0);
        end = begin;
    }

    for (std::size_t begin = 0; begin < wanted.size();) {
        if (begin < m_rows.size() && m_rows[begin] == wanted[begin]) {
            ++begin;
            continue;
        }
        std::size_t end = begin + 1;
        while (end < wanted.size() && (begin >= m_rows.size() || m_rows[begin] != wanted[end])) {
            ++end;
        }
        replaceStretch(begin, begin, wanted, begin, end);
        begin = end;
    }
}

/// Leaves those rows alone that a view has its eye on, the selected one first of all, and replaces what is between
/// them.
void SnippetsListModel::replaceRows(const Entries& wanted) {
    std::vector<std::size_t> held; // rows, and where they are wanted
    for (const QModelIndex& index : persistentIndexList()) {
        held.push_back(static_cast<std::size_t>(index.row()));
    }
    std::sort(held.begin(), held.end(), std::greater<>());
    held.erase(std::unique(held.begin(), held.end()), held.end());
    std::erase_if(held, [this](std::size_t row) { return !m_rows[row]->isMatch; });

    std::size_t end = m_rows.size();
    std::size_t wantedEnd = wanted.size();
    for (const std::size_t row : held) {
        const auto [same, sameEnd] = std::equal_range(wanted.begin(), wanted.end(), m_rows[row], isBefore);
        const auto place = static_cast<std::size_t>(std::find(same, sameEnd, m_rows[row]) - wanted.begin());
        replaceStretch(row + 1, end, wanted, place + 1, wantedEnd);
        end = row;
        wantedEnd = place;
    }
    replaceStretch(0, end, wanted, 0, wantedEnd);
}

/// Puts some of `wanted` in the place of the rows from `begin` to `end`.
void SnippetsListModel::replaceStretch(std::size_t begin, std::size_t end, const Entries& wanted,
                                       std::size_t wantedBegin, std::size_t wantedEnd) {
    const auto difference = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
    if (begin < end) {
        beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
        m_rows.erase(m_rows.begin() + difference(begin), m_rows.begin() + difference(end));
        endRemoveRows();
    }
    if (wantedBegin < wantedEnd) {
        beginInsertRows({}, static_cast<int>(begin), static_cast<int>(begin + wantedEnd - wantedBegin) - 1);
        m_rows.insert(m_rows.begin() + difference(begin), wanted.begin() + difference(wantedBegin),
                      wanted.begin() + difference(wantedEnd));
        endInsertRows();
    }
}

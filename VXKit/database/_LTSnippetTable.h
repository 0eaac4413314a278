// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

class _LTSnippetIdentity;

/// Snippet IDs, as times, with the record that has each: the hash of an index.
///
/// A long list looks up IDs all over its table, where what a look-up costs is fetching memory. So the entries lie in
/// one block without links, each beside those that hash to the same place, and a look-up fetches one piece of memory
/// where a hash with buckets fetches three. Times are never NaN, which marks the free entries.
class _LTSnippetTable {
public:
    struct Entry {
        double time = std::numeric_limits<double>::quiet_NaN();
        _LTSnippetIdentity* holder = nullptr;

        [[nodiscard]] bool isFree() const { return std::isnan(time); }
    };

    [[nodiscard]] std::size_t size() const { return m_size; }

    /// All entries, and free ones between them.
    [[nodiscard]] const std::vector<Entry>& entries() const { return m_entries; }

    /// The entry of `time`, or null; valid until the table changes.
    [[nodiscard]] const Entry* find(double time) const {
        const std::size_t place = m_entries.empty() ? 0 : placeOf(time);
        return m_entries.empty() || m_entries[place].isFree() ? nullptr : &m_entries[place];
    }
    [[nodiscard]] Entry* find(double time) { return const_cast<Entry*>(std::as_const(*this).find(time)); }

    /// The entry of `time`, and whether it was made by this call.
    std::pair<Entry&, bool> findOrInsert(double time) {
        if (4 * (m_size + 1) > 3 * m_entries.size()) {
            grow();
        }
        Entry& entry = m_entries[placeOf(time)];
        const bool isNew = entry.isFree();
        if (isNew) {
            entry.time = time;
            ++m_size;
        }
        return {entry, isNew};
    }

    void erase(Entry& entry) {
        // Those behind it that had to go on from its place move up, so that no search ends at the gap.
        const std::size_t mask = m_entries.size() - 1;
        auto gap = static_cast<std::size_t>(&entry - m_entries.data());
        for (std::size_t next = (gap + 1) & mask; !m_entries[next].isFree(); next = (next + 1) & mask) {
            const std::size_t home = homeOf(m_entries[next].time);
            if (((next - home) & mask) >= ((next - gap) & mask)) {
                m_entries[gap] = m_entries[next];
                gap = next;
            }
        }
        m_entries[gap] = Entry();
        --m_size;
    }

private:
    static constexpr std::size_t smallest = 16;

    /// Where a search for `time` begins.
    [[nodiscard]] std::size_t homeOf(double time) const {
        auto bits = std::bit_cast<std::uint64_t>(time + 0.0); // which makes −0.0, the same time, 0.0
        bits = (bits ^ (bits >> 32U)) * 0xD6E8FEB86659FD93U;
        bits = (bits ^ (bits >> 32U)) * 0xD6E8FEB86659FD93U;
        return static_cast<std::size_t>(bits >> 32U) & (m_entries.size() - 1);
    }

    /// Where the entry of `time` is, or would be.
    [[nodiscard]] std::size_t placeOf(double time) const {
        const std::size_t mask = m_entries.size() - 1;
        std::size_t place = homeOf(time);
        while (!m_entries[place].isFree() && m_entries[place].time != time) {
            place = (place + 1) & mask;
        }
        return place;
    }

    void grow() {
        const std::vector<Entry> old =
            std::exchange(m_entries, std::vector<Entry>(m_entries.empty() ? smallest : 2 * m_entries.size()));
        for (const Entry& entry : old) {
            if (!entry.isFree()) {
                m_entries[placeOf(entry.time)] = entry;
            }
        }
    }

    std::vector<Entry> m_entries; // a power of two of them, at least a quarter free
    std::size_t m_size = 0;
};

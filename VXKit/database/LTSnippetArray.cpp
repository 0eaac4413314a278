// SPDX-License-Identifier: MIT
#include <VXKit/database/LTSnippetArray.h>

#include <VXKit/database/_LTSnippet.h>
#include <VXKit/database/_LTSnippetIndex.h>
#include <VXKit/platform/foundation/NSException.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

namespace {

void checkRecord(const LTSnippetArray::Snippet& snippet) {
    if (!snippet) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("A list of records cannot hold nil"));
    }
}

/// Tells of nearly every record that is not taken out that it is not, in a fraction of the time that the hash needs:
/// what a pass over a long list costs is asking so often.
class TakenOutFilter {
public:
    explicit TakenOutFilter(const QHash<const _LTSnippetIdentity*, int>& takenOut)
        : m_marks(std::bit_ceil(placesForEach * static_cast<std::size_t>(takenOut.size()))),
          m_shift(std::numeric_limits<std::uint64_t>::digits - std::countr_zero(m_marks.size())) {
        for (auto entry = takenOut.keyBegin(); entry != takenOut.keyEnd(); ++entry) {
            m_marks[placeOf(*entry)] = 1;
        }
    }

    [[nodiscard]] bool mayHave(const _LTSnippetIdentity* identity) const { return m_marks[placeOf(identity)] != 0; }

private:
    static constexpr std::size_t placesForEach = 16;

    [[nodiscard]] std::size_t placeOf(const _LTSnippetIdentity* identity) const {
        constexpr std::uint64_t goldenRatio = 0x9E3779B97F4A7C15U;
        return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(identity) * goldenRatio) >> m_shift);
    }

    std::vector<std::uint8_t> m_marks;
    int m_shift;
};

} // namespace

LTSnippetArray::LTSnippetArray() : m_index(std::make_unique<_LTSnippetIndex>()) {}

LTSnippetArray::~LTSnippetArray() {
    removeAllObjects();
}

const LTSnippetArray::Snippet& LTSnippetArray::objectAtIndex(std::size_t index) const {
    checkIndex(index, count());
    return settled()[index];
}

bool LTSnippetArray::containsSnippetID(NSDate snippetID) const {
    return m_index->contains(snippetID);
}

void LTSnippetArray::addObject(Snippet snippet) {
    checkRecord(snippet);
    m_snippets.push_back(std::move(snippet));
    m_index->add(*m_snippets.back());
}

void LTSnippetArray::insertObject(Snippet snippet, std::size_t index) {
    settle();
    checkRecord(snippet);
    checkIndex(index, count() + 1);
    const auto place = m_snippets.begin() + static_cast<std::ptrdiff_t>(index);
    m_index->add(**m_snippets.insert(place, std::move(snippet)));
}

void LTSnippetArray::replaceObjectAtIndex(std::size_t index, Snippet snippet) {
    settle();
    checkRecord(snippet);
    checkIndex(index, count());
    const Snippet old = std::exchange(m_snippets[index], std::move(snippet));
    m_index->remove(*old);
    m_index->add(*m_snippets[index]);
}

void LTSnippetArray::removeObject(const _LTSnippet& snippet) {
    settle();
    const auto firstRemoved = std::stable_partition(
        m_snippets.begin(), m_snippets.end(), [&](const Snippet& candidate) { return !candidate->isEqual(snippet); });
    // Let go of last: `snippet` may itself be one of those that go, and a record's destructor may look at the list.
    const std::vector<Snippet> removed(std::make_move_iterator(firstRemoved),
                                       std::make_move_iterator(m_snippets.end()));
    m_snippets.erase(firstRemoved, m_snippets.end());
    for (const Snippet& gone : removed) {
        m_index->remove(*gone);
    }
}

void LTSnippetArray::removeObjectAtIndex(std::size_t index) {
    settle();
    checkIndex(index, count());
    const auto place = m_snippets.begin() + static_cast<std::ptrdiff_t>(index);
    const Snippet removed = std::move(*place);
    m_snippets.erase(place);
    m_index->remove(*removed);
}

void LTSnippetArray::removeAllObjects() {
    settle();
    const std::vector<Snippet> removed = std::exchange(m_snippets, {});
    for (const Snippet& gone : removed) {
        m_index->remove(*gone);
    }
}

bool LTSnippetArray::removeFirstObjectWithSnippetID(NSDate snippetID) {
    if (!m_index->knowsFirst(snippetID)) {
        settle();
        m_index->learnOrder(m_snippets);
        m_isSettled = false;
    }
    const _LTSnippetIdentity* removed = m_index->takeFirst(snippetID);
    if (!removed) {
        return false;
    }
    ++m_outOf[removed];
    ++m_takenOut;
    m_isSettled = false;
    return true;
}

void LTSnippetArray::settle() const {
    // Again where the destructor of a record that is let go of here has removed another one.
    while (!m_isSettled) {
        m_isSettled = true;
        m_index->forgetOrder();
        const std::vector<Snippet> removed = closeUp();
    }
}

/// Moves the records that stay to where they belong; answers the others.
std::vector<LTSnippetArray::Snippet> LTSnippetArray::closeUp() const {
    std::vector<Snippet> removed;
    if (m_takenOut == 0) {
        return removed;
    }
    removed.reserve(m_takenOut);
    const TakenOutFilter filter(m_outOf);
    // What stands at `place` is gone already; exchanging takes less time than assigning, which would look.
    auto place = m_snippets.begin();
    auto next = place;
    for (std::size_t left = m_takenOut; left != 0; ++next) {
        const _LTSnippetIdentity* identity = _LTSnippetIndex::identityOf(**next);
        const auto out = filter.mayHave(identity) ? m_outOf.find(identity) : m_outOf.end();
        if (out == m_outOf.end()) {
            place->swap(*next);
            ++place;
            continue;
        }
        if (--*out == 0) {
            m_outOf.erase(out);
        }
        removed.push_back(std::move(*next));
        --left;
    }
    for (; next != m_snippets.end(); ++next, ++place) {
        place->swap(*next);
    }
    m_snippets.erase(place, m_snippets.end());
    m_takenOut = 0;
    return removed;
}

double LTSnippetArray::freeTimeAtOrBefore(double time) {
    return m_index->freeTimeAtOrBefore(time);
}

void LTSnippetArray::checkIndex(std::size_t index, std::size_t end) const {
    if (index >= end) {
        throw NSException(NSRangeException,
                          QStringLiteral("Index %1 is beyond a list of %2 records").arg(index).arg(count()));
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/database/LTSnippetArray.h>

#include <VXKit/database/_LTSnippet.h>
#include <VXKit/database/_LTSnippetIndex.h>
#include <VXKit/platform/foundation/NSException.h>

#include <algorithm>
#include <utility>

namespace {

void checkSnippet(const LTSnippetArray::Snippet& snippet) {
    if (!snippet) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("A list of records cannot hold nil"));
    }
}

} // namespace

LTSnippetArray::LTSnippetArray() : m_index(std::make_unique<_LTSnippetIndex>()) {}

LTSnippetArray::~LTSnippetArray() {
    removeAllObjects();
}

const LTSnippetArray::Snippet& LTSnippetArray::objectAtIndex(std::size_t index) const {
    checkIndex(index, count());
    return m_snippets[index];
}

bool LTSnippetArray::containsSnippetID(NSDate snippetID) const {
    return m_index->contains(snippetID);
}

void LTSnippetArray::addObject(Snippet snippet) {
    checkSnippet(snippet);
    m_snippets.push_back(std::move(snippet));
    m_index->add(*m_snippets.back());
}

void LTSnippetArray::insertObject(Snippet snippet, std::size_t index) {
    checkSnippet(snippet);
    checkIndex(index, count() + 1);
    const auto place = m_snippets.begin() + static_cast<std::ptrdiff_t>(index);
    m_index->add(**m_snippets.insert(place, std::move(snippet)));
}

void LTSnippetArray::replaceObjectAtIndex(std::size_t index, Snippet snippet) {
    checkSnippet(snippet);
    checkIndex(index, count());
    const Snippet old = std::exchange(m_snippets[index], std::move(snippet));
    m_index->remove(*old);
    m_index->add(*m_snippets[index]);
}

void LTSnippetArray::removeObject(const _LTSnippet& snippet) {
    // Moved to the end first and destroyed there, so that `snippet` may itself be one of those that go.
    const auto firstRemoved = std::stable_partition(
        m_snippets.begin(), m_snippets.end(), [&](const Snippet& candidate) { return !candidate->isEqual(snippet); });
    for (auto removed = firstRemoved; removed != m_snippets.end(); ++removed) {
        m_index->remove(**removed);
    }
    m_snippets.erase(firstRemoved, m_snippets.end());
}

void LTSnippetArray::removeObjectAtIndex(std::size_t index) {
    checkIndex(index, count());
    const auto place = m_snippets.begin() + static_cast<std::ptrdiff_t>(index);
    m_index->remove(**place);
    m_snippets.erase(place);
}

void LTSnippetArray::removeAllObjects() {
    for (const Snippet& snippet : m_snippets) {
        m_index->remove(*snippet);
    }
    m_snippets.clear();
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

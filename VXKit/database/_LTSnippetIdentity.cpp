// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTSnippetIdentity.h>

#include <VXKit/database/_LTSnippetIndex.h>

#include <algorithm>
#include <typeindex>
#include <unordered_set>
#include <utility>

namespace {

std::unordered_set<std::type_index>& notedClasses() {
    static std::unordered_set<std::type_index> classes;
    return classes;
}

} // namespace

_LTSnippetIdentity& _LTSnippetIdentity::operator=(std::optional<NSDate> date) {
    const std::optional<NSDate> old = std::exchange(m_date, date);
    if (old == date || !m_index) {
        return *this;
    }
    m_index->identityChanged(*this, old);
    if (m_moreIndexes) {
        for (_LTSnippetIndex* index : *m_moreIndexes) {
            index->identityChanged(*this, old);
        }
    }
    return *this;
}

bool _LTSnippetIdentity::fieldIsAnswer(const std::type_info& snippetClass) {
    return notedClasses().contains(snippetClass);
}

void _LTSnippetIdentity::noteThatFieldIsAnswer(const std::type_info& snippetClass) {
    notedClasses().insert(snippetClass);
}

void _LTSnippetIdentity::addIndex(_LTSnippetIndex& index) {
    if (!m_index) {
        m_index = &index;
        return;
    }
    if (!m_moreIndexes) {
        m_moreIndexes = std::make_unique<std::vector<_LTSnippetIndex*>>();
    }
    m_moreIndexes->push_back(&index);
}

void _LTSnippetIdentity::removeIndex(_LTSnippetIndex& index) {
    if (!m_moreIndexes) {
        m_index = nullptr;
        return;
    }
    if (m_index == &index) {
        m_index = m_moreIndexes->back();
        m_moreIndexes->pop_back();
    } else {
        // From the end, so that a record that a list holds thousands of times leaves it as quickly as it came.
        const auto place = std::find(m_moreIndexes->rbegin(), m_moreIndexes->rend(), &index);
        *place = m_moreIndexes->back();
        m_moreIndexes->pop_back();
    }
    if (m_moreIndexes->empty()) {
        m_moreIndexes.reset();
    }
}

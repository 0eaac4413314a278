// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTSnippetIdentity.h>

#include <VXKit/database/_LTSnippetIndex.h>

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
    if (old != date) {
        for (_LTSnippetIndex* index : m_indexes) {
            index->identityChanged(old, date);
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

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>

#include <cstddef>
#include <memory>
#include <vector>

class _LTSnippet;
class _LTSnippetIndex;

/// A mutable list of records in order, as a database exposes its own: read it like a vector, change it with AppKit's
/// operations, each of which keeps the identity index of the list right.
///
/// The list shares its records with whoever else holds them; none of them is null. An index beyond the end throws an
/// NSException named NSRangeException, a null record one named NSInvalidArgumentException, and the list stays as it
/// was. Stands for AppKit's `NSMutableArray`.
class VXKIT_EXPORT LTSnippetArray {
public:
    using Snippet = std::shared_ptr<_LTSnippet>;
    using const_iterator = std::vector<Snippet>::const_iterator;

    LTSnippetArray();
    LTSnippetArray(const LTSnippetArray&) = delete;
    LTSnippetArray& operator=(const LTSnippetArray&) = delete;
    ~LTSnippetArray();

    [[nodiscard]] std::size_t count() const { return m_snippets.size(); }
    [[nodiscard]] bool isEmpty() const { return m_snippets.empty(); }
    /// AppKit: `-objectAtIndex:`.
    [[nodiscard]] const Snippet& objectAtIndex(std::size_t index) const;
    /// The same without a check, as a vector has it.
    [[nodiscard]] const Snippet& operator[](std::size_t index) const { return m_snippets[index]; }
    [[nodiscard]] const_iterator begin() const { return m_snippets.begin(); }
    [[nodiscard]] const_iterator end() const { return m_snippets.end(); }

    /// Whether some record has this snippet ID. Takes the same time whatever the length of the list, but for records
    /// whose class overrides snippetID: those are asked one by one.
    [[nodiscard]] bool containsSnippetID(NSDate snippetID) const;

    /// AppKit: `-addObject:`.
    void addObject(Snippet snippet);
    /// Puts `snippet` before the record at `index`, or at the end where that is the count.
    /// AppKit: `-insertObject:atIndex:`.
    void insertObject(Snippet snippet, std::size_t index);
    /// AppKit: `-replaceObjectAtIndex:withObject:`.
    void replaceObjectAtIndex(std::size_t index, Snippet snippet);
    /// Removes every record that is equal to `snippet` (_LTSnippet::isEqual). AppKit: `-removeObject:`.
    void removeObject(const _LTSnippet& snippet);
    /// AppKit: `-removeObjectAtIndex:`.
    void removeObjectAtIndex(std::size_t index);
    /// AppKit: `-removeAllObjects`.
    void removeAllObjects();

    /// See _LTSnippetIndex::freeTimeAtOrBefore.
    [[nodiscard]] double freeTimeAtOrBefore(double time);

private:
    void checkIndex(std::size_t index, std::size_t end) const;

    std::vector<Snippet> m_snippets;
    std::unique_ptr<_LTSnippetIndex> m_index;
};

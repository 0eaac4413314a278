// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>

#include <QHash>

#include <cstddef>
#include <memory>
#include <vector>

class _LTSnippet;
class _LTSnippetIdentity;
class _LTSnippetIndex;

/// A mutable list of records in order, as a database exposes its own: read it like a vector, change it with AppKit's
/// operations, each of which keeps the identity index of the list right.
///
/// The list shares its records with whoever else holds them; none of them is null. An index beyond the end throws an
/// NSException named NSRangeException, a null record one named NSInvalidArgumentException, and the list stays as it
/// was. Stands for AppKit's `NSMutableArray`.
class VXKIT_EXPORT LTSnippetArray {
public:
    /// How the list holds a record; never null in it.
    using Snippet = std::shared_ptr<_LTSnippet>;
    /// Good until the list is changed.
    using const_iterator = std::vector<Snippet>::const_iterator;

    LTSnippetArray();
    LTSnippetArray(const LTSnippetArray&) = delete;
    LTSnippetArray& operator=(const LTSnippetArray&) = delete;
    ~LTSnippetArray();

    /// AppKit: `-count`.
    [[nodiscard]] std::size_t count() const { return m_snippets.size() - m_takenOut; }
    /// Whether the list has no record.
    [[nodiscard]] bool isEmpty() const { return count() == 0; }
    /// AppKit: `-objectAtIndex:`.
    [[nodiscard]] const Snippet& objectAtIndex(std::size_t index) const;
    /// The same without a check, as a vector has it.
    [[nodiscard]] const Snippet& operator[](std::size_t index) const { return settled()[index]; }
    /// The first record, for loops; settles the list.
    [[nodiscard]] const_iterator begin() const { return settled().begin(); }
    /// Behind the last record.
    [[nodiscard]] const_iterator end() const { return settled().end(); }

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

    /// Removes the first record with this snippet ID; tells whether there was one.
    ///
    /// Made to be called many times in a row, with additions between: the records close up only when the list is next
    /// looked at by position, changed in another way or settled, in one pass for all, and those removed are let go of
    /// then. So a thousand removals cost what a thousand look-ups and one pass do. Where several records share the ID,
    /// or there are records whose class overrides snippetID, one pass more tells which is the first, for all that
    /// follow; such records are asked once, and must not change their answers until the list is settled but by their
    /// `snipID` field.
    bool removeFirstObjectWithSnippetID(NSDate snippetID);

    /// Closes up what removeFirstObjectWithSnippetID left open.
    void settle() const;

    /// See _LTSnippetIndex::freeTimeAtOrBefore.
    [[nodiscard]] double freeTimeAtOrBefore(double time);

private:
    void checkIndex(std::size_t index, std::size_t end) const;
    [[nodiscard]] std::vector<Snippet> closeUp() const;
    [[nodiscard]] const std::vector<Snippet>& settled() const {
        if (!m_isSettled) {
            settle();
        }
        return m_snippets;
    }

    // Nobody sees the records that are taken out, so settling, which ends their stay, is no change of the list.
    mutable std::vector<Snippet> m_snippets;
    // How many of the first occurrences of a record are taken out: its first occurrence is always what goes first.
    mutable QHash<const _LTSnippetIdentity*, int> m_outOf;
    mutable std::size_t m_takenOut = 0;
    mutable bool m_isSettled = true; // nothing is taken out, and the index knows no order
    std::unique_ptr<_LTSnippetIndex> m_index;
};

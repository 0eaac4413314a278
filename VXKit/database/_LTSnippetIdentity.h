// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSDate.h>

#include <concepts>
#include <memory>
#include <optional>
#include <typeinfo>
#include <vector>

class _LTSnippet;
class _LTSnippetIndex;

/// The `snipID` field of a record: a date or nil, that tells the indexes which hold the record when it changes.
///
/// Reads and is assigned to like the `std::optional<NSDate>` that it holds. A record changes its identity by assigning
/// to this field, whether in setSnippetID, in loadFromDictionary or in a way of its own, so no road goes past the
/// indexes.
class VXKIT_EXPORT _LTSnippetIdentity {
public:
    _LTSnippetIdentity() = default;
    /// Copies the date alone: the copy belongs to a record that no index holds.
    _LTSnippetIdentity(const _LTSnippetIdentity& other) : m_date(other.m_date) {}
    /// Takes over the date alone, as an assignment of it does.
    _LTSnippetIdentity& operator=(const _LTSnippetIdentity& other) {
        return this == &other ? *this : *this = other.m_date;
    }
    /// Gives the record the identity `date` and tells the indexes that hold it.
    _LTSnippetIdentity& operator=(std::optional<NSDate> date);

    /// The date, wherever one is wanted.
    operator const std::optional<NSDate>&() const { return m_date; }
    /// The date, or nothing where the record has no identity yet.
    [[nodiscard]] const std::optional<NSDate>& date() const { return m_date; }

    /// Notes whether records of exactly the class `Snippet` answer snippetID with this field. Those of a class that was
    /// never noted are taken to answer otherwise, and are asked one by one.
    template <class Snippet>
    static void noteClass() {
        if constexpr (requires {
                          { &Snippet::snippetID } -> std::same_as<std::optional<NSDate> (_LTSnippet::*)() const>;
                      }) {
            [[maybe_unused]] static const bool noted = (noteThatFieldIsAnswer(typeid(Snippet)), true);
        }
    }

    /// Whether records of exactly this class are known to answer snippetID with this field.
    [[nodiscard]] static bool fieldIsAnswer(const std::type_info& snippetClass);

private:
    friend _LTSnippetIndex;

    static void noteThatFieldIsAnswer(const std::type_info& snippetClass);

    void addIndex(_LTSnippetIndex& index);
    void removeIndex(_LTSnippetIndex& index);

    std::optional<NSDate> m_date;
    // One for each time that an index holds the record. Nearly every record lies in one list, once; the block that
    // any more of them need would be the greater part of what such a record costs.
    _LTSnippetIndex* m_index = nullptr;
    std::unique_ptr<std::vector<_LTSnippetIndex*>> m_moreIndexes;
};

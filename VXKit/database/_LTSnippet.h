// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/database/_LTSnippetIdentity.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QString>

#include <concepts>
#include <memory>
#include <optional>
#include <typeinfo>

/// The abstract base of every record that an LTDatabase stores.
///
/// It fixes only what the database needs: an identity, a modification date, a title, a dictionary form, and a factory
/// that makes records whose identity is free. A host derives its own record from it, with its own fields and its own
/// dictionary keys, and names that class to its database (LTDatabase::snippetClass). What should survive a save, the
/// identity, the title and the modification date included, the subclass puts into its dictionary and reads back.
///
/// The identity, the snippet ID, is a date: two records are the same snippet when their IDs denote the same instant.
/// Records are held by `std::shared_ptr`. Main thread only.
///
/// The base class itself can be made (snippetWithDictionary does so when a host names no class of its own) but is not
/// meant to be stored: its dictionary form is nil, and saving a database that holds one fails.
class VXKIT_EXPORT _LTSnippet {
public:
    _LTSnippet();
    /// A copy has the same fields; it is in no database, whatever holds the original.
    _LTSnippet(const _LTSnippet& other);
    /// Takes over the fields of `other`, the identity included; the databases that hold this record hold it still.
    _LTSnippet& operator=(const _LTSnippet& other);
    virtual ~_LTSnippet();

    /// The identity, nil until set. A subclass may override it; the databases that hold the record go by its answer.
    /// While a database merges what a sync held back, it asks such a record once and not once for each change, so a
    /// record must not make another one answer otherwise then but by changing its `snipID`.
    [[nodiscard]] virtual std::optional<NSDate> snippetID() const;

    /// Gives the record another identity, also while it is stored.
    virtual void setSnippetID(std::optional<NSDate> snippetID);

    /// The title to show for the record; a null string until a subclass sets `_name`.
    [[nodiscard]] virtual QString title() const;

    /// Sets the modification date to the current instant.
    virtual void updateModificationDate();

    /// Sets the modification date to `date`.
    virtual void updateModificationDateWithDate(std::optional<NSDate> date);

    /// The record as it goes into the file, property-list values only. Text with control characters other than tab and
    /// line ends, and dates outside the years 1 to 9999, cannot be written, and one of them keeps the whole store from
    /// being saved: a record that may hold such text stores it as data. Abstract: the base class answers nil.
    [[nodiscard]] virtual std::optional<NSDictionary> dictionaryRepresentation() const;

    /// Takes the record's fields from what dictionaryRepresentation gave; what is missing there stays as it is.
    /// Abstract: the base class does nothing.
    virtual void loadFromDictionary(const NSDictionary& dictionary);

    /// The text of dictionaryRepresentation, "(null)" where that is nil. AppKit: `-description`.
    [[nodiscard]] virtual QString description() const;

    /// A new record with the same fields. Every concrete subclass supplies it; the base class throws an NSException
    /// named NSInvalidArgumentException. AppKit: `-copy`.
    [[nodiscard]] virtual std::shared_ptr<_LTSnippet> copy() const;

    /// Whether both count as one record when it is removed from a list: the same object, unless a subclass says more.
    /// AppKit: `-isEqual:`.
    [[nodiscard]] virtual bool isEqual(const _LTSnippet& other) const;

    /// A new record without content. Abstract: the base class answers nil; a subclass hides it with its own.
    [[nodiscard]] static std::shared_ptr<_LTSnippet> emptySnippet();

    /// A new record of class `Snippet`, default-constructed and loaded from `dictionary`, which is not validated.
    template <std::derived_from<_LTSnippet> Snippet>
    [[nodiscard]] static std::shared_ptr<Snippet> snippetWithDictionary(const NSDictionary& dictionary);

    /// A new record of class `Snippet` (what its emptySnippet gives) under an identity that no record in the main list
    /// of the shared database has: `startTime`, in seconds since 1970, or where that is taken the first free instant
    /// found by going back one whole second at a time. So a burst of records made in one second never gets an identity
    /// in the future. Stores the chosen time in `realID`, which must be valid, in any case; gives nil where
    /// emptySnippet does. Records held back during a sync are not looked at. Creates the shared database where there is
    /// none yet.
    ///
    /// So far from 1970 that a double has no whole seconds any more (beyond 2^53), where taking one away changes
    /// nothing, it goes back by the smallest step that there is instead.
    /// Throws an NSException named NSInvalidArgumentException when `startTime` is not a number.
    template <std::derived_from<_LTSnippet> Snippet>
    [[nodiscard]] static std::shared_ptr<Snippet> emptySnippetWithUniqueIDStartingDate(double startTime,
                                                                                       double* realID);

protected:
    std::optional<NSDate> modificationDate; ///< when the record was last changed; nil until set
    _LTSnippetIdentity snipID;              ///< the snippet ID; nil until set
    QString _name;                          ///< the title shown for the record; set by subclasses

private:
    friend class _LTSnippetIndex;

    static double uniqueTimeAtOrBefore(double startTime);
};

/// A record class as a value: what the database asks of the class rather than of a record.
///
/// `_LTSnippetClass::of<Note>()` is Note. Where Note hides emptySnippet or snippetWithDictionary with its own, those
/// are called.
class VXKIT_EXPORT _LTSnippetClass {
public:
    /// The class `Snippet`.
    template <std::derived_from<_LTSnippet> Snippet>
    [[nodiscard]] static _LTSnippetClass of();

    /// What the class's emptySnippet gives; null where it has none of its own.
    [[nodiscard]] std::shared_ptr<_LTSnippet> emptySnippet() const { return m_emptySnippet(); }
    /// A record of the class, loaded from `dictionary`.
    [[nodiscard]] std::shared_ptr<_LTSnippet> snippetWithDictionary(const NSDictionary& dictionary) const {
        return m_snippetWithDictionary(dictionary);
    }

private:
    std::shared_ptr<_LTSnippet> (*m_emptySnippet)() = nullptr;
    std::shared_ptr<_LTSnippet> (*m_snippetWithDictionary)(const NSDictionary&) = nullptr;
};

template <std::derived_from<_LTSnippet> Snippet>
std::shared_ptr<Snippet> _LTSnippet::snippetWithDictionary(const NSDictionary& dictionary) {
    _LTSnippetIdentity::noteClass<Snippet>();
    auto snippet = std::make_shared<Snippet>();
    snippet->loadFromDictionary(dictionary);
    return snippet;
}

template <std::derived_from<_LTSnippet> Snippet>
std::shared_ptr<Snippet> _LTSnippet::emptySnippetWithUniqueIDStartingDate(double startTime, double* realID) {
    _LTSnippetIdentity::noteClass<Snippet>();
    auto snippet = std::static_pointer_cast<Snippet>(Snippet::emptySnippet());
    *realID = uniqueTimeAtOrBefore(startTime);
    if (snippet) {
        snippet->setSnippetID(NSDate::dateWithTimeIntervalSince1970(*realID));
    }
    return snippet;
}

template <std::derived_from<_LTSnippet> Snippet>
_LTSnippetClass _LTSnippetClass::of() {
    _LTSnippetIdentity::noteClass<Snippet>();
    _LTSnippetClass snippetClass;
    snippetClass.m_emptySnippet = [] { return std::static_pointer_cast<_LTSnippet>(Snippet::emptySnippet()); };
    snippetClass.m_snippetWithDictionary = [](const NSDictionary& dictionary) -> std::shared_ptr<_LTSnippet> {
        if constexpr (requires { Snippet::snippetWithDictionary(dictionary); }) {
            return Snippet::snippetWithDictionary(dictionary);
        } else {
            return _LTSnippet::snippetWithDictionary<Snippet>(dictionary);
        }
    };
    return snippetClass;
}

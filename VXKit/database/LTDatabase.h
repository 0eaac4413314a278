// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/database/LTSnippetArray.h>
#include <VXKit/database/_LTSnippet.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QString>

#include <concepts>
#include <memory>
#include <vector>

/// Posted with the store as object whenever what a list of its records shows may have changed.
inline constexpr const char* LTSnippetDBWasModifiedNotification = "LTSnippetDBWasModifiedNotification";

/// Keeps the host's snippets: an ordered list of records in memory, persisted as one property-list file.
///
/// A store loads its file when it is initialised, marks itself dirty on every change, and saves when asked, every 300
/// seconds (unless the user-defaults key `VXDBAutomaticSavingDisabled` is true), when the application terminates and
/// when it is destroyed. While the host's sync manager reports a sync in progress, changes are held back and applied
/// when the sync ends. A host derives its own store to change the file's name, the display name, the version and the
/// record class:
///
///     class NotesDatabase : public LTDatabase {
///     protected:
///         QString databaseFileName() const override { return QStringLiteral("Notes.plist"); }
///         _LTSnippetClass snippetClass() const override { return _LTSnippetClass::of<Note>(); }
///     };
///     const auto database = LTDatabase::sharedDB<NotesDatabase>();
///
/// Ownership: a store is held by `std::shared_ptr` and made by alloc alone, so that what it still has to save is saved
/// by the whole object and not by what is left of it in a destructor. With automatic saving on, the timer holds the
/// store too, for as long as the application runs. The process lets go of the shared store when the application
/// terminates.
///
/// Failures are never reported here: an unreadable, malformed or wrong-version file loads as an empty store that
/// overwrites it at the next save, and a failed write is forgotten. The layer below logs why. Main thread only.
class VXKIT_EXPORT LTDatabase : public std::enable_shared_from_this<LTDatabase> {
public:
    LTDatabase();
    LTDatabase(const LTDatabase&) = delete;
    LTDatabase& operator=(const LTDatabase&) = delete;
    virtual ~LTDatabase();

    /// An empty store of class `Database` to call initWithFile on. AppKit: `+alloc`.
    template <std::derived_from<LTDatabase> Database>
    [[nodiscard]] static std::shared_ptr<Database> alloc();

    /// The one store of the process. The first call makes it, of class `Database`, on that class's file in the user's
    /// folder Library/Preferences, which it creates where it is missing; later calls answer the same store whatever
    /// class they name.
    template <std::derived_from<LTDatabase> Database = LTDatabase>
    static std::shared_ptr<LTDatabase> sharedDB();

    /// Whether the shared store has changes that are not yet saved. The shared store must exist.
    [[nodiscard]] static bool isDirty();

    /// Whether the shared store is being made at this moment.
    [[nodiscard]] static bool isLoading();

    /// Loads the file at `path` (see the class note for what becomes of a bad one), starts automatic saving and
    /// subscribes to the end of the application and of syncs. To be called once, on what alloc gave; otherwise throws
    /// an NSException named NSInvalidArgumentException.
    void initWithFile(const QString& path);

    /// The main list itself, in the order of insertion, not a copy. The operations below note and announce a change;
    /// one made to the list directly is neither saved nor announced by itself.
    [[nodiscard]] LTSnippetArray& snippets() { return _snippets; }
    [[nodiscard]] const LTSnippetArray& snippets() const { return _snippets; }

    /// Appends `snippet` to the main list, whether or not its ID is taken, or holds it back during a sync; tells so.
    /// Throws an NSException named NSInvalidArgumentException when it is null, as the next two do.
    virtual void addSnippet(const std::shared_ptr<_LTSnippet>& snippet);

    /// Removes every occurrence of `snippet` from the main list (by _LTSnippet::isEqual), or notes it for the end of
    /// the sync; tells so. Where the user-defaults key "ShouldAutoSyncWithMobileMe" is true its ID is added to
    /// "SyncingData", for the sync manager to pass the deletion on.
    virtual void removeSnippet(const std::shared_ptr<_LTSnippet>& snippet);

    /// To be called after `snippet` was changed in place and its modification date set: marks the store dirty and tells
    /// so, or during a sync holds the edit back silently.
    virtual void notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet);

    /// Whether a record of the main list has this ID. Records held back during a sync are not looked at.
    [[nodiscard]] virtual bool existsItemWithID(NSDate snippetID) const;

    /// Writes the file, atomically, when there is something to save. What becomes of the write is not looked at: the
    /// store counts as saved.
    virtual void saveDB();

    /// The file's content, built now: "DBVersion", "SaveDate" (this instant) and "contents".
    /// Throws an NSException named NSInvalidArgumentException when a record has no dictionary form.
    [[nodiscard]] virtual NSDictionary dictionaryRepresentation() const;

    /// The same, each record represented by a copy of itself. A dictionary, not a store.
    [[nodiscard]] virtual NSDictionary deepCopy() const;

    /// Applies what was held back during a sync: additions, then edits, then removals; tells so in any case.
    virtual void syncingHasEnded(const NSNotification& notification);

    /// What sharedDB's records ask to get a free ID; see _LTSnippet::emptySnippetWithUniqueIDStartingDate.
    [[nodiscard]] double _freeTimeAtOrBefore(double time);

protected:
    /// Class-level settings, asked of the store's own class. They may be asked before initWithFile.
    [[nodiscard]] virtual QString databaseFileName() const;     ///< "DB.plist"
    [[nodiscard]] virtual QString databaseName() const;         ///< "DB"; what dialogs call the database
    [[nodiscard]] virtual QString databaseVersion() const;      ///< "0.1"
    [[nodiscard]] virtual _LTSnippetClass snippetClass() const; ///< _LTSnippet; makes the records when loading

    void _loadWithDictionary(const std::optional<NSDictionary>& dictionary);
    void _loadRepresentation(const NSDictionary& dictionary, const NSPropertyList* version);
    [[nodiscard]] NSArray _dictionaryContents() const;

    bool _dirty = false; ///< there are changes not yet written to the file
    QString _path;       ///< full path of the file
    LTSnippetArray _snippets;
    std::vector<std::shared_ptr<_LTSnippet>> _layaway;         ///< records added during a sync
    std::vector<std::shared_ptr<_LTSnippet>> _layawayEdits;    ///< records edited during a sync
    std::vector<std::shared_ptr<_LTSnippet>> _layawayRemovals; ///< records removed during any sync so far

private:
    using MakeDatabase = std::shared_ptr<LTDatabase> (*)();

    static std::shared_ptr<LTDatabase> sharedDBMadeBy(MakeDatabase makeDatabase);
    static void dealloc(LTDatabase* database);
    void releaseSharedReference() const;
    void postModification() const;
    [[nodiscard]] NSDictionary representationWithContents(NSArray contents) const;

    // In the order of subscription, which is the order of what happens when the application terminates.
    NSNotificationObservation m_releaseAtTermination;
    NSNotificationObservation m_saveAtTermination;
    NSNotificationObservation m_endOfSyncing;
    bool m_allocated = false;
    bool m_initialised = false;
    bool m_asksOwnClassForIDs = true; // existsItemWithID is overridden
};

template <std::derived_from<LTDatabase> Database>
std::shared_ptr<Database> LTDatabase::alloc() {
    std::shared_ptr<Database> database(new Database, [](Database* last) { dealloc(last); });
    database->m_allocated = true;
    if constexpr (requires {
                      { &Database::existsItemWithID } -> std::same_as<bool (LTDatabase::*)(NSDate) const>;
                  }) {
        database->m_asksOwnClassForIDs = false;
    }
    return database;
}

template <std::derived_from<LTDatabase> Database>
std::shared_ptr<LTDatabase> LTDatabase::sharedDB() {
    return sharedDBMadeBy([]() -> std::shared_ptr<LTDatabase> { return alloc<Database>(); });
}

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

class _LTDatabaseFile;

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
/// overwrites it at the next save, and a failed write is forgotten. The layer below logs why. What such a save would
/// destroy (a file that could not be loaded whole, or that another program has changed meanwhile) is first set aside
/// beside the file, under a name with the reason and the time; there are ten of these copies at most. Main thread only.
class VXKIT_EXPORT LTDatabase : public std::enable_shared_from_this<LTDatabase> {
public:
    LTDatabase();
    LTDatabase(const LTDatabase&) = delete;
    LTDatabase& operator=(const LTDatabase&) = delete;
    virtual ~LTDatabase();

    /// An empty store of class `Database` to call initWithFile on. AppKit: `+alloc`.
    template <std::derived_from<LTDatabase> Database>
    [[nodiscard]] static std::shared_ptr<Database> alloc();

    /// The one store of the process, never null. The first call makes it, of class `Database`; later calls answer the
    /// same store whatever class they name. It lies on that class's file in the user's folder Library/Preferences
    /// (which is created where it is missing), or on a file of the person's choice, which turns syncing off:
    ///
    /// - with the Option key (Alt) held down at the first call, a dialog asks for an existing file, or a new one, or
    ///   ends the process with status 0, as cancelling does;
    /// - the file that was chosen so is taken at later launches too. Where it is missing, or loading it throws (that
    ///   is logged), an alert tells so and the default file is taken this time.
    ///
    /// What loading the default file, or one just created, throws leaves this; the next call then begins anew. While
    /// the store is being made, dialogs included, a call throws an NSException named NSInternalInconsistencyException:
    /// there is no store to answer yet. Code that is called by timers, status items and the like asks isLoading first.
    template <std::derived_from<LTDatabase> Database = LTDatabase>
    static std::shared_ptr<LTDatabase> sharedDB();

    /// Leaves a file of the person's choice: saves the shared store, turns syncing on and makes a new shared one, of
    /// class `Database`, as sharedDB does for the default file. The store before is the shared one no more; while its
    /// automatic saving or the host holds it, it lives on and saves to its own file. Throws as sharedDB does.
    template <std::derived_from<LTDatabase> Database = LTDatabase>
    static void reloadFromDefaultDB();

    /// Whether the shared store has changes that are not yet saved. The shared store must exist.
    [[nodiscard]] static bool isDirty();

    /// Whether the shared store is being made at this moment, which lasts as long as its dialogs are open.
    [[nodiscard]] static bool isLoading();

    /// Loads the file at `path` (see the class note for what becomes of a bad one), starts automatic saving and
    /// subscribes to the end of the application and of syncs. To be called once, on what alloc gave; otherwise throws
    /// an NSException named NSInvalidArgumentException.
    void initWithFile(const QString& path);

    /// The main list itself, in the order of insertion, not a copy. The operations below note and announce a change;
    /// one made to the list directly is neither saved nor announced by itself.
    [[nodiscard]] LTSnippetArray& snippets() { return _snippets; }
    /// The same to look at.
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

    /// Loads the records of `dictionary`, the content of a file, and marks the store dirty, also where there was
    /// nothing to load.
    void _loadWithDictionary(const std::optional<NSDictionary>& dictionary);
    /// Puts the records in `dictionary` in place of those in the list, where `version` is the store's own
    /// (databaseVersion); otherwise does nothing. What makes no record is logged and left out.
    void _loadRepresentation(const NSDictionary& dictionary, const NSPropertyList* version);
    /// The dictionary form of every record, in the order of the list. Throws as dictionaryRepresentation does.
    [[nodiscard]] NSArray _dictionaryContents() const;

    bool _dirty = false; ///< there are changes not yet written to the file
    QString _path;       ///< full path of the file
    /// The main list.
    LTSnippetArray _snippets;
    std::vector<std::shared_ptr<_LTSnippet>> _layaway;         ///< records added during a sync
    std::vector<std::shared_ptr<_LTSnippet>> _layawayEdits;    ///< records edited during a sync
    std::vector<std::shared_ptr<_LTSnippet>> _layawayRemovals; ///< records removed during any sync so far

private:
    friend class LTDatabaseLocation;
    using MakeDatabase = std::shared_ptr<LTDatabase> (*)();

    static std::shared_ptr<LTDatabase> sharedDBMadeBy(MakeDatabase makeDatabase);
    static void reloadFromDefaultDBMadeBy(MakeDatabase makeDatabase);
    static void setSharedDB(const std::shared_ptr<LTDatabase>& database);
    static void dealloc(LTDatabase* database);
    void releaseSharedReference() const;
    void postModification() const;
    [[nodiscard]] NSDictionary representationWithContents(NSArray contents) const;

    void loadFile();

    std::unique_ptr<_LTDatabaseFile> m_file;
    // In the order of subscription, which is the order of what happens when the application terminates.
    NSNotificationObservation m_releaseAtTermination;
    NSNotificationObservation m_saveAtTermination;
    NSNotificationObservation m_endOfSyncing;
    bool m_allocated = false;
    bool m_initialised = false;
    bool m_hasLoaded = false;         // initWithFile has come to its end
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

template <std::derived_from<LTDatabase> Database>
void LTDatabase::reloadFromDefaultDB() {
    reloadFromDefaultDBMadeBy([]() -> std::shared_ptr<LTDatabase> { return alloc<Database>(); });
}

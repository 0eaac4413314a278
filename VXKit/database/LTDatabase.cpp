// SPDX-License-Identifier: MIT
#include <VXKit/database/LTDatabase.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/database/LTDatabaseLocation.h>
#include <VXKit/database/_LTDatabaseFile.h>
#include <VXKit/database/_LTSnippetIndex.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

#include <QFileInfo>
#include <QScopeGuard>

#include <utility>

namespace {

constexpr double automaticSavingInterval = 300.0; // seconds
constexpr double stampStep = 1.0;                 // seconds between the modification dates that a merge gives

constexpr const char* automaticSavingDisabledKey = "VXDBAutomaticSavingDisabled";
constexpr const char* recordsRemovalsKey = "ShouldAutoSyncWithMobileMe";
constexpr const char* recordedRemovalsKey = "SyncingData";

constexpr const char* versionKey = "DBVersion";
constexpr const char* saveDateKey = "SaveDate";
constexpr const char* contentsKey = "contents";

bool isSyncInProgress() {
    const LTSyncManagerClass* syncManager = VXApplicationHooks().syncManagerClass();
    return syncManager && syncManager->isSyncInProgress();
}

NSPropertyList representationOf(const _LTSnippet& snippet) {
    std::optional<NSDictionary> dictionary = snippet.dictionaryRepresentation();
    if (!dictionary) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("A record without a dictionary form is stored"));
    }
    return *std::move(dictionary);
}

void checkSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    if (!snippet) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("A database cannot hold nil"));
    }
}

/// Removes the first record whose ID equals that of `snippet`; tells whether there was one.
bool removeFirstWithIDOf(const _LTSnippet& snippet, LTSnippetArray& list) {
    const std::optional<NSDate> snippetID = snippet.snippetID();
    return snippetID && list.removeFirstObjectWithSnippetID(*snippetID);
}

/// Calls `work` with each record of `list`, by index and with the count read again each time: a record's own code may
/// add to the list meanwhile.
template <class Work>
void forEachInOrder(const std::vector<std::shared_ptr<_LTSnippet>>& list, Work work) {
    // NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t index = 0; index < list.size(); ++index) {
        work(std::shared_ptr<_LTSnippet>(list[index]));
    }
}

/// The store of the process. The reference is given up when the application terminates, while the store may live on by
/// its timer and is then still the shared one.
struct SharedDatabase {
    std::shared_ptr<LTDatabase> reference;
    std::weak_ptr<LTDatabase> database;
    bool loading = false;
};

SharedDatabase& shared() {
    // Never destroyed: a store saves when it goes, and after the end of main there is nothing left to save with.
    static SharedDatabase& sharedDatabase = *new SharedDatabase;
    return sharedDatabase;
}

/// A dialog of the loading lets the event loop run, and what that calls may ask for the store.
void refuseWhileLoading() {
    if (shared().loading) {
        throw NSException(NSInternalInconsistencyException,
                          QStringLiteral("The shared database was asked for while it is being opened"));
    }
}

} // namespace

LTDatabase::LTDatabase() : m_file(std::make_unique<_LTDatabaseFile>()) {}

LTDatabase::~LTDatabase() = default;

std::shared_ptr<LTDatabase> LTDatabase::sharedDBMadeBy(MakeDatabase makeDatabase) {
    if (std::shared_ptr<LTDatabase> database = shared().database.lock()) {
        return database;
    }
    refuseWhileLoading();
    shared().loading = true;
    const auto hasLoaded = qScopeGuard([] { shared().loading = false; });
    return LTDatabaseLocation(makeDatabase).openDatabase();
}

void LTDatabase::reloadFromDefaultDBMadeBy(MakeDatabase makeDatabase) {
    refuseWhileLoading();
    if (std::shared_ptr<LTDatabase> before = shared().database.lock()) {
        before->saveDB();
        setSharedDB(nullptr);
    }
    LTDatabaseLocation::returnToDefault();
    sharedDBMadeBy(makeDatabase);
}

void LTDatabase::setSharedDB(const std::shared_ptr<LTDatabase>& database) {
    shared().database = database;
    // Let go at the end: the one before may be destroyed here, and saves itself then.
    const std::shared_ptr<LTDatabase> before = std::exchange(shared().reference, database);
}

bool LTDatabase::isDirty() {
    const std::shared_ptr<LTDatabase> database = shared().database.lock();
    if (!database) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("There is no shared database yet"));
    }
    return database->_dirty;
}

bool LTDatabase::isLoading() {
    return shared().loading;
}

void LTDatabase::initWithFile(const QString& path) {
    if (!m_allocated || m_initialised) {
        throw NSException(NSInvalidArgumentException,
                          QStringLiteral("A database is made by alloc and initialised once"));
    }
    m_initialised = true;
    _path = path;

    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    m_releaseAtTermination = centre.addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                       [this](const NSNotification&) { releaseSharedReference(); });

    VXRemoveLeftoversOfAtomicWrites(path);
    if (QFileInfo::exists(path)) {
        loadFile();
    } else {
        _loadWithDictionary(NSDictionary{{versionKey, databaseVersion()}, {contentsKey, NSArray()}});
    }

    if (!NSUserDefaults::standardUserDefaults().boolForKey(automaticSavingDisabledKey)) {
        // The run loop keeps the timer, and the timer the store.
        NSTimer::scheduledTimerWithTimeInterval(automaticSavingInterval, NSTimerRepeats::Yes,
                                                [store = shared_from_this()](NSTimer&) { store->saveDB(); });
    }
    m_saveAtTermination = centre.addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                    [this](const NSNotification&) { saveDB(); });
    m_endOfSyncing = centre.addObserverForName(LTSyncManagerHasEndedSyncing, nullptr,
                                               [this](const NSNotification& ended) { syncingHasEnded(ended); });
    m_hasLoaded = true;
}

void LTDatabase::loadFile() {
    const std::optional<NSDictionary> dictionary = m_file->read(_path);
    _loadWithDictionary(dictionary);
    if (!dictionary) {
        return;
    }
    const auto* version = dictionary->objectOfType<std::string>(versionKey);
    if (version && *version != databaseVersion().toStdString()) {
        m_file->noteVersion(QString::fromStdString(*version));
        return;
    }
    const NSPropertyList* contents = dictionary->objectForKey(contentsKey);
    const std::size_t elements = contents && contents->as<NSArray>() ? contents->as<NSArray>()->size() : 0;
    const bool hasOtherContents = contents && !contents->as<NSArray>();
    if (!version || hasOtherContents || elements != _snippets.count()) {
        m_file->noteUnreadable();
    }
}

/// The deleter of every store. It runs while the store is still of its own class, so saving asks that class for its
/// version and its records; in a destructor it would ask the base class.
void LTDatabase::dealloc(LTDatabase* database) {
    // One whose loading failed would put a part of the file, or nothing, in its place.
    if (database->m_hasLoaded) {
        try {
            database->saveDB();
        } catch (const std::exception& exception) {
            NSLog("%@: not saved: %s", database->_path, exception.what());
        }
    }
    delete database;
}

void LTDatabase::releaseSharedReference() const {
    if (shared().reference.get() == this) {
        // Moved out first: the store may be destroyed here, and with it whoever called.
        const std::shared_ptr<LTDatabase> last = std::move(shared().reference);
    }
}

void LTDatabase::postModification() const {
    NSNotificationCenter::defaultCenter().postNotificationName(LTSnippetDBWasModifiedNotification, this);
}

void LTDatabase::addSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    checkSnippet(snippet);
    VXLog("Adding snippet %@", snippet);
    if (isSyncInProgress()) {
        VXLog("     on a layaway");
        _layaway.push_back(snippet);
    } else {
        VXLog("     right into db");
        _dirty = true;
        _snippets.addObject(snippet);
    }
    postModification();
}

void LTDatabase::removeSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    checkSnippet(snippet);
    // A reference of its own: the caller's may be the very element of the list that goes.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::shared_ptr<_LTSnippet> removed = snippet;
    const bool isLogging = VXShouldLog();
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    const std::optional<NSDate> snippetID = removed->snippetID();
    if (defaults.boolForKey(recordsRemovalsKey) && snippetID) {
        NSArray recorded = defaults.arrayForKey(recordedRemovalsKey).value_or(NSArray());
        const double seconds = snippetID->timeIntervalSince1970();
        if (isLogging) {
            // The number is meaningless, a double under an integer conversion: the line only marks that a removal was
            // recorded, and those who search logs for it know it as it is.
            NSLogv("Removed %d from DB", NSMakeFormatArguments(seconds));
        }
        recorded.emplace_back(seconds);
        defaults.setObject(std::move(recorded), recordedRemovalsKey);
        if (!defaults.synchronize()) {
            NSLog("The removal of a snippet could not be recorded for the next sync");
        }
    }
    if (isSyncInProgress()) {
        _layawayRemovals.push_back(removed);
    } else {
        _dirty = true;
        _snippets.removeObject(*removed);
    }
    postModification();
}

void LTDatabase::notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet) {
    checkSnippet(snippet);
    if (isSyncInProgress()) {
        _layawayEdits.push_back(snippet);
        return;
    }
    _dirty = true;
    postModification();
}

bool LTDatabase::existsItemWithID(NSDate snippetID) const {
    return _snippets.containsSnippetID(snippetID);
}

void LTDatabase::saveDB() {
    if (!_dirty) {
        return;
    }
    m_file->write(_path, dictionaryRepresentation());
    _dirty = false;
}

NSDictionary LTDatabase::dictionaryRepresentation() const {
    return representationWithContents(_dictionaryContents());
}

NSDictionary LTDatabase::deepCopy() const {
    NSArray contents;
    contents.reserve(_snippets.count());
    for (const LTSnippetArray::Snippet& snippet : _snippets) {
        contents.push_back(representationOf(*snippet->copy()));
    }
    return representationWithContents(std::move(contents));
}

void LTDatabase::syncingHasEnded(const NSNotification& /*notification*/) {
    double stamp = NSDate::date().timeIntervalSince1970();
    const auto appendStamped = [&](const std::shared_ptr<_LTSnippet>& snippet) {
        _dirty = true;
        snippet->updateModificationDateWithDate(NSDate::dateWithTimeIntervalSince1970(stamp));
        _snippets.addObject(snippet);
        stamp += stampStep;
    };
    forEachInOrder(_layaway, appendStamped);
    _layaway.clear();

    forEachInOrder(_layawayEdits, [&](const std::shared_ptr<_LTSnippet>& edited) {
        removeFirstWithIDOf(*edited, _snippets);
        appendStamped(edited);
    });
    _layawayEdits.clear();

    // Never emptied: a removal counts at every later end of a sync too, also against a record made under that ID since.
    forEachInOrder(_layawayRemovals, [&](const std::shared_ptr<_LTSnippet>& removed) {
        if (removeFirstWithIDOf(*removed, _snippets)) {
            _dirty = true;
        }
    });
    _snippets.settle();
    postModification();
}

double LTDatabase::_freeTimeAtOrBefore(double time) {
    if (!m_asksOwnClassForIDs) {
        return _snippets.freeTimeAtOrBefore(time);
    }
    while (existsItemWithID(NSDate::dateWithTimeIntervalSince1970(time))) {
        const std::optional<double> before = _LTSnippetIndex::oneSecondBefore(time);
        if (!before) {
            return time;
        }
        time = *before;
    }
    return time;
}

QString LTDatabase::databaseFileName() const {
    return QStringLiteral("DB.plist");
}

QString LTDatabase::databaseName() const {
    return QStringLiteral("DB");
}

QString LTDatabase::databaseVersion() const {
    return QStringLiteral("0.1");
}

_LTSnippetClass LTDatabase::snippetClass() const {
    return _LTSnippetClass::of<_LTSnippet>();
}

void LTDatabase::_loadWithDictionary(const std::optional<NSDictionary>& dictionary) {
    VXLog("Loading with dictionary");
    if (dictionary) {
        _loadRepresentation(*dictionary, dictionary->objectForKey(versionKey));
    }
    // Dirty even when nothing was read, so that the first save puts a file of this version in the place of any other.
    _dirty = true;
}

void LTDatabase::_loadRepresentation(const NSDictionary& dictionary, const NSPropertyList* version) {
    const std::string* text = version ? version->as<std::string>() : nullptr;
    if (!text || *text != databaseVersion().toStdString()) {
        return;
    }
    _snippets.removeAllObjects();
    const NSArray* contents = dictionary.objectOfType<NSArray>(contentsKey);
    if (!contents) {
        return;
    }
    const _LTSnippetClass recordClass = snippetClass();
    for (const NSPropertyList& element : *contents) {
        const NSDictionary* record = element.as<NSDictionary>();
        if (std::shared_ptr<_LTSnippet> snippet = record ? recordClass.snippetWithDictionary(*record) : nullptr) {
            _snippets.addObject(std::move(snippet));
        } else {
            NSLog("%@: an element of \"contents\" makes no record and was left out", _path);
        }
    }
}

NSArray LTDatabase::_dictionaryContents() const {
    NSArray contents;
    contents.reserve(_snippets.count());
    for (const LTSnippetArray::Snippet& snippet : _snippets) {
        contents.push_back(representationOf(*snippet));
    }
    return contents;
}

NSDictionary LTDatabase::representationWithContents(NSArray contents) const {
    NSDictionary representation{{versionKey, databaseVersion()}, {saveDateKey, NSDate::date()}};
    representation.setObject(std::move(contents), contentsKey);
    return representation;
}

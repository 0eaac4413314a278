// SPDX-License-Identifier: MIT
#include <VXKit/database/LTDatabaseLocation.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/database/LTDatabase.h>
#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/platform/appkit/KeyModifiers.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSOpenPanel.h>
#include <VXKit/platform/appkit/NSSavePanel.h>
#include <VXKit/platform/foundation/NSFormat.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <QDir>
#include <QFileInfo>

#include <cstdlib>
#include <exception>
#include <utility>

namespace {

constexpr const char* usesCustomKey = "UsesCustomDB";
constexpr const char* customPathKey = "CustomDBFilePath";

QString databaseFileType() {
    return QStringLiteral("plist");
}

/// Without the kit's application object there is nobody who could answer.
bool wantsToChoose() {
    return NSApplication::sharedApplication() && (GetCurrentKeyModifiers() & optionKey) != 0;
}

void synchronizeDefaults() {
    if (!NSUserDefaults::standardUserDefaults().synchronize()) {
        NSLog("The place of the database could not be noted for the next launch");
    }
}

void rememberCustom(const QString& path) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(true, usesCustomKey);
    defaults.setObject(path, customPathKey);
    synchronizeDefaults();
}

void disableSyncing() {
    if (LTSyncManagerClass* syncManager = VXApplicationHooks().syncManagerClass()) {
        syncManager->disableSyncing();
    }
}

int askWhere(const QString& name) {
    return LTHUDAlert::alertWithMessageText(
               NSStringWithFormat("Choose %@ database.", name), QStringLiteral("Choose Database..."),
               QStringLiteral("Quit"), QStringLiteral("Create Database..."),
               NSStringWithFormat("%@ needs to store its information somewhere. Choosing a different database will "
                                  "turn off MobileMe syncing.",
                                  name))
        ->runModal();
}

/// The path of an existing file; null where the person cancels.
QString askForExisting() {
    NSOpenPanel panel;
    return panel.runModalForTypes({databaseFileType()}) == NSOKButton ? panel.filename() : QString();
}

/// The path of a file to be; null where the person cancels.
QString askForNew(const QString& proposedName) {
    NSSavePanel panel;
    panel.setRequiredFileType(databaseFileType());
    const int answer = panel.runModalForDirectory(QDir::homePath(), proposedName);
    return answer == NSFileHandlingPanelOKButton ? panel.filename() : QString();
}

} // namespace

LTDatabaseLocation::LTDatabaseLocation(MakeDatabase makeDatabase) : m_makeDatabase(makeDatabase) {}

std::shared_ptr<LTDatabase> LTDatabaseLocation::openDatabase() {
    if (wantsToChoose()) {
        return letPersonChoose();
    }
    return NSUserDefaults::standardUserDefaults().boolForKey(usesCustomKey) ? openChosenBefore() : openDefault();
}

void LTDatabaseLocation::returnToDefault() {
    NSUserDefaults::standardUserDefaults().setBool(false, usesCustomKey);
    synchronizeDefaults();
    if (LTSyncManagerClass* syncManager = VXApplicationHooks().syncManagerClass()) {
        syncManager->enableSyncing();
    }
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::openChosenBefore() {
    const QString path = NSUserDefaults::standardUserDefaults().stringForKey(customPathKey);
    // Looked for only here: elsewhere a file that is missing is one that will be written.
    if (!path.isEmpty() && QFileInfo::exists(path)) {
        if (std::shared_ptr<LTDatabase> database = openCustom(path)) {
            return database;
        }
    }
    // The keys stay, so that the person is told at every launch until the file is back.
    return openDefaultAfterTelling(QStringLiteral("Custom database wasn't found or is corrupted!"));
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::letPersonChoose() {
    const int answer = askWhere(databaseName());
    if (answer == NSAlertDefaultReturn) {
        if (const QString path = askForExisting(); !path.isEmpty()) {
            return openChosen(path);
        }
    } else if (answer == NSAlertOtherReturn) {
        if (const QString path = askForNew(databaseFileName()); !path.isEmpty()) {
            return createChosen(path);
        }
    }
    // The application cannot run without a database, and there is no other way on from here.
    std::exit(EXIT_SUCCESS);
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::openChosen(const QString& path) {
    rememberCustom(path);
    if (std::shared_ptr<LTDatabase> database = openCustom(path)) {
        return database;
    }
    return openDefaultAfterTelling(QStringLiteral("Could not open database!"));
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::createChosen(const QString& path) {
    rememberCustom(path);
    std::shared_ptr<LTDatabase> database;
    try {
        database = open(path);
    } catch (...) {
        // The choice stands all the same.
        disableSyncing();
        throw;
    }
    disableSyncing();
    return database;
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::openDefault() {
    const QDir folder(QDir::homePath() + QStringLiteral("/Library/Preferences"));
    if (!folder.mkpath(QStringLiteral("."))) {
        NSLog("%@: cannot create the folder of the database", folder.path());
    }
    return open(folder.filePath(databaseFileName()));
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::openDefaultAfterTelling(const QString& problem) {
    LTHUDAlert::alertWithMessageText(problem, QStringLiteral("OK"), {}, {},
                                     NSStringWithFormat("%@ will use the default DB instead.", databaseName()))
        ->runModal();
    return openDefault();
}

/// Null, with the reason in the log, where there is no database to be had from the file.
std::shared_ptr<LTDatabase> LTDatabaseLocation::openCustom(const QString& path) {
    std::shared_ptr<LTDatabase> database;
    try {
        database = open(path);
    } catch (const std::exception& exception) {
        NSLog("%@: not opened as a database: %s", path, exception.what());
        return nullptr;
    } catch (...) {
        NSLog("%@: not opened as a database", path);
        return nullptr;
    }
    disableSyncing();
    return database;
}

std::shared_ptr<LTDatabase> LTDatabaseLocation::open(const QString& path) {
    blank();
    std::shared_ptr<LTDatabase> database = std::move(m_blank);
    database->initWithFile(path);
    // Before the sync manager hears of it, which may ask for it.
    LTDatabase::setSharedDB(database);
    return database;
}

QString LTDatabaseLocation::databaseName() {
    return blank().databaseName();
}

QString LTDatabaseLocation::databaseFileName() {
    return blank().databaseFileName();
}

LTDatabase& LTDatabaseLocation::blank() {
    if (!m_blank) {
        m_blank = m_makeDatabase();
    }
    return *m_blank;
}

// SPDX-License-Identifier: MIT
#pragma once

#include "SyncRun.h"
#include "SyncSettings.h"

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class NSTimer;
class SnippetsDatabase;

/// How a sync ended, for the user to read.
struct SyncReport {
    QString problem;   ///< why it did not go to its end; empty where it did
    QStringList notes; ///< about single snippets
    int sentCount = 0;
    int receivedCount = 0;
};

/// Keeps the snippets the same on all computers that share a folder on a WebDAV server.
///
/// A sync takes a copy of the snippets, exchanges it with the folder (SyncRun) while changes made here wait in the
/// database's layaway, and then does here what the exchange asks for; what the user has changed in the meantime is left
/// as it is until the next one. It never ends before the symbol has had time to pulse once. Where syncing is on, there
/// is one soon after each change, and every few minutes.
///
/// At the end of the application a running sync is ended first, so that the database saves what waits in the layaway;
/// for that the manager is made before the database.
class SnippetsSyncManager : public QObject, public LTSyncManagerClass {
    Q_OBJECT

public:
    enum class Cause { User, Timer };

    SnippetsSyncManager();
    ~SnippetsSyncManager() override;

    /// The database to keep in sync from now on, or null for none. Ends a sync that is running.
    void setDatabase(std::shared_ptr<SnippetsDatabase> database);

    [[nodiscard]] bool isSyncInProgress() const override { return m_isInProgress; }
    /// Syncing may be used, which it is not while a database of the user's own choice is open.
    void enableSyncing() override { m_isEnabled = true; }
    void disableSyncing() override { m_isEnabled = false; }
    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }

    /// Begins a sync, after the password was fetched from where it is kept. Nothing while one is in progress or syncing
    /// is disabled. Where it cannot begin without the user, it says so for Cause::User and leaves it for Cause::Timer.
    void sync(Cause cause);

    /// Begins a sync with this password, which is kept nowhere.
    void syncWithPassword(const QString& password);

    /// Keeps `settings`, and the password where there is a secret service, and begins a sync where syncing is on.
    void configure(const SyncSettings& settings, const QString& password);

    /// Ends the sync that is in progress with what it has come to.
    void stop();

    /// The file in which a sync finds what the one before left.
    [[nodiscard]] static QString statePath();

Q_SIGNALS:
    /// A sync that the user asked for needs an address first, or syncing to be switched on.
    void needsSettings();
    /// A sync that the user asked for needs the password first.
    void needsPassword();
    void began();
    void ended(const SyncReport& report);

private:
    void begin(const SyncSettings& settings, const QString& password);
    void runHasFinished(const SyncOutcome& outcome);
    void endWhenPulsed();
    void end();
    void apply(SyncOutcome& outcome, SyncReport& report);
    void applyChange(const SyncChange& change, const std::shared_ptr<Snippet>& here);
    void keepBeside(const Snippet& snippet);
    void updateRecordedRemovals(const SyncOutcome& outcome, std::size_t beforeApplying,
                                std::size_t afterApplying) const;
    void syncSoon();

    std::shared_ptr<SnippetsDatabase> m_database;
    bool m_isEnabled = true;
    bool m_isInProgress = false;
    bool m_isApplying = false;
    bool m_hasPulsed = false;
    bool m_isReadingPassword = false;
    bool m_hasLeftChange = false;          // something was not done, because the user was at it meanwhile
    std::vector<NSDate> m_movedAway;       // identities on the server that the snippets no longer have here
    std::size_t m_removalsAtBeginning = 0; // recorded when the sync began
    SyncSettings m_settings;               // of the sync in progress
    std::unique_ptr<SyncRun> m_run;
    std::optional<SyncOutcome> m_outcome;
    std::shared_ptr<NSTimer> m_leastTime;
    std::shared_ptr<NSTimer> m_regularly;
    std::shared_ptr<NSTimer> m_soon;
    NSNotificationObservation m_databaseWasModified;
    NSNotificationObservation m_willTerminate;
};

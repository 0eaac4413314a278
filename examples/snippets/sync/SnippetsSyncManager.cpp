// SPDX-License-Identifier: MIT
#include "SnippetsSyncManager.h"

#include "../StopTimer.h"
#include "SnippetsDatabase.h"
#include "SyncPassword.h"

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

#include <QDir>
#include <QSysInfo>

#include <algorithm>
#include <utility>

namespace {

// Seconds.
constexpr double leastTime = 1.2; // one round of the symbol's pulse
constexpr double regularInterval = 300;
constexpr double timeAfterChange = 10;

constexpr const char* removalsKey = "SyncingData";        // the IDs of what was removed, which the database notes there
constexpr const char* timeoutKey = "SnippetsSyncTimeout"; // seconds without a byte from the server

NSArray recordedRemovals() {
    return NSUserDefaults::standardUserDefaults().arrayForKey(removalsKey).value_or(NSArray());
}

QString nameOfRemoval(const NSPropertyList& removal) {
    return SyncedFile::nameFor(NSDate::dateWithTimeIntervalSince1970(removal.doubleValue()));
}

int timeout() {
    const double seconds = NSUserDefaults::standardUserDefaults().doubleForKey(timeoutKey);
    return seconds > 0 ? static_cast<int>(std::min(seconds, 3600.0) * 1000) : WebDavFolder::standardTimeout;
}

} // namespace

SnippetsSyncManager::SnippetsSyncManager() {
    m_regularly = NSTimer::scheduledTimerWithTimeInterval(regularInterval, NSTimerRepeats::Yes,
                                                          [this](NSTimer&) { sync(Cause::Timer); });
    m_willTerminate = NSNotificationCenter::defaultCenter().addObserverForName(
        NSApplicationWillTerminateNotification, nullptr, [this](const NSNotification&) { stop(); });
}

SnippetsSyncManager::~SnippetsSyncManager() {
    for (std::shared_ptr<NSTimer>* timer : {&m_leastTime, &m_regularly, &m_soon}) {
        stopTimer(*timer);
    }
}

void SnippetsSyncManager::setDatabase(std::shared_ptr<SnippetsDatabase> database) {
    stop();
    m_database = std::move(database);
    m_databaseWasModified = {};
    if (m_database) {
        m_databaseWasModified = NSNotificationCenter::defaultCenter().addObserverForName(
            LTSnippetDBWasModifiedNotification, m_database.get(), [this](const NSNotification&) { syncSoon(); });
        syncSoon();
    }
}

QString SnippetsSyncManager::statePath() {
    return QDir::homePath() + QStringLiteral("/Library/Application Support/Snippets/Sync.plist");
}

void SnippetsSyncManager::sync(Cause cause) {
    if (m_isInProgress || !m_isEnabled || !m_database) {
        return;
    }
    const SyncSettings settings = SyncSettings::load();
    if (!settings.isOn) {
        if (cause == Cause::User) {
            Q_EMIT needsSettings();
        }
        return;
    }
    if (settings.name.isEmpty()) {
        begin(settings, {});
        return;
    }
    if (std::exchange(m_isReadingPassword, true)) {
        return;
    }
    SyncPassword::read(settings, this, [this, cause, settings](const std::optional<QString>& password) {
        m_isReadingPassword = false;
        if (password) {
            begin(settings, *password);
        } else if (cause == Cause::User) {
            Q_EMIT needsPassword();
        }
    });
}

void SnippetsSyncManager::syncWithPassword(const QString& password) {
    const SyncSettings settings = SyncSettings::load();
    if (settings.isOn) {
        begin(settings, password);
    }
}

void SnippetsSyncManager::configure(const SyncSettings& settings, const QString& password) {
    if (!settings.save()) {
        VXLog("The settings of the sync could not be kept");
    }
    if (settings.name.isEmpty() || password.isEmpty()) {
        if (settings.isOn) {
            sync(Cause::User);
        }
        return;
    }
    SyncPassword::write(settings, password, this, [this, settings, password](bool) {
        if (settings.isOn) {
            begin(settings, password);
        }
    });
}

void SnippetsSyncManager::begin(const SyncSettings& settings, const QString& password) {
    if (m_isInProgress || !m_isEnabled || !m_database) {
        return;
    }
    stopTimer(m_soon);
    // Before anything is held back, because this too is a change.
    m_database->mendIdentities();
    m_database->saveDB();
    m_settings = settings;
    m_isInProgress = true;
    m_hasPulsed = false;
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasBegunSyncing, this);
    Q_EMIT began();

    SyncInput input;
    input.state = SyncState::load(statePath(), settings.address.toString(), m_database->path());
    for (const std::shared_ptr<_LTSnippet>& record : m_database->snippets()) {
        if (const auto snippet = std::dynamic_pointer_cast<Snippet>(record)) {
            input.snippets.push_back(std::make_shared<Snippet>(*snippet));
        }
    }
    const NSArray removals = recordedRemovals();
    m_removalsAtBeginning = removals.size();
    for (const NSPropertyList& removal : removals) {
        input.removed.insert(nameOfRemoval(removal));
    }
    m_leastTime = NSTimer::scheduledTimerWithTimeInterval(leastTime, NSTimerRepeats::No, [this](NSTimer&) {
        m_hasPulsed = true;
        endWhenPulsed();
    });
    m_run = std::make_unique<SyncRun>(
        std::make_unique<WebDavFolder>(settings.address, WebDavFolder::Credentials{settings.name, password}, timeout()),
        std::move(input));
    connect(m_run.get(), &SyncRun::finished, this, &SnippetsSyncManager::runHasFinished);
    m_run->start();
}

void SnippetsSyncManager::stop() {
    if (!m_isInProgress) {
        return;
    }
    m_hasPulsed = true;
    if (m_outcome) {
        end();
    } else {
        m_run->stop(QStringLiteral("The sync was ended early"));
    }
}

void SnippetsSyncManager::runHasFinished(const SyncOutcome& outcome) {
    m_outcome = outcome;
    endWhenPulsed();
}

void SnippetsSyncManager::endWhenPulsed() {
    if (m_hasPulsed && m_outcome) {
        end();
    }
}

void SnippetsSyncManager::end() {
    stopTimer(m_leastTime);
    // It may be what called.
    m_run.release()->deleteLater();
    SyncOutcome outcome = *std::exchange(m_outcome, std::nullopt);
    SyncReport report{
        .problem = outcome.problem, .notes = outcome.notes, .sentCount = outcome.uploadCount, .receivedCount = 0};

    m_isInProgress = false;
    m_isApplying = true;
    const std::size_t beforeApplying = recordedRemovals().size();
    apply(outcome, report);
    const std::size_t afterApplying = recordedRemovals().size();
    const bool changedMeanwhile =
        m_database->holdsChangesBack() || beforeApplying > m_removalsAtBeginning || m_hasLeftChange;
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, this);
    m_isApplying = false;

    // What a sync leaves is only true of a database that was saved: the next one would take what is missing there for
    // a change.
    if (m_database->save()) {
        const QString problem = outcome.state.save(statePath());
        if (problem.isEmpty()) {
            updateRecordedRemovals(outcome, beforeApplying, afterApplying);
        } else {
            report.notes += problem;
        }
    } else if (report.problem.isEmpty()) {
        report.problem = m_database->path() + QStringLiteral(" cannot be written");
    }
    if (!report.problem.isEmpty()) {
        VXLog("Not synced: %@", report.problem);
    }
    Q_EMIT ended(report);
    if (report.problem.isEmpty() && changedMeanwhile) {
        syncSoon();
    }
}

void SnippetsSyncManager::apply(SyncOutcome& outcome, SyncReport& report) {
    m_hasLeftChange = false;
    m_movedAway.clear();
    if (outcome.changes.empty()) {
        return;
    }
    QHash<QString, std::shared_ptr<Snippet>> here;
    for (const std::shared_ptr<_LTSnippet>& record : m_database->snippets()) {
        if (const std::optional<NSDate> identity = record->snippetID()) {
            here.insert(SyncedFile::nameFor(*identity), std::dynamic_pointer_cast<Snippet>(record));
        }
    }
    QSet<QString> removedMeanwhile;
    const NSArray removals = recordedRemovals();
    for (std::size_t index = m_removalsAtBeginning; index < removals.size(); ++index) {
        removedMeanwhile.insert(nameOfRemoval(removals[index]));
    }
    for (const SyncChange& change : outcome.changes) {
        const std::shared_ptr<Snippet> current = here.value(change.name);
        if (removedMeanwhile.contains(change.name) ||
            SyncedFile::fingerprintOf(current.get()) != change.fingerprintBefore) {
            // The user has changed it since the sync began, which the next one has to see.
            m_hasLeftChange = true;
            continue;
        }
        applyChange(change, current);
        outcome.settledRemovals.insert(change.name);
        outcome.state.set(change.name, change.entryAfter);
        ++report.receivedCount;
    }
}

void SnippetsSyncManager::applyChange(const SyncChange& change, const std::shared_ptr<Snippet>& here) {
    switch (change.kind) {
    case SyncChange::Kind::Add: {
        const auto added = std::make_shared<Snippet>(*change.snippet);
        if (m_database->putBack(added) != added) {
            // It has another identity here, and so will it have on the server.
            m_movedAway.push_back(*change.snippet->snippetID());
        }
        break;
    }
    case SyncChange::Kind::Update:
        *here = *change.snippet;
        m_database->notifyOfModificationForSnippet(here);
        if (change.alsoToKeep) {
            keepBeside(*change.alsoToKeep);
        }
        break;
    case SyncChange::Kind::Remove:
        m_database->removeSnippet(here);
        break;
    }
}

void SnippetsSyncManager::keepBeside(const Snippet& snippet) {
    const std::shared_ptr<Snippet> kept = SnippetsDatabase::copyUnderFreeIdentity(snippet);
    kept->setTitle(QStringLiteral("%1 (from %2)").arg(snippet.title(), QSysInfo::machineHostName()));
    m_database->addSnippet(kept);
}

/// Takes out of the record of removals what the sync has seen to: of those that were there when it began the ones that
/// it settled, and those that its own removals have added. Puts into it what the next sync is to mark as removed.
void SnippetsSyncManager::updateRecordedRemovals(const SyncOutcome& outcome, std::size_t beforeApplying,
                                                 std::size_t afterApplying) const {
    NSArray left;
    const NSArray recorded = recordedRemovals();
    for (std::size_t index = 0; index < recorded.size(); ++index) {
        const bool isOwn = index >= beforeApplying && index < afterApplying;
        const bool isSettled =
            index < m_removalsAtBeginning && outcome.settledRemovals.contains(nameOfRemoval(recorded[index]));
        if (!isOwn && !isSettled) {
            left.push_back(recorded[index]);
        }
    }
    if (left.size() == recorded.size() && m_movedAway.empty()) {
        return;
    }
    for (const NSDate identity : m_movedAway) {
        left.emplace_back(identity.timeIntervalSince1970());
    }
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setObject(std::move(left), removalsKey);
    if (!defaults.synchronize()) {
        VXLog("The removals that the server knows of could not be struck out");
    }
}

void SnippetsSyncManager::syncSoon() {
    if (m_soon || m_isInProgress || m_isApplying || !SyncSettings::load().isOn) {
        return;
    }
    m_soon = NSTimer::scheduledTimerWithTimeInterval(timeAfterChange, NSTimerRepeats::No, [this](NSTimer&) {
        m_soon.reset();
        sync(Cause::Timer);
    });
}

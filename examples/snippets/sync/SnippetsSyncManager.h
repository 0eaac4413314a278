// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/app/LTApplicationProtocol.h>

#include <QFutureWatcher>
#include <QString>

#include <memory>

class NSTimer;
class SnippetsDatabase;

/// Keeps a second copy of the snippets, in a backup folder, and tells the kit while it does.
///
/// A run saves the database, copies its file off the main thread, and ends: never before the symbol has had time to
/// pulse once, so that the user sees that something happened. Changes made meanwhile wait in the database's layaway.
class SnippetsSyncManager : public QObject, public LTSyncManagerClass {
    Q_OBJECT

public:
    explicit SnippetsSyncManager(std::shared_ptr<SnippetsDatabase> database);
    /// Waits for a copy that is being written.
    ~SnippetsSyncManager() override;

    [[nodiscard]] bool isSyncInProgress() const override { return m_isInProgress; }
    void enableSyncing() override { m_isEnabled = true; }
    void disableSyncing() override { m_isEnabled = false; }

    /// Begins a run; nothing while one is in progress or syncing is off.
    void sync();

    /// The file of the copy.
    [[nodiscard]] static QString backupPath();

Q_SIGNALS:
    /// A run has ended; `problem` says why there is no new copy, and is empty where there is one.
    void ended(const QString& problem);

private:
    void end();

    std::shared_ptr<SnippetsDatabase> m_database;
    bool m_isEnabled = true;
    bool m_isInProgress = false;
    bool m_hasPulsed = false;
    QFutureWatcher<QString> m_copying;
    std::shared_ptr<NSTimer> m_leastTime;
};

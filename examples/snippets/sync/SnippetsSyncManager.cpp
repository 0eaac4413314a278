// SPDX-License-Identifier: MIT
#include "SnippetsSyncManager.h"

#include "SnippetsDatabase.h"

#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/support/VXLog.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtConcurrentRun>

namespace {

constexpr double leastTime = 1.2; // seconds, one round of the symbol's pulse

/// Writes the content of `from` to `to`; the reason where it cannot.
QString copyFile(const QString& from, const QString& to) {
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) {
        return from + QStringLiteral(": ") + source.errorString();
    }
    const QByteArray bytes = source.readAll();
    if (source.error() != QFileDevice::NoError) {
        return from + QStringLiteral(": ") + source.errorString();
    }
    const QString folder = QFileInfo(to).path();
    if (!QDir().mkpath(folder)) {
        return folder + QStringLiteral(": cannot create the folder");
    }
    QSaveFile target(to);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() || !target.commit()) {
        return to + QStringLiteral(": ") + target.errorString();
    }
    return {};
}

} // namespace

SnippetsSyncManager::SnippetsSyncManager(std::shared_ptr<SnippetsDatabase> database) : m_database(std::move(database)) {
    connect(&m_copying, &QFutureWatcherBase::finished, this, [this] {
        if (m_hasPulsed) {
            end();
        }
    });
}

SnippetsSyncManager::~SnippetsSyncManager() {
    if (m_leastTime) {
        m_leastTime->invalidate();
    }
    m_copying.waitForFinished();
}

QString SnippetsSyncManager::backupPath() {
    return QDir::homePath() + QStringLiteral("/Library/Application Support/Snippets/Backup.plist");
}

void SnippetsSyncManager::sync() {
    if (m_isInProgress || !m_isEnabled) {
        return;
    }
    m_database->saveDB();
    m_isInProgress = true;
    m_hasPulsed = false;
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasBegunSyncing, this);
    m_leastTime = NSTimer::scheduledTimerWithTimeInterval(leastTime, NSTimerRepeats::No, [this](NSTimer&) {
        m_hasPulsed = true;
        if (m_copying.isFinished()) {
            end();
        }
    });
    m_copying.setFuture(QtConcurrent::run(copyFile, m_database->path(), backupPath()));
}

void SnippetsSyncManager::end() {
    m_isInProgress = false;
    const QString problem = m_copying.result();
    if (!problem.isEmpty()) {
        VXLog("No backup: %@", problem);
    }
    NSNotificationCenter::defaultCenter().postNotificationName(LTSyncManagerHasEndedSyncing, this);
    Q_EMIT ended(problem);
}

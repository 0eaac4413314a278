// SPDX-License-Identifier: MIT
#pragma once

#include "SyncState.h"
#include "SyncedFile.h"
#include "WebDavFolder.h"

#include <QObject>
#include <QSet>
#include <QStringList>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

/// What a sync starts from: everything as it was at one moment.
struct SyncInput {
    std::vector<std::shared_ptr<const Snippet>> snippets; ///< copies, each under an identity of its own
    SyncState state;
    QSet<QString> removed; ///< the file names of the snippets removed here
};

/// One thing that a sync wants done to the snippets here.
struct SyncChange {
    enum class Kind { Add, Update, Remove };

    Kind kind = Kind::Add;
    QString name;                              ///< of the file
    std::shared_ptr<const Snippet> snippet;    ///< as it is to be; null to remove it
    QByteArray fingerprintBefore;              ///< what was here; where something else is by now, nothing is to be done
    std::shared_ptr<const Snippet> alsoToKeep; ///< what was here, to be kept as another snippet beside
    SyncState::Entry entryAfter;               ///< what to remember once it is done
};

struct SyncOutcome {
    SyncState state;
    std::vector<SyncChange> changes;
    QSet<QString> settledRemovals; ///< of SyncInput::removed: the server knows, or never will have to
    QString problem;               ///< why the sync could not go to its end; empty where it did
    QStringList notes;             ///< what the user should know of single snippets
    int uploadCount = 0;
};

/// One exchange between the snippets here and those in a WebDAV folder, one file a snippet.
///
/// For each file three things are known: what is here, what is on the server, and what was the same on both sides when
/// they last met. What changed on one side alone goes to the other; where both changed and title or text differ, both
/// stay, the one from here as another snippet. A changed snippet wins over a removed one. Nothing is written over on
/// the server but the very version that was looked at before.
///
/// Asks nothing of the database and changes nothing in it: it works on copies and says at the end what is to be done.
class SyncRun : public QObject {
    Q_OBJECT

public:
    /// `folder` is used by this run alone.
    SyncRun(std::unique_ptr<WebDavFolder> folder, SyncInput input);

    /// To be called once.
    void start();

    /// Ends the run with what it has come to by now; finished is emitted before this returns. Nothing after the end.
    void stop(const QString& reason);

Q_SIGNALS:
    /// Once, at the end.
    void finished(const SyncOutcome& outcome);

private:
    /// One file's way through the run.
    struct Task {
        QString name;
        std::shared_ptr<const Snippet> local; // null where there is none here
        QByteArray localFingerprint;
        std::optional<SyncState::Entry> base;
        bool isRemovedHere = false;
        bool isOnServer = false;
        QByteArray etag;
        int tries = 0;
    };
    using TaskPointer = std::shared_ptr<Task>;

    void makeFolder();
    void makeTasks(const WebDavFolder::Listing& listing);
    void startTasks();
    void endTask();
    void begin(const TaskPointer& task);
    void read(const TaskPointer& task);
    void compare(const TaskPointer& task, const SyncedFile& there);
    void serverIsUnchanged(const TaskPointer& task, const SyncedFile* there);
    void serverHasChanged(const TaskPointer& task, const SyncedFile& there);
    void bothHaveChanged(const TaskPointer& task, const std::shared_ptr<const Snippet>& there);
    void fileIsMissing(const TaskPointer& task);
    void write(const TaskPointer& task, const std::shared_ptr<const Snippet>& snippet);
    void tryAgain(const TaskPointer& task);
    void changeHere(SyncChange::Kind kind, const Task& task, const std::shared_ptr<const Snippet>& snippet);
    void remember(const Task& task, const QByteArray& fingerprint);
    void settleRemoval(const Task& task);
    bool hasFailed(const Task& task, const WebDavAnswer& answer);
    void fail(const QString& problem);
    void finish();

    std::unique_ptr<WebDavFolder> m_folder;
    SyncInput m_input;
    SyncOutcome m_outcome;
    std::deque<TaskPointer> m_waiting;
    int m_active = 0;
    int m_failuresInARow = 0;
    bool m_isStarting = false;
    bool m_isFinished = false;
};

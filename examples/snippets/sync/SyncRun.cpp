// SPDX-License-Identifier: MIT
#include "SyncRun.h"

#include "HttpStatus.h"
#include "TitleText.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

constexpr int requestsAtOnce = 4;
constexpr int mostTries = 6;          // of one file that others keep changing
constexpr int mostFailuresInARow = 3; // of a server that still answers
constexpr int weakETagTime = 1100;    // milliseconds after which a server no longer calls a version's ETag weak

std::optional<NSDate> later(const std::optional<NSDate>& left, const std::optional<NSDate>& right) {
    if (!left || !right) {
        return left ? left : right;
    }
    return left->timeIntervalSince1970() < right->timeIntervalSince1970() ? right : left;
}

} // namespace

SyncRun::SyncRun(std::unique_ptr<WebDavFolder> folder, SyncInput input)
    : m_folder(std::move(folder)), m_input(std::move(input)) {
    m_outcome.state = m_input.state;
}

void SyncRun::start() {
    m_folder->list([this](const WebDavAnswer& answer, const WebDavFolder::Listing& listing) {
        if (answer.status == HttpStatus::notFound) {
            makeFolder();
        } else if (!answer.isGood()) {
            fail(answer.problem);
        } else {
            makeTasks(listing);
        }
    });
}

void SyncRun::stop(const QString& reason) {
    fail(reason);
}

void SyncRun::makeFolder() {
    m_folder->create([this](const WebDavAnswer& answer) {
        if (!answer.isGood()) {
            fail(QStringLiteral("The folder cannot be made on the server: ") + answer.problem);
        } else {
            makeTasks({});
        }
    });
}

void SyncRun::makeTasks(const WebDavFolder::Listing& listing) {
    QHash<QString, TaskPointer> tasks;
    const auto taskNamed = [&](const QString& name) -> Task& {
        TaskPointer& task = tasks[name];
        if (!task) {
            task = std::make_shared<Task>();
            task->name = name;
            task->base = m_input.state.entry(name);
            task->isRemovedHere = m_input.removed.contains(name);
        }
        return *task;
    };
    for (const std::shared_ptr<const Snippet>& snippet : m_input.snippets) {
        Task& task = taskNamed(SyncedFile::nameFor(*snippet->snippetID()));
        task.local = snippet;
        task.localFingerprint = SyncedFile::fingerprintOf(snippet.get());
    }
    for (auto file = listing.begin(); file != listing.end(); ++file) {
        if (SyncedFile::identityIn(file.key())) {
            Task& task = taskNamed(file.key());
            task.isOnServer = true;
            task.etag = file.value();
        }
    }
    for (const QString& name : m_input.state.names()) {
        taskNamed(name);
    }
    for (const QString& name : m_input.removed) {
        taskNamed(name);
    }
    m_waiting.assign(tasks.begin(), tasks.end());
    // Oldest first, the same every time.
    std::sort(m_waiting.begin(), m_waiting.end(),
              [](const TaskPointer& left, const TaskPointer& right) { return left->name < right->name; });
    startTasks();
}

void SyncRun::startTasks() {
    // A task that has nothing to do ends within its beginning, and there may be thousands of them.
    if (m_isStarting) {
        return;
    }
    m_isStarting = true;
    while (m_active < requestsAtOnce && !m_waiting.empty()) {
        const TaskPointer task = std::move(m_waiting.front());
        m_waiting.pop_front();
        ++m_active;
        begin(task);
    }
    m_isStarting = false;
    if (m_active == 0 && m_waiting.empty()) {
        finish();
    }
}

/// Called once for each task begun, whatever came of it.
void SyncRun::endTask() {
    --m_active;
    startTasks();
}

void SyncRun::begin(const TaskPointer& task) {
    if (!task->isOnServer) {
        fileIsMissing(task);
    } else if (task->base && !task->base->etag.isEmpty() && task->base->etag == task->etag) {
        serverIsUnchanged(task, nullptr);
    } else {
        read(task);
    }
}

void SyncRun::read(const TaskPointer& task) {
    m_folder->read(task->name, [this, task](const WebDavAnswer& answer) {
        if (answer.status == HttpStatus::notFound) {
            task->isOnServer = false;
            fileIsMissing(task);
            return;
        }
        if (hasFailed(*task, answer)) {
            return;
        }
        const std::optional<SyncedFile> there = SyncedFile::read(task->name, answer.body);
        if (!there) {
            m_outcome.notes += QStringLiteral("%1 on the server is not a snippet and was left alone").arg(task->name);
            endTask();
            return;
        }
        task->isOnServer = true;
        task->etag = answer.etag;
        compare(task, *there);
    });
}

void SyncRun::compare(const TaskPointer& task, const SyncedFile& there) {
    if (task->base && task->base->fingerprint == there.fingerprint()) {
        remember(*task, there.fingerprint());
        serverIsUnchanged(task, &there);
    } else {
        serverHasChanged(task, there);
    }
}

/// What is on the server is what both sides had when they last met; `there` is null where it need not be read to know.
void SyncRun::serverIsUnchanged(const TaskPointer& task, const SyncedFile* there) {
    if (task->local) {
        if (task->localFingerprint == task->base->fingerprint) {
            settleRemoval(*task);
            endTask();
        } else {
            write(task, task->local);
        }
        return;
    }
    if (task->base->isRemoved()) {
        settleRemoval(*task);
        endTask();
    } else if (task->isRemovedHere) {
        write(task, nullptr);
    } else if (there) {
        // Gone from here without having been removed: a database that was lost or set back.
        changeHere(SyncChange::Kind::Add, *task, there->snippet);
        endTask();
    } else {
        read(task);
    }
}

void SyncRun::serverHasChanged(const TaskPointer& task, const SyncedFile& there) {
    if (there.snippet && task->local) {
        bothHaveChanged(task, there.snippet);
        return;
    }
    if (there.snippet) {
        if (task->isRemovedHere) {
            m_outcome.notes += QStringLiteral("%1 was removed here, but has been changed elsewhere since, and is back")
                                   .arg(quotedTitle(there.snippet->title()));
        }
        changeHere(SyncChange::Kind::Add, *task, there.snippet);
        endTask();
        return;
    }
    if (!task->local) {
        remember(*task, {});
        settleRemoval(*task);
        endTask();
        return;
    }
    if (task->base && !task->base->isRemoved() && task->base->fingerprint == task->localFingerprint) {
        changeHere(SyncChange::Kind::Remove, *task, nullptr);
        endTask();
        return;
    }
    m_outcome.notes += QStringLiteral("%1 was removed elsewhere, but has been changed here since, and stays")
                           .arg(quotedTitle(task->local->title()));
    write(task, task->local);
}

/// Both sides have the snippet, and the server's is not the one that both had when they last met.
void SyncRun::bothHaveChanged(const TaskPointer& task, const std::shared_ptr<const Snippet>& there) {
    const QByteArray fingerprint = SyncedFile::fingerprintOf(there.get());
    if (fingerprint == task->localFingerprint) {
        remember(*task, fingerprint);
        settleRemoval(*task);
        endTask();
        return;
    }
    if (task->base && task->base->fingerprint == task->localFingerprint) {
        changeHere(SyncChange::Kind::Update, *task, there);
        endTask();
        return;
    }
    if (there->title() != task->local->title() || there->utf8Text() != task->local->utf8Text()) {
        m_outcome.notes += QStringLiteral("%1 was changed here and elsewhere; both versions are kept")
                               .arg(quotedTitle(there->title()));
        changeHere(SyncChange::Kind::Update, *task, there);
        m_outcome.changes.back().alsoToKeep = task->local;
        endTask();
        return;
    }
    // Only how often and when it was used differs: the greater count stays.
    const auto merged = std::make_shared<Snippet>(*there);
    merged->takeUsesOf(*task->local);
    merged->updateModificationDateWithDate(later(there->dateOfModification(), task->local->dateOfModification()));
    if (SyncedFile::fingerprintOf(merged.get()) == fingerprint) {
        changeHere(SyncChange::Kind::Update, *task, there);
        endTask();
    } else {
        write(task, merged);
    }
}

void SyncRun::fileIsMissing(const TaskPointer& task) {
    if (task->local) {
        // The server may well have lost it; a removal would have left its mark.
        write(task, task->local);
        return;
    }
    m_outcome.state.remove(task->name);
    settleRemoval(*task);
    endTask();
}

/// Puts `snippet`, or for null the mark of a removal, in the place of the version that was looked at.
void SyncRun::write(const TaskPointer& task, const std::shared_ptr<const Snippet>& snippet) {
    const std::optional<QByteArray> bytes =
        snippet ? SyncedFile::bytesOf(*snippet) : SyncedFile::markOfRemoval(*SyncedFile::identityIn(task->name));
    if (!bytes) {
        m_outcome.notes += QStringLiteral("%1 holds what cannot be told in a file").arg(quotedTitle(snippet->title()));
        endTask();
        return;
    }
    if (task->isOnServer && !isStrongETag(task->etag)) {
        if (task->etag.isEmpty()) {
            fail(QStringLiteral("The server does not tell versions apart (it gives no ETag), so nothing can be "
                                "written there without the risk of losing something"));
        } else {
            tryAgain(task);
        }
        return;
    }
    const auto written = [this, task, snippet](const WebDavAnswer& answer) {
        if (answer.status == HttpStatus::preconditionFailed) {
            tryAgain(task);
            return;
        }
        if (hasFailed(*task, answer)) {
            return;
        }
        ++m_outcome.uploadCount;
        task->etag = answer.etag;
        const QByteArray fingerprint = SyncedFile::fingerprintOf(snippet.get());
        remember(*task, fingerprint);
        settleRemoval(*task);
        if (snippet && fingerprint != task->localFingerprint) {
            changeHere(SyncChange::Kind::Update, *task, snippet);
        }
        endTask();
    };
    if (task->isOnServer) {
        m_folder->overwrite(task->name, task->etag, *bytes, written);
    } else {
        m_folder->writeNew(task->name, *bytes, written);
    }
}

/// Looks at the file anew: at once where another computer was quicker, and after a while where it was changed so
/// lately that the server does not vouch for its version yet.
void SyncRun::tryAgain(const TaskPointer& task) {
    if (++task->tries > mostTries) {
        m_outcome.notes += QStringLiteral("%1 could not be written, because it keeps being changed elsewhere")
                               .arg(task->local ? quotedTitle(task->local->title()) : task->name);
        endTask();
        return;
    }
    const bool isWeak = task->isOnServer && !isStrongETag(task->etag);
    QTimer::singleShot(isWeak ? weakETagTime : 0, this, [this, task] {
        if (!m_isFinished) {
            read(task);
        }
    });
}

void SyncRun::changeHere(SyncChange::Kind kind, const Task& task, const std::shared_ptr<const Snippet>& snippet) {
    SyncChange change;
    change.kind = kind;
    change.name = task.name;
    change.snippet = snippet;
    change.fingerprintBefore = task.localFingerprint;
    change.entryAfter.fingerprint = SyncedFile::fingerprintOf(snippet.get());
    change.entryAfter.etag = isStrongETag(task.etag) ? task.etag : QByteArray();
    m_outcome.changes.push_back(std::move(change));
}

void SyncRun::remember(const Task& task, const QByteArray& fingerprint) {
    m_outcome.state.set(task.name,
                        {.etag = isStrongETag(task.etag) ? task.etag : QByteArray(), .fingerprint = fingerprint});
}

void SyncRun::settleRemoval(const Task& task) {
    if (task.isRemovedHere) {
        m_outcome.settledRemovals.insert(task.name);
    }
}

/// Whether an answer about one file is a failure, and then ends its task, or the run where it concerns all files.
bool SyncRun::hasFailed(const Task& task, const WebDavAnswer& answer) {
    if (answer.isGood()) {
        m_failuresInARow = 0;
        return false;
    }
    const bool concernsAll = answer.status == 0 || answer.status == HttpStatus::unauthorized ||
                             answer.status == HttpStatus::proxyUnauthorized ||
                             answer.status == HttpStatus::insufficientStorage;
    if (concernsAll || ++m_failuresInARow >= mostFailuresInARow) {
        fail(answer.problem);
        return true;
    }
    m_outcome.notes +=
        QStringLiteral("%1: %2").arg(task.local ? quotedTitle(task.local->title()) : task.name, answer.problem);
    endTask();
    return true;
}

void SyncRun::fail(const QString& problem) {
    if (m_isFinished) {
        return;
    }
    m_outcome.problem = problem;
    finish();
}

void SyncRun::finish() {
    if (m_isFinished) {
        return;
    }
    m_isFinished = true;
    m_waiting.clear();
    m_outcome.notes.removeDuplicates();
    m_folder->cancel();
    Q_EMIT finished(m_outcome);
}

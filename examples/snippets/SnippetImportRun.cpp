// SPDX-License-Identifier: MIT
#include "SnippetImportRun.h"

#include <QPointer>

#include <utility>

SnippetImportRun::SnippetImportRun(std::shared_ptr<SnippetsDatabase> database, QObject* parent)
    : QObject(parent), m_importer(std::move(database)) {
    m_nextSlice.setSingleShot(true);
    m_nextSlice.setInterval(0);
    connect(&m_nextSlice, &QTimer::timeout, this, &SnippetImportRun::takeSlice);
}

SnippetImportRun::~SnippetImportRun() = default;

void SnippetImportRun::importPaths(const QStringList& paths) {
    m_importer.addPaths(paths);
    if (!std::exchange(m_isRunning, true)) {
        m_clock.start();
        m_nextSlice.start();
    }
}

void SnippetImportRun::stop() {
    if (m_isRunning) {
        end();
    }
}

void SnippetImportRun::takeSlice() {
    QElapsedTimer slice;
    slice.start();
    while (!m_importer.isDone()) {
        m_importer.takeStep();
        if (slice.elapsed() >= m_pace.slice.count()) {
            break;
        }
    }
    if (m_importer.isDone()) {
        end();
        return;
    }
    if (m_clock.elapsed() >= m_pace.patience.count()) {
        const QPointer<SnippetImportRun> self(this);
        Q_EMIT progressed(m_importer.progress());
        if (!self || !m_isRunning) {
            return;
        }
    }
    m_nextSlice.start();
}

void SnippetImportRun::end() {
    m_isRunning = false;
    m_nextSlice.stop();
    Q_EMIT ended(m_importer.takeResult());
}

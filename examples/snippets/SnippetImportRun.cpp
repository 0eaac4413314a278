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
    const QPointer<SnippetImportRun> self(this);
    try {
        takeSteps();
        if (!m_importer.isDone() && m_clock.elapsed() >= m_pace.patience.count()) {
            Q_EMIT progressed(m_importer.progress());
        }
    } catch (...) {
        // The application reports it and goes on, and later imports must not wait for this one for ever.
        if (self && m_isRunning) {
            end();
        }
        throw;
    }
    if (!self || !m_isRunning) {
        return;
    }
    if (m_importer.isDone()) {
        end();
    } else {
        m_nextSlice.start();
    }
}

void SnippetImportRun::takeSteps() {
    QElapsedTimer slice;
    slice.start();
    while (!m_importer.isDone()) {
        m_importer.takeStep();
        if (slice.elapsed() >= m_pace.slice.count()) {
            return;
        }
    }
}

void SnippetImportRun::end() {
    m_isRunning = false;
    m_nextSlice.stop();
    Q_EMIT ended(m_importer.takeResult());
}

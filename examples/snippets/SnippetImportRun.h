// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetImporter.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>

/// An import that goes on beside everything else: in slices of time from the event loop, so that windows stay usable
/// however many files there are.
class SnippetImportRun : public QObject {
    Q_OBJECT

public:
    struct Pace {
        std::chrono::milliseconds slice{8};      ///< for which files are imported at a time; 0 for one step each
        std::chrono::milliseconds patience{400}; ///< of the user, before it is worth telling how far the import is
    };

    explicit SnippetImportRun(std::shared_ptr<SnippetsDatabase> database, QObject* parent = nullptr);
    ~SnippetImportRun() override;

    /// Begins to import `paths` (SnippetImporter::addPaths). What comes while an import runs is imported after it, and
    /// is a part of it.
    void importPaths(const QStringList& paths);

    /// Ends the import. What has come in stays. Nothing where none runs.
    void stop();

    [[nodiscard]] bool isRunning() const { return m_isRunning; }

    void setPace(Pace pace) { m_pace = pace; }

Q_SIGNALS:
    /// How far an import is that takes longer. It goes on when this returns.
    void progressed(const SnippetImportProgress& progress);
    /// The import is over: by itself, by stop, or because of an exception, which goes on to the application.
    void ended(const SnippetImportResult& result);

private:
    void takeSlice();
    void takeSteps();
    void end();

    SnippetImporter m_importer;
    Pace m_pace;
    QTimer m_nextSlice;
    QElapsedTimer m_clock; // since the import began
    bool m_isRunning = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetsDatabase.h"

#include <QString>
#include <QStringList>

#include <vector>

/// A file or folder that was not imported, and why.
struct SnippetImportRefusal {
    QString name;
    QString reason;

    /// Both in one line, `name: reason`, whatever characters the name has.
    [[nodiscard]] QString description() const;
};

/// What became of the files that were to be imported.
struct SnippetImportResult {
    std::size_t importedCount = 0;
    std::vector<SnippetImportRefusal> refusals;
};

/// Makes snippets of text files.
///
/// A file is taken when it is a regular file of UTF-8 text, neither empty nor larger than 1 MiB; its bytes are kept as
/// they are, but for a byte-order mark at the start. Everything else is refused with its name and the reason, and the
/// rest is still imported. Of a folder, all files below it are taken in the order of their names. Folders in it that
/// are hidden or named `build` are passed over: what lies there is a program's and not the user's. Links to folders in
/// it are not followed, so no circle of links can trap the import; one that is given itself is followed.
class SnippetImporter {
public:
    static constexpr qint64 largestFile = qint64{1024} * 1024; ///< bytes

    /// `database` must be the shared one: that is where the identities of new records are looked up.
    explicit SnippetImporter(std::shared_ptr<SnippetsDatabase> database);

    /// Adds a snippet for each file of `paths` and of the folders among them. The title is the file's name, below a
    /// folder its path from there. The whole batch starts from one instant, so the first file is the newest snippet and
    /// each following one a second older; where there is a list, newest first, it has the order of the files.
    SnippetImportResult importPaths(const QStringList& paths);

private:
    void importFile(const QString& path, const QString& name, const QString& title);
    void importFolder(const QString& path, const QString& name, const QString& titlePrefix);
    void refuse(const QString& name, const QString& reason);

    std::shared_ptr<SnippetsDatabase> m_database;
    double m_startTime = 0.0;
    SnippetImportResult m_result;
};

// SPDX-License-Identifier: MIT
// Writes snippets to files that other programs, and this one, can read.
#pragma once

#include <QString>

#include <memory>
#include <vector>

class Snippet;

/// What became of an export.
struct SnippetExportResult {
    std::size_t count = 0;
    QString problem; ///< why nothing was written; empty where all was
};

/// Writes `snippets` to a property list, which this program imports with titles, dates and uses. The file is there
/// whole, or as it was before.
[[nodiscard]] SnippetExportResult exportToPropertyList(const std::vector<std::shared_ptr<Snippet>>& snippets,
                                                       const QString& path);

/// Makes the folder `path` with a text file for each of `snippets`, named after its title. The folder is there with all
/// of them or not at all; it must not be there yet, or be empty.
[[nodiscard]] SnippetExportResult exportToFolder(const std::vector<std::shared_ptr<Snippet>>& snippets,
                                                 const QString& path);

/// Whether both paths lead to one file, by whatever names and links, be it there or still to be made.
[[nodiscard]] bool leadToOneFile(const QString& path, const QString& other);

/// What to call a file with the text of a snippet that is called `title`, so that every file system takes it.
[[nodiscard]] QString fileNameForTitle(const QString& title);

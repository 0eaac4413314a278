// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetsDatabase.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <string_view>
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
    std::size_t importedCount = 0; ///< snippets: one for each text file, and those of the property lists
    std::size_t listedCount = 0;   ///< of these, the ones of property lists
    std::size_t knownCount = 0;    ///< snippets of property lists that were here already, just so
    std::vector<SnippetImportRefusal> refusals;
    bool wasStopped = false; ///< before all of them had their turn
};

/// How far an import is.
struct SnippetImportProgress {
    bool isLooking = false; ///< for more files, so that nobody knows how many there are
    std::size_t foundCount = 0;
    std::size_t doneCount = 0; ///< of these, imported or refused
};

/// Makes snippets of text files, and takes those of property lists that this program has exported.
///
/// A file is taken when it is a regular file of UTF-8 text, neither empty nor larger than 1 MiB; its bytes are kept as
/// they are, but for a byte-order mark at the start. Everything else is refused with its name and the reason, and the
/// rest is still imported. Of a folder, all files below it are taken in the order of their names. Folders in it that
/// are hidden or named `build` are passed over: what lies there is a program's and not the user's. Links to folders in
/// it are not followed, so no circle of links can trap the import; one that is given itself is followed.
///
/// A property list of this program's, or one of its database, gives its snippets back as they were, with their dates
/// and uses. One that is here already just so is left alone; where another one has its identity, which is the date it
/// was made, it is taken for made a little earlier.
class SnippetImporter {
public:
    static constexpr qint64 largestFile = qint64{1024} * 1024;       ///< bytes of text
    static constexpr qint64 largestList = qint64{128} * 1024 * 1024; ///< bytes of a property list

    /// `database` must be the shared one: that is where the identities of new records are looked up.
    explicit SnippetImporter(std::shared_ptr<SnippetsDatabase> database);

    /// Adds a snippet for each file of `paths` and of the folders among them. The title is the file's name, below a
    /// folder its path from there. The whole batch starts from one instant, so the first file is the newest snippet and
    /// each following one a second older; where there is a list, newest first, it has the order of the files.
    SnippetImportResult importPaths(const QStringList& paths);

    /// The same in steps, for an import that must not hold up everything else: adds `paths` to what is to be imported,
    /// after all that is there already; takeStep as long as it is not done; then takeResult. First all files are found,
    /// then they are imported.
    void addPaths(const QStringList& paths);
    [[nodiscard]] bool isDone() const {
        return m_places.empty() && m_next == m_found.size() && m_nextListed == m_listed.size();
    }
    /// Looks at one file or one folder, or imports one file or one snippet of a list. Nothing where all is done.
    void takeStep();
    [[nodiscard]] SnippetImportProgress progress() const {
        return {.isLooking = !m_places.empty(),
                .foundCount = m_found.size() + m_listed.size(),
                .doneCount = m_next + m_nextListed};
    }
    /// What has become of the files, of which those not yet imported are forgotten.
    SnippetImportResult takeResult();

private:
    /// A file that was found, or what is refused before it is opened.
    struct Found {
        QString path;
        QString name;
        QString title;
        QString refusal; // null for a file
    };
    /// Where to look for files; at its end, a folder that was given itself is known to have some or none.
    struct Place {
        enum class Kind { File, Folder, GivenFolder, EndOfGivenFolder };
        Kind kind = Kind::File;
        QString path;
        QString name;
        QString title;              // of a folder, what the titles of its files begin with
        std::size_t foundCount = 0; // at the beginning of the folder that ends here
    };

    void lookAt(const Place& place);
    void lookInFolder(const Place& place);
    void importFile(const QString& path, const QString& name, const QString& title);
    void importList(std::string_view bytes, const QString& name);
    void importListed(const std::shared_ptr<Snippet>& snippet);
    void forgetWhatIsHere();
    [[nodiscard]] bool isToStay(const Snippet& snippet) const;
    [[nodiscard]] double freeTimeAtOrBefore(double wanted);
    void refuse(const QString& name, const QString& reason);

    std::shared_ptr<SnippetsDatabase> m_database;
    std::vector<Place> m_places; // the next one is the last
    std::vector<Found> m_found;
    std::size_t m_next = 0;                         // of what was found
    std::vector<std::shared_ptr<Snippet>> m_listed; // of the property lists that were read
    std::size_t m_nextListed = 0;
    QHash<double, std::shared_ptr<Snippet>> m_here; // by identity, while lists are imported
    QHash<double, double> m_nextTimes;              // from identities that were given to where to look for a free one
    double m_startTime = 0.0;
    SnippetImportResult m_result;
};

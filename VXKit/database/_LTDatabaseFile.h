// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/AtomicFile.h>
#include <VXKit/platform/foundation/NSPropertyList.h>

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <optional>
#include <string_view>

/// The file of one store: reads it, writes it, and lets no save destroy what the store does not know.
///
/// A store saves over whatever lies in its file. Where that is not what the store last read or wrote there, because
/// another program (an editor, a tool that synchronises folders, the same application on another computer) has changed
/// it, or where the store could not read all of it, the version on disk is set aside first, beside the file:
///
///     Snippets.plist
///     Snippets (changed elsewhere 2026-11-21 14.05.33).plist
///     Snippets (unreadable 2026-11-20 09.12.04).plist
///     Snippets (version 0.2 2026-11-02 18.30.00).plist
///
/// in local time, with a number where several fall into one second, and ten of them at the most: the oldest goes, and
/// nothing whose name is not exactly of this kind. Where the file is a link, what it leads to counts, and the copies
/// lie beside that. A file that was deleted is nothing to set aside. Whatever goes wrong with a copy is logged, and the
/// save goes on.
///
/// Setting aside is giving the old file a second name, at the last moment before the new one takes its first: this
/// takes no time, whatever the size, and keeps the very bytes. A program that has the old file open and writes on in
/// place writes into the copy then, as it would have written into a file without a name. Where a file system knows no
/// second names the bytes are copied.
///
/// What was written or read is known again by the file's state. Only where that cannot tell (a tool has touched the
/// file or set its time back, its time is too coarse) the content is read, and one that is the same byte for byte is no
/// change.
class _LTDatabaseFile {
public:
    /// The dictionary in the file at `path`, as NSDictionary::dictionaryWithContentsOfFile reads it. Removes what
    /// killed saves have left beside it long ago.
    [[nodiscard]] std::optional<NSDictionary> read(const QString& path);

    /// The store took nothing, or not all, from what read has answered: that content is to be set aside before it is
    /// overwritten.
    void noteUnreadable();
    /// The same, of a file of another version.
    void noteVersion(const QString& version);

    /// Writes the XML form atomically, as NSDictionary::writeToFile does. False when that failed, with the reason in
    /// the log.
    bool write(const QString& path, const NSDictionary& dictionary);

private:
    struct Content {
        std::size_t size = 0;
        std::size_t hash = 0;

        friend bool operator==(const Content&, const Content&) = default;
    };

    void forget(const QString& path);
    [[nodiscard]] static Content contentOf(std::string_view bytes);
    [[nodiscard]] bool isChanged(const QByteArray& file, const VXFileState& state) const;
    void setAsideIfNeeded(const QByteArray& file);

    QString m_path;
    std::optional<VXFileState> m_state; // of the file as last read, written or set aside; nothing where there was none
    bool m_stateTellsEveryChange = false;
    std::optional<Content> m_content;
    QString m_whatIsLost; // by the next write, from a file that is not changed; empty for nothing
};

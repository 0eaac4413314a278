// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

/// What was the same here and on the server when they last met, file by file: from it a sync tells which side has
/// changed since.
///
/// Kept in a file of its own. Without it everything is compared anew, and nothing is lost by that.
class SyncState {
public:
    struct Entry {
        QByteArray etag;        ///< of the server's version; empty where no strong one is known
        QByteArray fingerprint; ///< SyncedFile::fingerprint of that version, empty for a mark of removal

        [[nodiscard]] bool isRemoved() const { return fingerprint.isEmpty(); }
    };

    SyncState() = default;
    /// An empty one, for the server's folder at `address` and the database at `database`.
    SyncState(QString address, QString database);

    /// Reads the file; an empty state where there is none, it cannot be read, or it is about another folder or
    /// database.
    [[nodiscard]] static SyncState load(const QString& path, const QString& address, const QString& database);
    /// The reason where the file cannot be written; empty where it was.
    [[nodiscard]] QString save(const QString& path) const;

    [[nodiscard]] std::optional<Entry> entry(const QString& name) const;
    void set(const QString& name, const Entry& entry) { m_entries.insert(name, entry); }
    void remove(const QString& name) { m_entries.remove(name); }
    [[nodiscard]] QList<QString> names() const { return m_entries.keys(); }

private:
    QString m_address;
    QString m_database;
    QHash<QString, Entry> m_entries;
};

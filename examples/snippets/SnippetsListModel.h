// SPDX-License-Identifier: MIT
#pragma once

#include "Snippet.h"
#include "SnippetsDatabase.h"

#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QAbstractListModel>
#include <QStringList>

#include <memory>
#include <vector>

/// The snippets of a database as rows, newest first, those that match the search only.
///
/// It follows the database: rows come and go one by one, so what is selected in a view stays selected. Nothing is asked
/// of a record for its row before a view shows that row; only the identity, which is the order, is read from all of
/// them. The texts in the form that the search compares are made at the first search and kept until the record changes.
class SnippetsListModel : public QAbstractListModel {
public:
    enum Role {
        FirstLineRole = Qt::UserRole, ///< QString: the first line of the text, for the line below the title
        DateRole,                     ///< QString: when it was made, seen from now
        UseCountRole,                 ///< qlonglong: how many times it was copied back
    };

    explicit SnippetsListModel(std::shared_ptr<SnippetsDatabase> database, QObject* parent = nullptr);
    ~SnippetsListModel() override;

    /// Shows the snippets alone whose title or text holds every word of `search`, in any order, whatever their case and
    /// accents; all of them where it has no word.
    void setSearch(const QString& search);

    /// Whether there is a search that could leave snippets out.
    [[nodiscard]] bool isSearching() const { return !m_words.isEmpty(); }

    /// How many snippets there are, shown or not.
    [[nodiscard]] int totalCount() const { return static_cast<int>(m_entries.size()); }

    /// The record of a row; null for an index without one.
    [[nodiscard]] std::shared_ptr<Snippet> snippetAt(const QModelIndex& index) const;

    /// The row of a record; invalid where it is not shown.
    [[nodiscard]] QModelIndex indexOf(const _LTSnippet& snippet) const;

    /// The newest `count` snippets, or all where there are fewer, whatever the search.
    [[nodiscard]] std::vector<std::shared_ptr<Snippet>> newest(std::size_t count) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// What the one column holds. Rows have no names: a screen reader would read their numbers out before each title.
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    /// What the model keeps of a record.
    struct Entry {
        std::shared_ptr<Snippet> snippet;
        double created = 0.0; // the identity that gave the record its place in the order
        std::optional<NSDate> modified;
        std::optional<NSDate> used;
        bool isMatch = true;
        QString folded; // null until a search needs it
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    [[nodiscard]] std::shared_ptr<Entry> entryOf(std::shared_ptr<Snippet> snippet) const;
    [[nodiscard]] bool isMatch(Entry& entry) const;
    void followDatabase();
    void followList();
    template <class Iterator>
    void follow(Iterator list, Iterator listEnd);
    void followRecords();
    void showMatches();

    std::shared_ptr<SnippetsDatabase> m_database;
    Entries m_listed;  // in the order of the database's list
    Entries m_entries; // newest first
    Entries m_rows;    // of these, the ones that match
    QStringList m_words;
    NSNotificationObservation m_databaseWasModified;
};

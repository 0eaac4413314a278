// SPDX-License-Identifier: MIT
#pragma once

#include "Snippet.h"
#include "SnippetsDatabase.h"

#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QAbstractListModel>
#include <QByteArrayList>

#include <memory>
#include <unordered_map>
#include <vector>

/// The snippets of a database as rows, newest first, those that match the search only.
///
/// It follows the database: rows come and go, and what is selected in a view stays selected. Nothing is asked of a
/// record for its row before a view shows that row; only the identity, which is the order, is read from all of them.
/// The texts in the form that the search compares are made at the first search, or before it where there is time
/// (prepareSearch), and kept until the record changes.
///
/// One snippet that comes, goes or changes costs the same however many there are, and a search that goes on from the
/// one before looks only at what that has not settled. What is changed by somebody who is being told of a change of
/// rows is followed as soon as that change is complete.
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

    /// Makes the searched form of some texts that have none yet, for `milliseconds` or a little longer; false where
    /// there is no such text left.
    bool prepareSearch(int milliseconds);

    /// Keeps the row of `snippet` while that is changed, though it may match the search no more: somebody is at it.
    /// Null for none.
    void setHeld(const std::shared_ptr<Snippet>& snippet);

    /// How many snippets there are, shown or not.
    [[nodiscard]] int totalCount() const { return static_cast<int>(m_entries.size()); }

    /// The record of a row; null for an index without one.
    [[nodiscard]] std::shared_ptr<Snippet> snippetAt(const QModelIndex& index) const;

    /// The row of a record; invalid where it is not shown.
    [[nodiscard]] QModelIndex indexOf(const _LTSnippet& snippet) const;
    /// Whether a record is shown where no search leaves it out.
    [[nodiscard]] bool lists(const _LTSnippet& snippet) const;

    /// The newest `count` snippets, or all where there are fewer, whatever the search.
    [[nodiscard]] std::vector<std::shared_ptr<Snippet>> newest(std::size_t count) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// What the one column holds. Rows have no names: a screen reader would read their numbers out before each title.
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// A row is dragged as what its snippet is to other programs, and copied.
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

private:
    /// What the model keeps of a record.
    struct Entry {
        std::shared_ptr<Snippet> snippet;
        double created = 0.0; // the identity that gave the record its place in the order
        std::optional<NSDate> modified;
        std::optional<NSDate> used;
        bool isMatch = true;
        bool isGone = false;     // from the database
        bool isHeldOver = false; // it is a match only because it was held
        QByteArray folded;       // UTF-8; null until a search needs it
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    [[nodiscard]] std::shared_ptr<Entry> entryOf(std::shared_ptr<Snippet> snippet) const;
    [[nodiscard]] bool isMatch(Entry& entry) const;
    static void fold(Entry& entry);
    [[nodiscard]] static bool isBefore(const std::shared_ptr<Entry>& left, const std::shared_ptr<Entry>& right);
    void followDatabase(const SnippetsDatabase::Change& change);
    void catchUp();
    bool followOne(const SnippetsDatabase::Change& change);
    bool followAddition(const _LTSnippet& snippet);
    bool followRemoval(const _LTSnippet& snippet);
    void followModification(const _LTSnippet& snippet);
    void followList();
    template <class Iterator>
    void follow(Iterator list, Iterator listEnd);
    void followRecords();
    void updateMatch(Entry& entry) const;
    void showMatches();
    void showMatchesInRuns(const Entries& wanted);
    void replaceRows(const Entries& wanted);
    void replaceStretch(std::size_t begin, std::size_t end, const Entries& wanted, std::size_t wantedBegin,
                        std::size_t wantedEnd);
    void showOne(const std::shared_ptr<Entry>& entry);
    void hideOne(const Entry& entry);
    [[nodiscard]] Entries::const_iterator rowOf(const Entry& entry) const;

    std::shared_ptr<SnippetsDatabase> m_database;
    Entries m_listed;  // in the order of the database's list
    Entries m_entries; // newest first
    Entries m_rows;    // of these, the ones that match
    std::unordered_multimap<const _LTSnippet*, std::shared_ptr<Entry>> m_entriesOfRecords;
    QByteArrayList m_words; // folded, as the texts
    std::shared_ptr<Snippet> m_held;
    std::size_t m_prepared = 0; // so many of m_entries were looked at to prepare them
    bool m_isFollowing = false;
    bool m_isBehind = false; // something was changed while m_isFollowing
    NSNotificationObservation m_databaseWasModified;
};

// SPDX-License-Identifier: MIT
#include "SnippetsListModel.h"

#include "DateText.h"
#include "SearchText.h"

#include <QElapsedTimer>
#include <QScopedValueRollback>

#include <algorithm>
#include <limits>
#include <unordered_set>
#include <utility>

namespace {

constexpr std::size_t entriesBetweenLooksAtTheClock = 32;

} // namespace

SnippetsListModel::SnippetsListModel(std::shared_ptr<SnippetsDatabase> database, QObject* parent)
    : QAbstractListModel(parent), m_database(std::move(database)) {
    followList();
    m_databaseWasModified = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, m_database.get(),
        [this](const NSNotification&) { followDatabase(m_database->change()); });
}

SnippetsListModel::~SnippetsListModel() = default;

void SnippetsListModel::setSearch(const QString& search) {
    QByteArrayList words = foldedWords(search);
    if (words == m_words) {
        return;
    }
    // Typing on can only take matches away, and deleting only bring some back.
    const bool isNarrower = imply(words, m_words);
    const bool isWider = imply(m_words, words);
    m_words = std::move(words);
    for (const std::shared_ptr<Entry>& entry : m_entries) {
        const bool isSettled = entry->isMatch ? isWider && !entry->isHeldOver : isNarrower;
        if (!isSettled) {
            entry->isHeldOver = false;
            entry->isMatch = isMatch(*entry);
        }
    }
    const QScopedValueRollback<bool> following(m_isFollowing, true);
    showMatches();
    catchUp();
}

bool SnippetsListModel::prepareSearch(int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (m_prepared < m_entries.size()) {
        fold(*m_entries[m_prepared++]);
        if (m_prepared % entriesBetweenLooksAtTheClock == 0 && clock.elapsed() >= milliseconds) {
            return true;
        }
    }
    return false;
}

void SnippetsListModel::setHeld(const std::shared_ptr<Snippet>& snippet) {
    m_held = snippet;
}

std::shared_ptr<Snippet> SnippetsListModel::snippetAt(const QModelIndex& index) const {
    return checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)
               ? m_rows[static_cast<std::size_t>(index.row())]->snippet
               : nullptr;
}

QModelIndex SnippetsListModel::indexOf(const _LTSnippet& snippet) const {
    const auto [first, last] = m_entriesOfRecords.equal_range(&snippet);
    for (auto each = first; each != last; ++each) {
        const auto row = rowOf(*each->second);
        if (row != m_rows.end()) {
            return index(static_cast<int>(row - m_rows.begin()));
        }
    }
    return {};
}

bool SnippetsListModel::lists(const _LTSnippet& snippet) const {
    return m_entriesOfRecords.contains(&snippet);
}

std::vector<std::shared_ptr<Snippet>> SnippetsListModel::newest(std::size_t count) const {
    std::vector<std::shared_ptr<Snippet>> snippets;
    for (std::size_t index = 0; index < std::min(count, m_entries.size()); ++index) {
        snippets.push_back(m_entries[index]->snippet);
    }
    return snippets;
}

int SnippetsListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant SnippetsListModel::data(const QModelIndex& index, int role) const {
    const std::shared_ptr<Snippet> snippet = snippetAt(index);
    if (!snippet) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole: {
        const QString title = snippet->shownTitle();
        return title.isEmpty() ? QStringLiteral("Untitled") : title;
    }
    case FirstLineRole:
        return snippet->firstLine();
    case DateRole: {
        const std::optional<NSDate> created = snippet->snippetID();
        return created ? relativeDateText(*created, NSDate::date()) : QString();
    }
    case UseCountRole:
        return static_cast<qlonglong>(snippet->useCount());
    default:
        return {};
    }
}

QVariant SnippetsListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const bool isName = section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole;
    return isName ? QVariant(QStringLiteral("Snippet")) : QVariant();
}

QHash<int, QByteArray> SnippetsListModel::roleNames() const {
    QHash<int, QByteArray> names = QAbstractListModel::roleNames();
    names.insert(FirstLineRole, "firstLine");
    names.insert(DateRole, "date");
    names.insert(UseCountRole, "useCount");
    return names;
}

Qt::ItemFlags SnippetsListModel::flags(const QModelIndex& index) const {
    return QAbstractListModel::flags(index) | (index.isValid() ? Qt::ItemIsDragEnabled : Qt::NoItemFlags);
}

std::shared_ptr<SnippetsListModel::Entry> SnippetsListModel::entryOf(std::shared_ptr<Snippet> snippet) const {
    auto entry = std::make_shared<Entry>();
    // A record without an identity, from a file that somebody edited, goes to the end.
    const std::optional<NSDate> created = snippet->snippetID();
    entry->created = created ? created->timeIntervalSince1970() : -std::numeric_limits<double>::infinity();
    entry->modified = snippet->dateOfModification();
    entry->used = snippet->dateOfLastUse();
    entry->snippet = std::move(snippet);
    entry->isMatch = isMatch(*entry);
    return entry;
}

void SnippetsListModel::fold(Entry& entry) {
    if (!entry.folded.isNull()) {
        return;
    }
    const QByteArray title = entry.snippet->title().toUtf8();
    const QByteArray& text = entry.snippet->utf8Text();
    entry.folded.reserve(title.size() + 1 + text.size());
    appendFolded(entry.folded, title);
    entry.folded += '\n';
    appendFolded(entry.folded, text);
}

bool SnippetsListModel::isMatch(Entry& entry) const {
    if (m_words.isEmpty()) {
        return true;
    }
    fold(entry);
    return std::all_of(m_words.begin(), m_words.end(),
                       [&](const QByteArray& word) { return containsText(entry.folded, word); });
}

/// Newest first, and equal ones as they came.
bool SnippetsListModel::isBefore(const std::shared_ptr<Entry>& left, const std::shared_ptr<Entry>& right) {
    return left->created > right->created;
}

void SnippetsListModel::followDatabase(const SnippetsDatabase::Change& change) {
    if (m_isFollowing) {
        m_isBehind = true;
        return;
    }
    const QScopedValueRollback<bool> following(m_isFollowing, true);
    if (!followOne(change)) {
        followRecords();
        followList();
    }
    catchUp();
}

/// Whoever is told of rows may change the database, again and again.
void SnippetsListModel::catchUp() {
    while (std::exchange(m_isBehind, false)) {
        followRecords();
        followList();
    }
}

/// Follows a change of one record; false where more may have changed.
bool SnippetsListModel::followOne(const SnippetsDatabase::Change& change) {
    switch (change.kind) {
    case SnippetsDatabase::Change::Kind::Unknown:
        return false;
    case SnippetsDatabase::Change::Kind::Addition:
        return followAddition(*change.snippet);
    case SnippetsDatabase::Change::Kind::Removal:
        return followRemoval(*change.snippet);
    case SnippetsDatabase::Change::Kind::Modification:
        followModification(*change.snippet);
        return true;
    }
    return false;
}

bool SnippetsListModel::followAddition(const _LTSnippet& snippet) {
    const LTSnippetArray& list = m_database->snippets();
    if (m_database->hasLeavingSnippets() || list.count() != m_listed.size() + 1 ||
        list[list.count() - 1].get() != &snippet) {
        return false;
    }
    // The database makes no other class of record, and this program adds none.
    const std::shared_ptr<Entry> entry = entryOf(std::static_pointer_cast<Snippet>(list[list.count() - 1]));
    m_listed.push_back(entry);
    m_entriesOfRecords.emplace(&snippet, entry);
    const auto place = std::upper_bound(m_entries.begin(), m_entries.end(), entry, isBefore);
    m_prepared = std::min(m_prepared, static_cast<std::size_t>(place - m_entries.begin()));
    m_entries.insert(place, entry);
    if (entry->isMatch) {
        showOne(entry);
    }
    return true;
}

bool SnippetsListModel::followRemoval(const _LTSnippet& snippet) {
    const auto found = m_entriesOfRecords.find(&snippet);
    if (m_database->hasLeavingSnippets() || m_database->snippets().count() + 1 != m_listed.size() ||
        found == m_entriesOfRecords.end()) {
        return false;
    }
    const std::shared_ptr<Entry> entry = found->second;
    m_entriesOfRecords.erase(found);
    m_listed.erase(std::find(m_listed.begin(), m_listed.end(), entry));
    const auto [begin, end] = std::equal_range(m_entries.begin(), m_entries.end(), entry, isBefore);
    m_entries.erase(std::find(begin, end, entry));
    hideOne(*entry);
    return true;
}

void SnippetsListModel::followModification(const _LTSnippet& snippet) {
    const auto [first, last] = m_entriesOfRecords.equal_range(&snippet);
    Entries entries;
    std::for_each(first, last, [&](const auto& each) { entries.push_back(each.second); });
    for (const std::shared_ptr<Entry>& entry : entries) {
        const bool wasMatch = entry->isMatch;
        entry->modified = entry->snippet->dateOfModification();
        entry->used = entry->snippet->dateOfLastUse();
        entry->folded = QByteArray();
        updateMatch(*entry);
        if (entry->isMatch && wasMatch) {
            const QModelIndex row = index(static_cast<int>(rowOf(*entry) - m_rows.cbegin()));
            Q_EMIT dataChanged(row, row);
        } else if (entry->isMatch) {
            showOne(entry);
        } else if (wasMatch) {
            hideOne(*entry);
        }
    }
}

/// Looks again whether a record that was changed matches; what is held stays.
void SnippetsListModel::updateMatch(Entry& entry) const {
    const bool matchesNow = isMatch(entry);
    entry.isHeldOver = !matchesNow && entry.isMatch && entry.snippet == m_held;
    entry.isMatch = matchesNow || entry.isHeldOver;
}

void SnippetsListModel::followList() {
    const LTSnippetArray& list = m_database->snippets();
    if (!m_database->hasLeavingSnippets()) {
        follow(list.begin(), list.end());
        return;
    }
    std::vector<std::shared_ptr<_LTSnippet>> staying;
    std::copy_if(list.begin(), list.end(), std::back_inserter(staying),
                 [this](const std::shared_ptr<_LTSnippet>& record) { return !m_database->isLeaving(*record); });
    follow(staying.begin(), staying.end());
}

/// Takes over what came into a list of records and what left it. What is the same at both ends of the list is found
/// faster than a record is drawn.
template <class Iterator>
void SnippetsListModel::follow(Iterator list, Iterator listEnd) {
    const auto count = static_cast<std::size_t>(listEnd - list);
    const auto difference = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
    const std::size_t shorter = std::min(m_listed.size(), count);
    std::size_t first = 0;
    while (first < shorter && m_listed[first]->snippet == list[difference(first)]) {
        ++first;
    }
    std::size_t tail = 0;
    while (tail < shorter - first &&
           m_listed[m_listed.size() - 1 - tail]->snippet == list[difference(count - 1 - tail)]) {
        ++tail;
    }

    const auto begin = m_listed.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = m_listed.end() - static_cast<std::ptrdiff_t>(tail);
    std::unordered_multimap<const _LTSnippet*, std::shared_ptr<Entry>> leaving;
    std::for_each(begin, end,
                  [&](const std::shared_ptr<Entry>& entry) { leaving.emplace(entry->snippet.get(), entry); });
    Entries now;
    Entries added;
    for (std::size_t index = first; index < count - tail; ++index) {
        if (const auto kept = leaving.find(list[difference(index)].get()); kept != leaving.end()) {
            now.push_back(kept->second);
            leaving.erase(kept);
            continue;
        }
        added.push_back(entryOf(std::static_pointer_cast<Snippet>(list[difference(index)])));
        now.push_back(added.back());
    }
    m_listed.insert(m_listed.erase(begin, end), now.begin(), now.end());
    if (leaving.empty() && added.empty()) {
        return;
    }

    for (const auto& [record, entry] : leaving) {
        entry->isGone = true;
        entry->isMatch = false;
        const auto [same, sameEnd] = m_entriesOfRecords.equal_range(record);
        m_entriesOfRecords.erase(std::find_if(
            same, sameEnd, [&, gone = entry.get()](const auto& each) { return each.second.get() == gone; }));
    }
    if (!leaving.empty()) {
        std::erase_if(m_entries, [](const std::shared_ptr<Entry>& entry) { return entry->isGone; });
    }
    for (const std::shared_ptr<Entry>& entry : added) {
        m_entriesOfRecords.emplace(entry->snippet.get(), entry);
    }
    std::stable_sort(added.begin(), added.end(), isBefore);
    const auto middle = static_cast<std::ptrdiff_t>(m_entries.size());
    m_entries.insert(m_entries.end(), added.begin(), added.end());
    std::inplace_merge(m_entries.begin(), m_entries.begin() + middle, m_entries.end(), isBefore);
    m_prepared = 0;
    showMatches();
}

/// Takes over what was changed in the records themselves.
void SnippetsListModel::followRecords() {
    std::unordered_set<const Entry*> changed;
    bool matchesChanged = false;
    for (const std::shared_ptr<Entry>& entry : m_entries) {
        const Snippet& snippet = *entry->snippet;
        const bool hasOtherContent = entry->modified != snippet.dateOfModification();
        if (!hasOtherContent && entry->used == snippet.dateOfLastUse()) {
            continue;
        }
        changed.insert(entry.get());
        entry->modified = snippet.dateOfModification();
        entry->used = snippet.dateOfLastUse();
        if (hasOtherContent) {
            entry->folded = QByteArray();
            const bool wasMatch = entry->isMatch;
            updateMatch(*entry);
            matchesChanged = matchesChanged || entry->isMatch != wasMatch;
        }
    }
    if (matchesChanged) {
        showMatches();
    }
    const auto isChanged = [&](const std::shared_ptr<Entry>& entry) { return changed.contains(entry.get()); };
    const auto first = std::find_if(m_rows.begin(), m_rows.end(), isChanged);
    if (first != m_rows.end()) {
        const auto last = std::find_if(m_rows.rbegin(), m_rows.rend(), isChanged);
        Q_EMIT dataChanged(index(static_cast<int>(first - m_rows.begin())),
                           index(static_cast<int>(m_rows.rend() - last) - 1));
    }
}

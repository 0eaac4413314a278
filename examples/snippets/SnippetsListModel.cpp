// SPDX-License-Identifier: MIT
#include "SnippetsListModel.h"

#include "DateText.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

/// Appends `text` without case and accents. Most text is ASCII, which is folded here far faster than Qt can; so the
/// first search through thousands of long texts is no pause.
void appendFolded(QString& result, QStringView text) {
    while (!text.isEmpty()) {
        const auto isAscii = [](QChar character) { return character.unicode() < 0x80; };
        const QStringView ascii = text.first(std::find_if_not(text.begin(), text.end(), isAscii) - text.begin());
        const qsizetype begin = result.size();
        result.resize(begin + ascii.size());
        std::transform(ascii.begin(), ascii.end(), result.begin() + begin, [](QChar character) {
            const char16_t unit = character.unicode();
            return QChar(static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit + (u'a' - u'A') : unit));
        });
        text = text.sliced(ascii.size());

        const QStringView other = text.first(std::find_if(text.begin(), text.end(), isAscii) - text.begin());
        if (!other.isEmpty()) {
            QString bare = other.toString().normalized(QString::NormalizationForm_KD);
            bare.removeIf([](QChar character) { return character.isMark(); });
            // By way of capitals, which alone make two letters of a sharp s; to lower case first, for the capital one.
            result += bare.toLower().toUpper().toLower();
        }
        text = text.sliced(other.size());
    }
}

} // namespace

SnippetsListModel::SnippetsListModel(std::shared_ptr<SnippetsDatabase> database, QObject* parent)
    : QAbstractListModel(parent), m_database(std::move(database)) {
    followList();
    m_databaseWasModified = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, m_database.get(), [this](const NSNotification&) { followDatabase(); });
}

SnippetsListModel::~SnippetsListModel() = default;

void SnippetsListModel::setSearch(const QString& search) {
    QString foldedSearch;
    appendFolded(foldedSearch, search.simplified());
    QStringList words = foldedSearch.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words == m_words) {
        return;
    }
    m_words = std::move(words);
    for (const std::shared_ptr<Entry>& entry : m_entries) {
        entry->isMatch = isMatch(*entry);
    }
    showMatches();
}

std::shared_ptr<Snippet> SnippetsListModel::snippetAt(const QModelIndex& index) const {
    return checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)
               ? m_rows[static_cast<std::size_t>(index.row())]->snippet
               : nullptr;
}

QModelIndex SnippetsListModel::indexOf(const _LTSnippet& snippet) const {
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [&](const std::shared_ptr<Entry>& entry) {
        return entry->snippet.get() == &snippet;
    });
    return row == m_rows.end() ? QModelIndex() : index(static_cast<int>(row - m_rows.begin()));
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
        const QString title = snippet->title();
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

bool SnippetsListModel::isMatch(Entry& entry) const {
    if (m_words.isEmpty()) {
        return true;
    }
    if (entry.folded.isNull()) {
        const QString title = entry.snippet->title();
        const QString text = entry.snippet->text();
        entry.folded.reserve(title.size() + 1 + text.size());
        appendFolded(entry.folded, title);
        entry.folded += QLatin1Char('\n');
        appendFolded(entry.folded, text);
    }
    return std::all_of(m_words.begin(), m_words.end(),
                       [&](const QString& word) { return entry.folded.contains(word); });
}

void SnippetsListModel::followDatabase() {
    followRecords();
    followList();
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

/// Takes over what came into a list of records and what left it. The notification does not say; but what is the same at
/// both ends of the list is found faster than a record is drawn.
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
        // The database makes no other class of record, and this program adds none.
        added.push_back(entryOf(std::static_pointer_cast<Snippet>(list[difference(index)])));
        now.push_back(added.back());
    }
    if (leaving.empty() && added.empty()) {
        return;
    }
    m_listed.insert(m_listed.erase(begin, end), now.begin(), now.end());

    if (!leaving.empty()) {
        std::unordered_set<const Entry*> gone;
        for (const auto& [record, entry] : leaving) {
            gone.insert(entry.get());
        }
        std::erase_if(m_entries, [&](const std::shared_ptr<Entry>& entry) { return gone.contains(entry.get()); });
    }
    const auto isNewer = [](const std::shared_ptr<Entry>& left, const std::shared_ptr<Entry>& right) {
        return left->created > right->created;
    };
    std::stable_sort(added.begin(), added.end(), isNewer);
    const auto middle = static_cast<std::ptrdiff_t>(m_entries.size());
    m_entries.insert(m_entries.end(), added.begin(), added.end());
    std::inplace_merge(m_entries.begin(), m_entries.begin() + middle, m_entries.end(), isNewer);
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
            entry->folded = QString();
            const bool wasMatch = std::exchange(entry->isMatch, isMatch(*entry));
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

/// Brings the rows to what m_entries has of matches: those that stay are left alone, the others come and go in runs.
void SnippetsListModel::showMatches() {
    Entries wanted;
    std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(wanted),
                 [](const std::shared_ptr<Entry>& entry) { return entry->isMatch; });

    std::unordered_set<const Entry*> staying;
    for (const std::shared_ptr<Entry>& entry : wanted) {
        staying.insert(entry.get());
    }
    const auto stays = [&](std::size_t row) { return staying.contains(m_rows[row].get()); };
    for (std::size_t end = m_rows.size(); end > 0;) {
        if (stays(end - 1)) {
            --end;
            continue;
        }
        std::size_t begin = end - 1;
        while (begin > 0 && !stays(begin - 1)) {
            --begin;
        }
        beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
        m_rows.erase(m_rows.begin() + static_cast<std::ptrdiff_t>(begin),
                     m_rows.begin() + static_cast<std::ptrdiff_t>(end));
        endRemoveRows();
        end = begin;
    }

    for (std::size_t begin = 0; begin < wanted.size();) {
        if (begin < m_rows.size() && m_rows[begin] == wanted[begin]) {
            ++begin;
            continue;
        }
        std::size_t end = begin + 1;
        while (end < wanted.size() && (begin >= m_rows.size() || m_rows[begin] != wanted[end])) {
            ++end;
        }
        beginInsertRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
        m_rows.insert(m_rows.begin() + static_cast<std::ptrdiff_t>(begin),
                      wanted.begin() + static_cast<std::ptrdiff_t>(begin),
                      wanted.begin() + static_cast<std::ptrdiff_t>(end));
        endInsertRows();
        begin = end;
    }
}

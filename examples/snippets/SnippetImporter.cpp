// SPDX-License-Identifier: MIT
#include "SnippetImporter.h"

#include "Snippet.h"
#include "SnippetListFile.h"

#include <VXKit/platform/foundation/AtomicFile.h>

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

const QString& passedOverFolder() {
    static const QString name = QStringLiteral("build");
    return name;
}

/// The length of the well-formed UTF-8 character that `bytes` begins with; 0 where it begins with none. `bytes` is not
/// empty.
std::size_t characterLength(std::string_view bytes) {
    const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) {
        return 0;
    }
    // The second byte's range depends on the lead: no overlong forms, no surrogates, nothing above U+10FFFF.
    const unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byteAt(1) < lowest || byteAt(1) > highest) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if ((byteAt(index) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

/// Why `bytes` are no text; a null string for text.
QString reasonAgainst(std::string_view bytes) {
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        if (bytes[offset] == '\0') {
            return QStringLiteral("is not text: NUL byte at offset %1").arg(offset);
        }
        const std::size_t length = characterLength(bytes.substr(offset));
        if (length == 0) {
            return QStringLiteral("is not UTF-8 text: invalid byte 0x%1 at offset %2")
                .arg(static_cast<unsigned char>(bytes[offset]), 2, 16, QLatin1Char('0'))
                .arg(offset);
        }
        offset += length;
    }
    return {};
}

QString tooLarge(qint64 size, qint64 largest) {
    const QLocale english(QLocale::English);
    return QStringLiteral("is larger than %1 (%2)")
        .arg(english.formattedDataSize(largest, 0), english.formattedDataSize(size, 1));
}

} // namespace

QString SnippetImportRefusal::description() const {
    QString line = name + QStringLiteral(": ") + reason;
    std::replace_if(
        line.begin(), line.end(), [](QChar character) { return character.category() == QChar::Other_Control; },
        QChar(QChar::ReplacementCharacter));
    return line;
}

SnippetImporter::SnippetImporter(std::shared_ptr<SnippetsDatabase> database) : m_database(std::move(database)) {}

SnippetImportResult SnippetImporter::importPaths(const QStringList& paths) {
    addPaths(paths);
    while (!isDone()) {
        takeStep();
    }
    return takeResult();
}

void SnippetImporter::addPaths(const QStringList& paths) {
    if (isDone() && m_next == 0) {
        forgetWhatIsHere();
        m_startTime = NSDate::date().timeIntervalSince1970();
    }
    std::vector<Place> places;
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isDir()) {
            places.push_back({.kind = Place::Kind::GivenFolder, .path = path, .name = path, .title = QString()});
        } else {
            places.push_back({.kind = Place::Kind::File, .path = path, .name = path, .title = info.fileName()});
        }
    }
    m_places.insert(m_places.begin(), places.rbegin(), places.rend());
}

void SnippetImporter::takeStep() {
    if (!m_places.empty()) {
        const Place place = std::move(m_places.back());
        m_places.pop_back();
        lookAt(place);
    } else if (m_nextListed < m_listed.size()) {
        importListed(std::exchange(m_listed[m_nextListed++], nullptr));
    } else if (m_next < m_found.size()) {
        const Found found = std::exchange(m_found[m_next++], {});
        if (found.refusal.isNull()) {
            importFile(found.path, found.name, found.title);
        } else {
            refuse(found.name, found.refusal);
        }
    }
}

SnippetImportResult SnippetImporter::takeResult() {
    m_result.wasStopped = !isDone();
    m_places.clear();
    m_found.clear();
    m_next = 0;
    m_listed.clear();
    m_nextListed = 0;
    forgetWhatIsHere();
    return std::exchange(m_result, {});
}

void SnippetImporter::lookAt(const Place& place) {
    const auto refuseLater = [&](const QString& reason) {
        m_found.push_back({.path = place.path, .name = place.name, .title = QString(), .refusal = reason});
    };
    switch (place.kind) {
    case Place::Kind::File:
        m_found.push_back({.path = place.path, .name = place.name, .title = place.title, .refusal = QString()});
        return;
    case Place::Kind::EndOfGivenFolder:
        if (m_found.size() == place.foundCount) {
            refuseLater(QStringLiteral("is a folder without files"));
        }
        return;
    case Place::Kind::GivenFolder:
        m_places.push_back({.kind = Place::Kind::EndOfGivenFolder,
                            .path = place.path,
                            .name = place.name,
                            .title = QString(),
                            .foundCount = m_found.size()});
        break;
    case Place::Kind::Folder:
        break;
    }
    const QFileInfo folder(place.path);
    if (folder.isReadable() && folder.isExecutable()) {
        lookInFolder(place);
    } else {
        refuseLater(QStringLiteral("is a folder that may not be read"));
    }
}

void SnippetImporter::lookInFolder(const Place& place) {
    const QFileInfoList entries =
        QDir(place.path)
            .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    const QString prefix = place.name.endsWith(QLatin1Char('/')) ? place.name : place.name + QLatin1Char('/');
    std::for_each(entries.rbegin(), entries.rend(), [&](const QFileInfo& entry) {
        const QString name = prefix + entry.fileName();
        const QString title = place.title + entry.fileName();
        if (!entry.isDir()) {
            m_places.push_back({.kind = Place::Kind::File, .path = entry.filePath(), .name = name, .title = title});
        } else if (!entry.isSymLink() && !entry.isHidden() && entry.fileName() != passedOverFolder()) {
            m_places.push_back({.kind = Place::Kind::Folder,
                                .path = entry.filePath(),
                                .name = name,
                                .title = title + QLatin1Char('/')});
        }
    });
}

void SnippetImporter::importFile(const QString& path, const QString& name, const QString& title) {
    const QFileInfo info(path);
    const bool mayBeList = info.suffix().compare(QStringLiteral("plist"), Qt::CaseInsensitive) == 0;
    const qint64 largest = mayBeList ? largestList : largestFile;
    if (info.isFile() && info.size() > largest) {
        // Reading refuses it too, but cannot tell how large it is.
        refuse(name, tooLarge(info.size(), largest));
        return;
    }
    NSError error;
    const std::optional<std::string> content = VXReadFile(path, &error, static_cast<std::size_t>(largest));
    if (!content) {
        const QString prefix = path + QStringLiteral(": ");
        const QString& reason = error.localizedDescription;
        refuse(name, reason.startsWith(prefix) ? reason.sliced(prefix.size()) : reason);
        return;
    }
    if (isSnippetList(*content)) {
        importList(*content, name);
        return;
    }
    if (static_cast<qint64>(content->size()) > largestFile) {
        refuse(name, tooLarge(static_cast<qint64>(content->size()), largestFile));
        return;
    }
    const QString reason = reasonAgainst(*content);
    if (!reason.isNull()) {
        refuse(name, reason);
        return;
    }
    std::string_view text = *content;
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    if (text.empty()) {
        refuse(name, QStringLiteral("is empty"));
        return;
    }
    double realID = 0.0;
    const std::shared_ptr<Snippet> snippet =
        _LTSnippet::emptySnippetWithUniqueIDStartingDate<Snippet>(freeTimeAtOrBefore(m_startTime), &realID);
    snippet->setTitle(title);
    snippet->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    snippet->updateModificationDateWithDate(NSDate::dateWithTimeIntervalSince1970(m_startTime));
    m_database->addSnippet(snippet);
    ++m_result.importedCount;
}

/// Only reads it; each of its snippets has a step of its own.
void SnippetImporter::importList(std::string_view bytes, const QString& name) {
    NSError error;
    std::optional<SnippetList> list = snippetListFrom(bytes, &error);
    if (!list) {
        refuse(name, QStringLiteral("is no whole list of snippets: ") + error.localizedDescription);
        return;
    }
    if (!list->badRecords.empty()) {
        refuse(name, list->badRecords.size() == 1
                         ? QStringLiteral("number %1 in it is no snippet").arg(list->badRecords.front())
                         : QStringLiteral("%1 in it are no snippets, the first one is number %2")
                               .arg(list->badRecords.size())
                               .arg(list->badRecords.front()));
    }
    if (m_listed.empty()) {
        for (const std::shared_ptr<_LTSnippet>& record : m_database->snippets()) {
            if (const std::optional<NSDate> identity = record->snippetID()) {
                m_here.insert(identity->timeIntervalSince1970(), std::static_pointer_cast<Snippet>(record));
            }
        }
    }
    m_listed.insert(m_listed.end(), std::make_move_iterator(list->snippets.begin()),
                    std::make_move_iterator(list->snippets.end()));
}

void SnippetImporter::importListed(const std::shared_ptr<Snippet>& snippet) {
    const std::optional<NSDate> identity = snippet->snippetID();
    const double time = identity ? identity->timeIntervalSince1970() : m_startTime;
    const std::shared_ptr<Snippet> here = identity ? m_here.value(time) : nullptr;
    if (here && here->title() == snippet->title() && here->utf8Text() == snippet->utf8Text() && isToStay(*here)) {
        const auto usesBefore = std::pair(here->useCount(), here->dateOfLastUse());
        here->takeUsesOf(*snippet);
        if (std::pair(here->useCount(), here->dateOfLastUse()) != usesBefore) {
            m_database->notifyOfModificationForSnippet(here);
        }
        ++m_result.knownCount;
        return;
    }
    const double freeTime = freeTimeAtOrBefore(time);
    if (!identity || freeTime != time) {
        snippet->setSnippetID(NSDate::dateWithTimeIntervalSince1970(freeTime));
    }
    const std::shared_ptr<Snippet> added = m_database->putBack(snippet);
    if (const std::optional<NSDate> given = added->snippetID()) {
        m_here.insert(given->timeIntervalSince1970(), added);
    }
    ++m_result.importedCount;
    ++m_result.listedCount;
}

/// Whether a snippet is in the database, or held back, and will be there after a sync.
bool SnippetImporter::isToStay(const Snippet& snippet) const {
    const std::optional<NSDate> identity = snippet.snippetID();
    // Of one in the main list, as most are, that is known without looking through it.
    const bool isInMainList = identity && m_database->existsItemWithID(*identity);
    return isInMainList ? !m_database->isLeaving(snippet) : m_database->holds(snippet);
}

void SnippetImporter::forgetWhatIsHere() {
    // What a sync holds back is in no list of the database's before its end, and may be imported once more until then.
    if (!m_database->holdsChangesBack()) {
        m_here.clear();
        m_nextTimes.clear();
    }
}

/// The first free instant going back from `wanted` in whole seconds. The database knows nothing of those that it holds
/// back during a sync.
double SnippetImporter::freeTimeAtOrBefore(double wanted) {
    const auto freeInDatabase = [this](double time) { return m_database->_freeTimeAtOrBefore(time); };
    double time = freeInDatabase(m_nextTimes.value(wanted, wanted));
    while (m_nextTimes.contains(time)) {
        time = freeInDatabase(m_nextTimes.value(time));
    }
    m_nextTimes.insert(time, time - 1);
    m_nextTimes.insert(wanted, time - 1);
    return time;
}

void SnippetImporter::refuse(const QString& name, const QString& reason) {
    m_result.refusals.push_back({.name = name, .reason = reason});
}

// SPDX-License-Identifier: MIT
#include "SnippetImporter.h"

#include "Snippet.h"

#include <VXKit/platform/foundation/AtomicFile.h>

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
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

QString tooLarge(qint64 size) {
    const QLocale english(QLocale::English);
    return QStringLiteral("is larger than %1 (%2)")
        .arg(english.formattedDataSize(SnippetImporter::largestFile, 0), english.formattedDataSize(size, 1));
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
    m_result = {};
    m_startTime = NSDate::date().timeIntervalSince1970();
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (!info.isDir()) {
            importFile(path, path, info.fileName());
            continue;
        }
        const std::size_t before = m_result.importedCount + m_result.refusals.size();
        importFolder(path, path, {});
        if (m_result.importedCount + m_result.refusals.size() == before) {
            refuse(path, QStringLiteral("is a folder without files"));
        }
    }
    return std::exchange(m_result, {});
}

void SnippetImporter::importFolder(const QString& path, const QString& name, const QString& titlePrefix) {
    const QFileInfo folder(path);
    if (!folder.isReadable() || !folder.isExecutable()) {
        refuse(name, QStringLiteral("is a folder that may not be read"));
        return;
    }
    const QFileInfoList entries =
        QDir(path).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        const QString entryName =
            name.endsWith(QLatin1Char('/')) ? name + entry.fileName() : name + QLatin1Char('/') + entry.fileName();
        const QString title = titlePrefix + entry.fileName();
        if (!entry.isDir()) {
            importFile(entry.filePath(), entryName, title);
        } else if (!entry.isSymLink() && !entry.isHidden() && entry.fileName() != passedOverFolder()) {
            importFolder(entry.filePath(), entryName, title + QLatin1Char('/'));
        }
    }
}

void SnippetImporter::importFile(const QString& path, const QString& name, const QString& title) {
    // Before it is read, because of files of gigabytes; and after, because a file may grow meanwhile, or be one of
    // those that the kernel makes up and calls empty.
    const QFileInfo info(path);
    if (info.isFile() && info.size() > largestFile) {
        refuse(name, tooLarge(info.size()));
        return;
    }
    NSError error;
    const std::optional<std::string> content = VXReadFile(path, &error);
    if (!content) {
        const QString prefix = path + QStringLiteral(": ");
        const QString& reason = error.localizedDescription;
        refuse(name, reason.startsWith(prefix) ? reason.sliced(prefix.size()) : reason);
        return;
    }
    if (static_cast<qint64>(content->size()) > largestFile) {
        refuse(name, tooLarge(static_cast<qint64>(content->size())));
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
        _LTSnippet::emptySnippetWithUniqueIDStartingDate<Snippet>(m_startTime, &realID);
    snippet->setTitle(title);
    snippet->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    snippet->updateModificationDateWithDate(NSDate::dateWithTimeIntervalSince1970(m_startTime));
    m_database->addSnippet(snippet);
    ++m_result.importedCount;
}

void SnippetImporter::refuse(const QString& name, const QString& reason) {
    m_result.refusals.push_back({.name = name, .reason = reason});
}

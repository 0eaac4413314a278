// SPDX-License-Identifier: MIT
#include "SnippetExporter.h"

#include "Snippet.h"
#include "SnippetListFile.h"

#include <VXKit/platform/foundation/AtomicFile.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr qsizetype longestFileName = 160; // bytes, with room for a number and an extension

QString systemReason(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

/// `name` with a number before its extension.
QString numberedName(const QString& name, int number) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return QStringLiteral("%1 %2%3").arg(name.first(dot)).arg(number).arg(name.sliced(dot));
}

/// Names that differ in their capitals alone are one on many file systems.
QString uniqueName(const QString& wanted, QSet<QString>& taken) {
    QString name = wanted;
    for (int number = 2; taken.contains(name.toCaseFolded()); ++number) {
        name = numberedName(wanted, number);
    }
    taken.insert(name.toCaseFolded());
    return name;
}

/// Brings all files of a folder to the disk at once; one by one it would take minutes for thousands.
bool bringToDisk(const QString& folder) {
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool isThere = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return isThere;
}

QString writeFiles(const std::vector<std::shared_ptr<Snippet>>& snippets, const QDir& folder) {
    QSet<QString> taken;
    for (const std::shared_ptr<Snippet>& snippet : snippets) {
        const QByteArray& text = snippet->utf8Text();
        NSError error;
        const QString path = folder.filePath(uniqueName(fileNameForTitle(snippet->title()), taken));
        if (!VXWriteFileInPlace(path, {text.constData(), static_cast<std::size_t>(text.size())}, &error)) {
            return error.localizedDescription;
        }
        const std::optional<NSDate> modified =
            snippet->dateOfModification() ? snippet->dateOfModification() : snippet->snippetID();
        QFile file(path);
        if (modified && file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)) {
            // A file system without such dates does no harm.
            file.setFileTime(
                QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(modified->timeIntervalSince1970() * 1000)),
                QFileDevice::FileModificationTime);
        }
    }
    return {};
}

} // namespace

SnippetExportResult exportToPropertyList(const std::vector<std::shared_ptr<Snippet>>& snippets, const QString& path) {
    NSError error;
    const std::optional<std::string> bytes = bytesOfSnippetList(snippets, &error);
    if (!bytes || !VXWriteFileAtomically(path, *bytes, &error)) {
        return {.count = 0, .problem = error.localizedDescription};
    }
    return {.count = snippets.size(), .problem = {}};
}

SnippetExportResult exportToFolder(const std::vector<std::shared_ptr<Snippet>>& snippets, const QString& path) {
    const QFileInfo target(path);
    // Beside the target, from where it can be moved in one step.
    const QTemporaryDir place(target.absolutePath() + QStringLiteral("/.snippets-XXXXXX"));
    if (!place.isValid()) {
        return {.count = 0, .problem = target.absolutePath() + QStringLiteral(": ") + place.errorString()};
    }
    const QDir folder(place.filePath(QStringLiteral("texts")));
    if (!folder.mkpath(QStringLiteral("."))) {
        return {.count = 0, .problem = folder.path() + QStringLiteral(": cannot be made")};
    }
    const QString problem = writeFiles(snippets, folder);
    if (!problem.isEmpty()) {
        return {.count = 0, .problem = problem};
    }
    if (!bringToDisk(folder.path()) || std::rename(QFile::encodeName(folder.path()).constData(),
                                                   QFile::encodeName(target.absoluteFilePath()).constData()) != 0) {
        const int reason = errno;
        return {.count = 0, .problem = path + QStringLiteral(": ") + systemReason(reason)};
    }
    return {.count = snippets.size(), .problem = {}};
}

QString fileNameForTitle(const QString& title) {
    // What the file systems of other computers refuse is left out as well.
    static const QRegularExpression refused(QStringLiteral(R"([\x00-\x1f\x7f/\\:*?"<>|]+)"));
    static const QRegularExpression dotsAndBlanks(QStringLiteral(R"(^[\s.]+|[\s.]+$)"));
    static const QRegularExpression extension(QStringLiteral(R"(^.*[^.\s]\.[A-Za-z][A-Za-z0-9]{0,4}$)"));
    QString name = QString(title).replace(refused, QStringLiteral("-")).remove(dotsAndBlanks).simplified();
    const bool hasExtension = extension.match(name).hasMatch();
    const QString ending = hasExtension ? name.sliced(name.lastIndexOf(QLatin1Char('.'))) : QStringLiteral(".txt");
    if (hasExtension) {
        name.chop(ending.size());
    }
    while (name.toUtf8().size() > longestFileName) {
        name.chop(name.back().isLowSurrogate() ? 2 : 1);
    }
    name = name.trimmed();
    return (name.isEmpty() ? QStringLiteral("Untitled") : name) + ending;
}

// SPDX-License-Identifier: MIT
#include "SnippetExporter.h"

#include "Snippet.h"
#include "SnippetListFile.h"
#include "TitleText.h"

#include <VXKit/platform/foundation/AtomicFile.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr qsizetype longestFileName = 160; // bytes, with room for a number and an extension
constexpr qsizetype mostOfTitle = 1024;    // characters that are looked at

QString systemReason(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

/// `name` with a number before its extension.
QString numberedName(const QString& name, int number) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return QStringLiteral("%1 %2%3").arg(name.first(dot)).arg(number).arg(name.sliced(dot));
}

/// Names for files in one folder. Those that differ in their capitals alone are one on many file systems.
class UniqueNames {
public:
    QString nameFor(const QString& wanted) {
        const QString folded = wanted.toCaseFolded();
        if (!m_lastNumbers.contains(folded)) {
            m_lastNumbers.insert(folded, 1);
            return wanted;
        }
        int number = m_lastNumbers.value(folded);
        QString name;
        do {
            name = numberedName(wanted, ++number);
        } while (m_lastNumbers.contains(name.toCaseFolded()));
        m_lastNumbers.insert(folded, number);
        m_lastNumbers.insert(name.toCaseFolded(), 1);
        return name;
    }

private:
    QHash<QString, int> m_lastNumbers; // that were tried, by the folded names that are taken
};

/// Where the content of a file lies, or will lie when it is made.
QString placeAfterLinks(const QString& path) {
    constexpr int mostLinks = 40; // as many as the system follows
    QFileInfo info(path);
    for (int links = 0; links < mostLinks && info.isSymLink(); ++links) {
        info.setFile(info.symLinkTarget());
    }
    return QDir(QFileInfo(info.absolutePath()).canonicalFilePath()).filePath(info.fileName());
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
    UniqueNames names;
    for (const std::shared_ptr<Snippet>& snippet : snippets) {
        const QByteArray& text = snippet->utf8Text();
        NSError error;
        const QString path = folder.filePath(names.nameFor(fileNameForTitle(snippet->title())));
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

bool leadToOneFile(const QString& path, const QString& other) {
    const auto state = VXStateOfFile(QFile::encodeName(path));
    const auto otherState = VXStateOfFile(QFile::encodeName(other));
    if (state && otherState) {
        return state->device == otherState->device && state->inode == otherState->inode;
    }
    return placeAfterLinks(path) == placeAfterLinks(other);
}

QString fileNameForTitle(const QString& title) {
    // What the file systems of other computers refuse is left out as well.
    static const QRegularExpression refused(QStringLiteral(R"([\x00-\x1f\x7f/\\:*?"<>|]+)"));
    static const QRegularExpression dotsAndBlanks(QStringLiteral(R"(^[\s.]+|[\s.]+$)"));
    static const QRegularExpression extension(QStringLiteral(R"(^.*[^.\s]\.[A-Za-z][A-Za-z0-9]{0,4}$)"));
    QString name = beginning(title, mostOfTitle)
                       .toString()
                       .replace(refused, QStringLiteral("-"))
                       .remove(dotsAndBlanks)
                       .simplified();
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

// SPDX-License-Identifier: MIT
#include <VXKit/support/_VXCrashFiles.h>

#include <VXKit/support/_VXCrashFormat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t mostKept = 10;
constexpr mode_t ownFolderMode = 0700;

} // namespace

bool VXMakeCrashFolder(const QString& path, NSError* error) {
    const QByteArray name = QFile::encodeName(path);
    if (!QFileInfo(path).isDir()) {
        QDir().mkpath(QFileInfo(path).path());
    }
    struct stat status {};
    const bool isThere = ::mkdir(name.constData(), ownFolderMode) == 0 ||
                         (errno == EEXIST && ::stat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode));
    if (isThere && ::access(name.constData(), W_OK | X_OK) == 0) {
        return true;
    }
    NSSetError(error, QStringLiteral("%1: cannot keep records of crashes there: %2")
                          .arg(path, QString::fromLocal8Bit(std::strerror(errno))));
    return false;
}

std::vector<QByteArray> VXCrashFiles(const QString& path) {
    static const QRegularExpression name(QStringLiteral("\\Acrash-[0-9]{1,10}-([0-9]{1,20})%1\\z")
                                             .arg(QRegularExpression::escape(QLatin1StringView(VXCrashFileSuffix))));
    const QDir folder(path);
    std::vector<std::pair<qulonglong, QByteArray>> found;
    for (const QString& entry :
         folder.entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot)) {
        if (const auto match = name.match(entry); match.hasMatch()) {
            found.emplace_back(match.captured(1).toULongLong(), QFile::encodeName(folder.absoluteFilePath(entry)));
        }
    }
    std::sort(found.rbegin(), found.rend());
    std::vector<QByteArray> files;
    files.reserve(found.size());
    for (auto& [time, file] : found) {
        files.push_back(std::move(file));
    }
    return files;
}

void VXRemoveSurplusCrashFiles(const QString& path) {
    std::size_t kept = 0;
    for (const QByteArray& file : VXCrashFiles(path)) {
        struct stat status {};
        const bool isOurs =
            ::lstat(file.constData(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
        if (isOurs && ++kept > mostKept) {
            ::unlink(file.constData());
        }
    }
}

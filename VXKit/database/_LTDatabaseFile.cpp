// SPDX-License-Identifier: MIT
#include <VXKit/database/_LTDatabaseFile.h>

#include <VXKit/platform/foundation/NSDate.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSPropertyListSerialization.h>
#include <VXKit/support/VXLog.h>

#include <QDateTime>
#include <QFile>
#include <QHashFunctions>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t mostCopies = 10;
constexpr int mostAttempts = 1000;         // at a name that nobody has
constexpr qsizetype longestVersion = 24;   // characters
constexpr qsizetype longestName = 255;     // bytes, on every usual file system
constexpr qsizetype longestRemark = 120;   // bytes of what stands in a copy's name beside that of the file
constexpr qsizetype longestExtension = 20; // bytes; what is longer after a dot is a part of the name

/// How old a file must be for its times to tell every later change of it: the coarsest clock of a file system, that of
/// FAT, ticks every two seconds.
constexpr double coarsestTick = 2.0;           // seconds
constexpr double nanosecondsPerSecond = 1.0e9; // of the times in a file's state

QString nameOf(const QByteArray& path) {
    return QFile::decodeName(path);
}

/// The time in a copy's name, and its number among those of that second.
using CopyAge = std::pair<QString, int>;

struct Copy {
    CopyAge age;
    QByteArray path;
};

/// The name of a file and of the copies that are set aside from it.
class CopyNames {
public:
    explicit CopyNames(const QByteArray& file) {
        const qsizetype nameBegin = file.lastIndexOf('/') + 1;
        m_folder = nameBegin == 0 ? QByteArray("./") : file.left(nameBegin);
        const QByteArray name = file.mid(nameBegin);
        // A dot at the beginning hides a file and begins no extension.
        const qsizetype dot = name.lastIndexOf('.');
        const bool hasExtension = dot > 0 && name.size() - dot <= longestExtension;
        m_stem = hasExtension ? name.left(dot) : name;
        m_extension = hasExtension ? name.mid(dot) : QByteArray();
        qsizetype room = longestName - longestRemark - m_extension.size();
        while (room < m_stem.size() && (static_cast<unsigned char>(m_stem[room]) & 0xC0U) == 0x80U) {
            --room; // no half of a character
        }
        m_stem.truncate(room);
    }

    [[nodiscard]] const QByteArray& folder() const { return m_folder; }

    /// The path of a copy; `number` counts from 1 those of one second.
    [[nodiscard]] QByteArray path(const QString& remark, int number) const {
        const QByteArray numbered = number == 1 ? QByteArray() : ", " + QByteArray::number(number);
        return m_folder + m_stem + " (" + remark.toUtf8() + numbered + ')' + m_extension;
    }

    /// What sorts the copy of this name among the others, by its time; nothing where the name is not that of a copy.
    [[nodiscard]] std::optional<CopyAge> ageOf(const QByteArray& name) const {
        static const QRegularExpression pattern(
            QStringLiteral(R"(\A(?:changed elsewhere|unreadable|version [\p{L}\p{N}._-]{1,24}))"
                           R"( (\d{4}-\d\d-\d\d \d\d\.\d\d\.\d\d)(?:, ([1-9]\d{0,3}))?\z)"));
        const QByteArray before = m_stem + " (";
        const QByteArray after = ')' + m_extension;
        if (name.size() < before.size() + after.size() || !name.startsWith(before) || !name.endsWith(after)) {
            return std::nullopt;
        }
        const QByteArray remark = name.mid(before.size(), name.size() - before.size() - after.size());
        const QRegularExpressionMatch match = pattern.match(QString::fromUtf8(remark));
        if (!match.hasMatch()) {
            return std::nullopt;
        }
        return CopyAge(match.captured(1), std::max(match.captured(2).toInt(), 1));
    }

private:
    QByteArray m_folder; // with a slash at its end
    QByteArray m_stem;
    QByteArray m_extension;
};

/// Copies the bytes of `file` to `copy`, which must not be there yet. False with the reason in errno or `error`.
bool copyFile(const QByteArray& file, const QByteArray& copy, NSError& error) {
    struct stat status {};
    if (::stat(file.constData(), &status) != 0) {
        return false;
    }
    const int reserved = ::open(copy.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777);
    if (reserved < 0) {
        return false;
    }
    ::close(reserved);
    const std::optional<std::string> bytes = VXReadFile(nameOf(file), &error);
    if (bytes && VXWriteFileAtomically(nameOf(copy), *bytes, &error)) {
        return true;
    }
    ::unlink(copy.constData());
    errno = EIO;
    return false;
}

/// The copies of a file that there are, the oldest first.
std::vector<Copy> copiesOf(const CopyNames& names) {
    std::vector<Copy> copies;
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(names.folder().constData()), ::closedir);
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        std::optional<CopyAge> age = names.ageOf(entry->d_name);
        struct stat status {};
        if (age && ::fstatat(::dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            copies.push_back({*std::move(age), names.folder() + entry->d_name});
        }
    }
    std::sort(copies.begin(), copies.end(), [](const Copy& left, const Copy& right) { return left.age < right.age; });
    return copies;
}

/// Removes the oldest of `copies` so that there is room for one more.
void makeRoom(const std::vector<Copy>& copies) {
    for (std::size_t index = 0; index + mostCopies <= copies.size(); ++index) {
        if (::unlink(copies[index].path.constData()) != 0) {
            NSLog("%@: cannot be removed: %s", nameOf(copies[index].path), std::strerror(errno));
        }
    }
}

/// Gives the content of `file` a name of its own beside it, with `reason` in it. Answers that name, which is empty
/// where it did not work.
bool setAside(const QByteArray& file, const CopyNames& names, const QString& reason) {
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    // After the last of this second, and not where one was removed, so that the numbers tell which is older.
    int number = 1;
    const std::vector<Copy> copies = copiesOf(names);
    for (const Copy& copy : copies) {
        if (copy.age.first == time) {
            number = copy.age.second + 1;
        }
    }
    makeRoom(copies);
    NSError error;
    for (const int end = number + mostAttempts; number < end; ++number) {
        const QByteArray copy = names.path(reason + QLatin1Char(' ') + time, number);
        // Not every file system has second names, and not every file may get one.
        if (::link(file.constData(), copy.constData()) == 0 || (errno != EEXIST && copyFile(file, copy, error))) {
            VXLog("%@ was set aside", nameOf(copy));
            return true;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    NSLog("%@: the version on disk could not be set aside before it was overwritten: %@", nameOf(file),
          error.localizedDescription.isEmpty() ? QString::fromLocal8Bit(std::strerror(errno))
                                               : error.localizedDescription);
    return false;
}

} // namespace

std::optional<NSDictionary> _LTDatabaseFile::read(const QString& path) {
    forget(path);
    const std::optional<VXFileState> before = VXStateOfFile(QFile::encodeName(path));
    NSError error;
    const std::optional<std::string> bytes = VXReadFile(path, &error);
    m_state = VXStateOfFile(QFile::encodeName(path));
    noteUnreadable();
    if (!bytes) {
        NSLog("Cannot read a dictionary: %@", error.localizedDescription);
        return std::nullopt;
    }
    m_content = contentOf(*bytes);
    if (m_state) {
        const double lastTouched = double(std::max(m_state->modified, m_state->changed)) / nanosecondsPerSecond;
        m_stateTellsEveryChange =
            before == m_state && NSDate::date().timeIntervalSince1970() - lastTouched > coarsestTick;
    }
    std::optional<NSPropertyList> value = NSPropertyListSerialization::propertyListWithData(*bytes, nullptr, &error);
    if (!value) {
        NSLog("Cannot read a dictionary: %@: %@", path, error.localizedDescription);
        return std::nullopt;
    }
    auto* dictionary = value->as<NSDictionary>();
    if (!dictionary) {
        NSLog("Cannot read a dictionary: %@: another kind of value stands at the top", path);
        return std::nullopt;
    }
    m_whatIsLost.clear();
    return std::move(*dictionary);
}

void _LTDatabaseFile::noteUnreadable() {
    m_whatIsLost = QStringLiteral("unreadable");
}

void _LTDatabaseFile::noteVersion(const QString& version) {
    QString plain = version.left(longestVersion);
    std::replace_if(
        plain.begin(), plain.end(),
        [](QChar character) { return !character.isLetterOrNumber() && !QStringLiteral("._-").contains(character); },
        QChar(u'_'));
    m_whatIsLost = QStringLiteral("version ") + (plain.isEmpty() ? QStringLiteral("_") : plain);
}

bool _LTDatabaseFile::write(const QString& path, const NSDictionary& dictionary) {
    if (path != m_path) {
        forget(path);
    }
    NSError error;
    const std::optional<std::string> bytes = NSPropertyListSerialization::dataWithPropertyList(dictionary, &error);
    if (!bytes) {
        NSLog("Cannot write a dictionary: %@: %@", path, error.localizedDescription);
        return false;
    }
    VXReplacement replacement;
    replacement.aboutToReplace = [this](const QByteArray& file) { setAsideIfNeeded(file); };
    const bool isWritten = VXWriteFileAtomically(path, *bytes, replacement, &error);
    if (!isWritten) {
        NSLog("Cannot write a dictionary: %@", error.localizedDescription);
    }
    if (replacement.written) {
        m_state = replacement.written;
        m_stateTellsEveryChange = replacement.stateTellsEveryChange;
        m_content = contentOf(*bytes);
        m_whatIsLost.clear();
    }
    return isWritten;
}

void _LTDatabaseFile::forget(const QString& path) {
    *this = _LTDatabaseFile();
    m_path = path;
}

_LTDatabaseFile::Content _LTDatabaseFile::contentOf(std::string_view bytes) {
    return {bytes.size(), qHashBits(bytes.data(), bytes.size())};
}

/// Whether `file` holds something else than what was last read from it or written to it. Its content is looked at only
/// in doubt.
bool _LTDatabaseFile::isChanged(const QByteArray& file, const VXFileState& state) const {
    if (state == m_state && m_stateTellsEveryChange) {
        return false;
    }
    if (!m_content) {
        return state != m_state;
    }
    if (state.size != static_cast<std::int64_t>(m_content->size)) {
        return true;
    }
    const std::optional<std::string> bytes = VXReadFile(nameOf(file), nullptr);
    return !bytes || contentOf(*bytes) != *m_content;
}

/// Sets `file` aside, which is about to be replaced, where something would be lost.
void _LTDatabaseFile::setAsideIfNeeded(const QByteArray& file) {
    const std::optional<VXFileState> state = VXStateOfFile(file);
    if (!state) {
        return;
    }
    const QString reason = isChanged(file, *state) ? QStringLiteral("changed elsewhere") : m_whatIsLost;
    if (reason.isEmpty() || !setAside(file, CopyNames(file), reason)) {
        return;
    }
    // Where the replacement fails now, the same version need not be set aside again at the next attempt.
    m_state = VXStateOfFile(file);
    m_stateTellsEveryChange = true;
    m_content.reset();
    m_whatIsLost.clear();
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/AtomicFile.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/// What a file that is being written is called until it is complete; mkostemp fills in the last six characters.
constexpr std::string_view temporaryName = ".vxkit-XXXXXX";
constexpr std::size_t madeUpCharacters = 6;

constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr std::int64_t nanosecondsPerDay = nanosecondsPerSecond * 24 * 60 * 60;

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

    /// Closes and tells whether that went well: some file systems report a full disk only here.
    bool close() {
        const int descriptor = std::exchange(m_descriptor, -1);
        return descriptor < 0 || ::close(descriptor) == 0;
    }

private:
    int m_descriptor;
};

/// A failed step, in words: "/home/me/a.plist: cannot write: No space left on device".
QString failure(const QByteArray& path, const char* step) {
    return QStringLiteral("%1: cannot %2: %3")
        .arg(QFile::decodeName(path), QString::fromLatin1(step), QString::fromLocal8Bit(std::strerror(errno)));
}

/// Where the content of `path` really lies: the end of its chain of links, the last of which may lead to a file that
/// is not there yet. Empty when the chain is a circle or cannot be followed.
QByteArray targetOfLinks(QByteArray path) {
    for (int links = 0; links < 40; ++links) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.constData(), target, sizeof target);
        if (length < 0) {
            return errno == EINVAL || errno == ENOENT ? path : QByteArray();
        }
        const QByteArray next(target, length);
        const qsizetype slash = path.lastIndexOf('/');
        path = next.startsWith('/') || slash < 0 ? next : path.left(slash + 1) + next;
    }
    errno = ELOOP;
    return {};
}

bool writeAll(int descriptor, std::string_view bytes) {
    // In pieces, each handed to the disk while the next is copied, so that the sync at the end has little left to do.
    constexpr std::size_t pieceSize = std::size_t{4} * 1024 * 1024;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), std::min(bytes.size(), pieceSize));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            errno = written == 0 ? ENOSPC : errno;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
        if (!bytes.empty()) {
            ::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
        }
    }
    return true;
}

bool syncFolder(const QByteArray& folder) {
    const FileDescriptor descriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot sync a folder and say so with EINVAL; there the rename is as durable as it gets.
    return descriptor.isOpen() && (::fsync(descriptor.get()) == 0 || errno == EINVAL);
}

std::int64_t nanosecondsOf(const timespec& time) {
    return std::int64_t{time.tv_sec} * nanosecondsPerSecond + time.tv_nsec;
}

timespec currentTime() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

VXFileState stateIn(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, nanosecondsOf(status.st_mtim), nanosecondsOf(status.st_ctim)};
}

/// Gives a file that was just written a time of modification to the microsecond; answers whether it has it now.
bool setExactTime(int descriptor) {
    constexpr long nanosecondsPerMicrosecond = 1000;
    timespec times[] = {{0, UTIME_OMIT}, currentTime()};
    times[1].tv_nsec -= times[1].tv_nsec % nanosecondsPerMicrosecond;
    struct stat status {};
    return ::futimens(descriptor, times) == 0 && ::fstat(descriptor, &status) == 0 &&
           nanosecondsOf(status.st_mtim) == nanosecondsOf(times[1]);
}

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : path.left(std::max<qsizetype>(slash, 1));
}

bool isTemporaryName(std::string_view name) {
    const std::string_view fixed = temporaryName.substr(0, temporaryName.size() - madeUpCharacters);
    return name.size() == temporaryName.size() && name.starts_with(fixed) &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(fixed.size()), name.end(), [](char character) {
               return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                      (character >= 'a' && character <= 'z');
           });
}

mode_t currentUmask() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

} // namespace

bool VXWriteFileAtomically(const QString& path, std::string_view bytes, NSError* error) {
    VXReplacement replacement;
    return VXWriteFileAtomically(path, bytes, replacement, error);
}

bool VXWriteFileAtomically(const QString& path, std::string_view bytes, VXReplacement& replacement, NSError* error) {
    const QByteArray given = QFile::encodeName(path);
    const auto fail = [&](const char* step) {
        NSSetError(error, failure(given, step));
        return false;
    };
    if (given.isEmpty() || given.contains('\0')) {
        errno = EINVAL;
        return fail("write a file of that name");
    }
    const QByteArray target = targetOfLinks(given);
    if (target.isEmpty()) {
        return fail("follow its links");
    }

    struct stat old {};
    const bool exists = ::stat(target.constData(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        errno = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;
        return fail("replace it");
    }

    const qsizetype slash = target.lastIndexOf('/');
    QByteArray temporary = slash < 0 ? QByteArray() : target.left(slash + 1);
    temporary.append(temporaryName.data(), static_cast<qsizetype>(temporaryName.size()));
    FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        return fail("create a file beside it");
    }
    const auto giveUp = [&](const char* step) {
        const int reason = errno;
        ::unlink(temporary.constData());
        errno = reason;
        return fail(step);
    };

    // The owner first: giving a file away clears its set-id bits. A process that may not give files away keeps its own
    // name on the new one, as every editor does.
    if (exists && (old.st_uid != ::geteuid() || old.st_gid != ::getegid())) {
        [[maybe_unused]] const int ignored = ::fchown(file.get(), old.st_uid, old.st_gid);
    }
    const mode_t mode = exists ? (old.st_mode & 07777) : (0666 & ~currentUmask());
    if (::fchmod(file.get(), mode) != 0) {
        return giveUp("set the mode of the file beside it");
    }
    if (!writeAll(file.get(), bytes)) {
        return giveUp("write");
    }
    const bool hasExactTime = setExactTime(file.get());
    if (::fsync(file.get()) != 0) {
        return giveUp("bring it to the disk");
    }
    // To know this very file again when its name has changed, whoever may have put another in its place by then.
    const FileDescriptor written(::open(temporary.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!file.close()) {
        return giveUp("bring it to the disk");
    }
    struct stat complete {};
    const bool knowsState = written.isOpen() && ::fstat(written.get(), &complete) == 0;
    if (replacement.aboutToReplace) {
        replacement.aboutToReplace(target);
    }
    if (::rename(temporary.constData(), target.constData()) != 0) {
        return giveUp("replace it");
    }
    struct stat inPlace {};
    if (knowsState && ::fstat(written.get(), &inPlace) == 0) {
        // The new name has changed the time of change, and nothing else: anything else was somebody else's doing.
        VXFileState state = stateIn(complete);
        if (inPlace.st_size == complete.st_size && nanosecondsOf(inPlace.st_mtim) == state.modified) {
            state.changed = nanosecondsOf(inPlace.st_ctim);
        }
        replacement.written = state;
        replacement.stateTellsEveryChange = hasExactTime;
    }
    return syncFolder(folderOf(target)) || fail("bring its folder to the disk");
}

std::optional<VXFileState> VXStateOfFile(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return stateIn(status);
}

void VXRemoveLeftoversOfAtomicWrites(const QString& path) {
    const QByteArray target = targetOfLinks(QFile::encodeName(path));
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(folderOf(target).constData()), ::closedir);
    if (target.isEmpty() || !folder) {
        return;
    }
    const std::int64_t now = nanosecondsOf(currentTime());
    while (const dirent* entry = ::readdir(folder.get())) {
        struct stat status {};
        if (isTemporaryName(entry->d_name) &&
            ::fstatat(::dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
            now - nanosecondsOf(status.st_mtim) > nanosecondsPerDay) {
            ::unlinkat(::dirfd(folder.get()), entry->d_name, 0);
        }
    }
}

bool VXWriteFileInPlace(const QString& path, std::string_view bytes, NSError* error) {
    const QByteArray name = QFile::encodeName(path);
    const auto fail = [&](const char* step) {
        NSSetError(error, failure(name, step));
        return false;
    };
    if (name.isEmpty() || name.contains('\0')) {
        errno = EINVAL;
        return fail("write a file of that name");
    }
    // Without O_NONBLOCK, opening a pipe waits for somebody to read from it.
    FileDescriptor file(::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666));
    if (!file.isOpen()) {
        return fail("open");
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        return fail("write");
    }
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return fail("write to what is no file");
    }
    if (::ftruncate(file.get(), 0) != 0) {
        return fail("empty");
    }
    return (writeAll(file.get(), bytes) && file.close()) || fail("write");
}

std::optional<std::string> VXReadFile(const QString& path, NSError* error, std::size_t most) {
    const QByteArray name = QFile::encodeName(path);
    const auto fail = [&](const char* step) {
        NSSetError(error, failure(name, step));
        return std::nullopt;
    };
    if (name.isEmpty() || name.contains('\0')) {
        errno = ENOENT;
        return fail("read a file of that name");
    }
    // Without O_NONBLOCK, opening a pipe waits for somebody to write into it.
    const FileDescriptor file(::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        return fail("open");
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        return fail("read");
    }
    if (!S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return fail("read as a file");
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    const auto refuseAsTooLarge = [&] {
        errno = EFBIG;
        return fail("read so much");
    };
    if (size > most) {
        return refuseAsTooLarge();
    }
    // One byte more than it is said to hold, so that its end is met without growing.
    std::string content(size + 1, '\0');
    std::size_t filled = 0;
    for (;;) {
        if (filled > most) {
            return refuseAsTooLarge();
        }
        if (filled == content.size()) {
            content.resize(most / 2 < filled ? most + 1 : 2 * filled);
        }
        const ssize_t count = ::read(file.get(), content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return fail("read");
        }
        if (count == 0) {
            content.resize(filled);
            return content;
        }
        filled += static_cast<std::size_t>(count);
    }
}

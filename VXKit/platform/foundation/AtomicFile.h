// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSError.h>

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

/// Replaces the content of the file at `path` with `bytes` so that whoever opens it, after a crash or a power cut too,
/// finds the old content whole or the new content whole.
///
/// Links are followed: the file they lead to is replaced and the links stay. An existing file keeps its mode and, where
/// the process may set it, its owner; a new one gets mode 0666 less the umask. True once the new content and its name
/// have reached the disk. False, with the reason in `error`, leaves nothing beside the file, and the old content in it
/// but for one case: when only bringing the folder to the disk failed, the new content is in place and a power cut may
/// bring the old one back. AppKit: the atomic form of `-writeToFile:options:error:`.
[[nodiscard]] VXKIT_EXPORT bool VXWriteFileAtomically(const QString& path, std::string_view bytes, NSError* error);

/// What can be told about a regular file without reading it. Times are in nanoseconds since 1970.
struct VXFileState {
    std::uint64_t device = 0;  ///< number of the file system that it lies on
    std::uint64_t inode = 0;   ///< its number there
    std::int64_t size = 0;     ///< in bytes
    std::int64_t modified = 0; ///< when its content was last written; programs may set it to what they like
    std::int64_t changed = 0;  ///< when anything about it last changed, a link to it included; nobody can set it

    /// Whether nothing can be told apart: in all likelihood the same content.
    friend bool operator==(const VXFileState&, const VXFileState&) = default;
};

/// The state of the regular file at `path`, in the encoding of file names (links are followed); nothing where there is
/// none.
[[nodiscard]] VXKIT_EXPORT std::optional<VXFileState> VXStateOfFile(const QByteArray& path);

/// The moment of an atomic write when the new content takes the place of the old, for whoever wants to look after the
/// old one and to know the new one again.
struct VXReplacement {
    /// Called when the new content is complete and on the disk, right before its file takes the place of the one at
    /// `target` (the end of the chain of links, in the encoding of file names), if there is any.
    std::function<void(const QByteArray& target)> aboutToReplace;

    /// Filled once the new content is in place.
    std::optional<VXFileState> written;

    /// Whether whoever writes to the file later, at whatever moment, leaves it in another state than `written`: the
    /// write gives it a time of modification to the microsecond, which no clock tick has. Not so on file systems that
    /// keep coarser times.
    bool stateTellsEveryChange = false;
};

/// The same, with a look at the moment of replacement.
[[nodiscard]] VXKIT_EXPORT bool VXWriteFileAtomically(const QString& path, std::string_view bytes,
                                                      VXReplacement& replacement, NSError* error);

/// Removes what atomic writes of this user's that never came to their end, because the process was killed or the power
/// went, have left beside the file at `path` (links are followed). Only files that nobody has touched for a day go, so
/// that a write which is going on in another process keeps its own.
VXKIT_EXPORT void VXRemoveLeftoversOfAtomicWrites(const QString& path);

/// Writes `bytes` over the content of the file at `path`, which is made where there is none. Whoever reads it
/// meanwhile, or after a crash, may find half of it, so this is for files that somebody else can make again. False,
/// with the reason in `error`, when not all of it was written. AppKit: the form of `-writeToFile:options:error:` that
/// is not atomic.
[[nodiscard]] VXKIT_EXPORT bool VXWriteFileInPlace(const QString& path, std::string_view bytes, NSError* error);

/// The whole content of the regular file at `path` (links are followed), or nothing with the reason in `error`. A
/// folder, a pipe or a device is refused without being waited for, and so is a file with more than `most` bytes,
/// whatever size it claims: one that the kernel makes up calls itself empty and may have no end.
[[nodiscard]] VXKIT_EXPORT std::optional<std::string>
VXReadFile(const QString& path, NSError* error, std::size_t most = std::numeric_limits<std::size_t>::max());

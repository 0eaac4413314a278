// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSError.h>

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

/// Writes `bytes` over the content of the file at `path`, which is made where there is none. Whoever reads it
/// meanwhile, or after a crash, may find half of it, so this is for files that somebody else can make again. False,
/// with the reason in `error`, when not all of it was written. AppKit: the form of `-writeToFile:options:error:` that
/// is not atomic.
[[nodiscard]] VXKIT_EXPORT bool VXWriteFileInPlace(const QString& path, std::string_view bytes, NSError* error);

/// The whole content of the regular file at `path` (links are followed), or nothing with the reason in `error`. A
/// folder, a pipe or a device is refused without being waited for.
[[nodiscard]] VXKIT_EXPORT std::optional<std::string> VXReadFile(const QString& path, NSError* error);

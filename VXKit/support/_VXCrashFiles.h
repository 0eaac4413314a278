// SPDX-License-Identifier: MIT
// The folder that records of crashes lie in.
#pragma once

#include <VXKit/platform/foundation/NSError.h>

#include <QByteArray>
#include <QString>

#include <vector>

/// Makes the folder at `path`, for this user only, where there is none; false, with the reason in `error`, where
/// nothing can be written into what is there.
[[nodiscard]] bool VXMakeCrashFolder(const QString& path, NSError* error);

/// The paths of what is named as a record in the folder at `path`, in the encoding of file names, newest first by name.
[[nodiscard]] std::vector<QByteArray> VXCrashFiles(const QString& path);

/// Removes the regular files of this user's that are named as records, but for the newest ten.
void VXRemoveSurplusCrashFiles(const QString& path);

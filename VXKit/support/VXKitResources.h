// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

#include <memory>

class NSBundle;
class NSImage;

/// The bundle of the kit's own resources (nibs, images, help files), or null when they were not compiled in. Lives as
/// long as the process; the caller does not own it.
[[nodiscard]] VXKIT_EXPORT NSBundle* VXKitBundle();

/// The image `name` (with or without extension) of the kit's own resources.
///
/// Drawing code may ask on every redraw: each file has one image, made on the first call and kept as long as the
/// process lives, and its file is read when it is first drawn. A name that the kit does not hold is a programming
/// error and throws an NSException named NSInvalidArgumentException. Main thread only.
[[nodiscard]] VXKIT_EXPORT std::shared_ptr<NSImage> VXKitImage(const QString& name);

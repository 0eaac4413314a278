// SPDX-License-Identifier: MIT
// The size of the window and where it is divided, as the user left them.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

#include <optional>

class QSplitter;

/// The size that was kept; nothing where that is none.
[[nodiscard]] std::optional<NSSize> keptWindowSize();

/// Divides the window as that was kept.
void restoreDivision(QSplitter& splitter);

/// Keeps both for the next launch.
void keepWindowLayout(const NSSize& size, const QSplitter& splitter);

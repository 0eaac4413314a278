// SPDX-License-Identifier: MIT
// The masks that a nib has as text. For NSNib alone.
#pragma once

#include <QString>

#include <optional>

namespace NibMasks {

/// The springs that `text` tells, a number or names with bars between; nothing where it tells none.
[[nodiscard]] std::optional<unsigned> autoresizingMask(const QString& text);

/// The same for the style of a window.
[[nodiscard]] std::optional<unsigned> styleMask(const QString& text);

} // namespace NibMasks

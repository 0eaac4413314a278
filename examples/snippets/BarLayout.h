// SPDX-License-Identifier: MIT
#pragma once

/// How the bars above the list are laid out, in points.
namespace BarLayout {
constexpr int sideMargin = 12;
constexpr int verticalMargin = 6;
constexpr int spacing = 8;
} // namespace BarLayout

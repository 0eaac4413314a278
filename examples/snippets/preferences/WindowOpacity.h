// SPDX-License-Identifier: MIT
// How far the main window lets through what is behind it, as the user wants it.
#pragma once

inline constexpr double leastWindowOpacity = 0.5; // so that what is written on it can be read
inline constexpr double fullWindowOpacity = 1.0;

/// From leastWindowOpacity to fullWindowOpacity, which it is at first.
[[nodiscard]] double keptWindowOpacity();

/// Keeps `opacity` in the user defaults.
void keepWindowOpacity(double opacity);

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/hud/LTHUDWindow.h>

#include <memory>

inline constexpr double hudTitleBarHeight = 19; // points

/// A dark panel of `size` points in the middle of the screen, with a text in it and a button that closes it, which
/// Escape presses too. For what pages open. It is not shown.
[[nodiscard]] std::unique_ptr<LTHUDWindow> makeDemoPanel(const NSSize& size, const QString& title, const QString& text);

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSEvent.h>

#include <cstdint>

/// Return, as NSEvent::keyCode tells it.
inline constexpr std::uint16_t NSReturnKeyCode = 36;
/// Tab, with Shift too.
inline constexpr std::uint16_t NSTabKeyCode = 48;
/// Escape.
inline constexpr std::uint16_t NSEscapeKeyCode = 53;
/// Enter of the keypad.
inline constexpr std::uint16_t NSEnterKeyCode = 76; // of the keypad

/// Whether the key of `event` is Return or the keypad's Enter, whatever is held with it.
[[nodiscard]] inline bool isReturnOrEnter(const NSEvent& event) {
    return event.keyCode() == NSReturnKeyCode || event.keyCode() == NSEnterKeyCode;
}

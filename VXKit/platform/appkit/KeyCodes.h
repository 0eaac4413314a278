// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSEvent.h>

#include <cstdint>

/// Keys that the kit itself answers, as NSEvent::keyCode tells them.
inline constexpr std::uint16_t NSReturnKeyCode = 36;
inline constexpr std::uint16_t NSTabKeyCode = 48;
inline constexpr std::uint16_t NSEscapeKeyCode = 53;
inline constexpr std::uint16_t NSEnterKeyCode = 76; // of the keypad

/// Whether the key of `event` is Return or the keypad's Enter, whatever is held with it.
[[nodiscard]] inline bool isReturnOrEnter(const NSEvent& event) {
    return event.keyCode() == NSReturnKeyCode || event.keyCode() == NSEnterKeyCode;
}

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <cstdint>

/// A bit of GetCurrentKeyModifiers, by AppKit's numbers, as those below: the key that carries a desktop's shortcuts, as
/// in NSEvent's flags. Control on a PC keyboard.
inline constexpr std::uint32_t cmdKey = 0x100;
/// Shift.
inline constexpr std::uint32_t shiftKey = 0x200;
inline constexpr std::uint32_t alphaLock = 0x400; ///< Caps Lock is on; told on X11 alone
/// Option, which is Alt.
inline constexpr std::uint32_t optionKey = 0x800;
/// Control on an Apple keyboard; the Super key of a PC keyboard.
inline constexpr std::uint32_t controlKey = 0x1000;

/// The modifier keys that are held down at this moment, also while another program has the keyboard or no event has
/// come yet: the window server is asked. On a platform that can only tell of events, those held at the latest one.
/// None where there is no application object. AppKit: the function of the same name.
[[nodiscard]] VXKIT_EXPORT std::uint32_t GetCurrentKeyModifiers();

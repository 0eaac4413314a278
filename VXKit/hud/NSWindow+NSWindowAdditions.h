// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

class NSWindow;

/// Effects of the window server for any window. Where a desktop does not offer one, the window is left without it and
/// nobody is told; WindowEffects::isAvailable says whether it does.

/// Gives `window` a large soft shadow that falls downwards, in the strength that suits the main window's opacity
/// (`mainWindowOpacity` of the host's hooks), whichever window it is for: wider for an opaque one. Does nothing for a
/// window that was never ordered in (number -1).
VXKIT_EXPORT void setUpWindowShadow(NSWindow& window);

/// Blurs what is seen through the translucent parts of `window`; to be called once. The desktops' own blur has a
/// strength of its own.
VXKIT_EXPORT void enableBlurForWindow(NSWindow& window);

/// Shows `window` in inverted colours. No window server of a Linux desktop inverts a window, so it inverts what it
/// paints itself; what shines through it stays as it is. The kit does not use it: it is here for hosts.
VXKIT_EXPORT void enableColorInversionForWindow(NSWindow& window);

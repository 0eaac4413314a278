// SPDX-License-Identifier: MIT
// Tells screen readers what a window is; for NSWindow alone.
#pragma once

/// Sees to it that accessibility technology is told of every NSWindow as a window, and of a modal one as a dialog, with
/// its title as the name; Qt takes a window of a class that it does not know for a part of one. To be called for each
/// window; only the first call counts.
void describeWindowsToAccessibility();

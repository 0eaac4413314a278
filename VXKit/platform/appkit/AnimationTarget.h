// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>

/// The frame of a window on the screen, and of any other widget in its parent; in AppKit's coordinates.
[[nodiscard]] inline NSRect frameOfTarget(QWidget& target) {
    if (const auto* window = qobject_cast<NSWindow*>(&target)) {
        return window->frame();
    }
    return ViewCore::attach(target).frame();
}

/// Sets the frame that frameOfTarget() answers; of a window with `display`.
inline void setFrameOfTarget(QWidget& target, const NSRect& frame, bool display) {
    if (auto* window = qobject_cast<NSWindow*>(&target)) {
        window->setFrame(frame, display);
    } else {
        ViewCore::attach(target).setFrame(frame);
    }
}

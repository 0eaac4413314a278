// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

/// The pointer's picture. Here: whether there is one; views set its shape by Qt's own means (QWidget::setCursor).
/// Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSCursor {
public:
    NSCursor() = delete;

    /// Makes the pointer invisible over the application's windows, until unhide has been called as often.
    /// AppKit: `+hide`.
    static void hide();
    /// Takes back one hide; without one, nothing happens. AppKit: `+unhide`.
    static void unhide();
};

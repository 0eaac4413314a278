// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>

/// A window that helps others: commands never go to it. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSPanel : public NSWindow {
    Q_OBJECT

public:
    using NSWindow::NSWindow;

    /// No. AppKit: `-canBecomeMainWindow`.
    [[nodiscard]] bool canBecomeMainWindow() const override;
};

// SPDX-License-Identifier: MIT
// Effects with which a window comes into view and leaves it. Each returns when it is over, with the window in its final
// state; the user's input waits meanwhile, everything else goes on. Where the window is ordered in or out or closed, or
// dies, in the middle, the effect ends and leaves it as it is. Where reduced motion is wished for, only the final state
// is seen.
#pragma once

#include <VXKit/platform/appkit/SnapshotWindow.h>

/// A temporary window that shows a picture of another one while it grows or shrinks, in less time than other windows.
/// It deletes itself when it is closed.
class VXKIT_EXPORT NoodleZoomWindow : public SnapshotWindow {
    Q_OBJECT

public:
    /// A borderless one at `contentRect`, which will not leave `stage`, floating at the level of modal panels.
    NoodleZoomWindow(const NSRect& contentRect, const NSRect& stage, std::shared_ptr<NSImage> picture);

    /// 0.4 (in single precision) of the standard time. AppKit: `-animationResizeTime:`.
    [[nodiscard]] double animationResizeTime(const NSRect& newFrame) const override;
};

/// Shows `window`, growing out of `rect` on the screen, and gives it the keyboard. Nothing for one that is visible.
VXKIT_EXPORT void zoomOnFromRect(NSWindow& window, const NSRect& rect);

/// Orders `window` out, shrinking into `rect` on the screen. Nothing for one that is not visible.
VXKIT_EXPORT void zoomOffToRect(NSWindow& window, const NSRect& rect);

/// Shows `window`, growing out of its middle a little beyond its size and settling, and gives it the keyboard. One that
/// is visible is only redisplayed.
VXKIT_EXPORT void pop(NSWindow& window);

/// Orders `window` out, shrinking into a square of 20 points in its middle. Nothing for one that is not visible.
VXKIT_EXPORT void popAway(NSWindow& window);

/// A zoom window at `rect` that shows how `window` looks now; a window that was never on the screen is ordered in and
/// out once for that, unseen. Not shown yet; the caller closes it, which deletes it.
[[nodiscard]] VXKIT_EXPORT NoodleZoomWindow* _createZoomWindowWithRect(NSWindow& window, const NSRect& rect);

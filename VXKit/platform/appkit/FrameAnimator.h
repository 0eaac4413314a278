// SPDX-License-Identifier: MIT
// What `animator` of a view and of a window answers: what is set there happens by and by.
//
// A frame that is set through an animator is reached from the present one in the duration of the current
// NSAnimationContext, slow at both ends; the setting itself returns at once. Another one set meanwhile takes over from
// where the frame is then. A frame that is set directly counts at once and ends the animation, where it is: the last
// word holds. Where reduced motion is wished for, an animator sets directly. The one whose frame it is may be destroyed
// at any time.
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

class NSWindow;
class ViewCore;

/// A view's animator; to be used at once, not kept.
class VXKIT_EXPORT ViewAnimator {
public:
    /// What NSView's animator() answers; `view` must outlive it.
    explicit ViewAnimator(ViewCore& view) : m_view(view) {}

    /// Moves and resizes the view by and by; the frame that is set in the end is exactly `frame`.
    void setFrame(const NSRect& frame);

private:
    ViewCore& m_view;
};

/// A window's animator; to be used at once, not kept.
class VXKIT_EXPORT WindowAnimator {
public:
    /// What NSWindow's animator() answers; `window` must outlive it.
    explicit WindowAnimator(NSWindow& window) : m_window(window) {}

    /// With `display`, the window and its views are redrawn with each step, when all that moves in step has moved.
    void setFrame(const NSRect& frame, bool display);

private:
    NSWindow& m_window;
};

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/FrameAnimator.h>

#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>

void ViewAnimator::setFrame(const NSRect& frame) {
    FrameAnimations::animate(*m_view.widget(), frame, false);
}

void WindowAnimator::setFrame(const NSRect& frame, bool display) {
    FrameAnimations::animate(m_window, frame, display);
}

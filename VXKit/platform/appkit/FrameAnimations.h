// SPDX-License-Identifier: MIT
// Moves the frames of views and windows; for these, their animators and tests.
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

class QWidget;

/// The rectangle on the straight way from `from` to `to` at `progress`, 0 to 1.
[[nodiscard]] NSRect rectBetween(const NSRect& from, const NSRect& to, double progress);

/// The animations of frames that are under way, at most one of each view and window.
///
/// All of them make their steps together: windows before views, so that a view is placed in a superview that has its
/// size already, and what is to be displayed after all have moved, once. They begin when the event loop has painted
/// what they were set with, those of one turn at the same moment, and end on their targets to the last digit.
class VXKIT_EXPORT FrameAnimations {
public:
    /// Sets out from the present frame of `target`, a view or a window, to `to`, in the duration of the current
    /// NSAnimationContext; at once where there is to be no animation. What was under way there ends. With `display`, a
    /// window is redrawn with each step.
    static void animate(QWidget& target, const NSRect& to, bool display);

    /// The frame of `target` is about to be set: ends what is under way there, unless it is set by that itself.
    static void frameIsSet(QWidget& target);

    [[nodiscard]] static bool isAnimating(const QWidget& target);

    /// While it lives, the next frame that is set of `target` does not end its animation.
    class Continuing {
    public:
        [[nodiscard]] explicit Continuing(const QWidget& target);
        Continuing(const Continuing&) = delete;
        Continuing& operator=(const Continuing&) = delete;
        ~Continuing();

    private:
        const QWidget* m_previous;
    };

    /// While it lives, the time of these animations goes by in steps that it is told, and no others. What is under way
    /// when it goes jumps to its end.
    class VXKIT_EXPORT ClockForTesting {
    public:
        ClockForTesting();
        ClockForTesting(const ClockForTesting&) = delete;
        ClockForTesting& operator=(const ClockForTesting&) = delete;
        ~ClockForTesting();

        /// What was set since begins, and everything moves to where it is `seconds` later.
        void advance(double seconds);
    };

private:
    class Engine;
};

// SPDX-License-Identifier: MIT
// A window turns over, like a card, and shows another one on its back. What is seen meanwhile are pictures of the two,
// in a panel that all flips share; the panel is there from one flip to the next, out of sight.
#pragma once

#include <VXKit/platform/appkit/NSPanel.h>

/// Turns `window`, which goes out, over to `other`, which takes its place in its own frame and gets the keyboard, and
/// returns when it is over; the user's input waits meanwhile, everything else goes on. `forward` turns the right edge
/// away from the eye first, else the left one. Takes 0.75 seconds, more where drawing is slow.
///
/// Where one of the windows is ordered in or out or closed, or dies, in the middle, the flip is over at once. Where
/// reduced motion is wished for, only the final state is seen. A flip that is asked for during another brings that to
/// its end first. A window that is to turn over to itself is only brought to the front. AppKit has no such operation; a
/// category's `-flipToShowWindow:forward:`.
VXKIT_EXPORT void flipToShowWindow(NSWindow& window, NSWindow& other, bool forward);

/// The shared panel: a fresh one, in the place of the one before, except while a window turns. It belongs to the kit.
/// Null where none can be made, because there is no screen; windows then change places without turning.
[[nodiscard]] VXKIT_EXPORT NSPanel* flippingWindow();

/// Forgets the shared panel, which goes when the event loop next comes to it. A window that turns in it is at its end
/// then.
VXKIT_EXPORT void releaseFlippingWindow();

/// While it lives, no flipping window can be made. For tests.
class VXKIT_EXPORT NoFlippingWindowForTesting {
public:
    [[nodiscard]] NoFlippingWindowForTesting();
    NoFlippingWindowForTesting(const NoFlippingWindowForTesting&) = delete;
    NoFlippingWindowForTesting& operator=(const NoFlippingWindowForTesting&) = delete;
    ~NoFlippingWindowForTesting();
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

class NSAnimation;
class NSTimer;

/// Tells the person that something was copied: a large translucent square with a picture of it zooms in, low in the
/// middle of the main screen, stays for a moment and fades out.
///
/// It never has the keyboard, the mouse goes through it, and screen readers pass it by; a host whose users cannot see
/// it says so by other means. There is at most one: it is this class's, from `pop` until the end of its fade, which
/// comes whatever happens to its window or the application meanwhile.
class VXKIT_EXPORT LTCopyPopUp {
public:
    LTCopyPopUp() = delete;

    /// Shows the pop-up, and returns when it has zoomed in; it goes by itself. Nothing where there is one already, or
    /// no screen. AppKit's form: a class method of the same name.
    static void pop();

    /// What the timer of `pop` calls: begins the fade.
    static void _startFading(NSTimer& timer);
    /// What the end of the fade calls: takes the pop-up away.
    static void animationDidEnd(NSAnimation& animation);
};

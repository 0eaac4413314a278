// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSBezierPath.h>

#include <vector>

/// The application's main window: a dark panel that hangs under the status item and points at it.
///
///                 ▲            14 high, 28 wide, its tip at the middle of the item
///     ╭───────────┘└───────────╮
///     │                        │
///     ├────────────────────────┤  48 below the window's top
///     │                        │
///     ╰────────────────────────╯
///
/// Its place is computed whenever it is asked for, from the status item's; only its size is its own. While it is shown
/// it follows its item, which a tray or a panel may put somewhere else at any time. A window that the host keeps open
/// while the application is inactive dims then (`shouldCloseMainWindowOnDeactivate`, asked when the window is made).
/// The first click in it while the application is inactive activates it and does nothing else.
///
/// The host's controller owns it, and shows and hides it.
class VXKIT_EXPORT LTWindow : public NSWindow {
    Q_OBJECT

public:
    /// Borderless whatever `styleMask` is; `contentRect` tells the size. AppKit:
    /// `-initWithContentRect:styleMask:backing:defer:`.
    LTWindow(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType backing, bool defer);
    ~LTWindow() override;

    /// Places the window under the status item. Its owner calls it once, when the status item is there.
    void awakeFromNib() override;

    /// Under the status item, centred, its top on the item's bottom; 20 points from the right edge of the main screen
    /// where it would stick out there. Where there is no status item, the frame that was set.
    [[nodiscard]] NSRect frame() const override;
    /// Above the status item where that lies along the bottom of its screen and there is no room below.
    [[nodiscard]] NSRect constrainFrameRect(const NSRect& frame) const override;

    /// Yes, though it is borderless.
    [[nodiscard]] bool canBecomeKeyWindow() const override { return true; }

    /// Paints the look anew before all is redrawn.
    void display() override;
    /// Gives the window its shadow as well (setUpWindowShadow).
    void makeKeyAndOrderFront(QObject* sender) override;
    /// A left press while the application is not active activates it, and does nothing else.
    void sendEvent(const NSEvent& event) override;
    /// Ends editing in the window.
    void mouseDown(const NSEvent& event) override;

    /// Paints the window's look (body, arrow, separator, outline) and makes it the background colour. A window without
    /// width or height keeps its background.
    void updateBackground();

    /// The outline of body and arrow around `rect`, which is the body's: counter-clockwise from the bottom left,
    /// corners of radius 10 or half the side, whichever is less.
    [[nodiscard]] NSBezierPath bezierPathWithRoundRectAndTriangle(const NSRect& rect) const;

private:
    [[nodiscard]] float arrowCentre() const;

    std::vector<NSNotificationObservation> m_observations;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <memory>
#include <vector>

class NSImage;

/// The kit's dark translucent panel.
///
///     ╭────────────────────────╮
///     │       title bar        │  19 high, paler while the application is inactive
///     │                        │
///     │    blurred what is     │
///     │         behind         │
///     ├────────────────────────┤  the button lane, a darker strip 36 high
///     ╰────────────────────────╯
///
/// It can be dragged by its background, and no frame that it is given lets its top leave the main screen's visible
/// frame upwards, or all of it but 14 points leave downwards. Over another window it runs as a sheet, without a title
/// bar, square at the top where it comes out of its slot.
///
/// Whoever makes it owns it. There is no close button: a host gives it one, or runs it modally.
class VXKIT_EXPORT LTHUDWindow : public NSWindow {
    Q_OBJECT

public:
    /// Borderless and never deferred, whatever `styleMask` and `defer` are; on every desktop, with a button lane.
    /// AppKit: `-initWithContentRect:styleMask:backing:defer:`.
    LTHUDWindow(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType backing, bool defer);
    ~LTHUDWindow() override;

    /// Whether the strip behind the buttons is drawn darker. Changing it redraws the window.
    [[nodiscard]] bool hasButtonLane() const { return _hasButtonLane; }
    /// Yes, at first. Redraws the window where it changes.
    void setHasButtonLane(bool flag);

    /// Yes, though it is borderless.
    [[nodiscard]] bool canBecomeKeyWindow() const override { return true; }

    /// Paints the look.
    void awakeFromNib() override;
    /// Paints the look anew before all is redrawn.
    void display() override;
    /// Gives the window its shadow as well (setUpWindowShadow).
    void makeKeyAndOrderFront(QObject* sender) override;
    /// A press activates the application and still reaches what was pressed.
    void sendEvent(const NSEvent& event) override;
    /// Activates the application and takes the keyboard.
    void mouseDown(const NSEvent& event) override;
    /// Moves the window along with the pointer, as far as its frame may go; a sheet stays where it is.
    void mouseDragged(const NSEvent& event) override;

    /// Keeps the window within reach, as the class note says.
    void setFrameOrigin(const NSPoint& origin) override;
    /// Keeps the window within reach, as the class note says.
    void setFrame(const NSRect& frame, bool display) override;
    /// Keeps the window within reach, as the class note says.
    void setFrame(const NSRect& frame, bool display, bool animate) override;

    /// Slides the window out of a slot in `parent`, 46 points below its top, and runs it modally: returns when the
    /// modal run is stopped (NSApplication::stopModal), or `parent` is closed or dies, with the window ordered out. It
    /// moves with the parent. From then on it keeps the look of a sheet. Nothing without an NSApplication.
    void runHUDSheetForWindow(NSWindow& parent);

    /// Paints the window's look and makes it the background colour. A window without width or height keeps its
    /// background.
    void updateBackground();

private:
    /// All that the background depends on.
    struct Look {
        NSSize size;
        double pixelRatio = 0;
        bool isSheet = false;
        bool hasButtonLane = false;
        bool isActive = false;

        friend bool operator==(const Look&, const Look&) = default;
    };

    [[nodiscard]] static NSRect clamped(NSRect frame);
    [[nodiscard]] std::shared_ptr<NSImage> makeBackground() const;

    bool _hasButtonLane = true;
    Look m_look;                           // of m_background
    std::shared_ptr<NSImage> m_background; // as it was painted last
    std::vector<NSNotificationObservation> m_observations;
};

/// The mouth that a HUD sheet comes out of: a thin translucent strip near the top of its parent.
class VXKIT_EXPORT _LTSheetWindowSlot : public NSWindow {
    Q_OBJECT

public:
    /// Borderless whatever `styleMask` is. AppKit: `-initWithContentRect:styleMask:backing:defer:`.
    _LTSheetWindowSlot(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType backing, bool defer);

    /// Paints the strip and makes it the background colour.
    void updateBackground();

private:
    NSNotificationObservation m_didResize;
};

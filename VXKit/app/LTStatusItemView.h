// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <memory>
#include <vector>

class NSTimer;

/// The view that a host puts into its status item: the application's symbol, which toggles the main window.
///
/// It shows the image "StatusIcon" of the host, or "StatusIconHighlighted" on the status bar's selection background
/// while the main window is open. A click on it activates the application and then tells the host's controller to
/// toggle the main window. While the host's sync manager reports a sync the symbol pulses: ten steps a second, down
/// from full opacity to 0.4 and back, a round in 1.2 s.
///
/// Made once, for as long as the status item lives, which owns it. Whether it closes the main window when the
/// application resigns active is decided by the host's hook when the view is made; a change of policy comes too late.
class VXKIT_EXPORT LTStatusItemView : public NSView {
public:
    /// AppKit: `-initWithFrame:`.
    explicit LTStatusItemView(const NSRect& frame);
    ~LTStatusItemView() override;

    /// Begins to pulse, from full opacity. Once more without endAnimation between, the timer of the first begin goes on
    /// as well and the pulse goes at double speed, for good.
    void startAnimation(const NSNotification& notification);
    /// Stops pulsing and shows the symbol at full opacity. Only redraws where it does not pulse.
    void endAnimation(const NSNotification& notification);
    /// Closes the main window and takes the highlight off.
    void applicationDidDeactivate(const NSNotification& notification);

    /// Highlights the symbol where it is not, and the other way round; redraws at once.
    void toggleHighlight();
    /// Draws the symbol highlighted or not, at once, be that a change or none.
    void setHighlighted(bool flag);

    /// Turns the highlight over, activates the application and has the host's controller toggle the main window.
    void mouseDown(const NSEvent& event) override;
    /// Draws the symbol in the middle, highlighted or not, as opaque as the pulse has it.
    void drawRect(const NSRect& rect) override;

    /// Where the status item is on the screen: the frame of the window that holds this view. (0, 0, 0, 0) while it is
    /// in none.
    [[nodiscard]] virtual NSRect frameOfStatusItem() const;

protected:
    bool highlight = false;         ///< whether the symbol is drawn highlighted
    std::shared_ptr<NSTimer> timer; ///< there while the symbol pulses
    float curFraction = 0;          ///< opacity of the pulse
    bool dir = false;               ///< whether the pulse fades out

private:
    double stepPulse();

    std::vector<NSNotificationObservation> m_observations;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/graphics/CIPerspectiveTransform.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/transitions/FliprAnimation.h>

#include <QPointer>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class NSImage;

/// Where the corners of a turning card lie, in coordinates whose origin is the bottom left corner of the card at rest.
struct VXKIT_EXPORT FliprCorners {
    NSPoint topRight;    ///< of the side that is seen, as the others
    NSPoint topLeft;     ///< upper left
    NSPoint bottomRight; ///< lower right
    NSPoint bottomLeft;  ///< lower left

    /// Of a card of `size` that has turned by `value` (0 to 1, 1 being half a turn) about its vertical centre line,
    /// forward (`direction` 1) or backward (-1), seen from 1600 points away. Past the half, its back side is meant.
    [[nodiscard]] static FliprCorners atValue(float value, float direction, const NSSize& size);

    /// Exactly the same corners.
    friend bool operator==(const FliprCorners&, const FliprCorners&) = default;
};

/// How long a flip takes and where in that time it starts.
struct VXKIT_EXPORT FliprTiming {
    double duration; ///< seconds from progress 0 to 1
    float progress;  ///< where it starts, from 0 to 1

    /// Of a flip whose first frame took `first` seconds to draw and whose frames take `frameTime`: 0.75 seconds, or as
    /// long as five frames need after the first ones, which count as time already spent.
    [[nodiscard]] static FliprTiming forFrameTimes(float first, float frameTime);
};

/// The card that turns over in the flipping window: it has a picture of each of two windows on its sides, and draws the
/// one that is seen.
///
/// It ends what it began whatever happens on the way: where one of the windows is ordered in or out or closed, or dies,
/// or the flipping window dies, the flip is over at once, with no window left transparent. See NSWindow+Flipr.h.
class VXKIT_EXPORT FliprView : public NSView, public FliprAnimationDelegate {
    Q_OBJECT

public:
    /// Points free on the left and the right of a window at the beginning of its flip, of a view that has the size of
    /// the flipping window's.
    static constexpr double horizontalMargin = 64;
    /// Points free above and below it.
    static constexpr double verticalMargin = 256;

    /// AppKit: `-initWithFrame:andOriginalRect:`.
    FliprView(const NSRect& frame, const NSRect& originalRect);
    ~FliprView() override;

    /// Turns `initialWindow`, which goes out, over to `finalWindow`, which gets the keyboard, and returns when it is
    /// over. A flip that is under way is brought to its end first. Nothing where this is not the flipping window's
    /// view. AppKit: `-setInitialWindow:andFinalWindow:forward:`.
    void setInitialWindow(NSWindow& initialWindow, NSWindow& finalWindow, bool forward);

    /// The first half is over: the panel moves from the one window's place to the other's.
    void update() override;
    /// Redraws the panel before it returns, or ends the flip at once where something has overtaken it.
    void display() override;
    /// Draws the card with its shadow, and notes how long that took; nothing while nothing turns.
    void drawRect(const NSRect& dirtyRect) override;
    /// Always no.
    [[nodiscard]] bool isOpaque() const { return false; }

    /// Ends the flip: the panel goes, the final window is there.
    void animationDidEnd(NSAnimation& animation) override;
    /// Ends the flip all the same.
    void animationDidStop(NSAnimation& animation) override;

    /// Draws the card as it is now, without its shadow.
    void drawCard();

    /// Where the card at rest lies in the view.
    [[nodiscard]] const NSRect& originalRect() const { return m_originalRect; }
    /// Null while nothing turns.
    [[nodiscard]] FliprAnimation* animation() const { return m_animation.get(); }
    /// Seconds that the last frame took to draw.
    [[nodiscard]] float frameTime() const { return m_frameTime; }
    /// Whether a window turns, in the whole process.
    [[nodiscard]] static bool isInAnimation();

private:
    [[nodiscard]] bool isOvertaken() const;
    [[nodiscard]] NSRect panelFrameFor(const NSRect& windowFrame) const;
    void lose(QPointer<NSWindow>& window);
    void interrupt();
    void endFlip();

    NSRect m_originalRect;
    QPointer<NSWindow> m_initialWindow;
    QPointer<NSWindow> m_finalWindow;
    std::shared_ptr<NSImage> m_finalImage; // until the filter has it
    CIPerspectiveTransform m_transitionFilter;
    NSShadow m_shadow;
    std::shared_ptr<FliprAnimation> m_animation; // while a flip is under way; its call has it, too, to the end
    float m_direction = 1;
    float m_frameTime = 0;
    bool m_dontDisplay = false;
    // What NSWindow::orderings should answer, once that is known.
    std::optional<unsigned> m_initialOrderings;
    std::optional<unsigned> m_finalOrderings;
};

/// While it lives, the clock by which frames are timed shows what `nanoseconds` answers. For tests.
class VXKIT_EXPORT FliprClockForTesting {
public:
    /// `nanoseconds` must not go back.
    [[nodiscard]] explicit FliprClockForTesting(std::function<std::int64_t()> nanoseconds);
    FliprClockForTesting(const FliprClockForTesting&) = delete;
    FliprClockForTesting& operator=(const FliprClockForTesting&) = delete;
    ~FliprClockForTesting();

private:
    std::function<std::int64_t()> m_previous;
};

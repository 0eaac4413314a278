// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QObject>
#include <QScrollBar>
#include <QSize>

#include <vector>

/// The pieces of a scroller. AppKit: `NSScrollerPart`.
enum NSScrollerPart {
    NSScrollerNoPart = 0,        ///< none of them
    NSScrollerDecrementPage = 1, ///< the slot before the knob
    NSScrollerKnob = 2,          ///< the knob
    NSScrollerIncrementPage = 3, ///< the slot behind the knob
    NSScrollerDecrementLine = 4, ///< the arrow towards the least value
    NSScrollerIncrementLine = 5, ///< the arrow towards the largest value
    NSScrollerKnobSlot = 6,      ///< the whole slot that the knob moves in
};

/// Where a scroller has its arrow buttons; at either end, they are where the desktop's style has them.
/// AppKit: `NSScrollArrowPosition`.
enum NSScrollArrowPosition {
    NSScrollerArrowsDefaultSetting = 0, ///< where they are by themselves
    NSScrollerArrowsMaxEnd = 0,         ///< at the end of the largest value
    NSScrollerArrowsMinEnd = 1,         ///< at the end of the least value
    NSScrollerArrowsNone = 2,           ///< nowhere
};

extern template class VXKIT_EXPORT ViewOf<QScrollBar>;

/// A scroll bar: a knob in a slot, as long for the slot as what is seen is for all there is.
///
/// It is one of Qt's: range, page, signals, mouse, wheel and keyboard are QScrollBar's, and it serves any of Qt's
/// scrolling views (setVerticalScrollBar). With its arrows it looks and is laid out as the desktop's style has it.
/// Without them, it is all slot, across the whole thickness, and
///
///     ╭─────────────────────────────────────────╮ 0
///     │  [      ▐▐▐▐▐▐▐▐▐                    ]  │
///     ╰─────────────────────────────────────────╯ 15
///      3 points                         3 points
///
/// upright 3.5 points free at its ends: where a knob that is drawn half a point longer lies on whole pixels.
///
/// Its own coordinates are flipped: y 0 is the top, where a vertical scroller has its least value. It is drawn anew
/// when the application is activated or resigns. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSScroller : public ViewOf<QScrollBar> {
    Q_OBJECT

public:
    /// A scroller without a frame, upright.
    explicit NSScroller(QWidget* parent = nullptr);
    /// A scroller without a frame, as QScrollBar's.
    explicit NSScroller(Qt::Orientation orientation, QWidget* parent = nullptr);
    /// Horizontal where the frame is wider than high. AppKit: `-initWithFrame:`.
    explicit NSScroller(const NSRect& frame, QWidget* parent = nullptr);
    ~NSScroller() override;

    /// How thick scrollers are without their arrows: 15 points, small and mini ones 11. AppKit:
    /// `+scrollerWidthForControlSize:`.
    [[nodiscard]] static double scrollerWidthForControlSize(NSControlSize controlSize);
    /// That of a regular one, 15 points. AppKit: `+scrollerWidth`.
    [[nodiscard]] static double scrollerWidth() { return scrollerWidthForControlSize(NSRegularControlSize); }

    /// The arrows are there at first. AppKit: `-setArrowsPosition:`.
    void setArrowsPosition(NSScrollArrowPosition position);
    /// AppKit: `-arrowsPosition`.
    [[nodiscard]] NSScrollArrowPosition arrowsPosition() const { return m_arrowsPosition; }

    /// Regular at first. AppKit: `-setControlSize:`.
    void setControlSize(NSControlSize controlSize);
    /// AppKit: `-controlSize`.
    [[nodiscard]] NSControlSize controlSize() const { return m_controlSize; }

    /// Where a piece lies; NSZeroRect for one that is not there. There is no knob, and there are no pages beside it,
    /// where all there is can be seen, where the scroller is disabled, and in a slot too short for one.
    /// AppKit: `-rectForPart:`.
    [[nodiscard]] virtual NSRect rectForPart(NSScrollerPart part) const;
    /// The piece at a point of the scroller. AppKit: `-testPart:`, but that its point is the window's.
    [[nodiscard]] NSScrollerPart testPart(const NSPoint& point) const;

    /// Where the knob is, from 0 to 1; 0 where there is none. AppKit: `-doubleValue`.
    [[nodiscard]] double doubleValue() const;
    /// What is seen, as a share of all there is. AppKit: `-knobProportion`.
    [[nodiscard]] double knobProportion() const;

    /// Yes: y 0 is the top.
    [[nodiscard]] bool isFlipped() const override { return true; }
    [[nodiscard]] QSize sizeHint() const override;

private:
    class ArrowlessStyle;

    void setUp();

    NSScrollArrowPosition m_arrowsPosition = NSScrollerArrowsDefaultSetting;
    NSControlSize m_controlSize = NSRegularControlSize;
    std::vector<NSNotificationObservation> m_activationChanges;
};

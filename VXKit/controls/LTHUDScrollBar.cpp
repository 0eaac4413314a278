// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDScrollBar.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

namespace {

constexpr double activeWhite = 0.5;
constexpr double inactiveWhite = 0.322;
constexpr double slotWhite = 0.157;

// In points.
constexpr double slotRadius = 3;
constexpr double horizontalKnobRadius = 3;
constexpr double verticalKnobRadius = 3.5;

void strokeSlot(const NSRect& slot) {
    NSColor::colorWithCalibratedWhite(slotWhite, 1.0).set();
    NSBezierPath::bezierPathWithRoundedRect(slot, slotRadius, slotRadius).stroke();
}

void fillKnob(const NSRect& knob, double radius) {
    NSColor::colorWithCalibratedWhite(VXApplicationIsActive() ? activeWhite : inactiveWhite, 1.0).set();
    NSBezierPath::bezierPathWithRoundedRect(knob, radius, radius).fill();
}

} // namespace

LTHUDScrollBar::~LTHUDScrollBar() = default;

void LTHUDScrollBar::awakeFromNib() {
    NSScroller::awakeFromNib();
    setArrowsPosition(NSScrollerArrowsNone);
}

void LTHUDScrollBar::drawRect(const NSRect& /*dirtyRect*/) {
    const NSRect knob = rectForPart(NSScrollerKnob);
    const NSRect box = bounds();
    NSDrawWindowBackground(box);
    if (NSEqualRects(knob, NSZeroRect)) {
        return;
    }
    const auto [x, y] = knob.origin;
    const auto [width, height] = knob.size;
    if (width > height) {
        strokeSlot(NSInsetRect(NSMakeRect(3, 0, NSWidth(box) - 5, 8), 0.5, 0.5));
        fillKnob(NSMakeRect(x + 1, y + 1, width - 1, 6), horizontalKnobRadius);
        return;
    }
    // Beside the knob wherever that is, not at the side of the scroller.
    strokeSlot(NSInsetRect(NSMakeRect(x + 2, 3, 8, NSHeight(box) - 6), 0.5, -0.5));
    fillKnob(NSMakeRect(x + 3, y - 0.5, 6, height + 1), verticalKnobRadius);
}

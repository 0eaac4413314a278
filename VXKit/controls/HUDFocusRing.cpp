// SPDX-License-Identifier: MIT
#include <VXKit/controls/HUDFocusRing.h>

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

namespace {

// White, because what is around may be anything from black to the middle grey of a button on a light desktop.
constexpr double ringWhite = 1;
constexpr double ringAlpha = 0.75;
constexpr double ringWidth = 1.5; // points

} // namespace

void drawHUDFocusRing(const NSButton& button, const NSRect& rect, double radius) {
    if (!button.showsFirstResponder()) {
        return;
    }
    const NSRect middle = NSInsetRect(rect, ringWidth / 2, ringWidth / 2);
    if (NSIsEmptyRect(middle)) {
        return;
    }
    const double middleRadius = radius - ringWidth / 2;
    NSBezierPath ring = NSBezierPath::bezierPathWithRoundedRect(middle, middleRadius, middleRadius);
    ring.setLineWidth(ringWidth);
    NSColor::colorWithCalibratedWhite(ringWhite, ringAlpha).setStroke();
    ring.stroke();
}

// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTLine.h>

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGradient.h>

namespace {

// In points.
constexpr double highestLine = 5;
constexpr double lineHeight = 1;

constexpr double panelWhite = 0.1;
constexpr double panelAlpha = 0.95;
constexpr double highlightAlpha = 0.25;
constexpr double shadowAlpha = 0.7;
constexpr double plainWhite = 0.2;

void fill(const NSRect& rect, double white, double alpha) {
    NSColor::colorWithCalibratedWhite(white, alpha).set();
    NSBezierPath::fillRect(rect);
}

} // namespace

LTLine::~LTLine() = default;

void LTLine::drawRect(const NSRect& /*dirtyRect*/) {
    const NSRect box = bounds();
    const double width = NSWidth(box);
    if (NSHeight(box) > highestLine) {
        fill(box, panelWhite, panelAlpha);
        return;
    }
    if (qobject_cast<const LTHUDWindow*>(window())) {
        fill(NSMakeRect(0, 0, width, lineHeight), 1.0, highlightAlpha);
        fill(NSMakeRect(0, lineHeight, width, lineHeight), 0.0, shadowAlpha);
        return;
    }
    const NSGradient fading(NSColor::colorWithCalibratedWhite(plainWhite, 0.0),
                            NSColor::colorWithCalibratedWhite(plainWhite, 1.0));
    const double y = NSHeight(box) / 2 - lineHeight / 2;
    fading.drawInRect(NSMakeRect(0, y, width / 2, lineHeight), 0);
    fading.drawInRect(NSMakeRect(width / 2, y, width / 2, lineHeight), 180);
}

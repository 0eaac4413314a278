// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDFlatButton.h>

#include <VXKit/controls/HUDFocusRing.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <algorithm>
#include <cmath>

namespace {

// Lengths in points.
constexpr double edgeInset = 0.5;
constexpr double flatCornerRadius = 4;
constexpr double fillWhite = 0.11;
constexpr double pressedAlpha = 0.55;
constexpr double edgeWhite = 0.28;
constexpr double edgeWidth = 0.5;
constexpr double flatTitleSize = 11;

constexpr double flatTitleMargins = 20; // both sides together
constexpr double titleMarginsAcross = 6;
constexpr double leastHeight = 20;

NSTextAttributes flatTitleAttributes() {
    return {.font = NSFont::systemFontOfSize(flatTitleSize),
            .foregroundColor = NSColor::whiteColor(),
            .alignment = NSCenterTextAlignment};
}

} // namespace

LTHUDFlatButton::LTHUDFlatButton(QWidget* parent) : NSButton(parent) {}

LTHUDFlatButton::LTHUDFlatButton(const NSRect& frame, QWidget* parent) : NSButton(frame, parent) {}

LTHUDFlatButton::~LTHUDFlatButton() = default;

void LTHUDFlatButton::drawRect(const NSRect& /*dirtyRect*/) {
    drawBody();
    drawTitle();
    drawHUDFocusRing(*this, bounds(), flatCornerRadius + edgeInset);
}

void LTHUDFlatButton::drawBody() {
    const NSRect rect = NSInsetRect(bounds(), edgeInset, edgeInset);
    if (NSIsEmptyRect(rect)) {
        return;
    }
    NSBezierPath path = NSBezierPath::bezierPathWithRoundedRect(rect, flatCornerRadius, flatCornerRadius);
    NSColor::colorWithCalibratedWhite(fillWhite, cell().isHighlighted() ? pressedAlpha : 1).setFill();
    path.fill();
    NSColor::colorWithCalibratedWhite(edgeWhite, 1).setStroke();
    path.setLineWidth(edgeWidth);
    path.stroke();
}

void LTHUDFlatButton::drawTitle() {
    const NSAttributedString title = cell().attributedDisplayTitle(flatTitleAttributes());
    const double height = title.size().height;
    const NSRect box = bounds();
    title.drawInRect(NSMakeRect(0, NSHeight(box) / 2 - height / 2, NSWidth(box), height));
}

QSize LTHUDFlatButton::sizeHint() const {
    const NSSize title = cell().attributedDisplayTitle(flatTitleAttributes()).size();
    return {static_cast<int>(std::ceil(title.width + flatTitleMargins)),
            static_cast<int>(std::ceil(std::max(title.height + titleMarginsAcross, leastHeight)))};
}

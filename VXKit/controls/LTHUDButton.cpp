// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDButton.h>

#include <VXKit/controls/HUDFocusRing.h>
#include <VXKit/controls/HUDImage.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QString>

#include <algorithm>
#include <cmath>

namespace {

// Lengths in points.
constexpr double bodyHeight = 26;
constexpr double capWidth = 13;
constexpr double shadowHeight = 4; // what the images keep free for the shadow below the rim
constexpr double rimRadius = 5;
constexpr double disabledOpacity = 0.35;
constexpr double disabledTitleWhite = 0.75;
constexpr double titleSize = 12;
constexpr double titleRise = 3; // above the centre

constexpr double titleMargins = 30;
constexpr double leastWidth = 96;
constexpr int standardHeight = 28;

NSTextAttributes titleAttributes(bool isEnabled) {
    return {.font = NSFont::boldSystemFontOfSize(titleSize),
            .foregroundColor =
                isEnabled ? NSColor::whiteColor() : NSColor::colorWithCalibratedWhite(disabledTitleWhite, 1),
            .alignment = NSCenterTextAlignment};
}

} // namespace

LTHUDButton::LTHUDButton(QWidget* parent) : NSButton(parent) {}

LTHUDButton::LTHUDButton(const NSRect& frame, QWidget* parent) : NSButton(frame, parent) {}

LTHUDButton::~LTHUDButton() = default;

void LTHUDButton::drawRect(const NSRect& /*dirtyRect*/) {
    drawBody();
    drawTitle();
    const double rimHeight = std::min(bodyHeight - shadowHeight, NSHeight(bounds()));
    drawHUDFocusRing(*this, {NSZeroPoint, {NSWidth(bounds()), rimHeight}}, rimRadius);
}

void LTHUDButton::drawBody() {
    const QString variant = cell().isHighlighted() ? QStringLiteral("Highlighted") : QString();
    const double fraction = isEnabled() ? 1 : disabledOpacity;
    const double width = NSWidth(bounds());
    drawHUDImage(QStringLiteral("HUDButtonLeftCap") + variant, NSZeroPoint, *this, fraction);
    drawHUDImage(QStringLiteral("HUDButtonFill") + variant, NSMakeRect(capWidth, 0, width - 2 * capWidth, bodyHeight),
                 *this, fraction);
    drawHUDImage(QStringLiteral("HUDButtonRightCap") + variant, NSMakePoint(width - capWidth, 0), *this, fraction);
}

void LTHUDButton::drawTitle() {
    const NSAttributedString title = cell().attributedDisplayTitle(titleAttributes(isEnabled()));
    const double height = title.size().height;
    const NSRect box = bounds();
    title.drawInRect(NSMakeRect(0, NSHeight(box) / 2 - height / 2 - titleRise, NSWidth(box), height));
}

QSize LTHUDButton::sizeHint() const {
    const double titleWidth = cell().attributedDisplayTitle(titleAttributes(true)).size().width;
    return {static_cast<int>(std::ceil(std::max(titleWidth + titleMargins, leastWidth))), standardHeight};
}

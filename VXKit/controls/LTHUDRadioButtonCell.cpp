// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDRadioButtonCell.h>

#include <VXKit/controls/HUDImage.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QString>

#include <algorithm>

namespace {

// Lengths in points.
constexpr NSPoint imageOrigin{3, 2};
constexpr double titleIndent = 22;
constexpr double titleSize = 13;
constexpr double imageHeight = 14;
constexpr double rightMargin = 4; // what the ring around the control takes
constexpr double bottomMargin = 2;

NSTextAttributes titleAttributes() {
    return {.font = NSFont::boldSystemFontOfSize(titleSize), .foregroundColor = NSColor::whiteColor()};
}

} // namespace

LTHUDRadioButtonCell::LTHUDRadioButtonCell() = default;

LTHUDRadioButtonCell::~LTHUDRadioButtonCell() = default;

NSSize LTHUDRadioButtonCell::cellSize() const {
    const NSSize title = attributedDisplayTitle(titleAttributes()).size();
    return {titleIndent + title.width + rightMargin,
            std::max(imageOrigin.y + imageHeight, title.height) + bottomMargin};
}

void LTHUDRadioButtonCell::drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) {
    const QString name = QStringLiteral("HUDRadio%1%2")
                             .arg(state() == NSOnState ? QStringLiteral("Selected") : QString(),
                                  isHighlighted() ? QStringLiteral("Pressed") : QStringLiteral("Normal"));
    const NSPoint corner = cellFrame.origin;
    drawHUDImage(name, NSMakePoint(corner.x + imageOrigin.x, corner.y + imageOrigin.y), controlView);
    attributedDisplayTitle(titleAttributes()).drawAtPoint({corner.x + titleIndent, corner.y});
}

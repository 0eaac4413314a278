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
constexpr NSPoint radioImageOrigin{3, 2};
constexpr double titleIndent = 22;
constexpr double radioTitleSize = 13;
constexpr double radioImageHeight = 14;
constexpr double radioRightMargin = 4; // what the ring around the control takes
constexpr double bottomMargin = 2;

NSTextAttributes radioTitleAttributes() {
    return {.font = NSFont::boldSystemFontOfSize(radioTitleSize), .foregroundColor = NSColor::whiteColor()};
}

} // namespace

LTHUDRadioButtonCell::LTHUDRadioButtonCell() = default;

LTHUDRadioButtonCell::~LTHUDRadioButtonCell() = default;

NSSize LTHUDRadioButtonCell::cellSize() const {
    const NSSize title = attributedDisplayTitle(radioTitleAttributes()).size();
    return {titleIndent + title.width + radioRightMargin,
            std::max(radioImageOrigin.y + radioImageHeight, title.height) + bottomMargin};
}

void LTHUDRadioButtonCell::drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) {
    const QString name = QStringLiteral("HUDRadio%1%2")
                             .arg(state() == NSOnState ? QStringLiteral("Selected") : QString(),
                                  isHighlighted() ? QStringLiteral("Pressed") : QStringLiteral("Normal"));
    const NSPoint corner = cellFrame.origin;
    drawHUDImage(name, NSMakePoint(corner.x + radioImageOrigin.x, corner.y + radioImageOrigin.y), controlView);
    attributedDisplayTitle(radioTitleAttributes()).drawAtPoint({corner.x + titleIndent, corner.y});
}

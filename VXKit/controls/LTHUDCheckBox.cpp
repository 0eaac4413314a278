// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDCheckBox.h>

#include <VXKit/controls/HUDFocusRing.h>
#include <VXKit/controls/HUDImage.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <algorithm>
#include <cmath>

namespace {

// In points.
constexpr NSPoint imageOrigin{2, 2};
constexpr NSPoint titleOrigin{21, 2};
constexpr double imageHeight = 16;
constexpr double rightMargin = 4; // what the ring around the control takes
constexpr double ringRadius = 4;

} // namespace

LTHUDCheckBox::LTHUDCheckBox(QWidget* parent) : NSButton(parent) {
    setUp();
}

LTHUDCheckBox::LTHUDCheckBox(const NSRect& frame, QWidget* parent) : NSButton(frame, parent) {
    setUp();
}

LTHUDCheckBox::~LTHUDCheckBox() = default;

void LTHUDCheckBox::setUp() {
    setCheckable(true);
    // So that a title which comes by Qt's own ways is white before the control awakes, too.
    setWhiteTitle(QString(), NSRegularControlSize);
}

void LTHUDCheckBox::awakeFromNib() {
    setWhiteTitle(title(), cell().controlSize());
}

void LTHUDCheckBox::setTitle(const QString& title) {
    setWhiteTitle(title, cell().controlSize());
}

void LTHUDCheckBox::setWhiteTitle(const QString& title, NSControlSize controlSize) {
    const double fontSize = NSFont::systemFontSizeForControlSize(controlSize);
    setAttributedTitle(NSAttributedString(
        title, {.font = NSFont::boldSystemFontOfSize(fontSize), .foregroundColor = NSColor::whiteColor()}));
}

void LTHUDCheckBox::drawRect(const NSRect& /*dirtyRect*/) {
    drawHUDImage(HUDCheckboxImageName(cell()), imageOrigin, *this);
    cell().attributedDisplayTitle(attributedTitle().attributes()).drawAtPoint(titleOrigin);
    drawHUDFocusRing(*this, bounds(), ringRadius);
}

QSize LTHUDCheckBox::sizeHint() const {
    const NSSize title = cell().attributedDisplayTitle(attributedTitle().attributes()).size();
    const double height = std::max(imageOrigin.y + imageHeight, titleOrigin.y + title.height) + imageOrigin.y;
    return {static_cast<int>(std::ceil(titleOrigin.x + title.width + rightMargin)),
            static_cast<int>(std::ceil(height))};
}

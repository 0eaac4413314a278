// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDRadioButton.h>

#include <VXKit/controls/HUDFocusRing.h>
#include <VXKit/controls/LTHUDRadioButtonCell.h>

namespace {

constexpr double radioRingRadius = 4; // points

} // namespace

LTHUDRadioButton::LTHUDRadioButton(QWidget* parent) : NSButton(parent) {
    setUp();
}

LTHUDRadioButton::LTHUDRadioButton(const NSRect& frame, QWidget* parent) : NSButton(frame, parent) {
    setUp();
}

LTHUDRadioButton::~LTHUDRadioButton() = default;

void LTHUDRadioButton::setUp() {
    setCheckable(true);
    setAutoExclusive(true);
}

NSCellClass LTHUDRadioButton::cellClass() const {
    return NSCellClassOf<LTHUDRadioButtonCell>();
}

void LTHUDRadioButton::drawRect(const NSRect& dirtyRect) {
    NSButton::drawRect(dirtyRect);
    drawHUDFocusRing(*this, bounds(), radioRingRadius);
}

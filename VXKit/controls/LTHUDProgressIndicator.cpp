// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDProgressIndicator.h>

#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QPalette>

namespace {

constexpr double discWhite = 0.35;
constexpr double discAlpha = 0.35;
constexpr int doneWhite = 224; // of 255

} // namespace

LTHUDProgressIndicator::LTHUDProgressIndicator(QWidget* parent) : NSProgressIndicator(parent) {
    setUp();
}

LTHUDProgressIndicator::LTHUDProgressIndicator(const NSRect& frame, QWidget* parent)
    : NSProgressIndicator(frame, parent) {
    setUp();
}

LTHUDProgressIndicator::~LTHUDProgressIndicator() = default;

/// On a dark panel a person cannot see a desktop's dark text colour.
void LTHUDProgressIndicator::setUp() {
    QPalette light = palette();
    light.setColor(QPalette::WindowText, Qt::white);
    light.setColor(QPalette::Highlight, QColor(doneWhite, doneWhite, doneWhite));
    setPalette(light);
}

void LTHUDProgressIndicator::drawRect(const NSRect& dirtyRect) {
    NSColor::colorWithCalibratedWhite(discWhite, discAlpha).set();
    NSBezierPath::bezierPathWithOvalInRect(bounds()).fill();
    NSProgressIndicator::drawRect(dirtyRect);
}

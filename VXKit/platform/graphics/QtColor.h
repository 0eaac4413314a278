// SPDX-License-Identifier: MIT
// Between the kit's colours and Qt's; the other way is NSColor::qtColor.
#pragma once

#include <VXKit/platform/graphics/NSColor.h>

#include <QColor>

/// The components of `color`, which is in any model of Qt's, as a calibrated colour; its alpha times `opacity`, from 0
/// to 1.
[[nodiscard]] inline NSColor NSColorFromQColor(const QColor& color, double opacity = 1) {
    return NSColor::colorWithCalibratedRed(double(color.redF()), double(color.greenF()), double(color.blueF()),
                                           opacity * double(color.alphaF()));
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSColor.h>

#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QColor>

#include <algorithm>
#include <utility>

namespace {

// NaN compares as neither, and so becomes 0.
double component(double value) {
    return value > 0 ? std::min(value, 1.0) : 0;
}

} // namespace

NSColor::NSColor(double red, double green, double blue, double alpha)
    : m_red(component(red)), m_green(component(green)), m_blue(component(blue)), m_alpha(component(alpha)) {}

NSColor NSColor::colorWithCalibratedWhite(double white, double alpha) {
    return {white, white, white, alpha};
}

NSColor NSColor::colorWithDeviceWhite(double white, double alpha) {
    return {white, white, white, alpha};
}

NSColor NSColor::colorWithCalibratedRed(double red, double green, double blue, double alpha) {
    return {red, green, blue, alpha};
}

NSColor NSColor::colorWithPatternImage(std::shared_ptr<const NSImage> image) {
    if (!image) {
        return clearColor();
    }
    NSColor color;
    color.m_patternImage = std::move(image);
    return color;
}

NSColor NSColor::whiteColor() {
    return colorWithCalibratedWhite(1, 1);
}

NSColor NSColor::blackColor() {
    return colorWithCalibratedWhite(0, 1);
}

NSColor NSColor::clearColor() {
    return colorWithCalibratedWhite(0, 0);
}

NSColor NSColor::colorWithAlphaComponent(double alpha) const {
    NSColor color = *this;
    color.m_alpha = component(alpha);
    return color;
}

void NSColor::set() const {
    setFill();
    setStroke();
}

void NSColor::setFill() const {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        context->setFillColor(*this);
    }
}

void NSColor::setStroke() const {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        context->setStrokeColor(*this);
    }
}

QColor NSColor::qtColor() const {
    return QColor::fromRgbF(static_cast<float>(m_red), static_cast<float>(m_green), static_cast<float>(m_blue),
                            static_cast<float>(m_alpha));
}

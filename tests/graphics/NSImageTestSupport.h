// SPDX-License-Identifier: MIT
// What the tests of drawing images and of drawing into them share.
#pragma once

#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <memory>

inline std::shared_ptr<NSImage> imageOf(QImage pixels, double pixelRatio = 1) {
    pixels.setDevicePixelRatio(pixelRatio);
    return NSImage::initWithQImage(pixels);
}

// An image of 4 by 4 points whose lower left quarter is red.
inline std::shared_ptr<NSImage> redCorner() {
    return imageOf(plain({4, 4}, {0, 2, 2, 2}, Qt::red, Qt::white));
}

inline void paint(NSImage& image, double pixelRatio, const NSColor& color, const NSRect& rect) {
    image.lockFocus(pixelRatio);
    color.set();
    NSRectFill(rect);
    image.unlockFocus();
}

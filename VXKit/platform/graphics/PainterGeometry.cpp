// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/PainterGeometry.h>

#include <QPaintDevice>
#include <QPainter>
#include <QRectF>

QTransform logicalToDevice(const QPainter& painter) {
    return painter.transform().inverted() * painter.deviceTransform();
}

QRect reachablePixels(const QPainter& painter) {
    const QPaintDevice& device = *painter.device();
    // Pictures tell their width in pixels, all else in points.
    const bool countsPixels = device.devType() == QInternal::Image || device.devType() == QInternal::Pixmap;
    const double unit = countsPixels ? device.devicePixelRatioF() : 1;
    const QRectF area(0, 0, device.width() / unit, device.height() / unit);
    const QRect pixels = logicalToDevice(painter).mapRect(area).toAlignedRect();
    if (!painter.hasClipping()) {
        return pixels;
    }
    return pixels & painter.deviceTransform().mapRect(painter.clipBoundingRect()).toAlignedRect();
}

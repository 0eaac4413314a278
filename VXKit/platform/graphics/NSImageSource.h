// SPDX-License-Identifier: MIT
// What NSImage reads from files. For it alone.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QImage>
#include <QSizeF>
#include <QString>
#include <QSvgRenderer>

#include <memory>
#include <utility>

/// What there is to draw. An image that was never painted into has neither drawing nor raster, an invalid one no size.
struct NSImage::Source {
    /// What the file at `path` holds; logs why where that is nothing to draw.
    explicit Source(const QString& path);
    Source(const NSSize& sourceSize, QImage sourceRaster) : size(sourceSize), raster(std::move(sourceRaster)) {}

    /// The raster that is best drawn in `pixels`.
    const QImage& rasterFor(const QSizeF& pixels) const;

    /// Logs why the image of the file at `path` shows nothing.
    static void logUnusable(const QString& path, const QString& reason);

    NSSize size;
    std::unique_ptr<QSvgRenderer> drawing;
    QImage raster;
    QImage doubleScaleRaster;
};

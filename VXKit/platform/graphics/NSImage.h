// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <map>
#include <memory>

/// A picture of a given size in points, drawn sharp at whatever pixel ratio a screen has.
///
/// An image made from a file refers to it: nothing is read until the image is first drawn or asked about itself. A
/// vector file (`.svg`) is drawn anew for each pixel ratio; of a raster file, a sibling with `@2x` before its extension
/// serves the ratios above 1. The file is read once and what was made of it is kept, so later changes of the file do
/// not show. Use QImage where pixels are to be computed on; this is for pictures to be shown.
///
/// Images are shared between whoever draws them, all on the main thread. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSImage {
public:
    ~NSImage();
    NSImage(const NSImage&) = delete;
    NSImage& operator=(const NSImage&) = delete;

    /// An image of the file at `path`, which need not be there yet. Never null. A file that turns out, on first use, to
    /// be missing or no image makes the image invalid, with one line in the log. AppKit: `-initByReferencingFile:`.
    [[nodiscard]] static std::shared_ptr<NSImage> initByReferencingFile(const QString& path);

    /// The image `name` (with or without extension) of the main bundle; the same object as long as the process lives.
    /// Null when the main bundle has none of that name. AppKit: `+imageNamed:`.
    [[nodiscard]] static std::shared_ptr<NSImage> imageNamed(const QString& name);

    /// Width and height in points: a vector file's natural size, a raster file's pixels (half of them for a file whose
    /// own name ends in `@2x`). (0, 0) for an invalid image. AppKit: `-size`.
    [[nodiscard]] QSizeF size() const;

    /// Whether there is a picture to draw. AppKit: `-isValid`.
    [[nodiscard]] bool isValid() const;

    /// The whole picture for a screen of `pixelRatio` pixels a point: size() times the ratio, rounded to whole pixels,
    /// premultiplied ARGB, its device pixel ratio set. The picture fills its pixels to the edge, so that neighbours
    /// drawn on the same pixel grid join. Kept for each ratio asked for. A null QImage for an invalid image, a ratio
    /// that is not a positive number, and a picture that would not fit in memory.
    [[nodiscard]] QImage imageForScale(double pixelRatio) const;

private:
    struct Source;

    explicit NSImage(QString path);

    const Source& source() const;
    QImage renderAtPixelSize(QSize pixelSize) const;

    QString m_path;
    mutable std::unique_ptr<const Source> m_source;
    mutable std::map<double, QImage> m_imagesByPixelRatio;
};

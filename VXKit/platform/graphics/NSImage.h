// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <QImage>
#include <QRectF>
#include <QSize>
#include <QString>

#include <deque>
#include <map>
#include <memory>
#include <optional>

class QPainter;

/// A picture of a given size in points, drawn sharp at whatever pixel ratio a screen has.
///
/// An image made from a file refers to it: nothing is read until the image is first drawn or asked about itself. A
/// vector file (`.svg`) is drawn anew for each pixel ratio and size; of a raster file, a sibling with `@2x` before its
/// extension serves the ratios above 1. The file is read once and what was made of it is kept, so later changes of the
/// file do not show.
///
/// Any image can be painted into: between lockFocus() and unlockFocus() drawing goes into it instead of the screen. An
/// image of a file is painted over in memory; the file stays as it is, but whoever shares the image sees the change.
/// Use QImage where pixels are to be computed on; this is for pictures to be shown.
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

    /// A transparent image of `size` points to paint into. Never null; invalid when the width or the height is not
    /// above 0. AppKit: `-initWithSize:`.
    [[nodiscard]] static std::shared_ptr<NSImage> initWithSize(const NSSize& size);

    /// An image of these pixels, for the platform layer; its size in points follows from their device pixel ratio.
    /// Never null; invalid for a null QImage.
    [[nodiscard]] static std::shared_ptr<NSImage> initWithQImage(const QImage& pixels);

    /// Width and height in points: a vector file's natural size, a raster file's pixels (half of them for a file whose
    /// own name ends in `@2x`), or what setSize() said. (0, 0) for an invalid image. AppKit: `-size`.
    [[nodiscard]] NSSize size() const;

    /// Gives the image another size in points. The picture is stretched to it when scalesWhenResized() answers true;
    /// else it keeps its own size, at the bottom left, cut off where the image is smaller and with nothing beside it
    /// where it is larger. A size not above 0 is refused with a line in the log. AppKit: `-setSize:`.
    void setSize(const NSSize& size);

    /// AppKit: `-setScalesWhenResized:`, false at first.
    void setScalesWhenResized(bool scales);
    /// Whether setSize stretches the picture. AppKit: `-scalesWhenResized`.
    [[nodiscard]] bool scalesWhenResized() const { return m_scalesWhenResized; }

    /// Whether coordinates in the image, of source rectangles and of drawing while it has the focus, begin at the top
    /// left and grow downwards; at first they begin at the bottom left and grow upwards. Pictures are drawn upright
    /// either way, in flipped contexts too. AppKit: `-setFlipped:`.
    void setFlipped(bool flipped) { m_flipped = flipped; }
    /// AppKit: `-isFlipped`.
    [[nodiscard]] bool isFlipped() const { return m_flipped; }

    /// Whether there is a picture to draw. AppKit: `-isValid`.
    [[nodiscard]] bool isValid() const;

    /// Directs drawing into the image, on top of what it shows, with as many pixels a point as the current context has,
    /// or without one the main screen. Locks nest, those of one image too; each must be met by an unlockFocus(). What
    /// is drawn into an image without a size is lost, with a line in the log. AppKit: `-lockFocus`.
    void lockFocus();
    /// The same with `pixelRatio` pixels a point (one that is not a positive number counts as 1), for pictures that are
    /// not for the screen. The ratio of the outermost lock counts.
    void lockFocus(double pixelRatio);
    /// Ends the drawing that the last lockFocus() of this image began. Without one, it is logged and nothing happens.
    /// AppKit: `-unlockFocus`.
    void unlockFocus();

    /// Draws the part `fromRect` of the image in its own size, its corner with the smallest coordinates at `point`: the
    /// bottom left, in a flipped context the top left. Else as drawInRect(). AppKit:
    /// `-drawAtPoint:fromRect:operation:fraction:`.
    void drawAtPoint(const NSPoint& point, const NSRect& fromRect, NSCompositingOperation operation,
                     double fraction) const;

    /// Draws the part `fromRect` of the image, stretched to `rect` of the current context.
    ///
    /// NSZeroRect stands for the whole image; what `fromRect` has beyond the image is transparent. The sides of the
    /// picture go to the nearest whole pixels, so that it is sharp and pictures side by side join; in its own size at
    /// its own pixel ratio it is copied pixel by pixel. A vector drawing is drawn anew for the pixels it covers.
    /// `fraction` is the opacity, clamped to 0 to 1 (NaN counts as 0). Draws nothing without a context and for an
    /// invalid image. AppKit: `-drawInRect:fromRect:operation:fraction:`.
    void drawInRect(const NSRect& rect, const NSRect& fromRect, NSCompositingOperation operation,
                    double fraction) const;

    /// The whole picture for a screen of `pixelRatio` pixels a point: size() times the ratio, rounded to whole pixels,
    /// premultiplied ARGB, its device pixel ratio set. The picture fills its pixels to the edge, so that neighbours
    /// drawn on the same pixel grid join. Kept for each ratio asked for. A null QImage for an invalid image, a ratio
    /// that is not a positive number, and a picture that would not fit in memory.
    [[nodiscard]] QImage imageForScale(double pixelRatio) const;

private:
    struct Source;
    struct Focus;
    struct Rendering {
        QSize pixels;
        QRectF pictureFrame;
        QImage image;
    };

    explicit NSImage(QString path);
    explicit NSImage(std::unique_ptr<const Source> source);

    const Source& source() const;
    void forgetRenderings();
    void drawOnPixels(QPainter& painter, const QRectF& target, const QRectF& part) const;
    void drawTransformed(QPainter& painter, const QRectF& target, const QRectF& part) const;
    QRectF pictureFrame(const QRectF& imageFrame) const;
    QImage render(QSize pixels, const QRectF& pictureFrame) const;
    QImage keptRendering(QSize pixels, const QRectF& pictureFrame) const;

    QString m_path;
    std::optional<NSSize> m_size;
    bool m_scalesWhenResized = false;
    bool m_flipped = false;
    std::unique_ptr<Focus> m_focus;
    mutable std::unique_ptr<const Source> m_source;
    mutable std::map<double, QImage> m_imagesByPixelRatio;
    mutable std::deque<Rendering> m_renderings;
};

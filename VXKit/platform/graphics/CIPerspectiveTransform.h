// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <QImage>

#include <memory>
#include <optional>

class NSGraphicsContext;
class NSImage;
class NSShadow;
class QTransform;

/// Warps a picture so that its corners come to lie where they are told, as on a card that is turned in space.
///
///       topLeft ______
///              |      ‾‾‾‾‾‾ topRight
///              |            |
///              |______------ bottomRight
///      bottomLeft
///
/// The result is drawn into the current graphics context, with the shadow set there; its coordinates are those in which
/// the corners were given. To turn or slant a picture, use the context's own transform and NSImage. Stands for Core
/// Image's filter of the same name.
class VXKIT_EXPORT CIPerspectiveTransform {
public:
    /// A filter without a picture, with its defaults.
    CIPerspectiveTransform();

    /// Puts the corners where Core Image has them at first, and takes the picture out. AppKit: `-setDefaults`.
    void setDefaults();

    /// The picture; null draws nothing. What is painted into it later does not show. AppKit: `inputImage`.
    void setInputImage(std::shared_ptr<NSImage> image);
    /// The picture as it was set; null at first.
    [[nodiscard]] const std::shared_ptr<NSImage>& inputImage() const { return m_inputImage; }

    /// Where the picture's top right corner goes, in points, y growing upwards. AppKit: `inputTopRight`.
    void setInputTopRight(const NSPoint& corner) { m_topRight = corner; }
    /// Where the picture's top left corner goes. AppKit: `inputTopLeft`.
    void setInputTopLeft(const NSPoint& corner) { m_topLeft = corner; }
    /// Where the picture's bottom right corner goes. AppKit: `inputBottomRight`.
    void setInputBottomRight(const NSPoint& corner) { m_bottomRight = corner; }
    /// Where the picture's bottom left corner goes. AppKit: `inputBottomLeft`.
    void setInputBottomLeft(const NSPoint& corner) { m_bottomLeft = corner; }
    /// The top right corner as it was set, or Core Image's default; the others likewise.
    [[nodiscard]] const NSPoint& inputTopRight() const { return m_topRight; }
    /// The top left corner.
    [[nodiscard]] const NSPoint& inputTopLeft() const { return m_topLeft; }
    /// The bottom right corner.
    [[nodiscard]] const NSPoint& inputBottomRight() const { return m_bottomRight; }
    /// The bottom left corner.
    [[nodiscard]] const NSPoint& inputBottomLeft() const { return m_bottomLeft; }

    /// Draws the part `fromRect` of the result, stretched to `rect` of the current context, with `fraction` of its
    /// opacity (clamped to 0 to 1; NaN counts as 0). Corners that are the picture's own rectangle draw it pixel by
    /// pixel where they fall on pixels. Nothing without a context, and for corners that no card before the eye has:
    /// edge-on, crossed, dented, infinite. AppKit: `outputImage` and `-drawInRect:fromRect:operation:fraction:`.
    void drawOutputImageInRect(const NSRect& rect, const NSRect& fromRect, NSCompositingOperation operation,
                               double fraction) const;

private:
    /// The picture in pixels, and reduced for what is too blurred to show any of them.
    struct Pixels {
        double ratio;
        QImage image;
        QImage reduced;
    };

    [[nodiscard]] bool isUnwarped() const;
    [[nodiscard]] const Pixels& pixelsForRatio(double ratio) const;
    void drawWideShadow(const NSGraphicsContext& context, const NSShadow& shadow, const QTransform& imageToContext,
                        const NSRect& rect, double opacity) const;

    std::shared_ptr<NSImage> m_inputImage;
    NSPoint m_topRight;
    NSPoint m_topLeft;
    NSPoint m_bottomRight;
    NSPoint m_bottomLeft;
    mutable std::optional<Pixels> m_pixels;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <QBrush>
#include <QRectF>

#include <functional>
#include <memory>

class NSColor;
class NSShadow;
class QPainter;

/// Where drawing goes: an area of points with the origin at its bottom left and y growing upwards (or, flipped, at its
/// top left and y growing downwards), over a QPainter.
///
/// The platform makes one around a view's drawing or an image's focus; it is the current context until it is destroyed.
/// Drawing code never sees it: colours, paths, images and text draw into the current one, and nothing at all without
/// one. Contexts are for the main thread. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSGraphicsContext {
public:
    /// Makes a context over `painter` current. The painter is active, its transform has its origin at the top left of
    /// an area `height` points high, y growing downwards; it must stay active as long as the context lives. The clip it
    /// has is one that drawing cannot leave.
    NSGraphicsContext(QPainter& painter, double height, bool flipped);
    /// Takes back what was done to the painter, graphics states left saved among it, and makes the context current that
    /// was current before.
    ~NSGraphicsContext();
    NSGraphicsContext(const NSGraphicsContext&) = delete;
    NSGraphicsContext& operator=(const NSGraphicsContext&) = delete;

    /// The innermost context; null while nothing is drawn. AppKit: `+currentContext`.
    [[nodiscard]] static NSGraphicsContext* currentContext();

    /// Saves colours, shadow, clip, compositing operation and pattern phase of the current context; does nothing
    /// without one. AppKit: `+saveGraphicsState`.
    static void saveGraphicsState();
    /// Goes back to what was saved last; does nothing where nothing is saved. AppKit: `+restoreGraphicsState`.
    static void restoreGraphicsState();

    /// Whether y grows downwards. AppKit: `-isFlipped`.
    [[nodiscard]] bool isFlipped() const;

    /// Where pattern colours start, in the coordinates that the context began with: the bottom left corner of a tile
    /// lies there. At first the bottom left corner of the context's area; a view within a window passes the window's,
    /// so that the patterns of all its views join. AppKit: `-setPatternPhase:`.
    void setPatternPhase(const NSPoint& phase);
    /// Where pattern colours start, in the coordinates that the context began with. AppKit: `-patternPhase`.
    [[nodiscard]] NSPoint patternPhase() const;

    /// The operation for paths, gradients and text, at first NSCompositeSourceOver. AppKit:
    /// `-setCompositingOperation:`.
    void setCompositingOperation(NSCompositingOperation operation);
    /// The operation for paths, gradients and text. AppKit: `-compositingOperation`.
    [[nodiscard]] NSCompositingOperation compositingOperation() const;

    /// How many pixels a point takes up, 1 or 2 for most screens.
    [[nodiscard]] double pixelRatio() const;

    /// The painter, for the platform layer alone. Paint with it inside draw() where a shadow is to be honoured.
    [[nodiscard]] QPainter& painter() const;

    /// The way every drawing operation takes, for the platform layer: calls `paint` with a painter in the context's
    /// current coordinates and the compositing operation set.
    ///
    /// `bounds` holds all that `paint` covers, in those coordinates. Where a shadow is set and the operation adds paint
    /// (NSCompositeCopy, NSCompositeSourceOver, NSCompositeSourceAtop, NSCompositePlusLighter), `paint` is called
    /// twice: first with the painter of a layer of which the shadow is made, then with the context's own. So it must
    /// leave the painter as it found it and paint the same each time.
    void draw(const QRectF& bounds, NSCompositingOperation operation, const std::function<void(QPainter&)>& paint);
    /// The same with the context's compositing operation.
    void draw(const QRectF& bounds, const std::function<void(QPainter&)>& paint);

    /// The brush that paints `color` in the context's current coordinates, for the platform layer.
    [[nodiscard]] QBrush brush(const NSColor& color) const;

    /// The colour that fills take, black at first. Set by NSColor::set.
    [[nodiscard]] const NSColor& fillColor() const;
    /// The colour that strokes take, black at first. Set by NSColor::set.
    [[nodiscard]] const NSColor& strokeColor() const;
    /// The shadow in force, none at first. Set by NSShadow::set.
    [[nodiscard]] const NSShadow& shadow() const;
    /// What NSColor::setFill calls.
    void setFillColor(const NSColor& color);
    /// What NSColor::setStroke calls.
    void setStrokeColor(const NSColor& color);
    /// What NSShadow::set calls.
    void setShadow(const NSShadow& shadow);

    /// Takes back every clip set in this context, as far as that of the painter it was made over. For NSBezierPath.
    void resetClip();

private:
    struct Private;

    void drawShadow(const QRectF& bounds, const std::function<void(QPainter&)>& paint);

    std::unique_ptr<Private> m_private;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <array>
#include <functional>
#include <vector>

class QPainterPath;

/// What a path is made of. AppKit: `NSBezierPathElement`.
enum NSBezierPathElement {
    NSMoveToBezierPathElement = 0,    ///< begins a subpath
    NSLineToBezierPathElement = 1,    ///< a line
    NSCurveToBezierPathElement = 2,   ///< a cubic curve
    NSClosePathBezierPathElement = 3, ///< closes the subpath with a line to its beginning
};

/// Lines and cubic curves to fill, to stroke and to clip with, in points.
///
/// A value: copy it freely. What is inside is told by the nonzero winding rule. Strokes are centred on the path, with
/// flat ends, mitred joins and a mitre limit of 10. Drawing uses the current context's colours, shadow and compositing
/// operation and does nothing without a context. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSBezierPath {
public:
    /// An empty path. AppKit: `+bezierPath`.
    NSBezierPath() = default;

    /// AppKit: `+bezierPathWithRect:`.
    [[nodiscard]] static NSBezierPath bezierPathWithRect(const NSRect& rect);
    /// Radii below 0 count as 0, those above half the width or the height as half. AppKit:
    /// `+bezierPathWithRoundedRect:xRadius:yRadius:`.
    [[nodiscard]] static NSBezierPath bezierPathWithRoundedRect(const NSRect& rect, double xRadius, double yRadius);
    /// AppKit: `+bezierPathWithOvalInRect:`.
    [[nodiscard]] static NSBezierPath bezierPathWithOvalInRect(const NSRect& rect);

    /// Fills `rect` with the current fill colour, composited as paths are (source-over, unless the context was told
    /// otherwise). AppKit: `+fillRect:`.
    static void fillRect(const NSRect& rect);

    /// Adds a rectangle as a closed subpath. AppKit: `-appendBezierPathWithRect:`.
    void appendBezierPathWithRect(const NSRect& rect);
    /// Adds a rectangle with rounded corners as a closed subpath; radii as in bezierPathWithRoundedRect. AppKit:
    /// `-appendBezierPathWithRoundedRect:xRadius:yRadius:`.
    void appendBezierPathWithRoundedRect(const NSRect& rect, double xRadius, double yRadius);
    /// Adds the ellipse that fills `rect` as a closed subpath. AppKit: `-appendBezierPathWithOvalInRect:`.
    void appendBezierPathWithOvalInRect(const NSRect& rect);

    /// Begins a subpath at `point`. AppKit: `-moveToPoint:`.
    void moveToPoint(const NSPoint& point);
    /// Adds a line to `point`. Without a point to begin at, it is logged and left out, as curves are. AppKit:
    /// `-lineToPoint:`.
    void lineToPoint(const NSPoint& point);
    /// Adds a cubic curve to `endPoint`, leaving towards `controlPoint1`, arriving from `controlPoint2`. AppKit:
    /// `-curveToPoint:controlPoint1:controlPoint2:`.
    void curveToPoint(const NSPoint& endPoint, const NSPoint& controlPoint1, const NSPoint& controlPoint2);
    /// Closes the subpath with a line to its beginning, where the next one begins; closing twice, or an empty path,
    /// changes nothing. AppKit: `-closePath`.
    void closePath();

    /// The width of strokes in points, at first 1; below 0 and NaN count as 0, and 0 strokes the thinnest line there
    /// is. AppKit: `-setLineWidth:`.
    void setLineWidth(double lineWidth);
    /// The width of strokes as it was set. AppKit: `-lineWidth`.
    [[nodiscard]] double lineWidth() const { return m_lineWidth; }

    /// Fills the path, open subpaths as if they were closed. AppKit: `-fill`.
    void fill() const;
    /// AppKit: `-stroke`.
    void stroke() const;
    /// Limits drawing to the path instead of what limited it in this context before. The limit of the view or image
    /// that is drawn into stays. AppKit: `-setClip`.
    void setClip() const;
    /// Limits drawing to what lies in the path and in the limits in force. AppKit: `-addClip`.
    void addClip() const;

    /// The smallest rectangle around the path itself (not its control points); NSZeroRect for an empty path. AppKit:
    /// `-bounds`.
    [[nodiscard]] NSRect bounds() const;

    /// AppKit: `-isEmpty`.
    [[nodiscard]] bool isEmpty() const { return m_elements.empty(); }
    /// AppKit: `-elementCount`.
    [[nodiscard]] int elementCount() const { return static_cast<int>(m_elements.size()); }
    /// The element at `index`, from 0 up to elementCount() - 1, and its points in `points` unless that is null: one for
    /// a move or a line; for a curve the two control points and the end; for a close the beginning it goes back to.
    /// Raises NSRangeException for any other index. AppKit: `-elementAtIndex:associatedPoints:`.
    NSBezierPathElement elementAtIndex(int index, std::array<NSPoint, 3>* points = nullptr) const;

    /// The path as Qt's type, for the platform.
    [[nodiscard]] QPainterPath qtPath() const;
    /// The same with lines in place of its curves, not farther from them than an eye can tell where a point takes up
    /// `pixelRatio` pixels: the painter's own lines are up to a quarter of a pixel off.
    [[nodiscard]] QPainterPath qtPathOfLines(double pixelRatio) const;

private:
    struct Element {
        NSBezierPathElement type;
        std::array<NSPoint, 3> points;
    };

    using AddCurve = std::function<void(QPainterPath& path, const std::array<NSPoint, 3>& points)>;

    bool hasCurrentPoint(const char* operation) const;
    QPainterPath qtPathWithCurves(const AddCurve& addCurve) const;

    std::vector<Element> m_elements;
    NSPoint m_subpathStart;
    double m_lineWidth = 1;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <algorithm>

/// A point, in points; y grows upwards unless the view is flipped. AppKit: `NSPoint`.
struct NSPoint {
    double x = 0; ///< to the right
    double y = 0; ///< upwards, unless the view is flipped

    /// The same as NSEqualPoints.
    friend constexpr bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// Width and height, in points. AppKit: `NSSize`.
struct NSSize {
    double width = 0;  ///< from side to side; may be negative
    double height = 0; ///< from the bottom to the top; may be negative

    /// The same as NSEqualSizes.
    friend constexpr bool operator==(const NSSize&, const NSSize&) = default;
};

/// A rectangle, by the corner with the smallest coordinates (bottom left, unless the view is flipped) and its size. One
/// whose width or height is not above 0 is empty, wherever it lies. AppKit: `NSRect`.
struct NSRect {
    NSPoint origin; ///< the corner with the smallest coordinates
    NSSize size;    ///< how far it reaches from there

    /// The same as NSEqualRects.
    friend constexpr bool operator==(const NSRect&, const NSRect&) = default;
};

/// The sides of a rectangle. AppKit: `NSRectEdge`.
enum NSRectEdge {
    NSMinXEdge = 0, ///< the left side
    NSMinYEdge = 1, ///< the bottom, where coordinates are flipped the top
    NSMaxXEdge = 2, ///< the right side
    NSMaxYEdge = 3, ///< the top, where coordinates are flipped the bottom
};

/// (0, 0). AppKit: `NSZeroPoint`.
inline constexpr NSPoint NSZeroPoint{};
/// No width and no height. AppKit: `NSZeroSize`.
inline constexpr NSSize NSZeroSize{};
/// An empty rectangle at (0, 0), which stands for "none" in many operations. AppKit: `NSZeroRect`.
inline constexpr NSRect NSZeroRect{};

/// The point (`x`, `y`). AppKit: the function of the same name, as all below.
[[nodiscard]] constexpr NSPoint NSMakePoint(double x, double y) {
    return {x, y};
}
/// The size of that width and height.
[[nodiscard]] constexpr NSSize NSMakeSize(double width, double height) {
    return {width, height};
}
/// The rectangle with its corner at (`x`, `y`) and of that width and height.
[[nodiscard]] constexpr NSRect NSMakeRect(double x, double y, double width, double height) {
    return {{x, y}, {width, height}};
}

/// The left side of `rect`; the smallest x, unless the width is negative.
[[nodiscard]] constexpr double NSMinX(const NSRect& rect) {
    return rect.origin.x;
}
/// The x of the middle of `rect`.
[[nodiscard]] constexpr double NSMidX(const NSRect& rect) {
    return rect.origin.x + rect.size.width / 2;
}
/// The right side of `rect`; the largest x, unless the width is negative.
[[nodiscard]] constexpr double NSMaxX(const NSRect& rect) {
    return rect.origin.x + rect.size.width;
}
/// The bottom of `rect`, where coordinates are flipped its top; the smallest y, unless the height is negative.
[[nodiscard]] constexpr double NSMinY(const NSRect& rect) {
    return rect.origin.y;
}
/// The y of the middle of `rect`.
[[nodiscard]] constexpr double NSMidY(const NSRect& rect) {
    return rect.origin.y + rect.size.height / 2;
}
/// The top of `rect`, where coordinates are flipped its bottom; the largest y, unless the height is negative.
[[nodiscard]] constexpr double NSMaxY(const NSRect& rect) {
    return rect.origin.y + rect.size.height;
}
/// The width of `rect`.
[[nodiscard]] constexpr double NSWidth(const NSRect& rect) {
    return rect.size.width;
}
/// The height of `rect`.
[[nodiscard]] constexpr double NSHeight(const NSRect& rect) {
    return rect.size.height;
}

/// Exact equality; NaN is equal to nothing.
[[nodiscard]] constexpr bool NSEqualPoints(const NSPoint& a, const NSPoint& b) {
    return a == b;
}
/// Exact equality; NaN is equal to nothing.
[[nodiscard]] constexpr bool NSEqualSizes(const NSSize& a, const NSSize& b) {
    return a == b;
}
/// Exact equality: rectangles of the same size at different places differ, empty ones too.
[[nodiscard]] constexpr bool NSEqualRects(const NSRect& a, const NSRect& b) {
    return a == b;
}

/// Whether the width or the height is 0, negative or NaN.
[[nodiscard]] constexpr bool NSIsEmptyRect(const NSRect& rect) {
    return !(rect.size.width > 0 && rect.size.height > 0);
}

/// `rect` with the vertical sides moved in by `dX` and the horizontal ones by `dY`, out where these are negative. A
/// rectangle too small for that gets a negative size.
[[nodiscard]] constexpr NSRect NSInsetRect(const NSRect& rect, double dX, double dY) {
    return {{rect.origin.x + dX, rect.origin.y + dY}, {rect.size.width - 2 * dX, rect.size.height - 2 * dY}};
}

/// `rect` moved by (`dX`, `dY`).
[[nodiscard]] constexpr NSRect NSOffsetRect(const NSRect& rect, double dX, double dY) {
    return {{rect.origin.x + dX, rect.origin.y + dY}, rect.size};
}

/// Whether the two have area in common: not when they only touch, never when one is empty.
[[nodiscard]] constexpr bool NSIntersectsRect(const NSRect& a, const NSRect& b) {
    return !NSIsEmptyRect(a) && !NSIsEmptyRect(b) && NSMinX(a) < NSMaxX(b) && NSMinX(b) < NSMaxX(a) &&
           NSMinY(a) < NSMaxY(b) && NSMinY(b) < NSMaxY(a);
}

/// The area the two have in common; NSZeroRect where NSIntersectsRect is false.
[[nodiscard]] constexpr NSRect NSIntersectionRect(const NSRect& a, const NSRect& b) {
    if (!NSIntersectsRect(a, b)) {
        return NSZeroRect;
    }
    const double x = std::max(NSMinX(a), NSMinX(b));
    const double y = std::max(NSMinY(a), NSMinY(b));
    return {{x, y}, {std::min(NSMaxX(a), NSMaxX(b)) - x, std::min(NSMaxY(a), NSMaxY(b)) - y}};
}

/// The smallest rectangle around both. An empty one does not count, wherever it lies; of two empty ones it is
/// NSZeroRect.
[[nodiscard]] constexpr NSRect NSUnionRect(const NSRect& a, const NSRect& b) {
    if (NSIsEmptyRect(a)) {
        return NSIsEmptyRect(b) ? NSZeroRect : b;
    }
    if (NSIsEmptyRect(b)) {
        return a;
    }
    const double x = std::min(NSMinX(a), NSMinX(b));
    const double y = std::min(NSMinY(a), NSMinY(b));
    return {{x, y}, {std::max(NSMaxX(a), NSMaxX(b)) - x, std::max(NSMaxY(a), NSMaxY(b)) - y}};
}

/// Whether `outer` covers all of `inner`, its sides included. No rectangle contains an empty one.
[[nodiscard]] constexpr bool NSContainsRect(const NSRect& outer, const NSRect& inner) {
    return !NSIsEmptyRect(inner) && NSMinX(outer) <= NSMinX(inner) && NSMaxX(inner) <= NSMaxX(outer) &&
           NSMinY(outer) <= NSMinY(inner) && NSMaxY(inner) <= NSMaxY(outer);
}

/// Whether the pixel under the mouse at `point` belongs to `rect`: the hot spot lies at the pixel's top left, so the
/// left and the top side of the rectangle count as inside and the right and the bottom one do not. Which of the
/// horizontal sides is the top tells `flipped`, the flippedness of the coordinates.
[[nodiscard]] constexpr bool NSMouseInRect(const NSPoint& point, const NSRect& rect, bool flipped) {
    if (point.x < NSMinX(rect) || point.x >= NSMaxX(rect)) {
        return false;
    }
    return flipped ? point.y >= NSMinY(rect) && point.y < NSMaxY(rect)
                   : point.y > NSMinY(rect) && point.y <= NSMaxY(rect);
}

/// Whether `point` lies in `rect`: the sides with the smallest coordinates count as inside, those with the largest do
/// not, so of two rectangles side by side exactly one holds a point on the line between.
[[nodiscard]] constexpr bool NSPointInRect(const NSPoint& point, const NSRect& rect) {
    return NSMouseInRect(point, rect, true);
}

/// The smallest rectangle with whole coordinates around `rect`; NSZeroRect for an empty one.
[[nodiscard]] VXKIT_EXPORT NSRect NSIntegralRect(const NSRect& rect);

/// Cuts `rect` in two: `slice` is what lies within `amount` of the side `edge`, `remainder` the rest. An amount below 0
/// counts as 0, one beyond the rectangle as all of it; an empty rectangle gives two NSZeroRects. Either pointer may be
/// null.
VXKIT_EXPORT void NSDivideRect(const NSRect& rect, NSRect* slice, NSRect* remainder, double amount, NSRectEdge edge);

/// `{x, y}`, with the shortest digits that read back as the same number; the same under every locale.
[[nodiscard]] VXKIT_EXPORT QString NSStringFromPoint(const NSPoint& point);
/// `{width, height}`, digits as above.
[[nodiscard]] VXKIT_EXPORT QString NSStringFromSize(const NSSize& size);
/// `{{x, y}, {width, height}}`, digits as above.
[[nodiscard]] VXKIT_EXPORT QString NSStringFromRect(const NSRect& rect);

/// The same numbers in Qt's type; nothing is flipped, here and below.
[[nodiscard]] constexpr QPointF NSPointToQPointF(const NSPoint& point) {
    return {point.x, point.y};
}
/// The same numbers from Qt's type.
[[nodiscard]] constexpr NSPoint NSPointFromQPointF(const QPointF& point) {
    return {point.x(), point.y()};
}
/// The same numbers in Qt's type.
[[nodiscard]] constexpr QSizeF NSSizeToQSizeF(const NSSize& size) {
    return {size.width, size.height};
}
/// The same numbers from Qt's type.
[[nodiscard]] constexpr NSSize NSSizeFromQSizeF(const QSizeF& size) {
    return {size.width(), size.height()};
}
/// The same numbers in Qt's type; nothing is flipped.
[[nodiscard]] constexpr QRectF NSRectToQRectF(const NSRect& rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}
/// The same numbers from Qt's type; nothing is flipped.
[[nodiscard]] constexpr NSRect NSRectFromQRectF(const QRectF& rect) {
    return {{rect.x(), rect.y()}, {rect.width(), rect.height()}};
}

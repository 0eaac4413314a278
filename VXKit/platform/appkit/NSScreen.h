// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QPointer>
#include <QRect>
#include <QScreen>

#include <vector>

/// A rectangle in Qt's global coordinates, whose y grows downwards from the top of all screens, in screen coordinates.
/// Their origin is the bottom left corner of the primary screen and y grows upwards, so a screen to the left of it has
/// negative x and one below it negative y. `primary` is the primary screen in Qt's coordinates.
[[nodiscard]] constexpr NSRect NSScreenRectFromGlobal(const QRectF& global, const QRectF& primary) {
    return {{global.x() - primary.x(), primary.y() + primary.height() - global.y() - global.height()},
            {global.width(), global.height()}};
}
/// The way back, from screen coordinates to Qt's.
[[nodiscard]] constexpr QRectF NSScreenRectToGlobal(const NSRect& rect, const QRectF& primary) {
    return {rect.origin.x + primary.x(), primary.y() + primary.height() - rect.origin.y - rect.size.height,
            rect.size.width, rect.size.height};
}

/// A rectangle in Qt's global coordinates in screen coordinates, with the primary screen as it is now.
[[nodiscard]] VXKIT_EXPORT NSRect NSScreenRectFromGlobal(const QRectF& global);
/// The way back, with the primary screen as it is now.
[[nodiscard]] VXKIT_EXPORT QRectF NSScreenRectToGlobal(const NSRect& rect);
/// A point in Qt's global coordinates in screen coordinates, with the primary screen as it is now.
[[nodiscard]] VXKIT_EXPORT NSPoint NSScreenPointFromGlobal(const QPointF& global);

/// The whole points that a widget at `rect` takes up. The edges are rounded rather than the size, so that neighbours
/// still join; a negative size counts as none. Beyond what Qt can place the edge of that comes out, and 0 for NaN.
[[nodiscard]] VXKIT_EXPORT QRect NSRoundedEdges(const QRectF& rect);

/// One of the screens. A screen that is gone has empty frames. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSScreen {
public:
    /// The screen that the coordinates start from, where desktops have their panel: Qt's primary one, whichever window
    /// has the keyboard. AppKit: `+mainScreen`.
    [[nodiscard]] static NSScreen mainScreen();

    /// All screens, the main one first. AppKit: `+screens`.
    [[nodiscard]] static std::vector<NSScreen> screens();

    /// The whole screen, in screen coordinates. AppKit: `-frame`.
    [[nodiscard]] NSRect frame() const;

    /// The part that panels leave free, in screen coordinates. AppKit: `-visibleFrame`.
    [[nodiscard]] NSRect visibleFrame() const;

    /// Pixels a point. AppKit: `-backingScaleFactor`.
    [[nodiscard]] double backingScaleFactor() const;

private:
    explicit NSScreen(QScreen* screen) : m_screen(screen) {}

    QPointer<QScreen> m_screen;
};

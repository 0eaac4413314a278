// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QPoint>
#include <QRect>

#include <vector>

/// A screen as far as coordinates are concerned: its rectangle in Qt's global points, and pixels for each point.
struct VXKIT_EXPORT X11Screen {
    QRect geometry;
    double pixelRatio = 1;

    /// The screen's rectangle in pixels of the root window. Qt keeps the top left corner of a screen where the X server
    /// has it and divides by the factor only inside, so that corner is the same in points and in pixels.
    [[nodiscard]] QRect nativeGeometry() const;
};

/// The screens of the running application, the main one first.
[[nodiscard]] VXKIT_EXPORT std::vector<X11Screen> x11Screens();

/// The place in Qt's global points of a pixel of the root window, by the screen that holds it or else the nearest one.
/// Both have y downwards. Without a screen nothing is converted, here and below.
[[nodiscard]] VXKIT_EXPORT QPointF pointsFromNative(const QPoint& native, const std::vector<X11Screen>& screens);

/// The same for a rectangle, by the screen that holds its middle, as Qt finds the screen of a window. Sides are rounded
/// to whole points.
[[nodiscard]] VXKIT_EXPORT QRect pointsFromNative(const QRect& native, const std::vector<X11Screen>& screens);

/// The pixel of the root window at a place in Qt's global points.
[[nodiscard]] VXKIT_EXPORT QPoint nativeFromPoints(const QPointF& points, const std::vector<X11Screen>& screens);

/// The same for a rectangle, by the screen that holds its middle. Sides are rounded to whole pixels.
[[nodiscard]] VXKIT_EXPORT QRect nativeFromPoints(const QRect& points, const std::vector<X11Screen>& screens);

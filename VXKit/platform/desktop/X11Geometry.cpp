// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11Geometry.h>

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace {

/// The square of the distance from `point` to the nearest point of a rectangle; 0 within it.
double squaredDistance(const QPointF& point, const QRect& rect) {
    const double x = std::max({rect.left() - point.x(), 0.0, point.x() - (rect.left() + rect.width())});
    const double y = std::max({rect.top() - point.y(), 0.0, point.y() - (rect.top() + rect.height())});
    return x * x + y * y;
}

/// The first screen with `point` in the rectangle that `rectOf` tells of it, or else the nearest; null without screens.
template <class RectOf>
const X11Screen* screenAt(const QPointF& point, const std::vector<X11Screen>& screens, RectOf rectOf) {
    // A point on the line between two screens lies on the right or the lower one, as its pixel does.
    const auto holding = std::find_if(screens.begin(), screens.end(), [&](const X11Screen& screen) {
        const QRect rect = rectOf(screen);
        return point.x() >= rect.left() && point.x() < rect.left() + rect.width() && point.y() >= rect.top() &&
               point.y() < rect.top() + rect.height();
    });
    if (holding != screens.end()) {
        return &*holding;
    }
    const auto nearest =
        std::min_element(screens.begin(), screens.end(), [&](const X11Screen& left, const X11Screen& right) {
            return squaredDistance(point, rectOf(left)) < squaredDistance(point, rectOf(right));
        });
    return nearest == screens.end() ? nullptr : &*nearest;
}

QRect nativeGeometryOf(const X11Screen& screen) {
    return screen.nativeGeometry();
}

QRect geometryOf(const X11Screen& screen) {
    return screen.geometry;
}

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

QPoint roundedPoint(const QPointF& point) {
    return {rounded(point.x()), rounded(point.y())};
}

/// `point` with its distance from the corner of `screen` times `factor`.
QPointF scaledWithin(const X11Screen& screen, const QPointF& point, double factor) {
    const QPointF corner = screen.geometry.topLeft();
    return corner + (point - corner) * factor;
}

QRect scaledWithin(const X11Screen& screen, const QRect& rect, double factor) {
    const QPointF size(rect.width(), rect.height());
    const QPoint topLeft = roundedPoint(scaledWithin(screen, rect.topLeft(), factor));
    const QPoint bottomRight = roundedPoint(scaledWithin(screen, rect.topLeft() + size, factor));
    return {topLeft, QSize(bottomRight.x() - topLeft.x(), bottomRight.y() - topLeft.y())};
}

} // namespace

QRect X11Screen::nativeGeometry() const {
    return {geometry.topLeft(), QSize(rounded(geometry.width() * pixelRatio), rounded(geometry.height() * pixelRatio))};
}

std::vector<X11Screen> x11Screens() {
    std::vector<X11Screen> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        screens.push_back({screen->geometry(), screen->devicePixelRatio()});
    }
    return screens;
}

QPointF pointsFromNative(const QPoint& native, const std::vector<X11Screen>& screens) {
    const X11Screen* screen = screenAt(native, screens, nativeGeometryOf);
    return screen ? scaledWithin(*screen, native, 1 / screen->pixelRatio) : native;
}

QRect pointsFromNative(const QRect& native, const std::vector<X11Screen>& screens) {
    const X11Screen* screen = screenAt(QRectF(native).center(), screens, nativeGeometryOf);
    return screen ? scaledWithin(*screen, native, 1 / screen->pixelRatio) : native;
}

QPoint nativeFromPoints(const QPointF& points, const std::vector<X11Screen>& screens) {
    const X11Screen* screen = screenAt(points, screens, geometryOf);
    return roundedPoint(screen ? scaledWithin(*screen, points, screen->pixelRatio) : points);
}

QRect nativeFromPoints(const QRect& points, const std::vector<X11Screen>& screens) {
    const X11Screen* screen = screenAt(QRectF(points).center(), screens, geometryOf);
    return screen ? scaledWithin(*screen, points, screen->pixelRatio) : points;
}

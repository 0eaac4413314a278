// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSScreen.h>

#include <QGuiApplication>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

/// To the nearest whole number, so far out at most that a difference of two still is a number.
int roundedEdge(double edge) {
    constexpr double farthest = QWIDGETSIZE_MAX;
    return std::isnan(edge) ? 0 : qRound(std::clamp(edge, -farthest, farthest));
}

QRectF primaryGeometry() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? QRectF(primary->geometry()) : QRectF();
}

} // namespace

NSRect NSScreenRectFromGlobal(const QRectF& global) {
    return NSScreenRectFromGlobal(global, primaryGeometry());
}

QRectF NSScreenRectToGlobal(const NSRect& rect) {
    return NSScreenRectToGlobal(rect, primaryGeometry());
}

NSPoint NSScreenPointFromGlobal(const QPointF& global) {
    return NSScreenRectFromGlobal(QRectF(global, QSizeF(0, 0))).origin;
}

QRect NSRoundedEdges(const QRectF& rect) {
    const QPoint topLeft(roundedEdge(rect.x()), roundedEdge(rect.y()));
    const QPoint end(roundedEdge(rect.x() + std::max(0.0, rect.width())),
                     roundedEdge(rect.y() + std::max(0.0, rect.height())));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

NSScreen NSScreen::mainScreen() {
    return NSScreen(QGuiApplication::primaryScreen());
}

std::vector<NSScreen> NSScreen::screens() {
    std::vector<NSScreen> screens{mainScreen()};
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != QGuiApplication::primaryScreen()) {
            screens.push_back(NSScreen(screen));
        }
    }
    return screens;
}

NSRect NSScreen::frame() const {
    return m_screen ? NSScreenRectFromGlobal(QRectF(m_screen->geometry())) : NSZeroRect;
}

NSRect NSScreen::visibleFrame() const {
    return m_screen ? NSScreenRectFromGlobal(QRectF(m_screen->availableGeometry())) : NSZeroRect;
}

double NSScreen::backingScaleFactor() const {
    return m_screen ? m_screen->devicePixelRatio() : 1;
}

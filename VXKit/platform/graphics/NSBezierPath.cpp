// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSBezierPath.h>

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

constexpr double miterLimit = 10;

// How far the control points of a cubic lie from its ends, in radii, for a quarter of a circle.
constexpr double quarterCircle = 0.5522847498307936;

// How far, in pixels, a line may be from the curve that it stands for.
constexpr double curveTolerance = 0.02;
constexpr double mostLinesOfACurve = 1000;

// How many lines of equal parameter length stand for a curve. Its distance from them is at most three quarters of its
// largest second difference, divided by the square of their number.
int lineCount(const QPointF& start, const QPointF& control1, const QPointF& control2, const QPointF& end,
              double pixelRatio) {
    const QPointF first = start - 2 * control1 + control2;
    const QPointF second = control1 - 2 * control2 + end;
    const double difference = std::max(std::hypot(first.x(), first.y()), std::hypot(second.x(), second.y()));
    const double count = std::sqrt(0.75 * difference * pixelRatio / curveTolerance);
    return count > 1 ? static_cast<int>(std::ceil(std::min(count, mostLinesOfACurve))) : 1;
}

QPointF pointOfCurve(const QPointF& start, const QPointF& control1, const QPointF& control2, const QPointF& end,
                     double part) {
    const double rest = 1 - part;
    return rest * rest * rest * start + 3 * rest * rest * part * control1 + 3 * rest * part * part * control2 +
           part * part * part * end;
}

double clampedRadius(double radius, double length) {
    return radius > 0 ? std::min(radius, length / 2) : 0;
}

} // namespace

NSBezierPath NSBezierPath::bezierPathWithRect(const NSRect& rect) {
    NSBezierPath path;
    path.appendBezierPathWithRect(rect);
    return path;
}

NSBezierPath NSBezierPath::bezierPathWithRoundedRect(const NSRect& rect, double xRadius, double yRadius) {
    NSBezierPath path;
    path.appendBezierPathWithRoundedRect(rect, xRadius, yRadius);
    return path;
}

NSBezierPath NSBezierPath::bezierPathWithOvalInRect(const NSRect& rect) {
    NSBezierPath path;
    path.appendBezierPathWithOvalInRect(rect);
    return path;
}

void NSBezierPath::fillRect(const NSRect& rect) {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        NSRectFillUsingOperation(rect, context->compositingOperation());
    }
}

void NSBezierPath::appendBezierPathWithRect(const NSRect& rect) {
    moveToPoint(rect.origin);
    lineToPoint({NSMaxX(rect), NSMinY(rect)});
    lineToPoint({NSMaxX(rect), NSMaxY(rect)});
    lineToPoint({NSMinX(rect), NSMaxY(rect)});
    closePath();
}

void NSBezierPath::appendBezierPathWithRoundedRect(const NSRect& rect, double xRadius, double yRadius) {
    const double radiusX = clampedRadius(xRadius, NSWidth(rect));
    const double radiusY = clampedRadius(yRadius, NSHeight(rect));
    if (radiusX <= 0 || radiusY <= 0) {
        appendBezierPathWithRect(rect);
        return;
    }
    const double handleX = radiusX * (1 - quarterCircle);
    const double handleY = radiusY * (1 - quarterCircle);
    const double left = NSMinX(rect);
    const double right = NSMaxX(rect);
    const double bottom = NSMinY(rect);
    const double top = NSMaxY(rect);
    moveToPoint({left + radiusX, bottom});
    lineToPoint({right - radiusX, bottom});
    curveToPoint({right, bottom + radiusY}, {right - handleX, bottom}, {right, bottom + handleY});
    lineToPoint({right, top - radiusY});
    curveToPoint({right - radiusX, top}, {right, top - handleY}, {right - handleX, top});
    lineToPoint({left + radiusX, top});
    curveToPoint({left, top - radiusY}, {left + handleX, top}, {left, top - handleY});
    lineToPoint({left, bottom + radiusY});
    curveToPoint({left + radiusX, bottom}, {left, bottom + handleY}, {left + handleX, bottom});
    closePath();
}

void NSBezierPath::appendBezierPathWithOvalInRect(const NSRect& rect) {
    appendBezierPathWithRoundedRect(rect, NSWidth(rect) / 2, NSHeight(rect) / 2);
}

void NSBezierPath::moveToPoint(const NSPoint& point) {
    m_elements.push_back({NSMoveToBezierPathElement, {point}});
    m_subpathStart = point;
}

void NSBezierPath::lineToPoint(const NSPoint& point) {
    if (hasCurrentPoint("line")) {
        m_elements.push_back({NSLineToBezierPathElement, {point}});
    }
}

void NSBezierPath::curveToPoint(const NSPoint& endPoint, const NSPoint& controlPoint1, const NSPoint& controlPoint2) {
    if (hasCurrentPoint("curve")) {
        m_elements.push_back({NSCurveToBezierPathElement, {controlPoint1, controlPoint2, endPoint}});
    }
}

void NSBezierPath::closePath() {
    if (m_elements.empty() || m_elements.back().type == NSClosePathBezierPathElement) {
        return;
    }
    m_elements.push_back({NSClosePathBezierPathElement, {m_subpathStart}});
}

void NSBezierPath::setLineWidth(double lineWidth) {
    m_lineWidth = lineWidth > 0 ? lineWidth : 0;
}

void NSBezierPath::fill() const {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr || isEmpty()) {
        return;
    }
    const QPainterPath path = qtPathOfLines(context->pixelRatio());
    const QBrush brush = context->brush(context->fillColor());
    context->draw(path.boundingRect(), [&](QPainter& painter) { painter.fillPath(path, brush); });
}

void NSBezierPath::stroke() const {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr || isEmpty()) {
        return;
    }
    const QPainterPath path = qtPathOfLines(context->pixelRatio());
    // The other mitre of Qt's is cut at its limit, not left out beyond it.
    QPen pen(context->brush(context->strokeColor()), m_lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::SvgMiterJoin);
    pen.setMiterLimit(miterLimit);
    const double reach = std::max(m_lineWidth, 1.0) * miterLimit / 2;
    context->draw(path.boundingRect().adjusted(-reach, -reach, reach, reach),
                  [&](QPainter& painter) { painter.strokePath(path, pen); });
}

void NSBezierPath::setClip() const {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        context->resetClip();
        addClip();
    }
}

void NSBezierPath::addClip() const {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        context->painter().setClipPath(qtPathOfLines(context->pixelRatio()), Qt::IntersectClip);
    }
}

NSRect NSBezierPath::bounds() const {
    return isEmpty() ? NSZeroRect : NSRectFromQRectF(qtPath().boundingRect());
}

NSBezierPathElement NSBezierPath::elementAtIndex(int index, std::array<NSPoint, 3>* points) const {
    if (index < 0 || index >= elementCount()) {
        throw NSException(NSRangeException,
                          QStringLiteral("index %1 beyond the %2 elements of a path").arg(index).arg(elementCount()));
    }
    const Element& element = m_elements[static_cast<std::size_t>(index)];
    if (points != nullptr) {
        *points = element.points;
    }
    return element.type;
}

QPainterPath NSBezierPath::qtPath() const {
    return qtPathWithCurves([](QPainterPath& path, const std::array<NSPoint, 3>& points) {
        path.cubicTo(NSPointToQPointF(points[0]), NSPointToQPointF(points[1]), NSPointToQPointF(points[2]));
    });
}

QPainterPath NSBezierPath::qtPathOfLines(double pixelRatio) const {
    return qtPathWithCurves([pixelRatio](QPainterPath& path, const std::array<NSPoint, 3>& points) {
        const QPointF start = path.currentPosition();
        const QPointF first = NSPointToQPointF(points[0]);
        const QPointF second = NSPointToQPointF(points[1]);
        const QPointF end = NSPointToQPointF(points[2]);
        const int count = lineCount(start, first, second, end, pixelRatio);
        for (int line = 1; line < count; ++line) {
            path.lineTo(pointOfCurve(start, first, second, end, static_cast<double>(line) / count));
        }
        path.lineTo(end);
    });
}

QPainterPath NSBezierPath::qtPathWithCurves(const AddCurve& addCurve) const {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (const Element& element : m_elements) {
        const QPointF point = NSPointToQPointF(element.points[0]);
        switch (element.type) {
        case NSMoveToBezierPathElement:
            path.moveTo(point);
            break;
        case NSLineToBezierPathElement:
            path.lineTo(point);
            break;
        case NSCurveToBezierPathElement:
            addCurve(path, element.points);
            break;
        case NSClosePathBezierPathElement:
            path.closeSubpath();
            break;
        }
    }
    return path;
}

bool NSBezierPath::hasCurrentPoint(const char* operation) const {
    if (m_elements.empty()) {
        NSLog("A path has no point for a %@ to begin at.", QString::fromLatin1(operation));
        return false;
    }
    return true;
}

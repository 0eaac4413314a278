// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSGradient.h>

#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QBrush>
#include <QColor>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <cmath>
#include <utility>

namespace {

QBrush brushAcross(const QRectF& bounds, double angle, const NSColor& startingColor, const NSColor& endingColor) {
    const double radians = qDegreesToRadians(angle);
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    // Half the length at which the lines square to the gradient's pass through the corners.
    const double half = (std::abs(cosine) * bounds.width() + std::abs(sine) * bounds.height()) / 2;
    const QPointF way(cosine * half, sine * half);
    QLinearGradient gradient(bounds.center() - way, bounds.center() + way);
    gradient.setInterpolationMode(QGradient::ComponentInterpolation);
    gradient.setColorAt(0, startingColor.qtColor());
    gradient.setColorAt(1, endingColor.qtColor());
    return gradient;
}

} // namespace

NSGradient::NSGradient(NSColor startingColor, NSColor endingColor)
    : m_startingColor(std::move(startingColor)), m_endingColor(std::move(endingColor)) {}

void NSGradient::drawInRect(const NSRect& rect, double angle) const {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr || NSIsEmptyRect(rect)) {
        return;
    }
    const QRectF area = NSRectToQRectF(rect);
    const QBrush brush = brushAcross(area, angle, m_startingColor, m_endingColor);
    context->draw(area, [&](QPainter& painter) { painter.fillRect(area, brush); });
}

void NSGradient::drawInBezierPath(const NSBezierPath& path, double angle) const {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr || path.isEmpty()) {
        return;
    }
    const QPainterPath shape = path.qtPathOfLines(context->pixelRatio());
    const QBrush brush = brushAcross(NSRectToQRectF(path.bounds()), angle, m_startingColor, m_endingColor);
    context->draw(shape.boundingRect(), [&](QPainter& painter) { painter.fillPath(shape, brush); });
}

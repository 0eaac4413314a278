// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSView.h>

#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <QAbstractScrollArea>
#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRegion>

#include <algorithm>
#include <cmath>
#include <functional>
#include <typeinfo>
#include <utility>

namespace {

/// A view that draws, and the context that it draws into.
struct Focus {
    const ViewCore* view = nullptr;
    const NSGraphicsContext* context = nullptr;
};

Focus currentFocus;

/// How far from what throws it a shadow is seen, in points.
double reachOf(const NSShadow& shadow) {
    constexpr double spread = 1.5; // times the blur radius: three standard deviations
    return shadow.shadowBlurRadius() * spread +
           std::max(std::abs(shadow.shadowOffset().width), std::abs(shadow.shadowOffset().height));
}

/// Makes of what was painted on a black ground, of premultiplied format, so much of `color` as it is light.
void turnIntoInk(QImage& layer, const QColor& color) {
    constexpr int full = 255;
    const QRgb ink = color.rgba();
    for (int y = 0; y < layer.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(layer.scanLine(y));
        std::transform(line, line + layer.width(), line, [ink](QRgb pixel) {
            return qPremultiply(qRgba(qRed(ink), qGreen(ink), qBlue(ink), qGray(pixel) * qAlpha(ink) / full));
        });
    }
}

} // namespace

void ViewCore::display() {
    m_self->repaint();
}

void ViewCore::setNeedsDisplay(bool flag) {
    if (flag) {
        m_self->update();
    }
}

void ViewCore::setNeedsDisplayInRect(const NSRect& rect) {
    m_self->update(rectToWidget(rect).toAlignedRect());
}

void ViewCore::paint(QWidget& surface, const QRegion& dirtyRegion) {
    if (typeid(*m_self) == typeid(NSView)) {
        // Nothing to draw, and not worth a painter: in a page that slides, such a view is painted with each frame.
        return;
    }
    m_dirtyRect = dirtyRegion.boundingRect();
    m_paintHeight = surface.height();
    {
        QPainter painter(&surface);
        NSGraphicsContext context(painter, m_paintHeight, isFlipped());
        const QWidget* window = surface.window();
        const QPointF windowCorner = surface.mapFrom(window, QPointF(0, window->height()));
        context.setPatternPhase({windowCorner.x(), isFlipped() ? windowCorner.y() : m_paintHeight - windowCorner.y()});
        const Focus outer = std::exchange(currentFocus, {this, &context});
        drawRect(rectFromWidget(QRectF(m_dirtyRect)));
        currentFocus = outer;
    }
    m_paintHeight = -1;
}

const ViewCore* ViewCore::focusView() {
    const NSGraphicsContext* context = NSGraphicsContext::currentContext();
    return context && context == currentFocus.context ? currentFocus.view : nullptr;
}

void ViewCore::drawRect(const NSRect& /*dirtyRect*/) {
    // Nothing to catch: a widget that draws nothing by itself would only cost its layer.
    if (!NSGraphicsContext::currentContext() || m_self->metaObject() == &QWidget::staticMetaObject) {
        return drawAsWidget(m_dirtyRect);
    }
    drawCaught(Qt::transparent, [](QImage&) {});
}

void ViewCore::drawAsMask(const NSColor& color) {
    if (!NSGraphicsContext::currentContext()) {
        return drawAsWidget(m_dirtyRect);
    }
    drawCaught(Qt::black, [ink = color.qtColor()](QImage& layer) { turnIntoInk(layer, ink); });
}

/// The class's own painting opens a painter of its own on the widget, which knows nothing of the shadow and opacity in
/// force here. So it is caught in a layer, with room around for what throws its shadow into the dirty part.
void ViewCore::drawCaught(const QColor& ground, const std::function<void(QImage&)>& finish) {
    QWidget* const surface = [this]() -> QWidget* {
        auto* scrollArea = qobject_cast<QAbstractScrollArea*>(m_self);
        return scrollArea ? scrollArea->viewport() : m_self;
    }();
    const int reach = static_cast<int>(std::ceil(reachOf(NSGraphicsContext::currentContext()->shadow())));
    const QRect part = m_dirtyRect.adjusted(-reach, -reach, reach, reach) & surface->rect();
    const double pixelRatio = surface->devicePixelRatioF();
    QImage layer(part.size() * pixelRatio, QImage::Format_ARGB32_Premultiplied);
    if (layer.isNull()) {
        return;
    }
    layer.setDevicePixelRatio(pixelRatio);
    layer.fill(ground);
    m_capture = &layer;
    m_captureOffset = part.topLeft();
    drawAsWidget(part);
    m_capture = nullptr;
    finish(layer);
    NSImage::initWithQImage(layer)->drawInRect(rectFromWidget(QRectF(part)), NSZeroRect, NSCompositeSourceOver, 1);
}

QPaintDevice* ViewCore::paintCapture(QPoint* offset) const {
    if (m_capture) {
        *offset = m_captureOffset;
    }
    return m_capture;
}

QPaintDevice* CaptureViewport::redirected(QPoint* offset) const {
    QPaintDevice* capture = m_view.paintCapture(offset);
    return capture ? capture : QWidget::redirected(offset);
}

QPainter* CaptureViewport::sharedPainter() const {
    return m_view.isCapturingPaint() ? nullptr : QWidget::sharedPainter();
}

void ViewCore::drawAsWidget(const QRect& /*dirtyRect*/) {}

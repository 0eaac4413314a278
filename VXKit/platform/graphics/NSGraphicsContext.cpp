// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <VXKit/platform/graphics/GaussianBlur.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/PainterGeometry.h>

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace {

constexpr QPainter::RenderHints renderHints =
    QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing;

// A shadow farther away than any surface is large, in points, is never seen.
constexpr double farthestOffset = 1 << 20;

NSGraphicsContext* currentGraphicsContext = nullptr;

QPainter::CompositionMode compositionMode(NSCompositingOperation operation) {
    switch (operation) {
    case NSCompositeClear:
        return QPainter::CompositionMode_Clear;
    case NSCompositeCopy:
        return QPainter::CompositionMode_Source;
    case NSCompositeSourceOver:
        return QPainter::CompositionMode_SourceOver;
    case NSCompositeSourceIn:
        return QPainter::CompositionMode_SourceIn;
    case NSCompositeSourceOut:
        return QPainter::CompositionMode_SourceOut;
    case NSCompositeSourceAtop:
        return QPainter::CompositionMode_SourceAtop;
    case NSCompositeDestinationOver:
        return QPainter::CompositionMode_DestinationOver;
    case NSCompositeDestinationIn:
        return QPainter::CompositionMode_DestinationIn;
    case NSCompositeDestinationOut:
        return QPainter::CompositionMode_DestinationOut;
    case NSCompositeDestinationAtop:
        return QPainter::CompositionMode_DestinationAtop;
    case NSCompositeXOR:
        return QPainter::CompositionMode_Xor;
    case NSCompositePlusDarker:
        return QPainter::CompositionMode_Multiply;
    case NSCompositePlusLighter:
        return QPainter::CompositionMode_Plus;
    }
    return QPainter::CompositionMode_SourceOver;
}

bool addsPaint(NSCompositingOperation operation) {
    switch (operation) {
    case NSCompositeCopy:
    case NSCompositeSourceOver:
    case NSCompositeSourceAtop:
    case NSCompositePlusLighter:
        return true;
    default:
        return false;
    }
}

bool isVisible(const NSShadow& shadow) {
    const NSSize& offset = shadow.shadowOffset();
    const bool isNear = std::abs(offset.width) < farthestOffset && std::abs(offset.height) < farthestOffset;
    return isNear && shadow.shadowColor().alphaComponent() > 0 &&
           (shadow.shadowBlurRadius() > 0 || offset != NSZeroSize);
}

QRect grown(const QRect& rect, int margin) {
    return rect.adjusted(-margin, -margin, margin, margin);
}

// An image of `color` wherever the coverage says so.
QImage colored(const QImage& coverage, const QColor& color) {
    std::array<QRgb, 256> colorOfCoverage{};
    for (int value = 0; value < 256; ++value) {
        const int alpha = qRound(value * static_cast<double>(color.alphaF()));
        colorOfCoverage[static_cast<std::size_t>(value)] =
            qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
    }
    QImage image(coverage.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < coverage.height(); ++y) {
        const uchar* from = coverage.constScanLine(y);
        auto* to = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(from, from + coverage.width(), to, [&](uchar value) { return colorOfCoverage[value]; });
    }
    return image;
}

// The same pixels, not copied, each of them a point: brushes would scale a tile by its device pixel ratio.
QImage withPixelsForPoints(const QImage& image) {
    if (image.devicePixelRatio() == 1) {
        return image;
    }
    auto owner = std::make_unique<QImage>(image);
    const QImage& kept = *owner;
    return {kept.constBits(),    kept.width(),  kept.height(),
            kept.bytesPerLine(), kept.format(), [](void* ownerOfPixels) { delete static_cast<QImage*>(ownerOfPixels); },
            owner.release()};
}

QImage withOpacity(QImage image, double opacity) {
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(image.rect(), QColor::fromRgbF(0, 0, 0, static_cast<float>(opacity)));
    return image;
}

} // namespace

struct NSGraphicsContext::Private {
    struct State {
        NSColor fillColor;
        NSColor strokeColor;
        NSShadow shadow;
        NSCompositingOperation operation = NSCompositeSourceOver;
        NSPoint patternPhase;
    };

    State& state() { return states.back(); }

    QPainter& painter;
    bool flipped;
    NSGraphicsContext* previous;
    // From the coordinates that the context began with to those of the painter, and on to pixels.
    QTransform baseTransform;
    QTransform baseToDevice;
    // The clip of the painter that was handed in, in base coordinates, if it had one.
    bool hasBaseClip;
    QPainterPath baseClip;
    std::vector<State> states;
};

NSGraphicsContext::NSGraphicsContext(QPainter& painter, double height, bool flipped)
    : m_private(new Private{painter, flipped, currentGraphicsContext, {}, {}, painter.hasClipping(), {}, {}}) {
    painter.save();
    painter.setRenderHints(renderHints);
    painter.setPen(Qt::NoPen);
    if (!flipped) {
        painter.translate(0, height);
        painter.scale(1, -1);
    }
    m_private->baseTransform = painter.transform();
    m_private->baseToDevice = painter.deviceTransform();
    if (m_private->hasBaseClip) {
        m_private->baseClip = painter.clipPath();
    }
    Private::State state;
    state.patternPhase = NSMakePoint(0, flipped ? height : 0);
    m_private->states.push_back(state);
    currentGraphicsContext = this;
}

NSGraphicsContext::~NSGraphicsContext() {
    // One restore for each state left saved and one for the constructor's own.
    for (std::size_t count = m_private->states.size(); count > 0; --count) {
        m_private->painter.restore();
    }
    if (currentGraphicsContext == this) {
        currentGraphicsContext = m_private->previous;
        return;
    }
    // Focus on two images may end in any order.
    for (NSGraphicsContext* inner = currentGraphicsContext; inner != nullptr; inner = inner->m_private->previous) {
        if (inner->m_private->previous == this) {
            inner->m_private->previous = m_private->previous;
            return;
        }
    }
}

NSGraphicsContext* NSGraphicsContext::currentContext() {
    return currentGraphicsContext;
}

void NSGraphicsContext::saveGraphicsState() {
    if (currentGraphicsContext == nullptr) {
        return;
    }
    Private& context = *currentGraphicsContext->m_private;
    context.painter.save();
    // A copy of its own: growing the vector would take the element away under a reference.
    const Private::State state = context.state();
    context.states.push_back(state);
}

void NSGraphicsContext::restoreGraphicsState() {
    if (currentGraphicsContext == nullptr || currentGraphicsContext->m_private->states.size() == 1) {
        return;
    }
    currentGraphicsContext->m_private->painter.restore();
    currentGraphicsContext->m_private->states.pop_back();
}

bool NSGraphicsContext::isFlipped() const {
    return m_private->flipped;
}

void NSGraphicsContext::setPatternPhase(const NSPoint& phase) {
    m_private->state().patternPhase = phase;
}

NSPoint NSGraphicsContext::patternPhase() const {
    return m_private->state().patternPhase;
}

void NSGraphicsContext::setCompositingOperation(NSCompositingOperation operation) {
    m_private->state().operation = operation;
}

NSCompositingOperation NSGraphicsContext::compositingOperation() const {
    return m_private->state().operation;
}

double NSGraphicsContext::pixelRatio() const {
    return std::sqrt(std::abs(m_private->baseToDevice.determinant()));
}

QPainter& NSGraphicsContext::painter() const {
    return m_private->painter;
}

void NSGraphicsContext::draw(const QRectF& bounds, NSCompositingOperation operation,
                             const std::function<void(QPainter&)>& paint) {
    if (isVisible(shadow()) && addsPaint(operation)) {
        drawShadow(bounds, paint);
    }
    QPainter& painter = m_private->painter;
    const QPainter::CompositionMode mode = painter.compositionMode();
    painter.setCompositionMode(compositionMode(operation));
    paint(painter);
    painter.setCompositionMode(mode);
}

void NSGraphicsContext::draw(const QRectF& bounds, const std::function<void(QPainter&)>& paint) {
    draw(bounds, compositingOperation(), paint);
}

void NSGraphicsContext::drawShadow(const QRectF& bounds, const std::function<void(QPainter&)>& paint) {
    QPainter& painter = m_private->painter;
    const QTransform toDevice = painter.deviceTransform();
    const double ratio = pixelRatio();
    const double deviation = std::min(shadow().shadowBlurRadius() / 2 * ratio, softestShadowDeviation);
    const QPoint offset(qRound(shadow().shadowOffset().width * ratio), qRound(-shadow().shadowOffset().height * ratio));
    const int reach = GaussianBlurReach(deviation);

    // Only what casts a shadow on pixels that can be reached, and one pixel more around it for soft edges.
    const QRect visible = reachablePixels(painter);
    const QRect casting =
        grown(toDevice.mapRect(bounds).toAlignedRect(), 1) & grown(visible.translated(-offset), reach);
    if (visible.isEmpty() || casting.isEmpty()) {
        return;
    }
    const QRect area = grown(casting, reach);
    QImage layer(area.size(), QImage::Format_ARGB32_Premultiplied);
    if (layer.isNull()) {
        return;
    }
    layer.fill(Qt::transparent);
    QPainter layerPainter(&layer);
    layerPainter.setRenderHints(painter.renderHints());
    layerPainter.setPen(Qt::NoPen);
    layerPainter.setTransform(toDevice * QTransform::fromTranslate(-area.x(), -area.y()));
    layerPainter.setClipRect(toDevice.inverted().mapRect(QRectF(casting)));
    paint(layerPainter);
    layerPainter.end();

    QImage coverage = layer.convertToFormat(QImage::Format_Alpha8);
    GaussianBlur(coverage, deviation);
    painter.save();
    painter.setTransform(logicalToDevice(painter).inverted());
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(area.topLeft() + offset, colored(coverage, shadow().shadowColor().qtColor()));
    painter.restore();
}

QBrush NSGraphicsContext::brush(const NSColor& color) const {
    if (!color.patternImage()) {
        return color.qtColor();
    }
    const double ratio = pixelRatio();
    QImage tile = withPixelsForPoints(color.patternImage()->imageForScale(ratio));
    if (tile.isNull()) {
        return QColor(Qt::transparent);
    }
    if (color.alphaComponent() < 1) {
        tile = withOpacity(tile, color.alphaComponent());
    }
    const double point = 1 / ratio;
    const double tileHeight = tile.height() * point;
    const NSPoint phase = patternPhase();
    const QTransform tileToBase = isFlipped() ? QTransform(point, 0, 0, point, phase.x, phase.y - tileHeight)
                                              : QTransform(point, 0, 0, -point, phase.x, phase.y + tileHeight);
    QTransform tileToDevice = tileToBase * m_private->baseToDevice;
    if (tileToDevice.type() <= QTransform::TxTranslate) {
        tileToDevice = QTransform::fromTranslate(std::round(tileToDevice.dx()), std::round(tileToDevice.dy()));
    }
    QBrush brush(tile);
    brush.setTransform(tileToDevice * m_private->painter.deviceTransform().inverted());
    return brush;
}

const NSColor& NSGraphicsContext::fillColor() const {
    return m_private->state().fillColor;
}

const NSColor& NSGraphicsContext::strokeColor() const {
    return m_private->state().strokeColor;
}

const NSShadow& NSGraphicsContext::shadow() const {
    return m_private->state().shadow;
}

void NSGraphicsContext::setFillColor(const NSColor& color) {
    m_private->state().fillColor = color;
}

void NSGraphicsContext::setStrokeColor(const NSColor& color) {
    m_private->state().strokeColor = color;
}

void NSGraphicsContext::setShadow(const NSShadow& shadow) {
    m_private->state().shadow = shadow;
}

void NSGraphicsContext::resetClip() {
    QPainter& painter = m_private->painter;
    if (!m_private->hasBaseClip) {
        painter.setClipping(false);
        return;
    }
    const QTransform transform = painter.transform();
    painter.setTransform(m_private->baseTransform);
    painter.setClipPath(m_private->baseClip, Qt::ReplaceClip);
    painter.setTransform(transform);
}

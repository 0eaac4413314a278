// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/CIPerspectiveTransform.h>

#include <VXKit/platform/graphics/GaussianBlur.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/platform/graphics/NSShadow.h>
#include <VXKit/platform/graphics/PainterGeometry.h>

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

// Where Core Image has the corners at first.
constexpr NSPoint defaultTopLeft{118, 484};
constexpr NSPoint defaultTopRight{646, 507};
constexpr NSPoint defaultBottomRight{548, 140};
constexpr NSPoint defaultBottomLeft{155, 153};

// Points; corners beyond it are those of a card that nearly touches the eye.
constexpr double farthestCorner = 1 << 20;
// Square points: half the least sine times lengths that still makes a surface and not an edge.
constexpr double leastSurface = 1e-3;

// A shadow so soft, in pixels of standard deviation, shows none of them: it is made of a picture reduced to a quarter,
// at a sixteenth of the time.
constexpr double leastWideDeviation = 10;
constexpr int reduction = 4;
// Reducing, by the mean of the pixels, and enlarging, by lines between the means, each soften by themselves; the
// variance of both, in pixels that are reduced.
constexpr double varianceOfReduction = (1.0 + 2.0) / 12;

double crossOf(const QPointF& from, const QPointF& by, const QPointF& to) {
    const QPointF first = by - from;
    const QPointF second = to - by;
    return first.x() * second.y() - first.y() * second.x();
}

/// Whether a card has these corners that stands wholly before the eye and shows one of its sides.
bool isCard(const QPolygonF& corners) {
    const bool areNear = std::all_of(corners.begin(), corners.end(), [](const QPointF& corner) {
        return std::abs(corner.x()) < farthestCorner && std::abs(corner.y()) < farthestCorner; // NaN is not
    });
    if (!areNear) {
        return false;
    }
    int left = 0;
    for (qsizetype index = 0; index < 4; ++index) {
        const double cross = crossOf(corners[index], corners[(index + 1) % 4], corners[(index + 2) % 4]);
        if (!(std::abs(cross) > leastSurface)) {
            return false;
        }
        left += cross > 0 ? 1 : 0;
    }
    return left == 0 || left == 4;
}

QPolygonF cornersOf(const QSizeF& size) {
    return {QList<QPointF>{{0, 0}, {size.width(), 0}, {size.width(), size.height()}, {0, size.height()}}};
}

QImage withoutPixelRatio(QImage image) {
    image.setDevicePixelRatio(1);
    return image;
}

/// The alpha of `image` by the mean of squares of pixels, which may stick out of the image.
QImage reducedAlpha(const QImage& image) {
    const QSize size((image.width() + reduction - 1) / reduction, (image.height() + reduction - 1) / reduction);
    QImage reduced(size, QImage::Format_ARGB32_Premultiplied);
    constexpr int pixelsOfSquare = reduction * reduction;
    for (int y = 0; y < size.height(); ++y) {
        std::vector<int> sums(static_cast<std::size_t>(size.width()), 0);
        for (int row = 0; row < reduction; ++row) {
            // The last square takes the last pixels again for those that it lacks: its edge is to stay as solid as it
            // is.
            const auto* const from =
                reinterpret_cast<const QRgb*>(image.constScanLine(std::min(y * reduction + row, image.height() - 1)));
            for (int x = 0; x < size.width() * reduction; ++x) {
                sums[static_cast<std::size_t>(x / reduction)] += qAlpha(from[std::min(x, image.width() - 1)]);
            }
        }
        auto* const to = reinterpret_cast<QRgb*>(reduced.scanLine(y));
        std::transform(sums.begin(), sums.end(), to,
                       [](int sum) { return qRgba(0, 0, 0, (sum + pixelsOfSquare / 2) / pixelsOfSquare); });
    }
    return reduced;
}

/// What `coverage` of `color` looks like, at the size before the reduction, on the lines between the means of the
/// squares. Qt's own enlarging cuts the fractions off, by which a wide slope gets steps that are seen.
QImage enlargedCoverage(const QImage& coverage, const QColor& color, double opacity) {
    static_assert(reduction == 4, "the weights below are for quarters");
    std::array<QRgb, 256> colorOfCoverage{};
    for (int value = 0; value < 256; ++value) {
        const int alpha = qRound(value * static_cast<double>(color.alphaF()) * opacity);
        colorOfCoverage[static_cast<std::size_t>(value)] =
            qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
    }
    QImage enlarged(coverage.size() * reduction, QImage::Format_ARGB32_Premultiplied);
    const int width = coverage.width();
    std::vector<unsigned> row(static_cast<std::size_t>(width) + 2); // eighths of levels, one more on each side
    for (int y = 0; y < enlarged.height(); ++y) {
        // The middles of the small rows above and below, and how near to the upper one, in eighths.
        const int phase = y % reduction;
        const int upper = y / reduction - (phase < reduction / 2 ? 1 : 0);
        const unsigned nearness =
            phase < reduction / 2 ? 3 - 2 * static_cast<unsigned>(phase) : 11 - 2 * static_cast<unsigned>(phase);
        const uchar* const above = coverage.constScanLine(std::max(upper, 0));
        const uchar* const below = coverage.constScanLine(std::min(upper + 1, coverage.height() - 1));
        std::transform(above, above + width, below, row.begin() + 1,
                       [nearness](unsigned a, unsigned b) { return nearness * a + (8 - nearness) * b; });
        row.front() = row[1];
        row.back() = row[static_cast<std::size_t>(width)];
        auto* to = reinterpret_cast<QRgb*>(enlarged.scanLine(y));
        for (std::size_t x = 1; x <= static_cast<std::size_t>(width); ++x, to += reduction) {
            constexpr unsigned half = 32; // of the sixty-four parts of a level
            const unsigned left = row[x - 1];
            const unsigned here = row[x];
            const unsigned right = row[x + 1];
            to[0] = colorOfCoverage[(3 * left + 5 * here + half) / (2 * half)];
            to[1] = colorOfCoverage[(left + 7 * here + half) / (2 * half)];
            to[2] = colorOfCoverage[(7 * here + right + half) / (2 * half)];
            to[3] = colorOfCoverage[(5 * here + 3 * right + half) / (2 * half)];
        }
    }
    return enlarged;
}

} // namespace

CIPerspectiveTransform::CIPerspectiveTransform() {
    setDefaults();
}

void CIPerspectiveTransform::setDefaults() {
    setInputImage(nullptr);
    m_topRight = defaultTopRight;
    m_topLeft = defaultTopLeft;
    m_bottomRight = defaultBottomRight;
    m_bottomLeft = defaultBottomLeft;
}

void CIPerspectiveTransform::setInputImage(std::shared_ptr<NSImage> image) {
    m_inputImage = std::move(image);
    m_pixels.reset();
}

bool CIPerspectiveTransform::isUnwarped() const {
    const NSSize size = m_inputImage->size();
    const bool isUpright = m_bottomLeft == NSZeroPoint && m_bottomRight.y == 0 && m_topLeft.x == 0 &&
                           m_topRight == NSMakePoint(m_bottomRight.x, m_topLeft.y);
    // The picture has whole pixels, and what it is a picture of may have had fractions.
    return isUpright && std::abs(m_topRight.x - size.width) < 1 && std::abs(m_topRight.y - size.height) < 1;
}

const CIPerspectiveTransform::Pixels& CIPerspectiveTransform::pixelsForRatio(double ratio) const {
    if (!m_pixels || m_pixels->ratio != ratio) {
        const QImage image = withoutPixelRatio(m_inputImage->imageForScale(ratio));
        m_pixels = {ratio, image, image.isNull() ? QImage() : reducedAlpha(image)};
    }
    return *m_pixels;
}

void CIPerspectiveTransform::drawOutputImageInRect(const NSRect& rect, const NSRect& fromRect,
                                                   NSCompositingOperation operation, double fraction) const {
    NSGraphicsContext* const context = NSGraphicsContext::currentContext();
    if (!context || !m_inputImage || !m_inputImage->isValid() || !(fraction > 0) || NSIsEmptyRect(rect) ||
        NSIsEmptyRect(fromRect)) {
        return;
    }
    const double opacity = std::min(fraction, 1.0);
    const Pixels& pixels = pixelsForRatio(context->pixelRatio());
    const QPolygonF corners{QList<QPointF>{NSPointToQPointF(m_topLeft), NSPointToQPointF(m_topRight),
                                           NSPointToQPointF(m_bottomRight), NSPointToQPointF(m_bottomLeft)}};
    QTransform warp;
    if (pixels.image.isNull() || !isCard(corners) ||
        !QTransform::quadToQuad(cornersOf(pixels.image.size()), corners, warp)) {
        return;
    }
    // The result's y grows upwards; a flipped context shows it upright all the same.
    QTransform resultToContext =
        QTransform::fromTranslate(-fromRect.origin.x, -fromRect.origin.y) *
        QTransform::fromScale(rect.size.width / fromRect.size.width, rect.size.height / fromRect.size.height);
    if (context->isFlipped()) {
        resultToContext *= QTransform(1, 0, 0, -1, 0, rect.size.height);
    }
    resultToContext *= QTransform::fromTranslate(rect.origin.x, rect.origin.y);

    const QRectF area = NSRectToQRectF(rect);
    const QRectF covered = resultToContext.map(corners).boundingRect();
    const bool isCut = !area.contains(covered);
    const auto drawPicture = [&] {
        if (isUnwarped() && rect.size == fromRect.size && !isCut) {
            m_inputImage->drawAtPoint(NSPointFromQPointF(covered.topLeft()), NSZeroRect, operation, opacity);
            return;
        }
        context->draw(covered & area, operation, [&](QPainter& painter) {
            painter.save();
            if (isCut) {
                painter.setClipRect(area, Qt::IntersectClip);
            }
            painter.setOpacity(opacity);
            painter.setTransform(warp * resultToContext, true);
            painter.drawImage(QPointF(0, 0), pixels.image);
            painter.restore();
        });
    };
    const NSShadow shadow = context->shadow();
    const double deviation = shadow.shadowBlurRadius() / 2 * context->pixelRatio();
    if (operation != NSCompositeSourceOver || deviation < leastWideDeviation ||
        shadow.shadowColor().alphaComponent() <= 0) {
        drawPicture();
        return;
    }
    drawWideShadow(*context, shadow, warp * resultToContext, rect, opacity);
    context->setShadow(NSShadow());
    drawPicture();
    context->setShadow(shadow);
}

/// What NSGraphicsContext::draw does for any shadow, at a fraction of the resolution.
void CIPerspectiveTransform::drawWideShadow(const NSGraphicsContext& context, const NSShadow& shadow,
                                            const QTransform& imageToContext, const NSRect& rect,
                                            double opacity) const {
    const NSSize& distance = shadow.shadowOffset();
    if (!(std::abs(distance.width) < farthestCorner && std::abs(distance.height) < farthestCorner)) {
        return;
    }
    const Pixels& pixels = *m_pixels;
    QPainter& painter = context.painter();
    const QTransform toDevice = painter.deviceTransform();
    const double ratio = context.pixelRatio();
    const double deviation = std::min(shadow.shadowBlurRadius() / 2 * ratio, softestShadowDeviation) / reduction;
    const double blur = std::sqrt(deviation * deviation - varianceOfReduction);
    const QPoint offset(qRound(distance.width * ratio), qRound(-distance.height * ratio));

    const QTransform imageToDevice = imageToContext * toDevice;
    const QRect covered =
        (imageToDevice.map(cornersOf(pixels.image.size())).boundingRect() & toDevice.mapRect(NSRectToQRectF(rect)))
            .toAlignedRect();
    const int reach = (GaussianBlurReach(blur) + 1) * reduction;
    const QRect visible = reachablePixels(painter).translated(-offset);
    const QRect casting = covered & visible.adjusted(-reach, -reach, reach, reach);
    if (visible.isEmpty() || casting.isEmpty()) {
        return;
    }
    const QPoint corner = casting.topLeft() - QPoint(reach, reach);
    const QSize layerSize((casting.width() + 2 * reach) / reduction + 1,
                          (casting.height() + 2 * reach) / reduction + 1);
    QImage layer(layerSize, QImage::Format_ARGB32_Premultiplied);
    if (layer.isNull()) {
        return;
    }
    layer.fill(Qt::transparent);
    const QTransform deviceToLayer =
        QTransform::fromTranslate(-corner.x(), -corner.y()) * QTransform::fromScale(1.0 / reduction, 1.0 / reduction);
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter.renderHints());
        layerPainter.setTransform(QTransform::fromScale(reduction, reduction) * imageToDevice * deviceToLayer);
        const QRectF solid({0, 0}, QSizeF(pixels.image.size()) / reduction);
        layerPainter.drawImage(solid, pixels.reduced, solid);
        // Not a clip, which would end on whole pixels of the layer.
        QPainterPath beyond;
        beyond.addRect(QRectF(layer.rect()));
        beyond.addPolygon((toDevice * deviceToLayer).map(QPolygonF(NSRectToQRectF(rect))));
        layerPainter.resetTransform();
        layerPainter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        layerPainter.fillPath(beyond, Qt::black);
    }
    QImage coverage = layer.convertToFormat(QImage::Format_Alpha8);
    GaussianBlur(coverage, blur);
    const QImage enlarged = enlargedCoverage(coverage, shadow.shadowColor().qtColor(), opacity);
    painter.save();
    painter.setTransform(logicalToDevice(painter).inverted());
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(corner + offset, enlarged);
    painter.restore();
}

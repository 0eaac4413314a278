// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/Backdrop.h>

#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/graphics/GaussianBlur.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QPainter>

#include <algorithm>
#include <array>

namespace {

constexpr unsigned full = 255;

/// Blurs each of the four channels by itself, as premultiplied colours can be.
void blurColors(QImage& image, double deviation) {
    constexpr std::array<int, 4> shifts{0, 8, 16, 24};
    QImage channel(image.size(), QImage::Format_Alpha8);
    QImage blurred(image.size(), image.format());
    blurred.fill(Qt::transparent);
    for (const int shift : shifts) {
        for (int y = 0; y < image.height(); ++y) {
            const auto* const line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            std::transform(line, line + image.width(), channel.scanLine(y),
                           [shift](QRgb pixel) { return static_cast<uchar>(pixel >> static_cast<unsigned>(shift)); });
        }
        GaussianBlur(channel, deviation);
        for (int y = 0; y < image.height(); ++y) {
            const uchar* const values = channel.constScanLine(y);
            auto* const line = reinterpret_cast<QRgb*>(blurred.scanLine(y));
            std::transform(values, values + image.width(), line, line, [shift](uchar value, QRgb pixel) {
                return pixel | static_cast<QRgb>(value) << static_cast<unsigned>(shift);
            });
        }
    }
    image = blurred;
}

/// Makes each pixel as transparent as `coverage` is beside the body of its window, which is in the middle.
void limitTo(const QImage& coverage, QImage& image) {
    const unsigned solid = std::max(1U, static_cast<unsigned>(qAlpha(coverage.pixel(coverage.rect().center()))));
    for (int y = 0; y < image.height(); ++y) {
        const auto* const limits = reinterpret_cast<const QRgb*>(coverage.constScanLine(y));
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(line, line + image.width(), limits, line, [solid](QRgb pixel, QRgb limit) {
            const unsigned share = std::min(full, static_cast<unsigned>(qAlpha(limit)) * full / solid);
            const auto channel = [share](int value) {
                return static_cast<int>((static_cast<unsigned>(value) * share + full / 2) / full);
            };
            return qRgba(channel(qRed(pixel)), channel(qGreen(pixel)), channel(qBlue(pixel)), channel(qAlpha(pixel)));
        });
    }
}

} // namespace

QImage blurredBackdrop(NSWindow& below, const NSRect& frame, double standardDeviation, const QImage& coverage) {
    const double pixelRatio = coverage.devicePixelRatio();
    const auto snapshot = snapshotOfWindow(below);
    if (!snapshot || coverage.isNull()) {
        return {};
    }
    const double deviation = standardDeviation * pixelRatio;
    const int reach = GaussianBlurReach(deviation);
    const QPointF corner = NSScreenRectToGlobal(below.frame()).topLeft() - NSScreenRectToGlobal(frame).topLeft();
    // With as much around as is blurred into it.
    QImage behind(coverage.size() + QSize(2 * reach, 2 * reach), QImage::Format_ARGB32_Premultiplied);
    behind.fill(Qt::transparent);
    {
        QPainter painter(&behind);
        QImage pixels = snapshot->imageForScale(pixelRatio);
        pixels.setDevicePixelRatio(1);
        painter.drawImage(QPointF(reach, reach) + corner * pixelRatio, pixels);
    }
    blurColors(behind, deviation);
    QImage backdrop = behind.copy(QRect(QPoint(reach, reach), coverage.size()));
    limitTo(coverage, backdrop);
    backdrop.setDevicePixelRatio(pixelRatio);
    return backdrop;
}

// SPDX-License-Identifier: MIT
#include <tests/graphics/GraphicsTestSupport.h>

#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>

QImage drawn(NSSize size, double pixelRatio, const std::function<void()>& drawing, Flipped flipped, QColor background) {
    QImage image(qRound(size.width * pixelRatio), qRound(size.height * pixelRatio),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    image.setDevicePixelRatio(pixelRatio);
    QPainter painter(&image);
    {
        const NSGraphicsContext context(painter, size.height, flipped == Flipped::Yes);
        drawing();
    }
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

QImage drawn(NSSize size, const std::function<void()>& drawing) {
    return drawn(size, 1, drawing);
}

QImage plain(QSize pixels, QRect rect, QColor color, QColor background) {
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect, color);
    return image;
}

int difference(const QImage& left, const QImage& right) {
    if (left.size() != right.size()) {
        return 256;
    }
    int largest = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            // The channels as they are stored, multiplied by alpha.
            const auto* a = reinterpret_cast<const QRgb*>(left.constScanLine(y)) + x;
            const auto* b = reinterpret_cast<const QRgb*>(right.constScanLine(y)) + x;
            largest = std::max({largest, std::abs(qRed(*a) - qRed(*b)), std::abs(qGreen(*a) - qGreen(*b)),
                                std::abs(qBlue(*a) - qBlue(*b)), std::abs(qAlpha(*a) - qAlpha(*b))});
        }
    }
    return largest;
}

QRect inkOf(const QImage& image) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

std::ostream& operator<<(std::ostream& stream, const NSPoint& point) {
    return stream << NSStringFromPoint(point).toStdString();
}

std::ostream& operator<<(std::ostream& stream, const NSSize& size) {
    return stream << NSStringFromSize(size).toStdString();
}

std::ostream& operator<<(std::ostream& stream, const NSRect& rect) {
    return stream << NSStringFromRect(rect).toStdString();
}

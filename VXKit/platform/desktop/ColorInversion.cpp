// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/ColorInversion.h>

#include <QChildEvent>
#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmap>
#include <QTransform>

namespace {

/// In a pixel of four bytes, the one with alpha and those with colours.
constexpr QRgb alphaByte = 0xff000000;
constexpr QRgb oneOfEachColor = 0x00010101;

/// The pixels of `device`, for a painter that is active on it; null where it does not paint by pixels.
QImage* imageOf(QPaintDevice* device) {
    return device && device->devType() == QInternal::Image ? static_cast<QImage*>(device) : nullptr;
}

bool hasInvertibleFormat(const QImage& image) {
    return image.format() == QImage::Format_ARGB32_Premultiplied || image.format() == QImage::Format_RGB32;
}

} // namespace

void invertColors(QImage& image, const QRegion& region) {
    // Without an alpha channel that byte may hold anything.
    const QRgb solid = image.hasAlphaChannel() ? 0 : alphaByte;
    for (const QRect& wanted : region) {
        const QRect rect = wanted & image.rect();
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = rect.left(); x <= rect.right(); ++x) {
                // No colour is above alpha, so the subtraction of all three at once borrows from none of them.
                const QRgb pixel = line[x] | solid;
                line[x] = (pixel & alphaByte) | ((pixel >> 24U) * oneOfEachColor - (pixel & ~alphaByte));
            }
        }
    }
}

ColorInversion::ColorInversion(QWidget& window) : QFocusFrame(&window) {
    setAcceptDrops(false);
    for (QWidget* child : window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child != this) {
            child->installEventFilter(this);
        }
    }
    window.installEventFilter(this);
    setGeometry(window.rect());
    raise();
    show();
}

ColorInversion::~ColorInversion() = default;

bool ColorInversion::event(QEvent* event) {
    // Scrolling the window moves its children. No moveEvent, since a focus frame keeps its moves from itself.
    if (event->type() == QEvent::Move) {
        setGeometry(parentWidget()->rect());
    }
    return QFocusFrame::event(event);
}

void ColorInversion::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    QPaintDevice* device = painter.paintEngine()->paintDevice();
    const QTransform toPixels = painter.deviceTransform();
    const QRegion pixels = toPixels.map(event->region());
    if (QImage* image = imageOf(device); image && hasInvertibleFormat(*image)) {
        invertColors(*image, pixels);
        return;
    }
    // A picture of the window that somebody asked for, whose pixels are at hand only as a copy.
    QImage copy;
    if (const QImage* image = imageOf(device)) {
        copy = image->copy();
    } else if (device && device->devType() == QInternal::Pixmap) {
        copy = static_cast<QPixmap*>(device)->toImage();
    }
    if (copy.isNull()) {
        return;
    }
    copy.convertTo(QImage::Format_ARGB32_Premultiplied);
    copy.setDevicePixelRatio(1);
    invertColors(copy, pixels);
    painter.setClipRegion(event->region());
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.setTransform(toPixels.inverted(), true);
    painter.drawImage(0, 0, copy);
}

bool ColorInversion::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
    case QEvent::ChildAdded:
        if (object == parent()) {
            auto* child = static_cast<QChildEvent*>(event)->child();
            if (child != this && child->isWidgetType()) {
                child->installEventFilter(this);
                raise();
            }
        }
        break;
    case QEvent::ZOrderChange:
        if (object != parent() && object->parent() == parent()) {
            raise();
        }
        break;
    case QEvent::Resize:
        if (object == parent()) {
            setGeometry(parentWidget()->rect());
        }
        break;
    default:
        break;
    }
    return false;
}

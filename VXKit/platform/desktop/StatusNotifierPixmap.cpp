// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/StatusNotifierPixmap.h>

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QtEndian>

#include <cstring>

StatusNotifierPixmap statusNotifierPixmap(const QImage& image) {
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    const qsizetype bytesOfRow = qsizetype{argb.width()} * qsizetype{sizeof(QRgb)};
    StatusNotifierPixmap pixmap{argb.width(), argb.height(), QByteArray(bytesOfRow * argb.height(), Qt::Uninitialized)};
    for (int y = 0; y < argb.height(); ++y) {
        qToBigEndian<QRgb>(argb.constScanLine(y), argb.width(), pixmap.pixels.data() + y * bytesOfRow);
    }
    return pixmap;
}

StatusNotifierPixmaps statusNotifierPixmaps(const QImage& atTwoPixelsAPoint) {
    const QImage halved =
        atTwoPixelsAPoint.scaled(atTwoPixelsAPoint.size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return {statusNotifierPixmap(halved), statusNotifierPixmap(atTwoPixelsAPoint)};
}

void registerStatusNotifierTypes() {
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmaps>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.pixels;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.pixels;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.icon << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.icon >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

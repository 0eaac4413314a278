// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QMetaType>

class QDBusArgument;

/// A picture as StatusNotifier items send it: pixels of four bytes, alpha first, colours not multiplied by it, row by
/// row from the top.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    friend bool operator==(const StatusNotifierPixmap&, const StatusNotifierPixmap&) = default;
};

using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

/// What stands for a text with a picture in the protocol; the kit's items have the text alone.
struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps icon;
    QString title;
    QString text;
};

Q_DECLARE_METATYPE(StatusNotifierPixmap)
Q_DECLARE_METATYPE(StatusNotifierPixmaps)
Q_DECLARE_METATYPE(StatusNotifierToolTip)

/// `image`, whatever its format, as it is sent.
[[nodiscard]] VXKIT_EXPORT StatusNotifierPixmap statusNotifierPixmap(const QImage& image);

/// The pixmaps of an item that was drawn at 2 pixels a point: for panels of 1 pixel a point, each pixel the mean of
/// four, and as it was drawn.
[[nodiscard]] VXKIT_EXPORT StatusNotifierPixmaps statusNotifierPixmaps(const QImage& atTwoPixelsAPoint);

/// Makes the types above known to the bus; to be called before they are sent or received. Calling it twice is harmless.
VXKIT_EXPORT void registerStatusNotifierTypes();

VXKIT_EXPORT QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierPixmap& pixmap);
VXKIT_EXPORT const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierPixmap& pixmap);
VXKIT_EXPORT QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierToolTip& toolTip);
VXKIT_EXPORT const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierToolTip& toolTip);

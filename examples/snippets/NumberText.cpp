// SPDX-License-Identifier: MIT
#include "NumberText.h"

#include <QLocale>

QString numbered(qint64 count, const char* one, const char* many) {
    return QLocale(QLocale::English).toString(count) + QLatin1Char(' ') + QString::fromLatin1(count == 1 ? one : many);
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSPercentEscapes.h>

#include <QByteArray>

QString NSStringByAddingPercentEscapes(const QString& string) {
    // Letters, digits and -._~ stay by themselves.
    constexpr const char* alsoLegal = "!*'();/?:@&=+$,";
    return QString::fromLatin1("") + QString::fromLatin1(string.toUtf8().toPercentEncoding(alsoLegal));
}

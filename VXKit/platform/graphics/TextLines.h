// SPDX-License-Identifier: MIT
// What everything that lays text out in lines goes by; for the platform alone.
#pragma once

#include <QChar>
#include <QFontMetricsF>
#include <QString>

/// A line must fit in a width or height of just its measured size, though the layout counts in 64ths of a point.
inline constexpr double textTolerance = 1.0 / 16;

/// Every kind of line end as the one that the layout knows.
[[nodiscard]] inline QString withLineSeparators(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (const QChar end : {QChar(u'\n'), QChar(u'\r'), QChar(QChar::ParagraphSeparator)}) {
        text.replace(end, QChar(QChar::LineSeparator));
    }
    return text;
}

/// From one baseline to the next, in points.
[[nodiscard]] inline double lineHeight(const QFontMetricsF& metrics) {
    return metrics.height() + metrics.leading();
}

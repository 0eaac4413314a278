// SPDX-License-Identifier: MIT
#include "ContactSheet.h"

#include <VXKit/platform/graphics/NSFont.h>

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Points.
constexpr double sheetWidth = 1120;
constexpr double sheetMargin = 24;
constexpr double gap = 16;
constexpr double captionHeight = 18;
constexpr double titleHeight = 34;
constexpr double largestWidth = 256;
constexpr double largestHeight = 220;
constexpr double sheetCaptionSize = 10;
constexpr double sheetTitleSize = 15;

constexpr QRgb sheetColor = 0xfff4f4f2;
constexpr QRgb captionColor = 0xff3c4046;

} // namespace

struct ContactSheet::Row {
    QString title; // of the section that begins with it
    std::vector<const Entry*> entries;
    double y;
    double height; // of its pictures
};

void ContactSheet::beginSection(const QString& title) {
    m_sections.push_back({title, {{}}});
}

void ContactSheet::beginRow() {
    if (!m_sections.back().rows.back().empty()) {
        m_sections.back().rows.emplace_back();
    }
}

void ContactSheet::add(const QString& caption, const QImage& picture) {
    const QSizeF size = QSizeF(picture.size()) / picture.devicePixelRatio();
    const double shrink = std::min({1.0, largestWidth / size.width(), largestHeight / size.height()});
    m_sections.back().rows.back().push_back({caption, picture, size * shrink});
}

/// A row ends where the next picture, or its caption, would leave the sheet.
std::vector<ContactSheet::Row> ContactSheet::rows() const {
    const QFontMetricsF metrics(NSFont::systemFontOfSize(sheetCaptionSize).qtFont());
    std::vector<Row> rows;
    double y = sheetMargin;
    const auto beginLine = [&](const QString& title) {
        y += title.isNull() ? 0 : titleHeight;
        rows.push_back({title, {}, y, 0});
    };
    const auto endLine = [&] { y += rows.back().height + captionHeight + gap; };
    for (const Section& section : m_sections) {
        QString title = section.title;
        for (const std::vector<Entry>& row : section.rows) {
            if (row.empty()) {
                continue;
            }
            beginLine(std::exchange(title, QString()));
            double x = sheetMargin;
            for (const Entry& entry : row) {
                const double width = std::max(entry.size.width(), metrics.horizontalAdvance(entry.caption));
                if (x > sheetMargin && x + width > sheetWidth - sheetMargin) {
                    endLine();
                    beginLine({});
                    x = sheetMargin;
                }
                rows.back().entries.push_back(&entry);
                rows.back().height = std::max(rows.back().height, std::ceil(entry.size.height()));
                x += width + gap;
            }
            endLine();
        }
    }
    return rows;
}

QImage ContactSheet::picture() const {
    double ratio = 1;
    const std::vector<Row> all = rows();
    for (const Row& row : all) {
        for (const Entry* entry : row.entries) {
            ratio = std::max(ratio, entry->picture.devicePixelRatio());
        }
    }
    const double height =
        all.empty() ? 2 * sheetMargin : all.back().y + all.back().height + captionHeight + sheetMargin;
    QImage sheet((QSizeF(sheetWidth, height) * ratio).toSize(), QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(QColor::fromRgb(sheetColor));

    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setPen(QColor::fromRgb(captionColor));
    const QFont captionFont = NSFont::systemFontOfSize(sheetCaptionSize).qtFont();
    const QFontMetricsF metrics(captionFont);
    for (const Row& row : all) {
        painter.setFont(NSFont::boldSystemFontOfSize(sheetTitleSize).qtFont());
        painter.drawText(QRectF(sheetMargin, row.y - titleHeight, sheetWidth, titleHeight), Qt::AlignVCenter,
                         row.title);
        painter.setFont(captionFont);
        double x = sheetMargin;
        for (const Entry* entry : row.entries) {
            // Shrunk here, because the painter alone looks at few of the pixels that become one.
            const QSize pixels = (entry->size * ratio).toSize();
            const QImage shown = pixels == entry->picture.size()
                                     ? entry->picture
                                     : entry->picture.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            painter.drawImage(QRectF(QPointF(x, row.y), QSizeF(pixels) / ratio), shown);
            const double width = metrics.horizontalAdvance(entry->caption);
            painter.drawText(QRectF(x, row.y + row.height, width + 1, captionHeight), Qt::AlignVCenter, entry->caption);
            x += std::max(entry->size.width(), width) + gap;
        }
    }
    return sheet;
}

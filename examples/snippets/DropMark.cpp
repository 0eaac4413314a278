// SPDX-License-Identifier: MIT
#include "DropMark.h"

#include <QPainter>

namespace {

// Points.
constexpr double frameInset = 5;
constexpr double frameWidth = 2;
constexpr double frameRadius = 8;
constexpr int labelPadding = 14;
constexpr int labelHeight = 34;

constexpr int shadeAlpha = 150; // of 255, of what is behind
constexpr int tintAlpha = 36;   // of 255

} // namespace

DropMark::DropMark(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropMark::showOver(const QRect& area, const QString& text) {
    m_text = text;
    setAccessibleName(text);
    setGeometry(area);
    raise();
    show();
    update();
}

void DropMark::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor shade = palette().color(QPalette::Base);
    shade.setAlpha(shadeAlpha);
    painter.fillRect(rect(), shade);
    const QColor highlight = palette().color(QPalette::Highlight).lighter();
    QColor tint = highlight;
    tint.setAlpha(tintAlpha);
    painter.setPen(QPen(highlight, frameWidth));
    painter.setBrush(tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(frameInset, frameInset, -frameInset, -frameInset), frameRadius,
                            frameRadius);

    QRectF label(0, 0, fontMetrics().horizontalAdvance(m_text) + 2 * labelPadding, labelHeight);
    label.moveCenter(QRectF(rect()).center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(label, labelHeight / 2.0, labelHeight / 2.0);
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(label, Qt::AlignCenter | Qt::TextSingleLine, m_text);
}

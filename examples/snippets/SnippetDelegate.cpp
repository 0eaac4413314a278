// SPDX-License-Identifier: MIT
#include "SnippetDelegate.h"

#include "SnippetsListModel.h"

#include <QPainter>

namespace {

// Points.
constexpr int rowSideMargin = 12;
constexpr int topMargin = 8;
constexpr int lineSpacing = 3;
constexpr int columnSpacing = 10;
constexpr int smallestWidth = 120;

constexpr double selectedDetailOpacity = 0.8;
constexpr int hoverAlpha = 14; // of 255, white over the list

QFont titleFont(const QFont& font) {
    QFont bold = font;
    bold.setWeight(QFont::DemiBold);
    return bold;
}

QFont detailFont(const QFont& font) {
    QFont small = font;
    if (font.pixelSize() > 0) {
        small.setPixelSize(font.pixelSize() - 1);
    } else {
        small.setPointSizeF(font.pointSizeF() - 1.0);
    }
    return small;
}

QString useCountText(const QModelIndex& index) {
    const qlonglong count = index.data(SnippetsListModel::UseCountRole).toLongLong();
    return count == 0 ? QString() : QStringLiteral("used %1×").arg(count);
}

/// Draws `left` and `right` on one line, the left one elided where the two would meet.
void drawLine(QPainter* painter, const QRect& line, const QString& left, const QFont& leftFont, const QColor& leftColor,
              const QString& right, const QFont& rightFont, const QColor& rightColor) {
    const int rightWidth = right.isEmpty() ? 0 : QFontMetrics(rightFont).horizontalAdvance(right) + columnSpacing;
    const QRect leftPart = line.adjusted(0, 0, -rightWidth, 0);
    painter->setFont(leftFont);
    painter->setPen(leftColor);
    painter->drawText(leftPart, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      QFontMetrics(leftFont).elidedText(left, Qt::ElideRight, leftPart.width()));
    painter->setFont(rightFont);
    painter->setPen(rightColor);
    painter->drawText(line, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, right);
}

} // namespace

void SnippetDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (!isSelected && option.state.testFlag(QStyle::State_MouseOver)) {
        painter->fillRect(option.rect, QColor(255, 255, 255, hoverAlpha));
    }

    const QColor titleColor = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text);
    QColor detailColor = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::PlaceholderText);
    if (isSelected) {
        detailColor.setAlphaF(static_cast<float>(selectedDetailOpacity));
    }
    const QFont bold = titleFont(option.font);
    const QFont small = detailFont(option.font);
    QRect line = option.rect.adjusted(rowSideMargin, topMargin, -rowSideMargin, 0);
    line.setHeight(QFontMetrics(bold).height());
    drawLine(painter, line, index.data().toString(), bold, titleColor,
             index.data(SnippetsListModel::DateRole).toString(), small, detailColor);
    line.translate(0, line.height() + lineSpacing);
    line.setHeight(QFontMetrics(small).height());
    drawLine(painter, line, index.data(SnippetsListModel::FirstLineRole).toString(), small, detailColor,
             useCountText(index), small, detailColor);
    painter->restore();
}

QSize SnippetDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const {
    const int lines = QFontMetrics(titleFont(option.font)).height() + QFontMetrics(detailFont(option.font)).height();
    return {smallestWidth, lines + 2 * topMargin + lineSpacing};
}

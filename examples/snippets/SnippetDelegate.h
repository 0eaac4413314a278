// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

/// Paints a snippet's row on two lines:
///
///     Title                                 14:02
///     First line of the text, greyed      used 3×
///
/// Every row has the same height, which the font gives. The row's background and the highlight of the selection are the
/// table's.
class SnippetDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

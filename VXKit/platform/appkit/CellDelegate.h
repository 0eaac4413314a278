// SPDX-License-Identifier: MIT
// Private to NSTableView.
#pragma once

#include <VXKit/platform/appkit/NSTableView.h>

#include <QStyledItemDelegate>

/// Lets the cells of the table draw, and take the clicks. Belongs to its table.
class NSTableView::CellDelegate : public QStyledItemDelegate {
public:
    explicit CellDelegate(NSTableView& table) : QStyledItemDelegate(&table), m_table(table) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    NSTableView& m_table;
};

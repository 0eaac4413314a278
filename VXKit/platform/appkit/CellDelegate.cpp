// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/CellDelegate.h>

#include <VXKit/platform/appkit/NSCell.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QPainter>

#include <cmath>

void NSTableView::CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                      const QModelIndex& index) const {
    const NSGraphicsContext context(*painter, m_table.viewport()->height(), true);
    m_table.drawCell(index, NSRectFromQRectF(QRectF(option.rect)));
}

QSize NSTableView::CellDelegate::sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const {
    NSCell* cell = m_table.preparedCellAtColumn(index.column(), index.row());
    const NSSize size = cell ? cell->cellSize() : NSZeroSize;
    return {static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height))};
}

bool NSTableView::CellDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                            const QStyleOptionViewItem& option, const QModelIndex& index) {
    return !m_table.isOfButtonCell(index.column()) && QStyledItemDelegate::editorEvent(event, model, option, index);
}

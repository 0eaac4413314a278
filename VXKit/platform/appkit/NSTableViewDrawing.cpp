// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSTableView.h>

#include <VXKit/platform/appkit/CellDelegate.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/QtColor.h>

#include <QBrush>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPalette>
#include <QStyleOptionViewItem>

#include <algorithm>
#include <cmath>

namespace {

NSTextAlignment alignmentOf(const QVariant& alignment, NSTextAlignment standard) {
    if (!alignment.isValid()) {
        return standard;
    }
    const Qt::Alignment flags(alignment.toInt());
    if (flags & Qt::AlignHCenter) {
        return NSCenterTextAlignment;
    }
    return flags & Qt::AlignRight ? NSRightTextAlignment : standard;
}

} // namespace

std::vector<NSColor> NSTableView::_alternatingRowBackgroundColors() const {
    return {NSColorFromQColor(palette().color(QPalette::Base)),
            NSColorFromQColor(palette().color(QPalette::AlternateBase))};
}

NSColor NSTableView::_highlightColorForCell(const NSCell* /*cell*/) const {
    return NSColorFromQColor(palette().color(QPalette::Highlight));
}

/// The rows in the clip, and the places for rows below the last; a row that is hidden takes no place.
void NSTableView::forEachRow(const NSRect& clipRect,
                             const std::function<void(int row, int place, const NSRect& rect)>& visit) {
    constexpr int none = -1;
    const QHeaderView& header = *verticalHeader();
    const int width = viewport()->width();
    const int end = static_cast<int>(std::ceil(NSMaxY(clipRect)));
    int place = header.visualIndexAt(std::max(0, static_cast<int>(std::floor(NSMinY(clipRect)))));
    int y = std::max(0, header.length() - header.offset());
    int placeBelow = header.count();
    if (place >= 0) {
        for (; place < header.count(); ++place) {
            const int row = header.logicalIndex(place);
            const int height = header.sectionSize(row);
            if (height <= 0) {
                continue;
            }
            y = header.sectionViewportPosition(row);
            if (y >= end) {
                return;
            }
            visit(row, place, NSMakeRect(0, y, width, height));
            y += height;
        }
    }
    for (const int height = std::max(1, header.defaultSectionSize()); y < end; y += height, ++placeBelow) {
        visit(none, placeBelow, NSMakeRect(0, y, width, height));
    }
}

void NSTableView::drawRect(const NSRect& dirtyRect) {
    drawBackgroundInClipRect(dirtyRect);
    highlightSelectionInClipRect(dirtyRect);
    if (drawsCellsByItself(dirtyRect)) {
        drawCells(dirtyRect);
    } else {
        ViewOf<QTableView>::drawRect(dirtyRect);
    }
}

/// Whether there is nothing to draw but cells of the table's own: straight into the context, which takes half the time
/// that QTableView's painting takes by way of a layer, and where text is as strong as all other text.
bool NSTableView::drawsCellsByItself(const NSRect& clipRect) {
    if (!model() || showGrid() || state() == QAbstractItemView::DraggingState) {
        return false;
    }
    bool isPlain = true;
    forEachCell(clipRect, [&](int column, int row, const NSRect& /*rect*/) {
        isPlain = isPlain && rowSpan(row, column) == 1 && columnSpan(row, column) == 1 &&
                  itemDelegateForIndex(model()->index(row, column, rootIndex())) == m_cellDelegate;
    });
    return isPlain;
}

void NSTableView::drawCells(const NSRect& clipRect) {
    forEachCell(clipRect, [&](int column, int row, const NSRect& rect) {
        const QModelIndex index = model() ? model()->index(row, column, rootIndex()) : QModelIndex();
        if (index.isValid()) {
            drawCell(index, rect);
        }
    });
}

void NSTableView::drawBackgroundInClipRect(const NSRect& clipRect) {
    const std::vector<NSColor> colors = _alternatingRowBackgroundColors();
    if (colors.empty()) {
        return;
    }
    if (!m_usesAlternatingColors) {
        colors.front().setFill();
        NSBezierPath::fillRect(clipRect);
        return;
    }
    forEachRow(clipRect, [&](int /*row*/, int place, const NSRect& rect) {
        colors[static_cast<std::size_t>(place) % colors.size()].setFill();
        NSBezierPath::fillRect(NSIntersectionRect(rect, clipRect));
    });
}

/// The cells in the clip, row by row. All that is asked of the headers is asked anew each time: what is done at one
/// cell may change the model.
void NSTableView::forEachCell(const NSRect& clipRect,
                              const std::function<void(int column, int row, const NSRect& rect)>& visit) {
    const QHeaderView& header = *horizontalHeader();
    forEachRow(clipRect, [&](int row, int /*place*/, const NSRect& rowRect) {
        for (int place = 0; row >= 0 && place < header.count(); ++place) {
            const int column = header.logicalIndex(place);
            const NSRect rect = NSMakeRect(header.sectionViewportPosition(column), NSMinY(rowRect),
                                           header.sectionSize(column), NSHeight(rowRect));
            if (NSIntersectsRect(rect, clipRect)) {
                visit(column, row, rect);
            }
        }
    });
}

void NSTableView::highlightSelectionInClipRect(const NSRect& clipRect) {
    const QItemSelectionModel* const selection = selectionModel();
    if (!selection || !selection->hasSelection()) {
        return;
    }
    const auto highlight = [&](int column, int row, const NSRect& rect) {
        const QModelIndex index = model()->index(row, column, rootIndex());
        if (index.isValid() && selection->isSelected(index)) {
            _highlightColorForCell(preparedCellAtColumn(column, row)).setFill();
            NSBezierPath::fillRect(NSIntersectionRect(rect, clipRect));
        }
    };
    if (selectionBehavior() != QAbstractItemView::SelectRows) {
        return forEachCell(clipRect, highlight);
    }
    forEachRow(clipRect, [&](int row, int /*place*/, const NSRect& rect) {
        // The cells of a row are selected together.
        if (row >= 0) {
            highlight(std::max(0, horizontalHeader()->logicalIndex(0)), row, rect);
        }
    });
}

void NSTableView::initViewItemOption(QStyleOptionViewItem* option) const {
    ViewOf<QTableView>::initViewItemOption(option);
    // What is behind the cells is drawn already.
    option->palette.setBrush(QPalette::Highlight, Qt::NoBrush);
    option->palette.setBrush(QPalette::AlternateBase, Qt::NoBrush);
}

void NSTableView::drawCell(const QModelIndex& index, const NSRect& rect) {
    const int column = index.column();
    const int row = index.row();
    // Before the cell is prepared, because the model is the host's, and may do anything.
    const bool isText = !isOfButtonCell(column);
    const QVariant foreground = isText ? index.data(Qt::ForegroundRole) : QVariant();
    const QVariant wantedAlignment = isText ? index.data(Qt::TextAlignmentRole) : QVariant();
    const bool showsFocus = hasFocus() && index == currentIndex() && !selectionModel()->isSelected(index);
    NSCell* const cell = preparedCellAtColumn(column, row);
    if (!cell) {
        return;
    }
    if (auto* const text = dynamic_cast<NSTextFieldCell*>(cell)) {
        const NSColor color = text->textColor();
        const NSTextAlignment alignment = text->alignment();
        if (foreground.isValid()) {
            text->setTextColor(NSColorFromQColor(qvariant_cast<QBrush>(foreground).color()));
        } else if (!isEnabled()) {
            text->setTextColor(color.colorWithAlphaComponent(color.alphaComponent() / 2));
        }
        text->setAlignment(alignmentOf(wantedAlignment, alignment));
        text->drawWithFrame(rect, *this);
        text->setTextColor(color);
        text->setAlignment(alignment);
    } else {
        const double height = std::min(cell->cellSize().height, NSHeight(rect));
        const double above = std::floor((NSHeight(rect) - height) / 2);
        cell->drawWithFrame(NSMakeRect(NSMinX(rect), NSMinY(rect) + above, NSWidth(rect), height), *this);
    }
    if (showsFocus) {
        _highlightColorForCell(cell).setFill();
        NSFrameRect(rect);
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSTableView.h>

#include <VXKit/platform/appkit/ArrangedObjectsModel.h>
#include <VXKit/platform/appkit/CellDelegate.h>
#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/QtColor.h>

#include <QHeaderView>
#include <QLocale>
#include <QPalette>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>
#include <utility>

template class ViewOf<QTableView>;

namespace {

constexpr int standardRowHeight = 20; // points
constexpr double highestRow = 10'000;

bool isPlainSpace(const NSEvent& event) {
    constexpr unsigned held = NSShiftKeyMask | NSControlKeyMask | NSAlternateKeyMask | NSCommandKeyMask;
    return event.characters() == u' ' && (event.modifierFlags() & held) == 0;
}

} // namespace

NSTableView::NSTableView(QWidget* parent) : ViewOf<QTableView>(parent) {
    setUp();
}

NSTableView::NSTableView(const NSRect& frame, QWidget* parent) : NSTableView(parent) {
    ViewOf<QTableView>::setFrame(frame);
}

NSTableView::~NSTableView() = default;

void NSTableView::setUp() {
    m_textCell = std::make_unique<NSTextFieldCell>();
    m_textCell->setTextColor(NSColorFromQColor(palette().color(QPalette::Text)));
    m_cellDelegate = new CellDelegate(*this);
    setItemDelegate(m_cellDelegate);
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    // Its colours may be translucent.
    viewport()->setAutoFillBackground(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    setRowHeight(standardRowHeight);
    horizontalHeader()->setFont(NSFont::systemFontOfSize(NSFont::smallSystemFontSize()).qtFont());
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void NSTableView::setDataSource(NSArrayController* dataSource) {
    m_dataSource = dataSource;
    if (m_arrangedObjects) {
        m_arrangedObjects->setSource(dataSource);
    }
    viewport()->update();
}

NSArrayController* NSTableView::dataSource() const {
    return m_dataSource;
}

void NSTableView::addTableColumn(const QString& identifier, const QString& title) {
    if (!m_arrangedObjects) {
        m_arrangedObjects = new ArrangedObjectsModel(*this);
        m_arrangedObjects->setSource(m_dataSource);
    }
    m_arrangedObjects->addColumn(identifier, title);
    if (model() != m_arrangedObjects) {
        setModel(m_arrangedObjects);
    }
}

void NSTableView::setDataCell(int column, std::unique_ptr<NSCell> cell) {
    if (cell) {
        m_dataCells[column] = std::move(cell);
    } else {
        m_dataCells.erase(column);
    }
    viewport()->update();
}

NSCell& NSTableView::dataCell(int column) const {
    const auto found = m_dataCells.find(column);
    return found == m_dataCells.end() ? *m_textCell : *found->second;
}

bool NSTableView::isOfButtonCell(int column) const {
    return dynamic_cast<const NSButtonCell*>(&dataCell(column)) != nullptr;
}

NSCell* NSTableView::preparedCellAtColumn(int column, int row) {
    const QModelIndex index = model() ? model()->index(row, column, rootIndex()) : QModelIndex();
    if (!index.isValid()) {
        return nullptr;
    }
    // The model first, all of it: it is the host's, and may do anything.
    if (isOfButtonCell(column)) {
        int value = 0;
        if (model() == m_arrangedObjects) {
            const NSPropertyList* const object = m_arrangedObjects->value(index);
            value = object ? NSIntValue(*object) : 0;
        } else if (const QVariant state = index.data(Qt::CheckStateRole); state.isValid()) {
            value = state.toInt() == Qt::Unchecked ? 0 : 1;
        } else {
            value = index.data().toInt();
        }
        auto* const cell = dynamic_cast<NSButtonCell*>(&dataCell(column));
        if (cell) {
            cell->setEnabled(isEnabled());
            cell->setHighlighted(m_isPressedInside && m_pressed == Place{column, row});
            cell->setIntValue(value);
        }
        return cell;
    }
    const QVariant value = index.data();
    auto* const cell = dynamic_cast<NSTextFieldCell*>(&dataCell(column));
    if (!cell) {
        dataCell(column).setIntValue(value.toInt());
        return &dataCell(column);
    }
    const auto* const delegate = qobject_cast<const QStyledItemDelegate*>(itemDelegateForIndex(index));
    cell->setStringValue(delegate ? delegate->displayText(value, locale()) : value.toString());
    return cell;
}

NSRect NSTableView::frameOfCellAtColumn(int column, int row) const {
    const QModelIndex index = model() ? model()->index(row, column, rootIndex()) : QModelIndex();
    return index.isValid() ? NSRectFromQRectF(QRectF(visualRect(index))) : NSZeroRect;
}

void NSTableView::performClickOnCellAtColumn(int column, int row) {
    auto* const cell = dynamic_cast<NSButtonCell*>(preparedCellAtColumn(column, row));
    if (!cell || !cell->isEnabled()) {
        return;
    }
    cell->performClick(this);
    setIntValueOfCell(cell->intValue(), column, row);
    viewport()->update();
}

void NSTableView::setIntValueOfCell(int value, int column, int row) {
    if (!model()) {
        return;
    }
    const QModelIndex index = model()->index(row, column, rootIndex());
    if (model() == m_arrangedObjects && m_dataSource && index.isValid()) {
        m_dataSource->setValue(value, m_arrangedObjects->identifier(column), static_cast<std::size_t>(row));
    } else if (index.flags() & Qt::ItemIsUserCheckable) {
        model()->setData(index, value == NSOffState ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    }
}

void NSTableView::setUsesAlternatingRowBackgroundColors(bool flag) {
    m_usesAlternatingColors = flag;
    viewport()->update();
}

double NSTableView::rowHeight() const {
    return verticalHeader()->defaultSectionSize();
}

void NSTableView::setRowHeight(double height) {
    if (height > 0) {
        verticalHeader()->setDefaultSectionSize(std::max(1, qRound(std::min(height, highestRow))));
    }
}

NSTableView::Place NSTableView::placeOf(const NSEvent& event) const {
    const NSPoint point = convertPointFromView(event.locationInWindow(), nullptr);
    const QPoint inViewport =
        viewport()->mapFrom(this, QPoint(static_cast<int>(std::floor(point.x)), static_cast<int>(std::floor(point.y))));
    if (!viewport()->rect().contains(inViewport)) {
        return {};
    }
    const QModelIndex index = indexAt(inViewport);
    return {index.column(), index.row()};
}

void NSTableView::setPressed(const Place& place, bool isInside) {
    if (place == m_pressed && isInside == m_isPressedInside) {
        return;
    }
    m_pressed = place;
    m_isPressedInside = isInside;
    viewport()->update();
}

void NSTableView::mouseDown(const NSEvent& event) {
    const Place place = placeOf(event);
    if (place.row >= 0 && isOfButtonCell(place.column)) {
        const auto* const cell = dynamic_cast<NSButtonCell*>(preparedCellAtColumn(place.column, place.row));
        if (cell && cell->isEnabled()) {
            setPressed(place, true);
            return;
        }
    }
    ViewOf<QTableView>::mouseDown(event);
}

void NSTableView::mouseDragged(const NSEvent& event) {
    if (m_pressed == Place{}) {
        return ViewOf<QTableView>::mouseDragged(event);
    }
    setPressed(m_pressed, placeOf(event) == m_pressed);
}

void NSTableView::mouseUp(const NSEvent& event) {
    if (m_pressed == Place{}) {
        return ViewOf<QTableView>::mouseUp(event);
    }
    const Place pressed = m_pressed;
    const bool isInside = placeOf(event) == pressed;
    setPressed({}, false);
    if (isInside) {
        performClickOnCellAtColumn(pressed.column, pressed.row);
    }
}

/// The column of check boxes that the space bar is for, or -1: that which has the keyboard, else the only one.
int NSTableView::columnToToggle() const {
    constexpr int none = -1;
    if (!currentIndex().isValid() || state() == QAbstractItemView::EditingState) {
        return none;
    }
    if (isOfButtonCell(currentIndex().column())) {
        return currentIndex().column();
    }
    int only = none;
    for (const auto& [column, cell] : m_dataCells) {
        if (dynamic_cast<const NSButtonCell*>(cell.get()) && column < model()->columnCount(rootIndex())) {
            if (only != none) {
                return none;
            }
            only = column;
        }
    }
    return only;
}

void NSTableView::keyDown(const NSEvent& event) {
    const int column = isPlainSpace(event) ? columnToToggle() : -1;
    if (column < 0) {
        return ViewOf<QTableView>::keyDown(event);
    }
    if (!event.isARepeat()) {
        performClickOnCellAtColumn(column, currentIndex().row());
    }
}

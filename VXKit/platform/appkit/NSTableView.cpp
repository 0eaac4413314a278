// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSTableView.h>

#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/QtColor.h>

#include <QAbstractTableModel>
#include <QBrush>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLocale>
#include <QPainter>
#include <QPalette>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

template class ViewOf<QTableView>;

namespace {

constexpr int standardRowHeight = 20; // points
constexpr double highestRow = 10'000;

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

bool isPlainSpace(const NSEvent& event) {
    constexpr unsigned held = NSShiftKeyMask | NSControlKeyMask | NSAlternateKeyMask | NSCommandKeyMask;
    return event.characters() == u' ' && (event.modifierFlags() & held) == 0;
}

} // namespace

/// The rows of a data source, as Qt's views want them.
class NSTableView::ArrangedObjectsModel : public QAbstractTableModel {
public:
    explicit ArrangedObjectsModel(NSTableView& table) : QAbstractTableModel(&table), m_table(table) {}

    void setSource(NSArrayController* source) {
        beginResetModel();
        if (m_source) {
            m_source->disconnect(this);
        }
        m_source = source;
        if (source) {
            connect(source, &NSArrayController::contentWillChange, this, [this] { beginResetModel(); });
            connect(source, &NSArrayController::contentDidChange, this, [this] { endResetModel(); });
            connect(source, &NSArrayController::orderWillChange, this, [this] { Q_EMIT layoutAboutToBeChanged(); });
            connect(source, &NSArrayController::orderDidChange, this,
                    [this](const std::vector<int>& order) { takeOrder(order); });
            connect(source, &NSArrayController::valueDidChange, this, [this](int row) {
                if (row < rowCount({}) && !m_columns.empty()) {
                    Q_EMIT dataChanged(index(row, 0), index(row, columnCount({}) - 1));
                }
            });
            connect(source, &QObject::destroyed, this, [this] {
                beginResetModel();
                endResetModel();
            });
        }
        endResetModel();
    }

    void addColumn(const QString& identifier, const QString& title) {
        const int place = columnCount({});
        beginInsertColumns({}, place, place);
        m_columns.push_back({identifier.toStdString(), title});
        endInsertColumns();
    }

    [[nodiscard]] const std::string& identifier(int column) const {
        return m_columns[static_cast<std::size_t>(column)].identifier;
    }

    [[nodiscard]] const NSPropertyList* value(const QModelIndex& index) const {
        const auto row = static_cast<std::size_t>(index.row());
        if (!m_source || index.row() < 0 || row >= m_source->arrangedObjects().size()) {
            return nullptr;
        }
        const auto* const object = m_source->arrangedObjects()[row].as<NSDictionary>();
        return object ? object->objectForKey(identifier(index.column())) : nullptr;
    }

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() || !m_source ? 0 : static_cast<int>(m_source->arrangedObjects().size());
    }
    int columnCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const NSPropertyList* const object = value(index);
        if (m_table.isOfButtonCell(index.column())) {
            return role == Qt::CheckStateRole
                       ? QVariant(object && NSIntValue(*object) != 0 ? Qt::Checked : Qt::Unchecked)
                       : QVariant();
        }
        return role == Qt::DisplayRole && object ? QVariant(object->description()) : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
        return m_table.isOfButtonCell(index.column()) ? flags | Qt::ItemIsUserCheckable : flags;
    }
    /// Of a check box, by whom Qt's accessibility asks, too.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        if (role != Qt::CheckStateRole || !m_source || !index.isValid()) {
            return false;
        }
        return m_source->setValue(value.toInt() == Qt::Unchecked ? 0 : 1, identifier(index.column()),
                                  static_cast<std::size_t>(index.row()));
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (orientation == Qt::Vertical || role != Qt::DisplayRole || section >= columnCount({})) {
            return QAbstractTableModel::headerData(section, orientation, role);
        }
        return m_columns[static_cast<std::size_t>(section)].title;
    }
    void sort(int column, Qt::SortOrder order) override {
        if (m_source && column >= 0 && column < columnCount({})) {
            m_source->sort(identifier(column), order == Qt::AscendingOrder);
        }
    }

private:
    struct Column {
        std::string identifier;
        QString title;
    };

    void takeOrder(const std::vector<int>& order) {
        std::vector<int> now(order.size());
        for (std::size_t place = 0; place < order.size(); ++place) {
            now[static_cast<std::size_t>(order[place])] = static_cast<int>(place);
        }
        const QModelIndexList before = persistentIndexList();
        QModelIndexList after;
        for (const QModelIndex& each : before) {
            const auto row = static_cast<std::size_t>(each.row());
            after.append(row < now.size() ? index(now[row], each.column()) : QModelIndex());
        }
        changePersistentIndexList(before, after);
        Q_EMIT layoutChanged();
    }

    NSTableView& m_table;
    QPointer<NSArrayController> m_source;
    std::vector<Column> m_columns;
};

/// Lets the cells of the table draw, and take the clicks.
class NSTableView::CellDelegate : public QStyledItemDelegate {
public:
    explicit CellDelegate(NSTableView& table) : QStyledItemDelegate(&table), m_table(table) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const NSGraphicsContext context(*painter, m_table.viewport()->height(), true);
        m_table.drawCell(index, NSRectFromQRectF(QRectF(option.rect)));
    }

    QSize sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& index) const override {
        NSCell* cell = m_table.preparedCellAtColumn(index.column(), index.row());
        const NSSize size = cell ? cell->cellSize() : NSZeroSize;
        return {static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height))};
    }

    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override {
        return !m_table.isOfButtonCell(index.column()) && QStyledItemDelegate::editorEvent(event, model, option, index);
    }

private:
    NSTableView& m_table;
};

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

std::vector<NSColor> NSTableView::_alternatingRowBackgroundColors() const {
    return {NSColorFromQColor(palette().color(QPalette::Base)),
            NSColorFromQColor(palette().color(QPalette::AlternateBase))};
}

NSColor NSTableView::_highlightColorForCell(const NSCell* /*cell*/) const {
    return NSColorFromQColor(palette().color(QPalette::Highlight));
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

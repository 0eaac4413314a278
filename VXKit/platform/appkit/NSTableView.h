// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSTextFieldCell.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTableView>

#include <functional>
#include <map>
#include <memory>
#include <vector>

class NSArrayController;
class QStyleOptionViewItem;

extern template class VXKIT_EXPORT ViewOf<QTableView>;

/// A table of rows, each drawn by the cells of its columns, on rows of alternating colours.
///
/// It is one of Qt's table views: models, selection, the header and sorting by it, drags, editors, the keyboard and
/// accessibility are QTableView's, and so is a delegate that a host sets for more than a line of text in a colour. What
/// is different at first: whole rows are selected, all of one height, there is no grid and no header of rows.
///
/// Its rows come from a model, as in any view of Qt's, or from a data source: give it that and its columns
/// (addTableColumn), and it shows the values of the objects under the columns' identifiers. Beside a model, a data
/// source is there for subclasses to ask, and has its objects in the order of the rows.
///
/// A column shows text, unless it was given a data cell of its own. One with a button cell is a column of check boxes:
/// a click, or the space bar in the row, changes the value where the cell is enabled, and leaves the selection as it
/// is.
///
/// Costs what can be seen: it keeps nothing for a row. Its own coordinates are flipped, from the top left of what is
/// seen below the header. Stands for AppKit's class of the same name, its scroll view included.
class VXKIT_EXPORT NSTableView : public ViewOf<QTableView> {
    Q_OBJECT
    Q_PROPERTY(bool usesAlternatingRowBackgroundColors READ usesAlternatingRowBackgroundColors WRITE
                   setUsesAlternatingRowBackgroundColors)
    Q_PROPERTY(double rowHeight READ rowHeight WRITE setRowHeight)

public:
    /// A table without a frame, for a layout of Qt's.
    explicit NSTableView(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit NSTableView(const NSRect& frame, QWidget* parent = nullptr);
    ~NSTableView() override;

    /// Where the rows' objects come from, borrowed; null takes it away. AppKit: `-setDataSource:`.
    void setDataSource(NSArrayController* dataSource);
    /// Null where there is none, or it is gone. AppKit: `-dataSource`.
    [[nodiscard]] NSArrayController* dataSource() const;
    /// Appends a column that shows what the data source's objects have under `identifier`, with `title` in the header.
    /// Takes the place of a model that was set before. AppKit: `-addTableColumn:`.
    void addTableColumn(const QString& identifier, const QString& title);

    /// Gives a column a cell to draw all its rows by; the one before is deleted. Null: text again.
    /// AppKit: `-[NSTableColumn setDataCell:]`.
    void setDataCell(int column, std::unique_ptr<NSCell> cell);
    /// The cell of a column; for one without its own, the text cell. AppKit: `-[NSTableColumn dataCell]`.
    [[nodiscard]] NSCell& dataCell(int column) const;
    /// The cell of all columns without one of their own, whose looks can be set.
    [[nodiscard]] NSTextFieldCell& textCell() const { return *m_textCell; }

    /// The cell of a column, made ready to draw a row: with its value, and pressed while the mouse is down on it. It is
    /// good until the next one is prepared. Null where there is no such column or row. A subclass adds what it knows.
    /// AppKit: `-preparedCellAtColumn:row:`.
    [[nodiscard]] virtual NSCell* preparedCellAtColumn(int column, int row);
    /// Where a cell lies; NSZeroRect for none. AppKit: `-frameOfCellAtColumn:row:`.
    [[nodiscard]] NSRect frameOfCellAtColumn(int column, int row) const;
    /// Clicks a button cell, as the mouse does: its new value goes to setIntValueOfCell. Nothing for other cells, and
    /// those that are disabled. AppKit: `-performClickOnCellAtColumn:row:`.
    void performClickOnCellAtColumn(int column, int row);

    /// The colours of the rows, in turn from the first row on, and on below the last. Here: those of the palette.
    [[nodiscard]] virtual std::vector<NSColor> _alternatingRowBackgroundColors() const;
    /// What a selected row, or cell where rows are not selected as a whole, has behind it. Here: that of the palette.
    [[nodiscard]] virtual NSColor _highlightColorForCell(const NSCell* cell) const;

    /// Whether all of these colours are used, or the first alone. No. Not QTableView's, which is to stay off.
    /// AppKit: `-usesAlternatingRowBackgroundColors`.
    [[nodiscard]] bool usesAlternatingRowBackgroundColors() const { return m_usesAlternatingColors; }
    /// Redraws the table. AppKit: `-setUsesAlternatingRowBackgroundColors:`.
    void setUsesAlternatingRowBackgroundColors(bool flag);

    /// How high rows are, in points: 20 at first; what is not above 0 changes nothing. AppKit: `-rowHeight`.
    using QTableView::rowHeight;
    using QTableView::setRowHeight;
    /// How high rows are, in points: 20 at first. AppKit: `-rowHeight`.
    [[nodiscard]] double rowHeight() const;
    /// Of all rows; what is not above 0 changes nothing. AppKit: `-setRowHeight:`.
    void setRowHeight(double height);

    /// Yes: y 0 is the top of what is seen below the header.
    [[nodiscard]] bool isFlipped() const override { return true; }
    /// Draws the background, the highlight and the cells; all else that QTableView draws, where there is more to draw.
    void drawRect(const NSRect& dirtyRect) override;
    /// Draws what lies behind the rows in `clipRect`: their colours in turn, on below the last row. AppKit:
    /// `-drawBackgroundInClipRect:`.
    virtual void drawBackgroundInClipRect(const NSRect& clipRect);
    /// Draws what the selected rows in `clipRect` have behind them. AppKit: `-highlightSelectionInClipRect:`.
    virtual void highlightSelectionInClipRect(const NSRect& clipRect);

    /// Presses the button cell under the pointer where it is enabled; all else is the table view's.
    void mouseDown(const NSEvent& event) override;
    /// Shows a pressed cell pressed while the pointer is on it.
    void mouseDragged(const NSEvent& event) override;
    /// Clicks the pressed cell where the pointer is still on it.
    void mouseUp(const NSEvent& event) override;
    /// Clicks the check box of the row on the space bar; all else is the table view's.
    void keyDown(const NSEvent& event) override;

protected:
    /// Stores what a click has made of a button cell's value. Here: in the data source under the column's identifier,
    /// or in the model as a check state.
    virtual void setIntValueOfCell(int value, int column, int row);

    void initViewItemOption(QStyleOptionViewItem* option) const override;

private:
    class CellDelegate;
    class ArrangedObjectsModel;

    struct Place {
        int column = -1;
        int row = -1;

        friend bool operator==(const Place&, const Place&) = default;
    };

    void setUp();
    [[nodiscard]] bool drawsCellsByItself(const NSRect& clipRect);
    void drawCells(const NSRect& clipRect);
    void drawCell(const QModelIndex& index, const NSRect& rect);
    void forEachRow(const NSRect& clipRect, const std::function<void(int row, int place, const NSRect& rect)>& visit);
    void forEachCell(const NSRect& clipRect, const std::function<void(int column, int row, const NSRect& rect)>& visit);
    [[nodiscard]] Place placeOf(const NSEvent& event) const;
    [[nodiscard]] bool isOfButtonCell(int column) const;
    [[nodiscard]] int columnToToggle() const;
    void setPressed(const Place& place, bool isInside);

    std::unique_ptr<NSTextFieldCell> m_textCell;
    std::map<int, std::unique_ptr<NSCell>> m_dataCells;
    QPointer<NSArrayController> m_dataSource;
    CellDelegate* m_cellDelegate = nullptr;            // owned as a child
    ArrangedObjectsModel* m_arrangedObjects = nullptr; // owned as a child
    bool m_usesAlternatingColors = false;
    Place m_pressed;
    bool m_isPressedInside = false;
};

// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSTableView.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QAbstractTableModel>
#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleTableInterface>
#include <QHeaderView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyledItemDelegate>

#include <limits>
#include <set>

#include <gmock/gmock.h>

namespace {

/// A great many rows, which counts what it is asked.
class CountedModel : public QAbstractTableModel {
public:
    explicit CountedModel(int rows) : m_rows(rows) {}

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 3; }
    QVariant data(const QModelIndex& index, int role) const override {
        ++calls;
        rowsAsked.insert(index.row());
        if (role == Qt::CheckStateRole && index.column() == 0) {
            return index.row() % 2 == 0 ? Qt::Checked : Qt::Unchecked;
        }
        return role == Qt::DisplayRole ? QVariant(QString::number(index.row())) : QVariant();
    }

    mutable int calls = 0;
    mutable std::set<int> rowsAsked;

private:
    int m_rows;
};

/// A cell that is drawn as a block: grey, white while it is on, red while it is pressed.
class BlockCell : public NSButtonCell {
public:
    NSSize cellSize() const override { return {10, 10}; }
    void drawWithFrame(const NSRect& cellFrame, ViewCore& /*controlView*/) override {
        const double value = state() == NSOnState ? 1 : 0.5;
        const NSColor color =
            isHighlighted() ? NSColor::colorWithCalibratedRed(1, 0, 0, 1) : NSColor::colorWithCalibratedWhite(value, 1);
        color.set();
        NSRectFill(cellFrame);
    }
};

/// A table in three colours, which tells what it hands on.
class ColoredTable : public NSTableView {
public:
    using NSTableView::NSTableView;
    std::vector<NSColor> _alternatingRowBackgroundColors() const override { return colors; }
    NSColor _highlightColorForCell(const NSCell* cell) const override {
        highlighted.push_back(cell);
        return NSColor::colorWithCalibratedRed(0, 0, 1, 1);
    }
    NSCell* preparedCellAtColumn(int column, int row) override {
        if (whilePreparing) {
            whilePreparing();
        }
        return NSTableView::preparedCellAtColumn(column, row);
    }

    std::vector<NSColor> colors{NSColor::colorWithCalibratedRed(1, 0, 0, 1),
                                NSColor::colorWithCalibratedRed(0, 1, 0, 1)};
    mutable std::vector<const NSCell*> highlighted;
    std::function<void()> whilePreparing;
};

class NSTableViewTest : public AppKitHost {
protected:
    static NSArray people() {
        const auto person = [](const char* name, int age, NSPropertyList member) {
            return NSPropertyList(NSDictionary{{"name", name}, {"age", age}, {"member", std::move(member)}});
        };
        return {person("Clara", 31, 1), person("anton", 9, 0), person("Berta", 100, "1")};
    }

    ColoredTable& add(const NSRect& frame = {{10, 10}, {240, 160}}) {
        auto table = std::make_unique<ColoredTable>(frame);
        window.content().addSubview(table.get());
        return *table.release();
    }

    /// A table of the people: a column of blocks and two of text.
    ColoredTable& addPeople() {
        ColoredTable& table = add();
        table.setDataSource(&controller);
        table.addTableColumn(QStringLiteral("member"), QStringLiteral("Member"));
        table.addTableColumn(QStringLiteral("name"), QStringLiteral("Name"));
        table.addTableColumn(QStringLiteral("age"), QStringLiteral("Age"));
        table.setDataCell(0, std::make_unique<BlockCell>());
        table.setColumnWidth(0, 40);
        table.setColumnWidth(1, 80);
        table.setColumnWidth(2, 60);
        return table;
    }

    static QImage look(NSTableView& table, double ratio = 1) {
        QImage image(table.viewport()->size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        table.viewport()->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    static std::vector<QString> names(const NSTableView& table) {
        std::vector<QString> result;
        for (int row = 0; row < table.model()->rowCount(); ++row) {
            result.push_back(table.model()->index(row, 1).data().toString());
        }
        return result;
    }

    QPoint inWindow(const NSTableView& table, int column, int row) {
        return table.viewport()->mapTo(&window, table.visualRect(table.model()->index(row, column)).center());
    }
    void click(const NSTableView& table, int column, int row, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, modifiers, inWindow(table, column, row));
    }

    int member(std::size_t row) const {
        return NSIntValue(*controller.arrangedObjects()[row].as<NSDictionary>()->objectForKey("member"));
    }

    NSArrayController controller{people()};
    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};

constexpr QRgb red = 0xffff0000;
constexpr QRgb green = 0xff00ff00;
constexpr QRgb blue = 0xff0000ff;

} // namespace

TEST_F(NSTableViewTest, ShowsTheObjectsOfItsDataSourceUnderTheirColumns) {
    const NSTableView& table = addPeople();
    EXPECT_EQ(table.model()->rowCount(), 3);
    EXPECT_EQ(table.model()->columnCount(), 3);
    EXPECT_EQ(table.model()->index(0, 1).data().toString(), QStringLiteral("Clara"));
    EXPECT_EQ(table.model()->index(2, 2).data().toString(), QStringLiteral("100"));
    EXPECT_EQ(table.model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Name"));
}

TEST_F(NSTableViewTest, FollowsItsDataSource) {
    const NSTableView& table = addPeople();
    controller.addObject(NSDictionary{{"name", "Dora"}});
    EXPECT_EQ(table.model()->rowCount(), 4);
    EXPECT_EQ(table.model()->index(3, 1).data().toString(), QStringLiteral("Dora"));
    EXPECT_EQ(table.model()->index(3, 2).data().toString(), QString()) << "an object without the key";
    controller.setValue("Emil", "name", 0);
    EXPECT_EQ(table.model()->index(0, 1).data().toString(), QStringLiteral("Emil"));
    controller.removeObjectAtArrangedObjectIndex(0);
    EXPECT_EQ(table.model()->rowCount(), 3);
    controller.removeObjectAtArrangedObjectIndex(70);
    EXPECT_EQ(table.model()->rowCount(), 3);
    controller.setContent({});
    EXPECT_EQ(table.model()->rowCount(), 0);
}

TEST_F(NSTableViewTest, OutlivesItsDataSource) {
    ColoredTable& table = addPeople();
    auto other = std::make_unique<NSArrayController>(people());
    table.setDataSource(other.get());
    other.reset();
    EXPECT_EQ(table.dataSource(), nullptr);
    EXPECT_EQ(table.model()->rowCount(), 0);
    EXPECT_FALSE(look(table).isNull());
}

TEST_F(NSTableViewTest, PreparesACellWithTheValueOfItsRow) {
    ColoredTable& table = addPeople();
    auto* const text = dynamic_cast<NSTextFieldCell*>(table.preparedCellAtColumn(1, 2));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->stringValue(), QStringLiteral("Berta"));
    EXPECT_EQ(table.preparedCellAtColumn(0, 0)->intValue(), 1);
    EXPECT_EQ(table.preparedCellAtColumn(0, 1)->intValue(), 0);
    EXPECT_EQ(table.preparedCellAtColumn(0, 2)->intValue(), 1) << "text is taken by its number";
    EXPECT_EQ(table.preparedCellAtColumn(0, 0), &table.dataCell(0));
}

TEST_F(NSTableViewTest, HasNoCellWhereThereIsNoSuchPlace) {
    ColoredTable& table = addPeople();
    for (const auto& [column, row] : {std::pair{-1, 0}, {0, -1}, {3, 0}, {0, 3}, {1'000'000, 1'000'000}}) {
        EXPECT_EQ(table.preparedCellAtColumn(column, row), nullptr) << column << ", " << row;
        EXPECT_EQ(table.frameOfCellAtColumn(column, row), NSZeroRect);
        table.performClickOnCellAtColumn(column, row);
    }
    EXPECT_EQ(ColoredTable().preparedCellAtColumn(0, 0), nullptr);
}

TEST_F(NSTableViewTest, TakesValuesByTheirNumbers) {
    EXPECT_EQ(NSIntValue(-1), -1);
    EXPECT_EQ(NSIntValue(true), 1);
    EXPECT_EQ(NSIntValue(2.9), 2);
    EXPECT_EQ(NSIntValue(-2.9), -2);
    EXPECT_EQ(NSIntValue("-1"), -1);
    EXPECT_EQ(NSIntValue("  12 pieces"), 12);
    EXPECT_EQ(NSIntValue("none"), 0);
    EXPECT_EQ(NSIntValue("99999999999"), std::numeric_limits<int>::max());
    EXPECT_EQ(NSIntValue("-99999999999"), std::numeric_limits<int>::min());
    EXPECT_EQ(NSIntValue(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(NSIntValue(1e300), std::numeric_limits<int>::max());
    EXPECT_EQ(NSIntValue(4294967295), -1) << "the lowest 32 bits";
    EXPECT_EQ(NSIntValue(NSArray{1}), 0);
    EXPECT_EQ(NSIntValue(NSDictionary{}), 0);
}

TEST_F(NSTableViewTest, ColoursItsRowsInTurnAndOnBelowTheLast) {
    for (const double ratio : {1.0, 2.0}) {
        ColoredTable& table = addPeople();
        table.setUsesAlternatingRowBackgroundColors(true);
        const QImage image = look(table, ratio);
        for (int row = 0; row * 20 + 10 < table.viewport()->height(); ++row) {
            for (const int y : {row * 20, row * 20 + 19}) {
                const int right = table.viewport()->width() - 1;
                const QRgb expected = row % 2 == 0 ? red : green;
                EXPECT_EQ(image.pixel(int(right * ratio), int(y * ratio)), expected) << "right of the columns, " << y;
                EXPECT_EQ(image.pixel(int(45 * ratio), int(y * ratio)), expected) << y;
            }
        }
    }
}

TEST_F(NSTableViewTest, HasItsFirstColourAloneUnlessItUsesAll) {
    ColoredTable& table = addPeople();
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(200, 5), red);
    EXPECT_EQ(image.pixel(200, 25), red);
    table.colors.clear();
    EXPECT_EQ(look(table).pixel(200, 5), 0xffffffff) << "no colours, no background";
}

TEST_F(NSTableViewTest, KeepsTheColourOfARowWhenItScrolls) {
    ColoredTable& table = add();
    CountedModel model(1000);
    table.setModel(&model);
    table.setUsesAlternatingRowBackgroundColors(true);
    table.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    window.makeKeyAndOrderFront(nullptr);
    for (const int offset : {0, 7, 20, 30, 999}) {
        table.verticalScrollBar()->setValue(offset);
        const QImage image = look(table);
        for (int y = 0; y < image.height(); ++y) {
            ASSERT_EQ(image.pixel(image.width() - 2, y), (y + offset) / 20 % 2 == 0 ? red : green) << offset;
        }
    }
}

TEST_F(NSTableViewTest, HighlightsAllOfASelectedRow) {
    ColoredTable& table = addPeople();
    table.selectRow(1);
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(image.width() - 1, 25), blue);
    EXPECT_EQ(image.pixel(45, 21), blue);
    EXPECT_EQ(image.pixel(45, 19), red);
    EXPECT_EQ(image.pixel(45, 40), red);
    EXPECT_THAT(table.highlighted, testing::Each(testing::NotNull()));
}

TEST_F(NSTableViewTest, HighlightsSelectedCellsByThemselvesWhereRowsAreNotSelectedAsAWhole) {
    ColoredTable& table = addPeople();
    table.setSelectionBehavior(QAbstractItemView::SelectItems);
    table.selectionModel()->select(table.model()->index(1, 1), QItemSelectionModel::Select);
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(41, 21), blue);
    EXPECT_EQ(image.pixel(119, 39), blue);
    EXPECT_EQ(image.pixel(121, 25), red);
    EXPECT_EQ(image.pixel(image.width() - 1, 25), red);
}

TEST_F(NSTableViewTest, DrawsTextInItsCellsFontAndColour) {
    ColoredTable& table = addPeople();
    table.colors = {NSColor::whiteColor()};
    table.textCell().setTextColor(NSColor::blackColor());
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = look(table, ratio);
        NSTextFieldCell cell;
        cell.setStringValue(QStringLiteral("Clara"));
        const QImage expected = drawn(
            {80, 20}, ratio, [&] { cell.drawWithFrame(NSMakeRect(0, 0, 80, 20), table); }, Flipped::Yes, Qt::white);
        const QImage found = image.copy(QRect(QPoint(40, 0) * ratio, QSize(80, 20) * ratio));
        EXPECT_LE(difference(found, expected), 2) << ratio;
        EXPECT_GT(difference(expected, plain(expected.size(), {}, Qt::white, Qt::white)), 200);
    }
}

TEST_F(NSTableViewTest, ShortensTextThatIsTooLongAndPutsItOnOneLine) {
    NSTextFieldCell cell;
    const auto ink = [&](const QString& text) {
        cell.setStringValue(text);
        NSView view;
        return inkOf(drawn(
            {60, 20}, 1, [&] { cell.drawWithFrame(NSMakeRect(0, 0, 60, 20), view); }, Flipped::Yes));
    };
    const QRect longInk = ink(QString(500, u'w'));
    EXPECT_GE(longInk.left(), 2);
    EXPECT_LE(longInk.right(), 57);
    EXPECT_EQ(ink(QStringLiteral("a\nb")), ink(QStringLiteral("a b")));
    EXPECT_TRUE(ink(QString()).isNull());
}

TEST_F(NSTableViewTest, TakesColourAndAlignmentFromTheModel) {
    ColoredTable& table = add();
    table.colors = {NSColor::whiteColor()};
    QStandardItemModel model(1, 1);
    table.setModel(&model);
    table.setColumnWidth(0, 200);
    model.setData(model.index(0, 0), QStringLiteral("Word"));
    model.setData(model.index(0, 0), QBrush(Qt::blue), Qt::ForegroundRole);
    model.setData(model.index(0, 0), int(Qt::AlignRight | Qt::AlignVCenter), Qt::TextAlignmentRole);
    const QImage image = look(table);
    QRect inked;
    int bluest = 0;
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 200; ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color != Qt::white) {
                inked |= QRect(x, y, 1, 1);
                bluest = std::max(bluest, color.blue() - color.red());
            }
        }
    }
    EXPECT_GT(inked.left(), 150);
    EXPECT_GT(bluest, 200);
    EXPECT_EQ(table.textCell().textColor(), NSTableView().textCell().textColor()) << "the cell is as it was";
}

TEST_F(NSTableViewTest, LeavesCellsToADelegateOfTheHosts) {
    class Delegate : public QStyledItemDelegate {
    public:
        void paint(QPainter* /*painter*/, const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& index) const override {
            places.insert({index.column(), index.row()});
        }
        mutable std::set<std::pair<int, int>> places;
    } delegate;
    ColoredTable& table = addPeople();
    table.setItemDelegateForColumn(1, &delegate);
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(20, 10), 0xffffffff) << "the other columns are drawn as ever";
    EXPECT_EQ(image.pixel(20, 2), red);
    EXPECT_EQ(delegate.places, (std::set<std::pair<int, int>>{{1, 0}, {1, 1}, {1, 2}}));
}

TEST_F(NSTableViewTest, DrawsCellsThatSpanSeveralAndAGrid) {
    ColoredTable& table = addPeople();
    table.setSpan(0, 0, 2, 1);
    QImage image = look(table);
    EXPECT_EQ(image.pixel(20, 20), 0xffffffff) << "a block in the middle of two rows";
    EXPECT_EQ(image.pixel(20, 30), red) << "and none of the second row";
    table.clearSpans();
    table.setShowGrid(true);
    image = look(table);
    EXPECT_NE(image.pixel(39, 10), red) << "the line between two columns";
    EXPECT_EQ(image.pixel(20, 10), 0xffffffff);
}

TEST_F(NSTableViewTest, TogglesAButtonCellWhereItIsClicked) {
    ColoredTable& table = addPeople();
    show(window);
    click(table, 0, 1);
    EXPECT_EQ(member(1), 1);
    EXPECT_FALSE(table.selectionModel()->hasSelection()) << "without selecting its row";
    click(table, 0, 1);
    EXPECT_EQ(member(1), 0);
    click(table, 1, 1);
    EXPECT_EQ(member(1), 0);
    EXPECT_TRUE(table.selectionModel()->isRowSelected(1));
}

TEST_F(NSTableViewTest, ShowsAButtonCellPressedWhileTheMouseIsDownOnIt) {
    ColoredTable& table = addPeople();
    show(window);
    const auto color = [&] { return look(table).pixel(20, 30); };
    const QRgb off = color();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, inWindow(table, 0, 1));
    EXPECT_EQ(color(), red);
    QTest::mouseMove(window.windowHandle(), inWindow(table, 1, 1));
    EXPECT_EQ(color(), off);
    QTest::mouseMove(window.windowHandle(), inWindow(table, 0, 1));
    EXPECT_EQ(color(), red);
    QTest::mouseMove(window.windowHandle(), inWindow(table, 0, 2));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, inWindow(table, 0, 2));
    EXPECT_EQ(color(), off) << "released elsewhere, nothing happens";
    EXPECT_EQ(member(1), 0);
    EXPECT_EQ(member(2), 1);
}

TEST_F(NSTableViewTest, TogglesTheCheckBoxOfTheRowByTheSpaceBar) {
    ColoredTable& table = addPeople();
    show(window);
    table.setFocus();
    table.selectRow(1);
    table.setCurrentIndex(table.model()->index(1, 1));
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(member(1), 1) << "from any column, while there is one of check boxes";
    table.setCurrentIndex(table.model()->index(1, 0));
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(member(1), 0);
    EXPECT_TRUE(table.selectionModel()->isRowSelected(1));
    QTest::keyClick(window.windowHandle(), Qt::Key_Down);
    EXPECT_EQ(table.currentIndex().row(), 2);
    table.setDataCell(2, std::make_unique<BlockCell>());
    table.setCurrentIndex(table.model()->index(1, 1));
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(member(1), 0) << "which of two is not known";
}

TEST_F(NSTableViewTest, TogglesCheckStatesOfAModelOfTheHosts) {
    ColoredTable& table = add();
    QStandardItemModel model(2, 1);
    for (int row = 0; row < 2; ++row) {
        auto* const item = new QStandardItem;
        item->setCheckable(row == 0);
        item->setCheckState(Qt::Unchecked);
        model.setItem(row, 0, item);
    }
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<BlockCell>());
    show(window);
    click(table, 0, 0);
    EXPECT_EQ(model.item(0)->checkState(), Qt::Checked);
    EXPECT_EQ(table.preparedCellAtColumn(0, 0)->intValue(), 1);
    click(table, 0, 1);
    EXPECT_EQ(model.item(1)->checkState(), Qt::Unchecked) << "not one that the user may check";
}

TEST_F(NSTableViewTest, LeavesItsCellsAloneWhenDisabled) {
    ColoredTable& table = addPeople();
    table.setEnabled(false);
    EXPECT_FALSE(dynamic_cast<NSButtonCell*>(table.preparedCellAtColumn(0, 0))->isEnabled());
    table.performClickOnCellAtColumn(0, 0);
    EXPECT_EQ(member(0), 1);
}

TEST_F(NSTableViewTest, SortsByItsHeaderAndKeepsTheSelection) {
    ColoredTable& table = addPeople();
    table.setSortingEnabled(true);
    show(window);
    table.selectRow(0);
    const QString selected = names(table)[std::size_t(table.selectionModel()->selectedRows().front().row())];
    table.sortByColumn(1, Qt::AscendingOrder);
    EXPECT_EQ(names(table), (std::vector<QString>{u"anton"_qs, u"Berta"_qs, u"Clara"_qs})) << "case aside";
    table.sortByColumn(2, Qt::DescendingOrder);
    EXPECT_EQ(names(table), (std::vector<QString>{u"Berta"_qs, u"Clara"_qs, u"anton"_qs})) << "by size, not as text";
    ASSERT_EQ(table.selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(names(table)[std::size_t(table.selectionModel()->selectedRows().front().row())], selected);
    const QPoint header = table.horizontalHeader()->mapTo(&window, QPoint(60, 5));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, header);
    EXPECT_EQ(names(table)[0], QStringLiteral("anton"));
}

TEST_F(NSTableViewTest, SortsValuesOfAnyKind) {
    const auto object = [](NSPropertyList value) { return NSPropertyList(NSDictionary{{"key", std::move(value)}}); };
    controller.setContent({object("text"), object(std::numeric_limits<double>::quiet_NaN()), 5, object(2), object(1.5),
                           NSDictionary{}, object(NSArray{})});
    controller.sort("key", true);
    const NSArray& sorted = controller.arrangedObjects();
    ASSERT_EQ(sorted.size(), 7U);
    EXPECT_EQ(sorted[6], object("text"));
    EXPECT_EQ(sorted[5], object(2));
    EXPECT_EQ(sorted[4], object(1.5));
    EXPECT_FALSE(controller.setValue(1, "key", 900));
    controller.setContent({5});
    EXPECT_FALSE(controller.setValue(1, "key", 0)) << "no dictionary";
}

TEST_F(NSTableViewTest, SelectsRowsByADrag) {
    ColoredTable& table = addPeople();
    show(window);
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, inWindow(table, 1, 0));
    QTest::mouseMove(window.windowHandle(), inWindow(table, 1, 1));
    QTest::mouseMove(window.windowHandle(), inWindow(table, 1, 2));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, inWindow(table, 1, 2));
    EXPECT_EQ(table.selectionModel()->selectedRows().size(), 3);
    click(table, 1, 1);
    EXPECT_EQ(table.selectionModel()->selectedRows().size(), 1);
    click(table, 1, 2, Qt::ShiftModifier);
    EXPECT_EQ(table.selectionModel()->selectedRows().size(), 2);
}

TEST_F(NSTableViewTest, AsksAMillionRowsOnlyForWhatCanBeSeen) {
    CountedModel model(1'000'000);
    ColoredTable& table = add();
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<BlockCell>());
    table.setUsesAlternatingRowBackgroundColors(true);
    show(window);
    const int visible = table.viewport()->height() / 20 + 2;
    EXPECT_LE(int(model.rowsAsked.size()), visible);
    EXPECT_GT(model.calls, 0);
    constexpr int mostCallsOfACell = 6;
    model.calls = 0;
    look(table);
    EXPECT_LE(model.calls, visible * 3 * mostCallsOfACell);
    for (const int row : {500'000, 999'999}) {
        model.rowsAsked.clear();
        table.scrollTo(model.index(row, 0));
        settle();
        look(table);
        EXPECT_LE(int(model.rowsAsked.size()), 2 * visible) << row;
        EXPECT_TRUE(model.rowsAsked.contains(row));
    }
    table.selectAll();
    model.rowsAsked.clear();
    look(table);
    EXPECT_LE(int(model.rowsAsked.size()), visible) << "with all of them selected";
}

TEST_F(NSTableViewTest, HasRowsOfOneHeight) {
    ColoredTable& table = addPeople();
    EXPECT_EQ(table.rowHeight(), 20);
    table.setRowHeight(30);
    EXPECT_EQ(table.rowHeight(), 30);
    EXPECT_EQ(table.frameOfCellAtColumn(1, 1), NSMakeRect(40, 30, 80, 30));
    for (const double height : {0.0, -3.0, std::numeric_limits<double>::quiet_NaN()}) {
        table.setRowHeight(height);
        EXPECT_EQ(table.rowHeight(), 30) << height;
    }
    table.setRowHeight(std::numeric_limits<double>::infinity());
    EXPECT_GE(table.rowHeight(), 1000);
    EXPECT_FALSE(look(table).isNull());
}

TEST_F(NSTableViewTest, DrawsAButtonCellInTheMiddleOfAHighRow) {
    ColoredTable& table = addPeople();
    table.setRowHeight(40);
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(20, 14), red);
    EXPECT_EQ(image.pixel(20, 15), 0xffffffff);
    EXPECT_EQ(image.pixel(20, 24), 0xffffffff);
    EXPECT_EQ(image.pixel(20, 25), red);
}

TEST_F(NSTableViewTest, OutlastsAModelThatIsResetWhileItDraws) {
    ColoredTable& table = addPeople();
    bool isResetting = false;
    int resets = 0;
    table.whilePreparing = [&] {
        if (!isResetting && resets < 3) {
            isResetting = true;
            ++resets;
            controller.setContent(resets % 2 == 0 ? people() : NSArray{});
            isResetting = false;
        }
    };
    look(table);
    EXPECT_GT(resets, 0);
    EXPECT_EQ(table.preparedCellAtColumn(1, 7), nullptr);
}

TEST_F(NSTableViewTest, GivesAColumnWithoutACellTextAgain) {
    ColoredTable& table = addPeople();
    table.setDataCell(0, nullptr);
    EXPECT_EQ(&table.dataCell(0), &table.textCell());
    EXPECT_EQ(dynamic_cast<NSTextFieldCell*>(table.preparedCellAtColumn(0, 0))->stringValue(), QStringLiteral("1"));
}

TEST_F(NSTableViewTest, IsATableWithCheckBoxesForAScreenReader) {
    ColoredTable& table = addPeople();
    show(window);
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&table);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::Table);
    QAccessibleTableInterface* const cells = accessible->tableInterface();
    ASSERT_NE(cells, nullptr);
    EXPECT_EQ(cells->rowCount(), 3);
    EXPECT_EQ(cells->cellAt(0, 1)->text(QAccessible::Name), QStringLiteral("Clara"));
    EXPECT_TRUE(cells->cellAt(0, 0)->state().checkable);
    EXPECT_TRUE(cells->cellAt(0, 0)->state().checked);
    EXPECT_FALSE(cells->cellAt(1, 0)->state().checked);
    EXPECT_FALSE(cells->cellAt(1, 1)->state().checkable);
    table.selectRow(1);
    EXPECT_TRUE(cells->cellAt(1, 1)->state().selected);
}

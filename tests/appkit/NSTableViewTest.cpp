// SPDX-License-Identifier: MIT
// What tables show, and what clicks and keys do with it; NSTableViewDrawingTest has what they look like.
#include "NSTableViewTestSupport.h"

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleTableInterface>
#include <QHeaderView>
#include <QStandardItemModel>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

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

TEST_F(NSTableViewTest, TakesACheckFromItsModel) {
    ColoredTable& table = addPeople();
    QAbstractItemModel& model = *table.model();
    EXPECT_TRUE(model.setData(model.index(1, 0), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(member(1), 1);
    EXPECT_TRUE(model.setData(model.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_EQ(member(1), 0);
    EXPECT_FALSE(model.setData(model.index(1, 0), QStringLiteral("1"), Qt::EditRole));
    EXPECT_FALSE(model.setData(model.index(1, 1), Qt::Checked, Qt::CheckStateRole)) << "a column of text";
    EXPECT_EQ(names(table)[1], QStringLiteral("anton"));
    const QModelIndex last = model.index(2, 0);
    controller.removeObjectAtArrangedObjectIndex(2);
    EXPECT_FALSE(model.setData(last, Qt::Checked, Qt::CheckStateRole)) << "a row that is gone";
}

TEST_F(NSTableViewTest, HasNothingToShowForARowThatIsGone) {
    const NSTableView& table = addPeople();
    const QModelIndex name = table.model()->index(2, 1);
    ASSERT_EQ(name.data().toString(), QStringLiteral("Berta"));
    controller.removeObjectAtArrangedObjectIndex(2);
    EXPECT_FALSE(name.data().isValid());
    EXPECT_FALSE(table.model()->data(QModelIndex()).isValid());
}

TEST_F(NSTableViewTest, MakesAColumnAsWideAsItsWidestText) {
    ColoredTable& table = addPeople();
    controller.setValue("A name far longer than the title above it", "name", 1);
    show(window);
    table.resizeColumnToContents(1);
    EXPECT_EQ(table.columnWidth(1), std::ceil(table.preparedCellAtColumn(1, 1)->cellSize().width));
}

TEST_F(NSTableViewTest, HandsTheNumberOfARowToACellOfAnotherKind) {
    class LevelCell : public NSCell {
    public:
        int intValue() const override { return level; }
        void setIntValue(int value) override { level = value; }
        NSSize cellSize() const override { return {10, 10}; }
        void drawWithFrame(const NSRect& /*cellFrame*/, ViewCore& /*controlView*/) override {}

        int level = 0;
    };
    ColoredTable& table = addPeople();
    table.setDataCell(2, std::make_unique<LevelCell>());
    EXPECT_EQ(table.preparedCellAtColumn(2, 0), &table.dataCell(2));
    EXPECT_EQ(table.dataCell(2).intValue(), 31);
    EXPECT_EQ(table.preparedCellAtColumn(2, 2)->intValue(), 100);
}

TEST_F(NSTableViewTest, TakesTheNumberThatTheTextOfACellBeginsWith) {
    NSTextFieldCell cell;
    EXPECT_EQ(cell.intValue(), 0);
    cell.setStringValue(QStringLiteral("12 pieces"));
    EXPECT_EQ(cell.intValue(), 12);
    cell.setIntValue(-7);
    EXPECT_EQ(cell.stringValue(), QStringLiteral("-7"));
}

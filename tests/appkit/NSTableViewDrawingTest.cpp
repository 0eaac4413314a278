// SPDX-License-Identifier: MIT
#include "NSTableViewTestSupport.h"

#include <tests/graphics/GraphicsTestSupport.h>

#include <QAbstractTableModel>
#include <QPalette>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyledItemDelegate>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include <gmock/gmock.h>

namespace {

/// A word on white, in a column of 200 points.
class OneWord : public QStandardItemModel {
public:
    OneWord() : QStandardItemModel(1, 1) { setData(index(0, 0), QStringLiteral("Word")); }

    void showIn(ColoredTable& table) {
        table.colors = {NSColor::whiteColor()};
        table.setModel(this);
        table.setColumnWidth(0, 200);
    }
};

/// Where the first row of such a table is not white.
QRect inkedInFirstRow(const QImage& image) {
    QRect inked;
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 200; ++x) {
            if (image.pixelColor(x, y) != Qt::white) {
                inked |= QRect(x, y, 1, 1);
            }
        }
    }
    return inked;
}

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

} // namespace

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
    OneWord model;
    model.showIn(table);
    model.setData(model.index(0, 0), QBrush(Qt::blue), Qt::ForegroundRole);
    model.setData(model.index(0, 0), int(Qt::AlignRight | Qt::AlignVCenter), Qt::TextAlignmentRole);
    const QImage image = look(table);
    const QRect inked = inkedInFirstRow(image);
    int bluest = 0;
    for (int y = inked.top(); y <= inked.bottom(); ++y) {
        for (int x = inked.left(); x <= inked.right(); ++x) {
            const QColor color = image.pixelColor(x, y);
            bluest = std::max(bluest, color.blue() - color.red());
        }
    }
    EXPECT_GT(inked.left(), 150);
    EXPECT_GT(bluest, 200);
    EXPECT_EQ(table.textCell().textColor(), NSTableView().textCell().textColor()) << "the cell is as it was";
}

TEST_F(NSTableViewTest, CentresTextWhereTheModelSaysSo) {
    ColoredTable& table = add();
    OneWord model;
    model.showIn(table);
    model.setData(model.index(0, 0), int(Qt::AlignHCenter), Qt::TextAlignmentRole);
    const QRect inked = inkedInFirstRow(look(table));
    ASSERT_FALSE(inked.isNull());
    EXPECT_NEAR(inked.center().x(), 100, 3);
}

TEST_F(NSTableViewTest, HasTheColoursOfThePaletteUnlessASubclassHasItsOwn) {
    NSTableView table(NSMakeRect(10, 10, 240, 160));
    QPalette palette;
    palette.setColor(QPalette::Base, QColor::fromRgb(red));
    palette.setColor(QPalette::AlternateBase, QColor::fromRgb(green));
    palette.setColor(QPalette::Highlight, QColor::fromRgb(blue));
    table.setPalette(palette);
    table.setUsesAlternatingRowBackgroundColors(true);
    QStandardItemModel model(3, 1);
    table.setModel(&model);
    table.selectRow(2);
    const QImage image = look(table);
    EXPECT_EQ(image.pixel(200, 10), red);
    EXPECT_EQ(image.pixel(200, 30), green);
    EXPECT_EQ(image.pixel(200, 50), blue);
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

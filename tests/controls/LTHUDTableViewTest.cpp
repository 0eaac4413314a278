// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDCheckBoxCell.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QStandardItemModel>

#include <limits>

namespace {

class LTHUDTableViewTest : public AppKitHost {
protected:
    static NSPropertyList item(const char* name, std::optional<NSPropertyList> enabled) {
        NSDictionary object{{"name", name}};
        if (enabled) {
            object.setObject(*enabled, "enabled");
        }
        return object;
    }

    /// A table with a column of check boxes and one of names.
    LTHUDTableView& add(NSWindow& host, const NSRect& frame = {{10, 10}, {200, 150}}) {
        auto table = std::make_unique<LTHUDTableView>(frame);
        table->setDataSource(&controller);
        table->addTableColumn(QStringLiteral("enabled"), QString());
        table->addTableColumn(QStringLiteral("name"), QStringLiteral("Name"));
        table->setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
        table->setColumnWidth(0, 24);
        ViewCore::of(host.contentView())->addSubview(table.get());
        return *table.release();
    }

    static LTHUDCheckBoxCell& cellOf(LTHUDTableView& table, int row) {
        return dynamic_cast<LTHUDCheckBoxCell&>(*table.preparedCellAtColumn(0, row));
    }

    static QImage look(LTHUDTableView& table, double ratio) {
        QImage image(table.viewport()->size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        table.viewport()->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        image.setDevicePixelRatio(1);
        return image;
    }

    /// The image `name` on a row of `color`.
    static QImage boxOnRow(const QString& name, const QColor& color, double ratio) {
        QImage image(QSize(24, 20) * ratio, QImage::Format_ARGB32_Premultiplied);
        image.fill(color);
        QPainter painter(&image);
        painter.drawImage(QPointF(2, 2) * ratio, kitPixels(name, ratio));
        return image;
    }

    int enabledOf(std::size_t row) const {
        const NSPropertyList* const value =
            controller.arrangedObjects()[row].as<NSDictionary>()->objectForKey("enabled");
        return value ? NSIntValue(*value) : std::numeric_limits<int>::max();
    }

    void click(const LTHUDTableView& table, int column, int row) {
        const QPoint point = table.visualRect(table.model()->index(row, column)).center();
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, table.viewport()->mapTo(&window, point));
    }

    NSArrayController controller{{item("off", 0), item("on", 1), item("installed", -1), item("unknown", {}),
                                  item("text", "-1"), item("much", 7)}};
    HostWindow window{NSMakeRect(100, 100, 300, 200)};
    LTHUDWindow panel{NSMakeRect(100, 100, 300, 200), NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

const QColor firstRow(38, 38, 38);
const QColor secondRow(64, 64, 64);

} // namespace

TEST_F(LTHUDTableViewTest, HasTwoGreysForItsRowsWhichLetALittleThroughInAHUDWindow) {
    class Panel : public LTHUDWindow {
    public:
        using LTHUDWindow::LTHUDWindow;
    };
    Panel subclass(NSMakeRect(0, 0, 300, 200), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    const auto greys = [](double alpha) {
        return std::vector{NSColor::colorWithCalibratedWhite(0.15, alpha),
                           NSColor::colorWithCalibratedWhite(0.25, alpha)};
    };
    EXPECT_EQ(add(window)._alternatingRowBackgroundColors(), greys(1));
    EXPECT_EQ(add(panel)._alternatingRowBackgroundColors(), greys(0.95));
    EXPECT_EQ(add(subclass)._alternatingRowBackgroundColors(), greys(0.95));
    EXPECT_EQ(LTHUDTableView()._alternatingRowBackgroundColors(), greys(1)) << "in no window";
}

TEST_F(LTHUDTableViewTest, DrawsItsRowsInThem) {
    for (const double ratio : {1.0, 2.0}) {
        const QImage opaque = look(add(window), ratio);
        const QImage translucent = look(add(panel), ratio);
        for (int row = 0; row < 7; ++row) {
            const QPoint place(int(195 * ratio), int((row * 20 + 10) * ratio));
            const QColor color = row % 2 == 0 ? firstRow : secondRow;
            EXPECT_EQ(opaque.pixel(place), color.rgba()) << row;
            EXPECT_EQ(translucent.pixelColor(place).alpha(), 242) << row;
            EXPECT_NEAR(translucent.pixelColor(place).red(), color.red(), 1) << row;
        }
    }
}

TEST_F(LTHUDTableViewTest, HighlightsInBrown) {
    const NSColor brown = NSColor::colorWithCalibratedRed(0.573, 0.353, 0.122, 1);
    LTHUDTableView& table = add(window);
    EXPECT_EQ(table._highlightColorForCell(nullptr), brown);
    EXPECT_EQ(table._highlightColorForCell(table.preparedCellAtColumn(0, 0)), brown);
    EXPECT_EQ(table._highlightColorForCell(table.preparedCellAtColumn(1, 0)), brown);
    table.selectRow(1);
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = look(table, ratio);
        for (const double y : {20.0, 39.5}) {
            EXPECT_EQ(image.pixelColor(int(195 * ratio), int(y * ratio)), QColor(146, 90, 31)) << y;
        }
        EXPECT_EQ(image.pixelColor(int(195 * ratio), int(10 * ratio)), firstRow);
        EXPECT_EQ(image.pixelColor(int(195 * ratio), int(50 * ratio)), firstRow);
    }
}

TEST_F(LTHUDTableViewTest, GivesAButtonCellTheValueEnabledOfItsRow) {
    LTHUDTableView& table = add(window);
    EXPECT_EQ(cellOf(table, 0).realValue(), 0);
    EXPECT_EQ(cellOf(table, 1).realValue(), 1);
    EXPECT_EQ(cellOf(table, 2).realValue(), -1);
    EXPECT_EQ(cellOf(table, 3).realValue(), 0) << "a missing key gives 0";
    EXPECT_EQ(cellOf(table, 4).realValue(), -1) << "text by its number";
    EXPECT_EQ(cellOf(table, 5).realValue(), 7);
}

TEST_F(LTHUDTableViewTest, LooksForEnabledWhateverTheColumnIsCalled) {
    LTHUDTableView& table = add(window);
    table.addTableColumn(QStringLiteral("name"), QString());
    table.setDataCell(2, std::make_unique<NSButtonCell>());
    EXPECT_EQ(table.preparedCellAtColumn(2, 1)->intValue(), 1);
    EXPECT_EQ(table.preparedCellAtColumn(2, 0)->intValue(), 0);
}

TEST_F(LTHUDTableViewTest, LeavesOtherCellsAsTheyAre) {
    LTHUDTableView& table = add(window);
    EXPECT_EQ(dynamic_cast<NSTextFieldCell&>(*table.preparedCellAtColumn(1, 2)).stringValue(),
              QStringLiteral("installed"));
}

TEST_F(LTHUDTableViewTest, ShowsButtonCellsUnchangedWithoutADataSource) {
    LTHUDTableView table(NSMakeRect(0, 0, 200, 100));
    QStandardItemModel model(2, 1);
    model.setData(model.index(1, 0), Qt::Checked, Qt::CheckStateRole);
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
    EXPECT_EQ(cellOf(table, 0).realValue(), 0);
    EXPECT_EQ(cellOf(table, 1).realValue(), 1);
}

TEST_F(LTHUDTableViewTest, ChecksItsModelWithoutADataSource) {
    LTHUDTableView table(NSMakeRect(0, 0, 200, 100));
    QStandardItemModel model(1, 1);
    model.setItem(0, 0, new QStandardItem);
    model.item(0)->setCheckable(true);
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
    table.performClickOnCellAtColumn(0, 0);
    EXPECT_EQ(model.item(0)->checkState(), Qt::Checked);
    EXPECT_EQ(cellOf(table, 0).realValue(), 1);
    table.performClickOnCellAtColumn(0, 0);
    EXPECT_EQ(model.item(0)->checkState(), Qt::Unchecked);
}

TEST_F(LTHUDTableViewTest, AsksItsDataSourceBesideAModelOfTheHosts) {
    LTHUDTableView table(NSMakeRect(0, 0, 200, 100));
    QStandardItemModel model(3, 1);
    model.setData(model.index(0, 0), Qt::Checked, Qt::CheckStateRole);
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
    table.setDataSource(&controller);
    EXPECT_EQ(cellOf(table, 0).realValue(), 0);
    EXPECT_EQ(cellOf(table, 2).realValue(), -1);
    EXPECT_FALSE(cellOf(table, 2).isEnabled());
}

TEST_F(LTHUDTableViewTest, TakesARowThatItsDataSourceDoesNotHaveForOff) {
    LTHUDTableView table(NSMakeRect(0, 0, 200, 300));
    QStandardItemModel model(20, 1);
    table.setModel(&model);
    table.setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
    controller.setContent({5, item("installed", -1)});
    table.setDataSource(&controller);
    EXPECT_EQ(cellOf(table, 0).realValue(), 0) << "no dictionary";
    EXPECT_EQ(cellOf(table, 1).realValue(), -1);
    EXPECT_EQ(cellOf(table, 2).realValue(), 0);
    EXPECT_EQ(cellOf(table, 19).realValue(), 0);
    EXPECT_EQ(table.preparedCellAtColumn(0, 20), nullptr);
    EXPECT_EQ(table.preparedCellAtColumn(0, -1), nullptr);
    table.performClickOnCellAtColumn(0, 19);
    EXPECT_EQ(controller.arrangedObjects().size(), 2U);
    EXPECT_FALSE(look(table, 1).isNull());
}

TEST_F(LTHUDTableViewTest, TakesValuesThatMakeNoSenseByTheirNumber) {
    controller.setContent({item("nan", std::numeric_limits<double>::quiet_NaN()), item("much", 1e300),
                           item("array", NSArray{1}), item("yes", true), item("minus one", -1.7)});
    LTHUDTableView& table = add(window);
    EXPECT_EQ(cellOf(table, 0).realValue(), 0);
    EXPECT_EQ(cellOf(table, 1).realValue(), std::numeric_limits<int>::max());
    EXPECT_EQ(cellOf(table, 2).realValue(), 0);
    EXPECT_EQ(cellOf(table, 3).realValue(), 1);
    EXPECT_EQ(cellOf(table, 4).realValue(), -1);
}

TEST_F(LTHUDTableViewTest, ShowsACheckBoxOrABadgeInEachRow) {
    LTHUDTableView& table = add(window);
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = look(table, ratio);
        const char* const images[] = {"HUDCheckboxNormal", "HUDCheckboxNormalChecked", "AlreadyInstalled",
                                      "HUDCheckboxNormal", "AlreadyInstalled",         "HUDCheckboxNormalChecked"};
        for (int row = 0; row < 6; ++row) {
            const QImage found = image.copy(QRect(QPoint(0, row * 20) * ratio, QSize(24, 20) * ratio));
            const QImage expected =
                boxOnRow(QString::fromLatin1(images[row]), row % 2 == 0 ? firstRow : secondRow, ratio);
            EXPECT_LE(difference(found, expected), 1) << row << " at " << ratio;
        }
    }
}

TEST_F(LTHUDTableViewTest, ShowsACheckBoxOnTheHighlightAndPressed) {
    LTHUDTableView& table = add(window);
    show(window);
    table.selectRow(1);
    const QPoint box = table.viewport()->mapTo(&window, QPoint(10, 30));
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, box);
    for (const double ratio : {1.0, 2.0}) {
        const QImage found = look(table, ratio).copy(QRect(QPoint(0, 20) * ratio, QSize(24, 20) * ratio));
        EXPECT_LE(difference(found, boxOnRow(QStringLiteral("HUDCheckboxPressedChecked"), QColor(146, 90, 31), ratio)),
                  1)
            << ratio;
    }
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, box);
    EXPECT_EQ(enabledOf(1), 0);
}

TEST_F(LTHUDTableViewTest, TogglesARowByMouseAndKeyboard) {
    LTHUDTableView& table = add(window);
    show(window);
    click(table, 0, 0);
    EXPECT_EQ(enabledOf(0), 1);
    EXPECT_EQ(cellOf(table, 0).realValue(), 1);
    table.setFocus();
    table.setCurrentIndex(table.model()->index(3, 1));
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(enabledOf(3), 1) << "the key is there now";
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(enabledOf(3), 0);
}

TEST_F(LTHUDTableViewTest, DoesNotToggleWhatIsInstalledAlready) {
    LTHUDTableView& table = add(window);
    show(window);
    click(table, 0, 2);
    EXPECT_EQ(enabledOf(2), -1);
    EXPECT_TRUE(table.selectionModel()->isRowSelected(2)) << "a click selects its row, as one beside a check box";
    table.setFocus();
    table.setCurrentIndex(table.model()->index(2, 0));
    QTest::keyClick(window.windowHandle(), Qt::Key_Space);
    EXPECT_EQ(enabledOf(2), -1);
    table.performClickOnCellAtColumn(0, 2);
    EXPECT_EQ(enabledOf(2), -1);
    click(table, 0, 1);
    EXPECT_EQ(enabledOf(1), 0) << "its neighbours are not affected";
}

TEST_F(LTHUDTableViewTest, WritesInWhiteOnDark) {
    LTHUDTableView& table = add(window);
    EXPECT_EQ(table.textCell().textColor(), NSColor::whiteColor());
    const QImage image = look(table, 1);
    int brightest = 0;
    for (int x = 24; x < 80; ++x) {
        for (int y = 0; y < 20; ++y) {
            brightest = std::max(brightest, image.pixelColor(x, y).red());
        }
    }
    EXPECT_GT(brightest, 200);
}

TEST_F(LTHUDTableViewTest, HasTheScrollBarsOfHUDPanels) {
    controller.setContent(NSArray(200, item("off", 0)));
    LTHUDTableView& table = add(window);
    show(window);
    auto* const scroller = dynamic_cast<LTHUDScrollBar*>(table.verticalScrollBar());
    ASSERT_NE(scroller, nullptr);
    EXPECT_EQ(scroller->arrowsPosition(), NSScrollerArrowsNone);
    EXPECT_EQ(scroller->width(), 15);
    EXPECT_NE(scroller->rectForPart(NSScrollerKnob), NSZeroRect);
    EXPECT_NE(dynamic_cast<LTHUDScrollBar*>(table.horizontalScrollBar()), nullptr);
    const QPoint end = scroller->mapTo(&window, QPoint(7, scroller->height() - 10));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, end);
    EXPECT_GT(table.verticalScrollBar()->value(), 0);
}

TEST_F(LTHUDTableViewTest, KeepsRowAndObjectTogetherWhenItIsSorted) {
    LTHUDTableView& table = add(window);
    table.sortByColumn(1, Qt::AscendingOrder);
    table.model()->sort(1, Qt::AscendingOrder);
    for (int row = 0; row < 6; ++row) {
        if (table.model()->index(row, 1).data().toString() == QStringLiteral("installed")) {
            EXPECT_EQ(cellOf(table, row).realValue(), -1);
        }
    }
    EXPECT_EQ(table.model()->index(0, 1).data().toString(), QStringLiteral("installed"));
}

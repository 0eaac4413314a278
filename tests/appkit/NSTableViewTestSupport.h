// SPDX-License-Identifier: MIT
// What the tests of tables share.
#pragma once

#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSArrayController.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSTableView.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>

#include <QImage>
#include <QTest>

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

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
    static constexpr QRgb red = 0xffff0000;
    static constexpr QRgb green = 0xff00ff00;
    static constexpr QRgb blue = 0xff0000ff;

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

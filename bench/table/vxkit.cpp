// SPDX-License-Identifier: MIT
// The kit's side: a table with a million rows, a scroller and progress indicators in a HUD panel.
//
//     bench_table_vxkit
#include "Measured.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/controls/LTHUDCheckBoxCell.h>
#include <VXKit/controls/LTHUDProgressIndicator.h>
#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/controls/LTHUDTableView.h>
#include <VXKit/hud/LTHUDWindow.h>

#include <memory>

int main(int argc, char** argv) {
    const LTApplication application(argc, argv);
    LTHUDWindow panel(NSMakeRect(100, 100, 440, 440), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    QWidget* const content = panel.contentView();
    auto* const table = new LTHUDTableView(content);
    tellTable(panel, *table, [&] {
        table->setDataCell(0, std::make_unique<LTHUDCheckBoxCell>());
        table->setRowHeight(rowHeight);
    });
    table->hide();

    auto* const scroller = new LTHUDScrollBar(Qt::Vertical, content);
    scroller->awakeFromNib();
    scroller->setRange(0, 1000);
    scroller->setPageStep(200);
    scroller->setGeometry(QRect(QPoint(410, 10), scrollerSize));
    scroller->show();
    tellPaint("scroller", *scroller);

    auto* const bar = new LTHUDProgressIndicator(content);
    bar->setIndeterminate(false);
    bar->setDoubleValue(40);
    bar->setGeometry(QRect(QPoint(10, 60), progressSize));
    bar->show();
    tellPaint("progress", *bar);

    auto* const wheel = new LTHUDProgressIndicator(content);
    wheel->setIndicatorStyle(NSProgressIndicatorSpinningStyle);
    wheel->setGeometry(QRect(10, 90, 32, 32));
    wheel->show();
    tellPaint("wheel", *wheel);
    return 0;
}

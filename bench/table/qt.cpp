// SPDX-License-Identifier: MIT
// The peer: the same table, scroll bar and progress bar of Qt's, in its Fusion style.
//
//     bench_table_qt
#include "Measured.h"

#include <QApplication>
#include <QProgressBar>
#include <QStyleFactory>

int main(int argc, char** argv) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(440, 440);
    auto* const table = new QTableView(&window);
    tellTable(window, *table, [&] {
        table->setAlternatingRowColors(true);
        table->setShowGrid(false);
        table->setSelectionBehavior(QAbstractItemView::SelectRows);
        table->verticalHeader()->hide();
        table->verticalHeader()->setMinimumSectionSize(1);
        table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
        table->verticalHeader()->setDefaultSectionSize(rowHeight);
    });
    table->hide();

    auto* const scroller = new QScrollBar(Qt::Vertical, &window);
    scroller->setRange(0, 1000);
    scroller->setPageStep(200);
    scroller->setGeometry(QRect(QPoint(410, 10), scrollerSize));
    scroller->show();
    tellPaint("scroller", *scroller);

    auto* const bar = new QProgressBar(&window);
    bar->setTextVisible(false);
    bar->setValue(40);
    bar->setGeometry(QRect(QPoint(10, 60), progressSize));
    bar->show();
    tellPaint("progress", *bar);
    return 0;
}

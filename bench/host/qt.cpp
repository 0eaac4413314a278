// SPDX-License-Identifier: MIT
// The peer: the same texts in a list of Qt's, behind its filtering model.
//
//     bench_host_qt
#include "Measured.h"

#include <QApplication>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStyleFactory>

int main(int argc, char** argv) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QApplication application(argc, argv);
    QStandardItemModel texts;
    for (int number = measuredSnippets - 1; number >= 0; --number) {
        const QString text = measuredText(number);
        const QString title = measuredTitle(number, text);
        auto* const item = new QStandardItem(title);
        item->setData(title + QLatin1Char('\n') + text, Qt::UserRole);
        texts.appendRow(item);
    }

    QElapsedTimer clock;
    clock.start();
    QSortFilterProxyModel found;
    found.setFilterRole(Qt::UserRole);
    found.setFilterCaseSensitivity(Qt::CaseInsensitive);
    found.setSourceModel(&texts);
    QListView list;
    list.resize(measuredSize);
    list.setUniformItemSizes(true);
    list.setModel(&found);
    list.setCurrentIndex(found.index(0, 0));
    list.show();
    waitUntilExposed(list);
    list.viewport()->repaint();
    tellFigure("load", milliseconds(clock));

    tellSearches([&](const QString& search) {
        found.setFilterFixedString(search);
        list.setCurrentIndex(found.index(0, 0));
        list.viewport()->repaint();
    });
    return 0;
}

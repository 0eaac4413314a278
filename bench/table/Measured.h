// SPDX-License-Identifier: MIT
// What the two programs of the benchmark of tables have in common, so that they differ in the widgets alone: the rows,
// how long painting takes, what rows cost in memory, and the words to the one who measures.
#pragma once

#include "../Figures.h"

#include <QAbstractTableModel>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QImage>
#include <QRegion>
#include <QScrollBar>
#include <QString>
#include <QTableView>
#include <QWidget>
#include <QWindow>

#include <algorithm>

#include <malloc.h>

inline constexpr int measuredRows = 1'000'000;
inline constexpr int measuredPaints = 400;
inline constexpr int measuredRounds = 9;
inline constexpr int rowHeight = 20;
inline constexpr int columnWidth = 120;
inline constexpr QSize tableSize(400, 400);
inline constexpr QSize scrollerSize(15, 300);
inline constexpr QSize progressSize(200, 16);

/// A column of check boxes and two of text, which cost nothing themselves.
class MeasuredModel : public QAbstractTableModel {
public:
    explicit MeasuredModel(int rows) : m_rows(rows) {}

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : 3; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (index.column() == 0) {
            return role == Qt::CheckStateRole ? QVariant(index.row() % 3 == 0 ? Qt::Checked : Qt::Unchecked)
                                              : QVariant();
        }
        return role == Qt::DisplayRole ? QVariant(m_text.arg(index.row())) : QVariant();
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override {
        return QAbstractTableModel::flags(index) | (index.column() == 0 ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
    }

private:
    int m_rows;
    QString m_text = QStringLiteral("Snippet %1");
};

/// Milliseconds for what `work` does once: the best of some rounds, as everything else only adds to it.
template <class Work>
double timeOf(const Work& work) {
    double best = 1e300;
    for (int round = 0; round < measuredRounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        constexpr int paints = measuredPaints / measuredRounds;
        for (int time = 0; time < paints; ++time) {
            work();
        }
        best = std::min(best, milliseconds(clock) / paints);
    }
    return best;
}

/// Milliseconds for the widget to paint itself, without what is behind it: the window of either side has another look.
inline double paintTime(QWidget& widget) {
    QImage surface(widget.size(), QImage::Format_ARGB32_Premultiplied);
    surface.fill(Qt::gray);
    return timeOf([&] { widget.render(&surface, QPoint(), QRegion(), QWidget::DrawChildren); });
}

inline void tellPaint(const char* what, QWidget& widget) {
    tellFigure(what, paintTime(widget));
}

/// Bytes of the heap in use.
inline double heap() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// How long a table takes to show a million rows, what it keeps for each, and how long its paintings and scrolls take.
template <class Prepare>
void tellTable(QWidget& window, QTableView& table, const Prepare& prepare) {
    MeasuredModel model(measuredRows);
    const double before = heap();
    QElapsedTimer clock;
    clock.start();
    table.setModel(&model);
    prepare();
    table.setColumnWidth(0, 2 * rowHeight);
    table.setColumnWidth(1, columnWidth);
    table.setColumnWidth(2, columnWidth);
    table.setGeometry(QRect(QPoint(0, 0), tableSize));
    window.show();
    while (!window.windowHandle()->isExposed()) {
        QCoreApplication::processEvents();
    }
    table.viewport()->repaint();
    tellFigure("open", milliseconds(clock));
    tellFigure("memory_per_row", (heap() - before) / measuredRows);
    const int visible = (table.viewport()->height() + rowHeight - 1) / rowHeight;
    tellFigure("row", paintTime(*table.viewport()) / visible);
    QScrollBar& scrollBar = *table.verticalScrollBar();
    int at = 0;
    tellFigure("scroll", timeOf([&] {
                   scrollBar.setValue(at += 7);
                   table.viewport()->repaint();
               }));
    table.setModel(nullptr);
}

// SPDX-License-Identifier: MIT
// What the two programs of the desktop benchmark have in common, so that they differ in the kit alone: the same list,
// the same symbol, and the same words to the one who measures.
#pragma once

#include <QAbstractListModel>
#include <QCoreApplication>
#include <QListView>
#include <QString>
#include <QStringList>
#include <QStringListModel>
#include <QTimer>

#include <cstdio>

inline constexpr int measuredRows = 200;
inline constexpr QSize measuredSize(400, 500);

/// A list that says "painted" on standard output when it has been painted for the first time.
class MeasuredList : public QListView {
public:
    using QListView::QListView;

    void fill() {
        QStringList rows;
        for (int row = 0; row < measuredRows; ++row) {
            rows += QStringLiteral("Row number %1 of the list").arg(row);
        }
        setModel(new QStringListModel(rows, this));
        setUniformItemSizes(true);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QListView::paintEvent(event);
        if (!m_isPainted) {
            m_isPainted = true;
            QTimer::singleShot(0, this, [] {
                std::puts("painted");
                std::fflush(stdout);
            });
        }
    }

private:
    bool m_isPainted = false;
};

/// Whether the program was started with `option`.
inline bool isAskedFor(const char* option) {
    return QCoreApplication::arguments().contains(QString::fromLatin1(option));
}

// SPDX-License-Identifier: MIT
// The peer: the same question asked by a QMessageBox in Qt's own style.
//
//     bench_hud_qt
#include "Measured.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStyleFactory>

namespace {

/// Asks, and answers itself as soon as the question is on the screen: from nothing to there. Does `standing` before it
/// goes.
void open(const std::function<void(QMessageBox&)>& standing = {}) {
    QElapsedTimer clock;
    clock.start();
    QMessageBox box;
    box.setText(measuredMessage);
    box.setInformativeText(measuredText);
    QPushButton* const defaultButton = box.addButton(measuredDefault, QMessageBox::AcceptRole);
    box.addButton(measuredAlternate, QMessageBox::RejectRole);
    box.addButton(measuredOther, QMessageBox::ActionRole);
    box.setDefaultButton(defaultButton);
    const FirstPainting painting(*defaultButton, [&] {
        tellFigure("open", milliseconds(clock));
        if (standing) {
            standing(box);
        }
        box.reject();
    });
    box.exec();
}

} // namespace

int main(int argc, char** argv) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QApplication application(argc, argv);
    for (int opening = 0; opening < measuredOpenings; ++opening) {
        open();
    }
    open([](QMessageBox& box) { tellRepaint("repaint", box); });
    return 0;
}

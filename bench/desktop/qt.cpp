// SPDX-License-Identifier: MIT
// The peer: what one would write with Qt alone. A symbol in the tray and a list in a frameless window.
//
//     bench_desktop_qt [--closed] [--pulse]      --closed: without the window; --pulse: the symbol pulses
#include "Measured.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QVBoxLayout>
#include <QWidget>

#include <vector>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QIcon symbol(QStringLiteral(":/images/StatusIcon.svg"));
    QSystemTrayIcon tray(symbol);
    tray.show();

    QWidget window(nullptr, Qt::FramelessWindowHint);
    if (!isAskedFor("--closed")) {
        auto* layout = new QVBoxLayout(&window);
        auto* list = new MeasuredList(&window);
        list->fill();
        layout->addWidget(list);
        window.resize(measuredSize);
        window.show();
        window.activateWindow();
    }

    QTimer pulse;
    std::vector<QIcon> steps;
    if (isAskedFor("--pulse")) {
        // Each step is drawn once, as a careful program would.
        for (int step = 0; step < 12; ++step) {
            const double opacity = step < 6 ? 0.9 - 0.1 * step : 0.5 + 0.1 * (step - 6);
            QPixmap picture(22, 22);
            picture.fill(Qt::transparent);
            QPainter painter(&picture);
            painter.setOpacity(opacity);
            symbol.paint(&painter, picture.rect());
            painter.end();
            steps.emplace_back(picture);
        }
        std::size_t next = 0;
        QObject::connect(&pulse, &QTimer::timeout, &tray, [&] { tray.setIcon(steps[next++ % steps.size()]); });
        pulse.start(100);
    }
    return QApplication::exec();
}

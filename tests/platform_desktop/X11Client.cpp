// SPDX-License-Identifier: MIT
// Another program on the desktop, for the tests: shows a window at X Y WIDTH HEIGHT and writes a line to standard
// output for everything that happens to it, until its standard input ends.
#include <QApplication>
#include <QMouseEvent>
#include <QSocketNotifier>
#include <QWidget>

#include <cstdio>

#include <unistd.h>

namespace {

void tell(const char* what) {
    std::puts(what);
    std::fflush(stdout);
}

class ClientWindow : public QWidget {
protected:
    void mousePressEvent(QMouseEvent* /*event*/) override { tell("pressed"); }
    void paintEvent(QPaintEvent* /*event*/) override { tell("painted"); }
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5) {
        return 1;
    }
    ClientWindow window;
    window.setGeometry(arguments[1].toInt(), arguments[2].toInt(), arguments[3].toInt(), arguments[4].toInt());
    window.show();
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [] {
        char byte = 0;
        if (read(STDIN_FILENO, &byte, 1) <= 0) {
            QCoreApplication::quit();
        }
    });
    return QCoreApplication::exec();
}

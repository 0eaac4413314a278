// SPDX-License-Identifier: MIT
// A program with one status item, for the desktop tests. It tells on standard output what happens to the item, a line
// for each event, and does what standard input says:
//
//     length POINTS     the item gets another length
//     show              where the item is, is told once more
//     redraw TIMES      the view displays itself that often, at once
//     pulse TIMES       the view displays itself that often, ten times a second
//     menu              the item gets a menu
//     remove            the item leaves the bar
//     quit              the program ends
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QMenu>
#include <QSocketNotifier>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

#include <unistd.h>

namespace {

constexpr double itemLength = 30;
constexpr double pulseInterval = 0.1;

void tell(const QString& line) {
    std::puts(qUtf8Printable(line));
    std::fflush(stdout);
}

QString words(const NSRect& rect) {
    return QStringLiteral("%1 %2 %3 %4")
        .arg(rect.origin.x)
        .arg(rect.origin.y)
        .arg(rect.size.width)
        .arg(rect.size.height);
}

/// A disc with a hole, whose colour changes with each drawing, as a pulse does.
class DiscView final : public NSView {
public:
    void drawRect(const NSRect& /*dirtyRect*/) override {
        ++m_drawings;
        const NSSize size = bounds().size;
        const double radius = std::min(size.width, size.height) / 2 - 3;
        const NSRect disc = NSMakeRect(size.width / 2 - radius, size.height / 2 - radius, 2 * radius, 2 * radius);
        NSColor::colorWithCalibratedRed(0.95, m_drawings % 2 == 0 ? 0.5 : 0.6, 0.1, 1).set();
        NSBezierPath ring = NSBezierPath::bezierPathWithOvalInRect(NSInsetRect(disc, 2, 2));
        ring.setLineWidth(4);
        ring.stroke();
    }

    void mouseDown(const NSEvent& event) override {
        const NSPoint place = event.locationInWindow();
        tell(QStringLiteral("mouse-down %1 %2").arg(place.x).arg(place.y));
        if (m_statusItem) {
            tell(QStringLiteral("frame ") + words(window()->frame()));
        }
    }

    void setStatusItem(const NSStatusItem* item) { m_statusItem = item; }
    [[nodiscard]] int drawings() const { return m_drawings; }

private:
    const NSStatusItem* m_statusItem = nullptr;
    int m_drawings = 0;
};

class Program {
public:
    Program() {
        m_item = NSStatusBar::systemStatusBar().statusItemWithLength(itemLength);
        auto view = std::make_unique<DiscView>();
        m_view = view.get();
        m_view->setStatusItem(m_item.get());
        m_item->setView(std::move(view));
        m_item->setToolTip(QStringLiteral("A disc"));
        m_menu.addAction(QStringLiteral("An entry of the menu"));
        QObject::connect(&m_menu, &QMenu::aboutToShow, &m_menu, [] { tell(QStringLiteral("menu shown")); });
        m_moves = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidMoveNotification, m_view->window(), [this](const NSNotification&) { tellPlace(); });
        tellPlace();
    }

    void obey(const QString& line) {
        const QString command = line.section(QLatin1Char(' '), 0, 0);
        const int number = line.section(QLatin1Char(' '), 1, 1).toInt();
        if (command == QLatin1String("length")) {
            m_item->setLength(number);
        } else if (command == QLatin1String("show")) {
            tellPlace();
        } else if (command == QLatin1String("redraw")) {
            redraw(number);
        } else if (command == QLatin1String("pulse")) {
            pulse(number);
        } else if (command == QLatin1String("menu")) {
            m_item->setMenu(&m_menu);
            tell(QStringLiteral("menu set"));
        } else if (command == QLatin1String("remove")) {
            NSStatusBar::systemStatusBar().removeStatusItem(*m_item);
            tell(QStringLiteral("removed"));
        } else if (command == QLatin1String("quit")) {
            m_item.reset();
            NSApplication::sharedApplication()->terminate(nullptr);
        }
    }

private:
    void tellPlace() const {
        tell(QStringLiteral("window %1").arg(m_view->window()->internalWinId()));
        tell(QStringLiteral("frame ") + words(m_view->window()->frame()));
    }

    void redraw(int times) {
        const int before = m_view->drawings();
        for (int time = 0; time < times; ++time) {
            m_view->display();
        }
        tell(QStringLiteral("drawn %1").arg(m_view->drawings() - before));
    }

    void pulse(int times) {
        const int before = m_view->drawings();
        auto left = std::make_shared<int>(times);
        NSTimer::scheduledTimerWithTimeInterval(
            pulseInterval, NSTimerRepeats::Yes, [this, before, left](NSTimer& timer) {
                m_view->display();
                if (--*left == 0) {
                    timer.invalidate();
                    tell(QStringLiteral("pulsed %1").arg(m_view->drawings() - before));
                }
            });
    }

    QMenu m_menu;
    std::shared_ptr<NSStatusItem> m_item;
    DiscView* m_view = nullptr;
    NSNotificationObservation m_moves;
};

} // namespace

int main(int argc, char** argv) {
    NSApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("status-item-program"));
    Program program;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        std::array<char, 256> buffer{};
        const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            input.setEnabled(false);
            return;
        }
        pending.append(buffer.data(), static_cast<qsizetype>(count));
        for (qsizetype end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            const QString line = QString::fromUtf8(pending.left(end));
            pending.remove(0, end + 1);
            program.obey(line);
        }
    });
    return application.run();
}

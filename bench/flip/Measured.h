// SPDX-License-Identifier: MIT
// What the two programs of the benchmark of flips have in common, so that they differ in the kit alone: the windows'
// contents, their size, the transitions' time, and what is told of them.
#pragma once

#include "../Figures.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QObject>
#include <QPainter>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <vector>

inline constexpr int measuredFlips = 8;
inline constexpr int measuredFrames = 200; // drawn one after another, as fast as that goes
inline constexpr int windowWidth = 400;
inline constexpr int windowHeight = 300;
inline constexpr int windowLeft = 400;
inline constexpr int windowTop = 300;
inline constexpr int horizontalMargin = 64;
inline constexpr int verticalMargin = 256;
inline constexpr double flipSeconds = 0.75;
inline constexpr double shadowRadius = 25;
inline constexpr double shadowDistance = 8;
inline constexpr double shadowAlpha = 0.8;

/// Fills a window with lines of text on a ground.
class Content : public QWidget {
public:
    explicit Content(const QColor& ground) : m_ground(ground) {}

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.fillRect(rect(), m_ground);
        painter.setPen(Qt::white);
        for (int line = 20; line < height(); line += 20) {
            painter.drawText(12, line, QStringLiteral("The snippet is taken out of your collection on every machine."));
        }
    }

private:
    QColor m_ground;
};

/// The times at which a moving picture was painted on the screen.
class Frames : public QObject {
public:
    explicit Frames(bool (*isPicture)(const QObject* widget))
        : m_isPicture(isPicture), m_processorTime(processorTime()) {
        m_clock.start();
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && m_isPicture(watched)) {
            const QWindow* const window = static_cast<QWidget*>(watched)->window()->windowHandle();
            if (window && window->isExposed()) {
                m_times.push_back(milliseconds(m_clock));
            }
        }
        return false;
    }

    void tell() const {
        tellFigure("processor", processorTime() - m_processorTime);
        tellFigure("whole", milliseconds(m_clock));
        tellFrames(m_times);
    }

private:
    bool (*m_isPicture)(const QObject*);
    double m_processorTime;
    QElapsedTimer m_clock;
    std::vector<double> m_times;
};

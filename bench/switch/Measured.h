// SPDX-License-Identifier: MIT
// What the two programs of the benchmark of switches between views have in common, so that they differ in the kit
// alone: what is on the pages, and how a switch is measured.
#pragma once

#include "../Figures.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPoint>
#include <QPushButton>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

inline constexpr int measuredSwitches = 21;
inline constexpr int measuredWidth = 400; // points
inline constexpr int measuredHeight = 300;
inline constexpr int measuredDuration = 250; // milliseconds
inline constexpr int restBetween = 150;      // milliseconds, for what a switch leaves to be done

/// A page as preferences have it.
inline void fillPage(QWidget& page, const QString& title) {
    auto* const layout = new QGridLayout(&page);
    layout->addWidget(new QLabel(title), 0, 0, 1, 2);
    for (int row = 1; row <= 5; ++row) {
        layout->addWidget(new QCheckBox(QStringLiteral("Option %1").arg(row)), row, 0);
        layout->addWidget(new QLineEdit(QStringLiteral("A value to be edited")), row, 1);
    }
    layout->addWidget(new QPushButton(QStringLiteral("Reset")), 6, 0);
    layout->addWidget(new QPushButton(QStringLiteral("Apply")), 6, 1);
}

/// Switches again and again, and says of each time the milliseconds from frame to frame in the mean, the longest of
/// them, and what it took of a processor, to begin with and for each frame.
class Switches : public QObject {
public:
    /// `begin` begins a switch and answers the page that comes in.
    explicit Switches(std::function<QWidget*()> begin) : m_begin(std::move(begin)) { rest(); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            m_frames.push_back(milliseconds(m_clock));
        } else if (event->type() == QEvent::Move && m_page->pos() == QPoint(0, 0)) {
            // What the last step has moved is painted by then.
            QTimer::singleShot(0, this, [this] { tell(); });
        }
        return false;
    }

private:
    void rest() {
        QTimer::singleShot(restBetween, this, [this] {
            m_frames.clear();
            m_clock.start();
            m_processor = processorTime();
            m_page = m_begin();
            m_page->installEventFilter(this);
        });
    }

    void tell() {
        const double processor = processorTime() - m_processor;
        m_page->removeEventFilter(this);
        const auto count = static_cast<double>(m_frames.size());
        // The first ones fill caches.
        if (m_count > 1 && m_frames.size() > 1) {
            tellFigure("interval", (m_frames.back() - m_frames.front()) / (count - 1));
            tellFigure("gap", longestGap(m_frames));
            tellFigure("processor", processor);
            tellFigure("frame", processor / count);
            tellFigure("frames", count);
        }
        if (++m_count == measuredSwitches) {
            QCoreApplication::quit();
        } else {
            rest();
        }
    }

    std::function<QWidget*()> m_begin;
    QElapsedTimer m_clock;
    std::vector<double> m_frames;
    double m_processor = 0;
    QWidget* m_page = nullptr;
    int m_count = 0;
};

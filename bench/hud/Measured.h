// SPDX-License-Identifier: MIT
// What the two programs of the benchmark of alerts have in common, so that they differ in the kit alone: the texts, how
// long the opening of one takes, how long painting it anew takes, and the words to the one who measures.
#pragma once

#include "../Figures.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <functional>

inline constexpr int measuredOpenings = 21;
inline constexpr int measuredRepaints = 400;

inline const QString measuredMessage = QStringLiteral("Remove “Postal address”?");
inline const QString measuredText = QStringLiteral("The snippet is taken out of your collection on every machine that "
                                                   "syncs with this one. It cannot be brought back.");
inline const QString measuredDefault = QStringLiteral("Remove");
inline const QString measuredAlternate = QStringLiteral("Cancel");
inline const QString measuredOther = QStringLiteral("Keep a copy");

/// Whether the program was started with `option`.
inline bool isAskedFor(const char* option) {
    return QCoreApplication::arguments().contains(QString::fromLatin1(option));
}

/// Does something when a widget has been painted on the screen for the first time and control is back in the event
/// loop. What is painted for other eyes, such as a picture of it, does not count.
class FirstPainting : public QObject {
public:
    FirstPainting(QWidget& watched, std::function<void()> then) : m_watched(&watched), m_then(std::move(then)) {
        watched.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched == m_watched && isOnScreen()) {
            m_watched->removeEventFilter(this);
            QTimer::singleShot(0, this, m_then);
        }
        return false;
    }

private:
    [[nodiscard]] bool isOnScreen() const {
        const QWidget* const window = m_watched->window();
        return window->isVisible() && !window->testAttribute(Qt::WA_DontShowOnScreen) && window->windowHandle() &&
               window->windowHandle()->isExposed();
    }

    QPointer<QWidget> m_watched;
    std::function<void()> m_then;
};

/// Says the time that painting `window` with all that is in it takes.
inline void tellRepaint(const char* what, QWidget& window) {
    QElapsedTimer clock;
    clock.start();
    for (int time = 0; time < measuredRepaints; ++time) {
        window.repaint();
    }
    tellFigure(what, milliseconds(clock) / measuredRepaints);
}

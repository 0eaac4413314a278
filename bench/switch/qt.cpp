// SPDX-License-Identifier: MIT
// The peer: the pages of a QStackedWidget, slid by animations of their positions.
//
//     bench_switch_qt
#include "Measured.h"

#include <QEasingCurve>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QStackedWidget>

#include <array>

namespace {

QPropertyAnimation* makeAnimation(QWidget& page, const QPoint& from, const QPoint& to) {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    auto* const animation = new QPropertyAnimation(&page, "pos");
    animation->setDuration(measuredDuration);
    animation->setEasingCurve(curve);
    animation->setStartValue(from);
    animation->setEndValue(to);
    return animation;
}

QWidget* makePage(const QString& title) {
    auto* const page = new QWidget;
    fillPage(*page, title);
    return page;
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QStackedWidget stack;
    stack.setFixedSize(measuredWidth, measuredHeight);
    const std::array<QWidget*, 2> pages{makePage(QStringLiteral("General")), makePage(QStringLiteral("Accounts"))};
    for (QWidget* page : pages) {
        stack.addWidget(page);
    }
    stack.show();
    std::size_t shown = 0;
    const Switches switches([&] {
        QWidget& old = *pages[shown];
        shown = 1 - shown;
        QWidget& page = *pages[shown];
        const QPoint away(shown == 1 ? measuredWidth : -measuredWidth, 0);
        page.setGeometry(QRect(away, stack.size()));
        page.show();
        page.raise();
        auto* const both = new QParallelAnimationGroup;
        both->addAnimation(makeAnimation(page, away, {}));
        both->addAnimation(makeAnimation(old, {}, -away));
        QObject::connect(both, &QAbstractAnimation::finished, &stack,
                         [&, index = static_cast<int>(shown)] { stack.setCurrentIndex(index); });
        both->start(QAbstractAnimation::DeleteWhenStopped);
        return &page;
    });
    return QCoreApplication::exec();
}

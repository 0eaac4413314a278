// SPDX-License-Identifier: MIT
// The peer: the pictures of the same windows turned over by a QGraphicsRotation, with a QGraphicsDropShadowEffect, in a
// translucent QGraphicsView of the same size.
//
//     bench_flip_qt
#include "Measured.h"

#include <QEasingCurve>
#include <QEventLoop>
#include <QGraphicsDropShadowEffect>
#include <QGraphicsPixmapItem>
#include <QGraphicsRotation>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QPixmap>
#include <QVariantAnimation>
#include <QVector3D>

#include <memory>
#include <utility>

namespace {

constexpr Qt::WindowFlags panelFlags =
    Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint;

/// A view in which a pixmap turns over.
class Card : public QGraphicsView {
public:
    explicit Card(const QPixmap& front) {
        setWindowFlags(panelFlags);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        viewport()->setAutoFillBackground(false);
        setFrameShape(QFrame::NoFrame);
        setBackgroundBrush(Qt::NoBrush);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        setGeometry(windowLeft - horizontalMargin, windowTop - verticalMargin, windowWidth + 2 * horizontalMargin,
                    windowHeight + 2 * verticalMargin);
        setSceneRect(0, 0, width(), height());
        setScene(&m_scene);
        m_item = m_scene.addPixmap(front);
        m_item->setTransformationMode(Qt::SmoothTransformation);
        m_item->setPos(horizontalMargin, verticalMargin);
        m_rotation.setAxis(Qt::YAxis);
        m_rotation.setOrigin(QVector3D(windowWidth / 2.0F, windowHeight / 2.0F, 0));
        m_item->setTransformations({&m_rotation});
        auto effect = std::make_unique<QGraphicsDropShadowEffect>();
        effect->setBlurRadius(shadowRadius);
        effect->setOffset(0, shadowDistance);
        effect->setColor(QColor::fromRgbF(0, 0, 0, static_cast<float>(shadowAlpha)));
        m_item->setGraphicsEffect(effect.release());
    }

    /// Turns to `value`, from 0 to 1, and shows `back` from the half on.
    void turn(double value, const QPixmap& back) {
        if (value > 0.5 && !std::exchange(m_showsBack, true)) {
            m_item->setPixmap(back);
        }
        m_rotation.setAngle(value <= 0.5 ? 180 * value : 180 * value - 180);
    }

private:
    QGraphicsScene m_scene;
    QGraphicsRotation m_rotation;
    QGraphicsPixmapItem* m_item;
    bool m_showsBack = false;
};

std::unique_ptr<QWidget> makeSide(const QColor& ground) {
    auto side = std::make_unique<Content>(ground);
    side->setWindowFlags(panelFlags);
    side->setGeometry(windowLeft, windowTop, windowWidth, windowHeight);
    return side;
}

void waitUntilShown(QWidget& window) {
    while (!window.windowHandle()->isExposed()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void flip(QWidget& from, QWidget& to) {
    Card card(from.grab());
    const QPixmap back = to.grab();
    card.show();
    waitUntilShown(card);
    from.hide();
    QVariantAnimation animation;
    animation.setDuration(static_cast<int>(flipSeconds * 1000));
    animation.setStartValue(0.0);
    animation.setEndValue(1.0);
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    animation.setEasingCurve(curve);
    QEventLoop loop;
    QObject::connect(&animation, &QVariantAnimation::valueChanged, &loop,
                     [&](const QVariant& value) { card.turn(value.toDouble(), back); });
    QObject::connect(&animation, &QVariantAnimation::finished, &loop, &QEventLoop::quit);
    animation.start();
    loop.exec();
    to.show();
}

void tellFrame(QWidget& from, QWidget& to) {
    Card card(from.grab());
    const QPixmap back = to.grab();
    card.show();
    waitUntilShown(card);
    QElapsedTimer clock;
    clock.start();
    for (int frame = 0; frame < measuredFrames; ++frame) {
        card.turn(0.02 + 0.96 * frame / measuredFrames, back);
        card.viewport()->repaint();
    }
    tellFigure("frame", milliseconds(clock) / measuredFrames);
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    auto first = makeSide(QColor(40, 60, 120));
    auto second = makeSide(QColor(120, 50, 40));
    first->show();
    waitUntilShown(*first);
    QWidget* from = first.get();
    QWidget* to = second.get();
    for (int time = 0; time < measuredFlips; ++time) {
        const Frames frames([](const QObject* widget) {
            const auto* const card = dynamic_cast<const Card*>(widget->parent());
            return card && widget == card->viewport();
        });
        flip(*from, *to);
        frames.tell();
        std::swap(from, to);
    }
    tellFrame(*from, *to);
    return 0;
}

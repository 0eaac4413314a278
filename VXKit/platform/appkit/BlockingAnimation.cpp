// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/ElapsedSeconds.h>

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointF>
#include <QPointer>
#include <QTimer>

#include <utility>

namespace {

constexpr double longest = 3600; // seconds

double durationFactor = 1;

QEasingCurve easeInOut() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
    return curve;
}

} // namespace

bool blockingAnimationsJump() {
    return durationFactor == 0 || prefersReducedMotion();
}

double shownSeconds(double seconds) {
    const double scaled = seconds * durationFactor;
    return scaled > 0 && scaled < longest && !blockingAnimationsJump() ? scaled : 0;
}

double easedInOut(double share) {
    static const QEasingCurve curve = easeInOut();
    return curve.valueForProgress(share);
}

void runBlockingAnimation(QObject& target, double seconds, const std::function<void(double)>& step) {
    runBlockingFrames(target, seconds, [&step](double share) { step(share == 1 ? 1 : easedInOut(share)); });
}

void runBlockingFrames(QObject& target, double seconds, const std::function<void(double)>& step) {
    const QPointer<QObject> guard(&target);
    if (const double shown = shownSeconds(seconds); shown > 0) {
        QElapsedTimer clock;
        QEventLoop loop;
        // Not an animation of Qt's: while one of these makes a step all others stand still, so what a step calls could
        // not animate anything and wait for it.
        QTimer frames;
        frames.setTimerType(Qt::PreciseTimer);
        QObject::connect(&frames, &QTimer::timeout, &loop, [&] {
            const double share = elapsedSeconds(clock) / shown;
            if (share >= 1) {
                loop.quit();
            } else if (guard) {
                step(share);
            }
        });
        QObject::connect(&target, &QObject::destroyed, &loop, &QEventLoop::quit);
        clock.start();
        frames.start(animationFrameTime);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    if (guard) {
        step(1);
    }
}

AnimationDurationsForTesting::AnimationDurationsForTesting(double factor)
    : m_previous(std::exchange(durationFactor, factor)) {}

AnimationDurationsForTesting::~AnimationDurationsForTesting() {
    durationFactor = m_previous;
}

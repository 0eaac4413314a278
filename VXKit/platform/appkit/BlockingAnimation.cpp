// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <VXKit/platform/desktop/MotionPreference.h>

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointF>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <utility>

namespace {

constexpr double nanosecondsPerSecond = 1e9;
constexpr double longest = 3600; // seconds
constexpr std::chrono::milliseconds frameTime(16);

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

void runBlockingAnimation(QObject& target, double seconds, const std::function<void(double)>& step) {
    const QPointer<QObject> guard(&target);
    const double scaled = seconds * durationFactor;
    if (scaled > 0 && scaled < longest && !blockingAnimationsJump()) {
        const QEasingCurve curve = easeInOut();
        QElapsedTimer clock;
        QEventLoop loop;
        // Not an animation of Qt's: while one of these makes a step all others stand still, so what a step calls could
        // not animate anything and wait for it.
        QTimer frames;
        frames.setTimerType(Qt::PreciseTimer);
        QObject::connect(&frames, &QTimer::timeout, &loop, [&] {
            const double share = static_cast<double>(clock.nsecsElapsed()) / (scaled * nanosecondsPerSecond);
            if (share >= 1) {
                loop.quit();
            } else if (guard) {
                step(curve.valueForProgress(share));
            }
        });
        QObject::connect(&target, &QObject::destroyed, &loop, &QEventLoop::quit);
        clock.start();
        frames.start(frameTime);
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

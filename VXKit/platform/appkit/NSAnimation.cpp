// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSAnimation.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/foundation/ElapsedSeconds.h>

#include <QEasingCurve>
#include <QElapsedTimer>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace {

QEasingCurve bezierCurve(const QPointF& first, const QPointF& second) {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(first, second, {1, 1});
    return curve;
}

double bent(double progress, NSAnimationCurve curve) {
    static const QEasingCurve easeIn = bezierCurve({0.42, 0}, {1, 1});
    static const QEasingCurve easeOut = bezierCurve({0, 0}, {0.58, 1});
    switch (curve) {
    case NSAnimationEaseIn:
        return easeIn.valueForProgress(progress);
    case NSAnimationEaseOut:
        return easeOut.valueForProgress(progress);
    case NSAnimationLinear:
        return progress;
    case NSAnimationEaseInOut:
        break;
    }
    return easedInOut(progress);
}

} // namespace

/// What makes the steps of an animation that does not block; its end ends the run.
class NSAnimation::Frames : public QObject {
public:
    Frames(NSAnimation& animation, float start, double seconds)
        : m_animation(animation), m_start(start), m_shown(shownSeconds(seconds)) {
        // Not an animation of Qt's: while one of these makes a step all others stand still, so what a step calls could
        // not animate anything and wait for it.
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.callOnTimeout(this, [this] { step(); });
        m_timer.start(m_shown > 0 ? animationFrameTime : std::chrono::milliseconds(0));
        m_clock.start();
    }

private:
    void step() {
        const double seconds = elapsedSeconds(m_clock);
        // The wish for less motion may come in the middle.
        const bool isLast = m_shown <= 0 || seconds >= m_shown || blockingAnimationsJump();
        const QPointer<Frames> self(this);
        m_animation.advance(m_start, isLast ? 1 : seconds / m_shown);
        if (self && isLast) {
            m_animation.end(); // and this with it
        }
    }

    NSAnimation& m_animation;
    float m_start;
    double m_shown;
    QTimer m_timer;
    QElapsedTimer m_clock;
};

NSAnimationDelegate::~NSAnimationDelegate() = default;
void NSAnimationDelegate::animationDidEnd(NSAnimation& /*animation*/) {}
void NSAnimationDelegate::animationDidStop(NSAnimation& /*animation*/) {}

NSAnimation::NSAnimation(double duration, NSAnimationCurve curve) : m_duration(duration), m_curve(curve) {}

NSAnimation::~NSAnimation() = default;

void NSAnimation::startAnimation() {
    if (isAnimating()) {
        return;
    }
    const float start = m_currentProgress < 1 ? m_currentProgress : 0;
    const double seconds = secondsToRun() * (1 - static_cast<double>(start));
    if (m_blockingMode != NSAnimationBlocking) {
        m_run = std::make_unique<Frames>(*this, start, seconds);
        return;
    }
    m_run = std::make_unique<QObject>();
    const QPointer<QObject> run(m_run.get());
    runBlockingFrames(*m_run, seconds, [this, start](double share) { advance(start, share); });
    if (run) { // if not, it was stopped, and is perhaps no more
        end();
    }
}

void NSAnimation::advance(float start, double share) {
    setCurrentProgress(share == 1 ? 1.0F : start + (1 - start) * static_cast<float>(share));
}

void NSAnimation::end() {
    m_run.reset();
    if (m_delegate) {
        m_delegate->animationDidEnd(*this);
    }
}

void NSAnimation::stopAnimation() {
    if (!isAnimating()) {
        return;
    }
    m_run.reset();
    if (m_delegate) {
        m_delegate->animationDidStop(*this);
    }
}

void NSAnimation::setCurrentProgress(float progress) {
    m_currentProgress = std::isnan(progress) ? 0 : std::clamp(progress, 0.0F, 1.0F);
}

float NSAnimation::currentValue() const {
    if (m_currentProgress <= 0 || m_currentProgress >= 1) {
        return m_currentProgress;
    }
    return static_cast<float>(bent(static_cast<double>(m_currentProgress), m_curve));
}

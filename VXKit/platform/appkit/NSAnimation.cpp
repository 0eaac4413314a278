// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSAnimation.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <QEasingCurve>
#include <QObject>
#include <QPointF>
#include <QPointer>

#include <algorithm>
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
    m_run = std::make_unique<QObject>();
    const QPointer<QObject> run(m_run.get());
    runBlockingFrames(*m_run, m_duration * (1 - static_cast<double>(start)), [this, start](double share) {
        setCurrentProgress(share == 1 ? 1.0F : start + (1 - start) * static_cast<float>(share));
    });
    if (!run) {
        return; // stopped, and perhaps no more
    }
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

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSProgressIndicator.h>

#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/QtColor.h>

#include <QColor>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

template class ViewOf<QProgressBar>;

namespace {

constexpr int spokes = 12;    // and the steps of a turn
constexpr int wheelStep = 83; // milliseconds: a turn takes a second
constexpr int slowWheelStep = 500;
constexpr int barStep = 33;
constexpr int barSteps = 90; // there and back again

// Of the wheel's radius.
constexpr double spokeStart = 0.46;
constexpr double spokeEnd = 0.94;
constexpr double spokeWidth = 0.17;
constexpr double faintestSpoke = 0.12; // opacity
constexpr double strongestSpoke = 0.85;

// In points.
constexpr double barThickness = 10;
constexpr double smallBarThickness = 6;
constexpr double rimWidth = 1;
constexpr int barLength = 100;
constexpr int wheelLength = 32;
constexpr int smallWheelLength = 16;

constexpr double barTrackAlpha = 0.25;
constexpr double pieTrackAlpha = 0.12;
constexpr double rimAlpha = 0.4;
constexpr double blockShare = 0.3; // of the track, of what wanders in it
constexpr double standingAlpha = 0.5;
constexpr int shares = 1000; // of a range that is not one of whole numbers, for a screen reader

/// A line from `from` to `to` with round ends.
NSBezierPath capsule(const NSPoint& from, const NSPoint& to, double width) {
    constexpr double handle = 0.5522847498; // of a quarter of a circle with radius 1
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double half = width / 2;
    const NSPoint along{(to.x - from.x) / length * half, (to.y - from.y) / length * half};
    const NSPoint side{-along.y, along.x};
    // `forward` and `sideways` in halves of the width.
    const auto at = [&](const NSPoint& point, double forward, double sideways) {
        return NSPoint{point.x + along.x * forward + side.x * sideways,
                       point.y + along.y * forward + side.y * sideways};
    };
    NSBezierPath path;
    path.moveToPoint(at(from, 0, 1));
    path.lineToPoint(at(to, 0, 1));
    path.curveToPoint(at(to, 1, 0), at(to, handle, 1), at(to, 1, handle));
    path.curveToPoint(at(to, 0, -1), at(to, 1, -handle), at(to, handle, -1));
    path.lineToPoint(at(from, 0, -1));
    path.curveToPoint(at(from, -1, 0), at(from, -handle, -1), at(from, -1, -handle));
    path.curveToPoint(at(from, 0, 1), at(from, -1, handle), at(from, -handle, 1));
    path.closePath();
    return path;
}

/// What a bar with round ends has in common with `part` of it, as high as the bar: the round ends as far as they are in
/// it. Where that is only a piece of a round end, nothing; a clip must help there.
std::optional<NSBezierPath> partOfBar(const NSRect& bar, const NSRect& part) {
    constexpr double handle = 0.5522847498; // of a quarter of a circle with radius 1
    const double radius = NSHeight(bar) / 2;
    const double left = NSMinX(bar) + radius;
    const double right = NSMaxX(bar) - radius;
    const bool hasLeftEnd = NSMinX(part) <= NSMinX(bar);
    const bool hasRightEnd = NSMaxX(part) >= NSMaxX(bar);
    if ((!hasLeftEnd && NSMinX(part) < left) || NSMinX(part) > right || (!hasRightEnd && NSMaxX(part) > right) ||
        NSMaxX(part) < left) {
        return {};
    }
    NSBezierPath path;
    path.moveToPoint(NSMakePoint(hasLeftEnd ? left : NSMinX(part), NSMinY(bar)));
    const auto at = [&](double middle, double across, double up) {
        return NSMakePoint(middle + across * radius, NSMidY(bar) + up * radius);
    };
    if (hasRightEnd) {
        path.lineToPoint(at(right, 0, -1));
        path.curveToPoint(at(right, 1, 0), at(right, handle, -1), at(right, 1, -handle));
        path.curveToPoint(at(right, 0, 1), at(right, 1, handle), at(right, handle, 1));
    } else {
        path.lineToPoint(NSMakePoint(NSMaxX(part), NSMinY(bar)));
        path.lineToPoint(NSMakePoint(NSMaxX(part), NSMaxY(bar)));
    }
    if (hasLeftEnd) {
        path.lineToPoint(at(left, 0, 1));
        path.curveToPoint(at(left, -1, 0), at(left, -handle, 1), at(left, -1, handle));
        path.curveToPoint(at(left, 0, -1), at(left, -1, -handle), at(left, -handle, -1));
    } else {
        path.lineToPoint(NSMakePoint(NSMinX(part), NSMaxY(bar)));
    }
    path.closePath();
    return path;
}

/// The largest square in the middle of `rect`.
NSRect middleSquare(const NSRect& rect) {
    const double length = std::min(NSWidth(rect), NSHeight(rect));
    return NSMakeRect(NSMidX(rect) - length / 2, NSMidY(rect) - length / 2, length, length);
}

bool isWholeNumber(double value) {
    return value == std::floor(value) && std::abs(value) < std::numeric_limits<int>::max() / 2.0;
}

} // namespace

NSProgressIndicator::NSProgressIndicator(QWidget* parent) : ViewOf<QProgressBar>(parent) {
    setTextVisible(false);
    connect(&m_timer, &QTimer::timeout, this, [this] { takeStep(); });
    valuesHaveChanged();
}

NSProgressIndicator::NSProgressIndicator(const NSRect& frame, QWidget* parent) : NSProgressIndicator(parent) {
    ViewOf<QProgressBar>::setFrame(frame);
}

NSProgressIndicator::~NSProgressIndicator() = default;

void NSProgressIndicator::setIndicatorStyle(NSProgressIndicatorStyle style) {
    m_style = style;
    updateTimer();
    updateGeometry();
    update();
}

void NSProgressIndicator::setIndeterminate(bool flag) {
    m_isIndeterminate = flag;
    updateTimer();
    valuesHaveChanged();
}

void NSProgressIndicator::setMinValue(double value) {
    if (!std::isnan(value)) {
        m_minValue = value;
        valuesHaveChanged();
    }
}

void NSProgressIndicator::setMaxValue(double value) {
    if (!std::isnan(value)) {
        m_maxValue = value;
        valuesHaveChanged();
    }
}

void NSProgressIndicator::setDoubleValue(double value) {
    if (!std::isnan(value) && value != m_doubleValue) {
        m_doubleValue = value;
        valuesHaveChanged();
    }
}

double NSProgressIndicator::fraction() const {
    if (!(m_maxValue > m_minValue)) {
        return 0;
    }
    const double value = std::clamp(m_doubleValue, m_minValue, m_maxValue);
    // Halves, because the whole of a range may be more than a number can be.
    const double share = (value / 2 - m_minValue / 2) / (m_maxValue / 2 - m_minValue / 2);
    return std::isnan(share) ? 0 : std::clamp(share, 0.0, 1.0);
}

/// What QProgressBar has of it, for screen readers: the very numbers where they are whole.
void NSProgressIndicator::valuesHaveChanged() {
    if (m_isIndeterminate) {
        setRange(0, 0);
    } else if (isWholeNumber(m_minValue) && isWholeNumber(m_maxValue) && m_maxValue - m_minValue >= barLength) {
        setRange(static_cast<int>(m_minValue), static_cast<int>(m_maxValue));
        setValue(static_cast<int>(std::round(std::clamp(m_doubleValue, m_minValue, m_maxValue))));
    } else {
        setRange(0, shares);
        setValue(static_cast<int>(std::round(fraction() * shares)));
    }
    update();
}

void NSProgressIndicator::startAnimation(QObject* /*sender*/) {
    m_isAnimating = true;
    updateTimer();
    update();
}

void NSProgressIndicator::stopAnimation(QObject* /*sender*/) {
    m_isAnimating = false;
    updateTimer();
    update();
}

void NSProgressIndicator::setDisplayedWhenStopped(bool flag) {
    m_isDisplayedWhenStopped = flag;
    update();
}

void NSProgressIndicator::setControlSize(NSControlSize controlSize) {
    m_controlSize = controlSize;
    updateGeometry();
    update();
}

void NSProgressIndicator::awakeFromNib() {
    ViewOf<QProgressBar>::awakeFromNib();
    if (m_isIndeterminate && maximum() > minimum()) {
        m_minValue = minimum();
        m_maxValue = maximum();
        m_doubleValue = value();
        setIndeterminate(false);
    }
}

void NSProgressIndicator::updateTimer() {
    const bool isWheel = m_style == NSProgressIndicatorSpinningStyle;
    const bool isHeld = prefersReducedMotion();
    if (!m_isAnimating || !m_isIndeterminate || !isVisible() || (isHeld && !isWheel)) {
        m_timer.stop();
        return;
    }
    const int interval = !isWheel ? barStep : isHeld ? slowWheelStep : wheelStep;
    if (!m_timer.isActive() || m_timer.interval() != interval) {
        m_timer.start(interval);
    }
}

void NSProgressIndicator::takeStep() {
    m_step = (m_step + 1) % (spokes * barSteps);
    update();
    // The person may have changed their mind about motion.
    updateTimer();
}

void NSProgressIndicator::showEvent(QShowEvent* event) {
    ViewOf<QProgressBar>::showEvent(event);
    updateTimer();
}

void NSProgressIndicator::hideEvent(QHideEvent* event) {
    ViewOf<QProgressBar>::hideEvent(event);
    // A window that is minimized counts as visible for Qt.
    m_timer.stop();
}

void NSProgressIndicator::paintEvent(QPaintEvent* event) {
    // Here and not in drawRect, for the sake of what a subclass draws around it.
    if (m_isAnimating || m_isDisplayedWhenStopped || !m_isIndeterminate) {
        ViewOf<QProgressBar>::paintEvent(event);
    }
}

void NSProgressIndicator::drawRect(const NSRect& /*dirtyRect*/) {
    if (m_style == NSProgressIndicatorBarStyle) {
        drawBar();
    } else if (m_isIndeterminate) {
        drawWheel();
    } else {
        drawPie();
    }
}

void NSProgressIndicator::drawBar() {
    const NSRect box = bounds();
    const double thickness =
        std::min(m_controlSize == NSRegularControlSize ? barThickness : smallBarThickness, NSHeight(box));
    const NSRect track = NSMakeRect(0, std::floor((NSHeight(box) - thickness) / 2), NSWidth(box), thickness);
    if (NSIsEmptyRect(track)) {
        return;
    }
    const double radius = thickness / 2;
    const NSBezierPath outline = NSBezierPath::bezierPathWithRoundedRect(track, radius, radius);
    NSColorFromQColor(palette().color(QPalette::WindowText), barTrackAlpha).setFill();
    outline.fill();

    NSRect done = track;
    double alpha = 1;
    if (!m_isIndeterminate) {
        done.size.width *= fraction();
    } else if (!m_isAnimating) {
        done.size.width = 0;
    } else if (prefersReducedMotion()) {
        alpha = standingAlpha;
    } else {
        const double place = std::abs(1 - 2.0 * (m_step % barSteps) / barSteps);
        done.size.width *= blockShare;
        done.origin.x += place * (NSWidth(track) - NSWidth(done));
    }
    if (layoutDirection() == Qt::RightToLeft) {
        done.origin.x = NSMinX(track) + NSMaxX(track) - NSMaxX(done);
    }
    if (NSWidth(done) > 0) {
        NSColorFromQColor(palette().color(QPalette::Highlight), alpha).setFill();
        if (const std::optional<NSBezierPath> part = partOfBar(track, done)) {
            part->fill();
        } else {
            // Seldom: to clip by a path costs more than all the rest.
            NSGraphicsContext::saveGraphicsState();
            outline.addClip();
            NSBezierPath::fillRect(done);
            NSGraphicsContext::restoreGraphicsState();
        }
    }
}

void NSProgressIndicator::drawWheel() {
    const NSRect square = middleSquare(bounds());
    const double radius = NSWidth(square) / 2;
    if (!(radius > 0)) {
        return;
    }
    const QColor ink = palette().color(QPalette::WindowText);
    for (int spoke = 0; spoke < spokes; ++spoke) {
        // The strongest spoke goes clockwise, with fainter ones behind it.
        const int age = (m_step % spokes + spokes - spoke) % spokes;
        const double angle = std::numbers::pi / 2 - 2 * std::numbers::pi * spoke / spokes;
        const auto at = [&](double share) {
            return NSMakePoint(NSMidX(square) + std::cos(angle) * radius * share,
                               NSMidY(square) + std::sin(angle) * radius * share);
        };
        const double strength = 1 - static_cast<double>(age) / (spokes - 1);
        NSColorFromQColor(ink, faintestSpoke + strength * strength * (strongestSpoke - faintestSpoke)).setFill();
        const double end = spokeWidth / 2;
        capsule(at(spokeStart + end), at(spokeEnd - end), spokeWidth * radius).fill();
    }
}

void NSProgressIndicator::drawPie() {
    const NSRect square = NSInsetRect(middleSquare(bounds()), rimWidth, rimWidth);
    if (NSIsEmptyRect(square)) {
        return;
    }
    const QColor ink = palette().color(QPalette::WindowText);
    const NSBezierPath rim = NSBezierPath::bezierPathWithOvalInRect(square);
    NSColorFromQColor(ink, pieTrackAlpha).setFill();
    rim.fill();
    const double done = fraction();
    if (done > 0) {
        constexpr int sides = 120;
        const int parts = std::max(1, static_cast<int>(std::ceil(sides * done)));
        NSBezierPath pie;
        pie.moveToPoint(NSMakePoint(NSMidX(square), NSMidY(square)));
        for (int part = 0; part <= parts; ++part) {
            const double angle = std::numbers::pi / 2 - 2 * std::numbers::pi * done * part / parts;
            pie.lineToPoint(NSMakePoint(NSMidX(square) + std::cos(angle) * NSWidth(square) / 2,
                                        NSMidY(square) + std::sin(angle) * NSHeight(square) / 2));
        }
        pie.closePath();
        NSColorFromQColor(palette().color(QPalette::Highlight)).setFill();
        pie.fill();
    }
    NSColorFromQColor(ink, rimAlpha).setStroke();
    rim.stroke();
}

QSize NSProgressIndicator::sizeHint() const {
    const bool isRegular = m_controlSize == NSRegularControlSize;
    if (m_style == NSProgressIndicatorSpinningStyle) {
        const int length = isRegular ? wheelLength : smallWheelLength;
        return {length, length};
    }
    constexpr int margins = 6;
    return {barLength, static_cast<int>(isRegular ? barThickness : smallBarThickness) + margins};
}

QSize NSProgressIndicator::minimumSizeHint() const {
    const QSize hint = sizeHint();
    return {hint.height(), hint.height()};
}

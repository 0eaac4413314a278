// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/FrameAnimations.h>

#include <VXKit/platform/appkit/AnimationGroup.h>
#include <VXKit/platform/appkit/AnimationTarget.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSAnimationContext.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/ElapsedSeconds.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// Whose frame is set without an end of its animation, next.
const QWidget* continuingTarget = nullptr;

/// The time that a test has let go by.
std::optional<double> testingTime;

struct Animation {
    std::uint64_t number = 0;
    QPointer<QWidget> target;
    NSRect from;
    NSRect to;
    double seconds = 0;
    bool displays = false;
    std::shared_ptr<AnimationGroup> group;
    QMetaObject::Connection endOfTarget;
    std::optional<double> begun; // on the clock of all
};

} // namespace

NSRect rectBetween(const NSRect& from, const NSRect& to, double progress) {
    const auto mix = [progress](double a, double b) { return a + (b - a) * progress; };
    return NSMakeRect(mix(from.origin.x, to.origin.x), mix(from.origin.y, to.origin.y),
                      mix(from.size.width, to.size.width), mix(from.size.height, to.size.height));
}

/// All that is under way, and the timer that lets it go on; a child of the application object.
class FrameAnimations::Engine : public QObject {
public:
    explicit Engine(QObject* parent) : QObject(parent) {
        m_clock.start();
        // Not an animation of Qt's: while one of these makes a step all others stand still, so what a step calls could
        // not animate anything and wait for it.
        m_frames.setTimerType(Qt::PreciseTimer);
        connect(&m_frames, &QTimer::timeout, this, [this] {
            // The first comes as soon as what was set has been painted.
            if (m_frames.intervalAsDuration() != animationFrameTime) {
                m_frames.start(animationFrameTime);
            }
            step();
        });
    }

    /// Null where there is none and `wanted` is not set.
    static Engine* shared(bool wanted) {
        static QPointer<Engine> engine;
        if (!engine && wanted) {
            engine = new Engine(QCoreApplication::instance());
        }
        return engine;
    }

    void add(QWidget& target, const NSRect& from, const NSRect& to, double seconds, bool displays,
             std::shared_ptr<AnimationGroup> group) {
        end(target);
        Animation animation{.number = ++m_lastNumber,
                            .target = &target,
                            .from = from,
                            .to = to,
                            .seconds = seconds,
                            .displays = displays,
                            .group = std::move(group),
                            .endOfTarget = {},
                            .begun = {}};
        animation.group->hold();
        animation.endOfTarget =
            connect(&target, &QObject::destroyed, this, [this, number = animation.number] { take(number); });
        m_running.push_back(std::move(animation));
        if (!testingTime && !m_frames.isActive()) {
            m_frames.start(0);
        }
    }

    void end(const QWidget& target) {
        if (const Animation* animation = find(target)) {
            take(animation->number);
        }
    }

    [[nodiscard]] const Animation* find(const QWidget& target) const {
        const auto found = std::find_if(m_running.begin(), m_running.end(),
                                        [&](const Animation& animation) { return animation.target == &target; });
        return found == m_running.end() ? nullptr : &*found;
    }

    void step() {
        const double now = testingTime.value_or(elapsedSeconds(m_clock));
        // By their numbers, because what is told of a frame may end any of them, and begin others.
        std::vector<std::uint64_t> windows;
        std::vector<std::uint64_t> views;
        for (Animation& animation : m_running) {
            animation.begun = animation.begun.value_or(now);
            (qobject_cast<NSWindow*>(animation.target) ? windows : views).push_back(animation.number);
        }
        std::vector<QPointer<NSWindow>> displayed;
        for (const std::vector<std::uint64_t>* numbers : {&windows, &views}) {
            for (const std::uint64_t number : *numbers) {
                if (auto* window = qobject_cast<NSWindow*>(move(number, now))) {
                    displayed.emplace_back(window);
                }
            }
        }
        for (const QPointer<NSWindow>& window : displayed) {
            if (window) {
                window->display();
            }
        }
        if (m_running.empty()) {
            m_frames.stop();
        }
    }

private:
    /// Moves one on; answers who is to be redrawn after it.
    QWidget* move(std::uint64_t number, double now) {
        const auto found = std::find_if(m_running.begin(), m_running.end(),
                                        [number](const Animation& animation) { return animation.number == number; });
        if (found == m_running.end() || !found->target) {
            return nullptr;
        }
        const QPointer<QWidget> target = found->target;
        const bool displays = found->displays;
        const double share = (now - *found->begun) / found->seconds;
        if (share >= 1) {
            const NSRect to = found->to;
            take(number);
            setFrameOfTarget(*target, to, false);
        } else if (share <= 0) {
            return nullptr;
        } else {
            const NSRect frame = rectBetween(found->from, found->to, easedInOut(share));
            const Continuing continuing(*target);
            setFrameOfTarget(*target, frame, false);
        }
        return displays ? target.data() : nullptr;
    }

    void take(std::uint64_t number) {
        const auto found = std::find_if(m_running.begin(), m_running.end(),
                                        [number](const Animation& animation) { return animation.number == number; });
        if (found != m_running.end()) {
            disconnect(found->endOfTarget);
            found->group->release();
            m_running.erase(found);
        }
    }

    std::vector<Animation> m_running;
    std::uint64_t m_lastNumber = 0;
    QElapsedTimer m_clock;
    QTimer m_frames;
};

void FrameAnimations::animate(QWidget& target, const NSRect& to, bool display) {
    const NSAnimationContext& context = NSAnimationContext::currentContext();
    const double seconds = shownSeconds(context.duration());
    const NSRect from = frameOfTarget(target);
    if (seconds <= 0 || from == to) {
        setFrameOfTarget(target, to, display);
        return;
    }
    Engine::shared(true)->add(target, from, to, seconds, display, context.m_group);
}

void FrameAnimations::frameIsSet(QWidget& target) {
    if (continuingTarget == &target) {
        // Of what is told of this frame, somebody may set another.
        continuingTarget = nullptr;
        return;
    }
    if (Engine* engine = Engine::shared(false)) {
        engine->end(target);
    }
}

bool FrameAnimations::isAnimating(const QWidget& target) {
    const Engine* engine = Engine::shared(false);
    return engine && engine->find(target);
}

FrameAnimations::Continuing::Continuing(const QWidget& target) : m_previous(std::exchange(continuingTarget, &target)) {}

FrameAnimations::Continuing::~Continuing() {
    continuingTarget = m_previous;
}

FrameAnimations::ClockForTesting::ClockForTesting() {
    testingTime = 0;
}

FrameAnimations::ClockForTesting::~ClockForTesting() {
    advance(std::numeric_limits<double>::infinity());
    testingTime.reset();
}

void FrameAnimations::ClockForTesting::advance(double seconds) {
    Engine* const engine = Engine::shared(false);
    if (engine) {
        engine->step();
    }
    testingTime = *testingTime + seconds;
    if (engine) {
        engine->step();
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSTimer.h>

#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/foundation/NSLog.h>

#include <QAbstractEventDispatcher>
#include <QBasicTimer>
#include <QCoreApplication>
#include <QObject>
#include <QThread>
#include <QThreadStorage>
#include <QTimerEvent>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <limits>
#include <utility>
#include <vector>

namespace {

/// Seconds that an interval of 0 or less stands for.
constexpr double shortestInterval = 0.0001;
/// Seconds; timers of this interval and above need not be precise, which lets the kernel wake for several at once.
constexpr double shortestCoarseInterval = 1.0;
/// By which part of its interval a coarse timer may be early (Qt's own limit).
constexpr double coarseTolerance = 0.05;
/// Seconds by which a precise timer may be early: what Qt counts its intervals in.
constexpr double preciseTolerance = 0.001;

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::function<double(double)>& intervalsForTesting() {
    static std::function<double(double)> map;
    return map;
}

double atLeastTheShortest(double seconds) {
    return seconds > 0 ? std::max(seconds, shortestInterval) : shortestInterval;
}

/// The timers that the event loop of one thread owns, in the order in which they were scheduled.
class ScheduledTimers {
public:
    ScheduledTimers() = default;
    ScheduledTimers(const ScheduledTimers&) = delete;
    ScheduledTimers& operator=(const ScheduledTimers&) = delete;
    // Only what a block captured could throw, as it is destroyed, and that ends any process.
    ~ScheduledTimers() { invalidateAll(); } // NOLINT(bugprone-exception-escape)

    /// Qt lets the one of a QThread go before that thread counts as finished.
    static ScheduledTimers& ofThisThread() {
        static QThreadStorage<ScheduledTimers*> storage;
        if (!storage.hasLocalData()) {
            storage.setLocalData(new ScheduledTimers);
        }
        return *storage.localData();
    }

    void add(std::shared_ptr<NSTimer> timer) {
        if (!m_endsWithApplication && QThread::currentThread() == QCoreApplication::instance()->thread()) {
            m_endsWithApplication = true;
            qAddPostRoutine([] { ofThisThread().endWithApplication(); });
        }
        m_timers.push_back(std::move(timer));
    }

    void remove(const NSTimer& timer) {
        const auto found = std::find_if(m_timers.begin(), m_timers.end(),
                                        [&](const std::shared_ptr<NSTimer>& each) { return each.get() == &timer; });
        if (found != m_timers.end()) {
            // The last handle may go with it, and its block's captures with that: only once the list is in order again.
            const std::shared_ptr<NSTimer> removed = std::move(*found);
            m_timers.erase(found);
        }
    }

private:
    void endWithApplication() {
        // Qt forgets its routines after they ran; the next application object needs a new one.
        m_endsWithApplication = false;
        invalidateAll();
    }

    void invalidateAll() {
        while (!m_timers.empty()) {
            const std::shared_ptr<NSTimer> first = m_timers.front();
            first->invalidate();
        }
    }

    std::vector<std::shared_ptr<NSTimer>> m_timers;
    bool m_endsWithApplication = false;
};

} // namespace

struct NSTimer::Private final : QObject {
    Private(NSTimer& owner, double seconds, NSTimerRepeats repeatedly, Block called)
        : timer(owner), interval(seconds), usedInterval(seconds), repeats(repeatedly), block(std::move(called)) {
        if (intervalsForTesting()) {
            usedInterval = atLeastTheShortest(intervalsForTesting()(seconds));
        }
    }

    [[nodiscard]] bool isCoarse() const { return usedInterval >= shortestCoarseInterval; }

    /// Seconds before the due time at which firing is no longer early.
    [[nodiscard]] double tolerance() const { return isCoarse() ? coarseTolerance * usedInterval : preciseTolerance; }

    /// Has the event loop call at the due time, or on the way there where that is further than Qt's timers reach.
    void arm() {
        const double milliseconds = std::round(1000 * (due - monotonicSeconds()));
        const double reachable = std::clamp(milliseconds, 1.0, double{std::numeric_limits<int>::max()});
        clock.start(static_cast<int>(reachable), isCoarse() ? Qt::CoarseTimer : Qt::PreciseTimer, this);
    }

    void timerEvent(QTimerEvent* event) override {
        if (event->timerId() != clock.timerId()) {
            QObject::timerEvent(event);
            return;
        }
        if (due - monotonicSeconds() > tolerance()) {
            arm();
            return;
        }
        const std::shared_ptr<NSTimer> keepAlive = timer.shared_from_this();
        // Does nothing when the block runs already and this comes from an event loop inside it.
        timer.fire();
        if (isValid) {
            moveDueTimeBeyondNow();
            arm();
        }
    }

    void moveDueTimeBeyondNow() {
        const double late = monotonicSeconds() + tolerance() - due;
        if (late >= 0) {
            due += usedInterval * (std::floor(late / usedInterval) + 1);
        }
    }

    NSTimer& timer;
    const double interval;
    double usedInterval; ///< differs from the interval under a test
    const NSTimerRepeats repeats;
    Block block;
    QBasicTimer clock;
    double due = 0;                       ///< on the monotonic clock, seconds
    ScheduledTimers* scheduled = nullptr; ///< those of its thread; set while it is valid
    bool isValid = false;
    bool isRunning = false;
};

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(double seconds, NSTimerRepeats repeats, Block block) {
    if (!QCoreApplication::instance() || !QAbstractEventDispatcher::instance()) {
        NSLog("A timer cannot be scheduled: its thread has no event loop, or there is no application object");
        return std::make_shared<NSTimer>(Passkey(), atLeastTheShortest(seconds), repeats, nullptr);
    }
    auto timer = std::make_shared<NSTimer>(Passkey(), atLeastTheShortest(seconds), repeats, std::move(block));
    Private& state = *timer->m_private;
    state.isValid = true;
    state.due = monotonicSeconds() + state.usedInterval;
    state.arm();
    state.scheduled = &ScheduledTimers::ofThisThread();
    state.scheduled->add(timer);
    return timer;
}

NSTimer::NSTimer(Passkey, double seconds, NSTimerRepeats repeats, Block block)
    : m_private(std::make_unique<Private>(*this, seconds, repeats, std::move(block))) {}

NSTimer::~NSTimer() = default;

void NSTimer::invalidate() {
    if (!m_private->isValid) {
        return;
    }
    const std::shared_ptr<NSTimer> keepAlive = shared_from_this();
    m_private->isValid = false;
    m_private->clock.stop();
    m_private->scheduled->remove(*this);
    if (!m_private->isRunning) {
        // Out of the timer first: what the block held may come back to the timer as it goes.
        const Block dropped = std::exchange(m_private->block, nullptr);
    }
}

bool NSTimer::isValid() const {
    return m_private->isValid;
}

double NSTimer::timeInterval() const {
    return m_private->repeats == NSTimerRepeats::Yes ? m_private->interval : 0.0;
}

void NSTimer::fire() {
    if (!m_private->isValid || m_private->isRunning) {
        return;
    }
    const std::shared_ptr<NSTimer> keepAlive = shared_from_this();
    m_private->isRunning = true;
    try {
        if (m_private->block) {
            m_private->block(*this);
        }
    } catch (const std::exception& exception) {
        NSLog("An exception left the block of a timer: %s", exception.what());
    } catch (...) {
        NSLog("An exception of unknown type left the block of a timer");
    }
    m_private->isRunning = false;
    if (m_private->repeats == NSTimerRepeats::No) {
        invalidate();
    }
    if (!m_private->isValid) {
        const Block dropped = std::exchange(m_private->block, nullptr);
    }
}

NSTimer::IntervalsForTesting::IntervalsForTesting(std::function<double(double seconds)> map)
    : m_previous(std::exchange(intervalsForTesting(), std::move(map))) {}

NSTimer::IntervalsForTesting::~IntervalsForTesting() {
    intervalsForTesting() = std::move(m_previous);
}

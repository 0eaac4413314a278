// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <functional>
#include <memory>

/// Whether a timer fires once or until it is invalidated.
enum class NSTimerRepeats {
    No,  ///< it fires once
    Yes, ///< it fires until it is invalidated
};

/// Calls a block after an interval, once or again and again, from the event loop of the thread that scheduled it.
///
/// The event loop owns a scheduled timer: dropping the handle does not stop it, `invalidate()` does. So does the end of
/// the application object (or, for a timer of another thread, of its thread): the timers still scheduled then are
/// invalidated in the order in which they were scheduled, and what their blocks hold is let go while the application
/// object still stands. A block that must not keep its target alive captures a weak pointer.
///
/// A timer belongs to the thread that scheduled it; use it only there. Not for animations, which have a clock of their
/// own. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSTimer final : public std::enable_shared_from_this<NSTimer> {
    struct Private;
    struct Passkey {};

public:
    /// What a timer calls, with itself.
    using Block = std::function<void(NSTimer& timer)>;

    /// Schedules a timer that calls `block` after `seconds`, and with NSTimerRepeats::Yes each `seconds` after that.
    ///
    /// An interval of 0 or less (or NaN) counts as 0.1 ms; the event loop fires at most once in a millisecond.
    /// Intervals under a second are precise, longer ones may be off by a twentieth. A repeating timer keeps to the
    /// multiples of its interval; those it misses, because the loop was busy or the block took longer, are left out. It
    /// does not fire while its own block still runs (in a nested event loop, say).
    ///
    /// Never null. Where there is no application object or no event loop to call the block, the reason is logged, the
    /// block is dropped and the timer is invalid. AppKit: `+scheduledTimerWithTimeInterval:repeats:block:`.
    static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(double seconds, NSTimerRepeats repeats, Block block);

    /// For scheduledTimerWithTimeInterval alone.
    NSTimer(Passkey, double seconds, NSTimerRepeats repeats, Block block);
    NSTimer(const NSTimer&) = delete;
    NSTimer& operator=(const NSTimer&) = delete;
    ~NSTimer();

    /// Stops the timer for good and takes it from the event loop. The block and all it captured are destroyed at once,
    /// or when the block returns if it is running: it may invalidate its own timer and drop every handle to it.
    /// AppKit: `-invalidate`.
    void invalidate();

    /// Whether the timer can still fire. True inside the block of a timer that fires once. AppKit: `-isValid`.
    [[nodiscard]] bool isValid() const;

    /// The interval in seconds that was asked for, at least 0.0001; 0 for a timer that fires once.
    /// AppKit: `-timeInterval`.
    [[nodiscard]] double timeInterval() const;

    /// Calls the block now; a timer that fires once is then invalidated, a repeating one keeps its schedule. Does
    /// nothing when the timer is invalid or its block is running. An exception that leaves the block is logged and goes
    /// no further, here and when the event loop calls it. AppKit: `-fire`.
    void fire();

    /// While it lives, timers are scheduled with the interval that `map` makes of the one asked for (in seconds, after
    /// the lower limit was applied), so that a test need not wait for minutes; `timeInterval()` still tells the one
    /// asked for. Timers scheduled before stay as they are. The latest of several is asked; they must end in reverse
    /// order, which scopes do by themselves. For tests, on the main thread.
    class VXKIT_EXPORT IntervalsForTesting {
    public:
        /// From now on `map` is asked for the interval of each timer that is scheduled.
        [[nodiscard]] explicit IntervalsForTesting(std::function<double(double seconds)> map);
        IntervalsForTesting(const IntervalsForTesting&) = delete;
        IntervalsForTesting& operator=(const IntervalsForTesting&) = delete;
        ~IntervalsForTesting();

    private:
        std::function<double(double)> m_previous;
    };

private:
    std::unique_ptr<Private> m_private;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <memory>

class NSAnimation;
class QObject;

/// How the value of an animation follows its progress.
enum NSAnimationCurve {
    NSAnimationEaseInOut = 0, ///< slow at both ends: the cubic Bézier curve through (0.42, 0) and (0.58, 1)
    NSAnimationEaseIn = 1,    ///< slow at the beginning: through (0.42, 0) and (1, 1)
    NSAnimationEaseOut = 2,   ///< slow at the end: through (0, 0) and (0.58, 1)
    NSAnimationLinear = 3,    ///< the value is the progress
};

/// Whether starting an animation waits for its end. Of the two kinds that do not wait, both run in the event loop.
enum NSAnimationBlockingMode {
    NSAnimationBlocking = 0,            ///< it does; the user's input waits meanwhile, everything else goes on
    NSAnimationNonblocking = 1,         ///< it returns at once
    NSAnimationNonblockingThreaded = 2, ///< the same
};

/// Told about an animation. Here: nothing is done about it.
class VXKIT_EXPORT NSAnimationDelegate {
public:
    NSAnimationDelegate() = default;
    NSAnimationDelegate(const NSAnimationDelegate&) = delete;
    NSAnimationDelegate& operator=(const NSAnimationDelegate&) = delete;
    virtual ~NSAnimationDelegate();

    /// The animation ran to its end. AppKit: `-animationDidEnd:`.
    virtual void animationDidEnd(NSAnimation& animation);
    /// The animation was stopped before its end. AppKit: `-animationDidStop:`.
    virtual void animationDidStop(NSAnimation& animation);
};

/// The progress of something over a time; what it is that changes, a subclass says in setCurrentProgress().
///
/// Runs in the blocking mode, AppKit's default, unless told otherwise: starting returns when the animation is over. One
/// that does not block ends in the event loop, never while it is started. Where the person wishes less motion, its last
/// step is all (see BlockingAnimation.h). To move the frame of a window, NSWindow::setFrame has an animation of its
/// own.
///
/// An animation may be stopped, started anew and destroyed from all that it calls. Stands for AppKit's class of the
/// same name.
class VXKIT_EXPORT NSAnimation {
public:
    /// Seconds that an animation takes unless it is told otherwise.
    static constexpr double standardDuration = 0.5; // seconds

    /// AppKit: `-initWithDuration:animationCurve:`.
    explicit NSAnimation(double duration = standardDuration, NSAnimationCurve curve = NSAnimationEaseInOut);
    NSAnimation(const NSAnimation&) = delete;
    NSAnimation& operator=(const NSAnimation&) = delete;
    /// One that runs ends without a word to its delegate.
    virtual ~NSAnimation();

    /// Runs from the current progress, or from the beginning where that is the end, for what is left of the duration;
    /// its delegate is told of the end. Nothing for one that runs. AppKit: `-startAnimation`.
    virtual void startAnimation();
    /// Ends it where it is; its delegate is told. Nothing for one that does not run. AppKit: `-stopAnimation`.
    virtual void stopAnimation();
    /// Whether it runs at this moment. AppKit: `-isAnimating`.
    [[nodiscard]] bool isAnimating() const { return m_run != nullptr; }

    /// The share of the duration that is over, from 0 to 1.
    [[nodiscard]] float currentProgress() const { return m_currentProgress; }
    /// Called for every frame while it runs, the last time with exactly 1. What is not between 0 and 1 is brought
    /// there; NaN counts as 0. AppKit: `-setCurrentProgress:`.
    virtual void setCurrentProgress(float progress);
    /// The progress as the curve bends it, from 0 to 1. AppKit: `-currentValue`.
    [[nodiscard]] virtual float currentValue() const;

    /// Seconds from progress 0 to 1; nothing is seen on the way where that is 0 or less or makes no sense. AppKit:
    /// `-duration`.
    [[nodiscard]] double duration() const { return m_duration; }
    /// Counts for the next start. AppKit: `-setDuration:`.
    void setDuration(double seconds) { m_duration = seconds; }
    /// How currentValue follows the progress: NSAnimationEaseInOut unless it was made with another. AppKit:
    /// `-animationCurve`.
    [[nodiscard]] NSAnimationCurve animationCurve() const { return m_curve; }
    /// Counts at once. AppKit: `-setAnimationCurve:`.
    void setAnimationCurve(NSAnimationCurve curve) { m_curve = curve; }

    /// Whether a start waits for the end: NSAnimationBlocking at first. AppKit: `-animationBlockingMode`.
    [[nodiscard]] NSAnimationBlockingMode animationBlockingMode() const { return m_blockingMode; }
    /// Counts for the next start. AppKit: `-setAnimationBlockingMode:`.
    void setAnimationBlockingMode(NSAnimationBlockingMode mode) { m_blockingMode = mode; }

    /// Who is told of the end; null at first. AppKit: `-delegate`.
    [[nodiscard]] NSAnimationDelegate* delegate() const { return m_delegate; }
    /// `delegate` is not owned; it must outlive the animation or be taken back with null. AppKit: `-setDelegate:`.
    void setDelegate(NSAnimationDelegate* delegate) { m_delegate = delegate; }

protected:
    /// The seconds that progress 0 to 1 is to take. Here: the duration.
    [[nodiscard]] virtual double secondsToRun() const { return m_duration; }

private:
    class Frames;

    void advance(float start, double share);
    void end();

    double m_duration;
    NSAnimationCurve m_curve;
    NSAnimationBlockingMode m_blockingMode = NSAnimationBlocking;
    float m_currentProgress = 0;
    NSAnimationDelegate* m_delegate = nullptr;
    std::unique_ptr<QObject> m_run; // while it runs; its death ends the loop
};

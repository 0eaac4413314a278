// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <chrono>
#include <functional>

class QObject;

/// Runs an animation and returns when it is over; the user's input waits meanwhile, everything else goes on.
///
/// `step` is called with the eased progress, from above 0 up to 1: slow at both ends (the cubic Bézier curve through
/// (0.42, 0) and (0.58, 1)). The last call is always with exactly 1, unless `target` dies: then the animation ends at
/// once and step is not called again. Of a time of 0 or less, or none that makes sense, the last step is all; so it is
/// where the person wishes less motion (prefersReducedMotion).
VXKIT_EXPORT void runBlockingAnimation(QObject& target, double seconds, const std::function<void(double)>& step);

/// The same with the plain share of the time that is over in place of the eased progress, for animations with a curve
/// of their own.
VXKIT_EXPORT void runBlockingFrames(QObject& target, double seconds, const std::function<void(double)>& step);

/// Whether every animation jumps to its end at present, so that what is only seen on the way need not be shown at all.
[[nodiscard]] VXKIT_EXPORT bool blockingAnimationsJump();

/// How long an animation that is to take `seconds` really takes: nothing where it is to show its end at once. Every
/// animation's duration comes by here.
[[nodiscard]] VXKIT_EXPORT double shownSeconds(double seconds);

/// How far an animation has come after the share `share` of its time, both from 0 to 1: slow at both ends, see above.
[[nodiscard]] VXKIT_EXPORT double easedInOut(double share);

/// The time from one frame of an animation to the next.
inline constexpr std::chrono::milliseconds animationFrameTime(16);

/// While it lives, every animation takes `factor` times as long as it would: 0 makes each jump to its end. For tests.
/// The latest of several counts.
class VXKIT_EXPORT AnimationDurationsForTesting {
public:
    /// For animations that begin from now on; a factor of 1 changes nothing.
    [[nodiscard]] explicit AnimationDurationsForTesting(double factor);
    AnimationDurationsForTesting(const AnimationDurationsForTesting&) = delete;
    AnimationDurationsForTesting& operator=(const AnimationDurationsForTesting&) = delete;
    ~AnimationDurationsForTesting();

private:
    double m_previous;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSAnimation.h>

/// What a turning card is told while it turns.
class VXKIT_EXPORT FliprAnimationDelegate : public NSAnimationDelegate {
public:
    /// The first half is over: the back side comes into view from now on. Told once.
    virtual void update() = 0;
    /// A frame is due.
    virtual void display() = 0;
};

/// The progress of a window that turns over. It tells its delegate when to swap sides and when to draw; the last frames
/// are not drawn, because the window itself takes their place.
class VXKIT_EXPORT FliprAnimation : public NSAnimation {
public:
    /// The progress after which the back side is in view.
    static constexpr float halfWay = 0.5F;

    /// One with `curve`; its duration is given when it starts. AppKit: `-initWithAnimationCurve:`.
    explicit FliprAnimation(NSAnimationCurve curve);

    /// Runs from `progress`, of which nobody is told, and returns when it is over. `duration` is in seconds, for all of
    /// the progress from 0 to 1. AppKit: `-startAtProgress:withDuration:`.
    void startAtProgress(float progress, double duration);

    /// A delegate that is no FliprAnimationDelegate hears of the end alone.
    void setCurrentProgress(float progress) override;

private:
    bool haveSwitched = false;
};

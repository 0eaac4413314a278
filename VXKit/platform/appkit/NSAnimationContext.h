// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <cstddef>
#include <functional>
#include <memory>

class AnimationGroup;

/// How what is set through an animator gets to its end: see FrameAnimator.h.
///
/// Groups are opened and closed in pairs, one within another; each has a duration of its own, at first that of the one
/// around it. What is set in one turn of the event loop moves in step, on one clock, in whatever groups it was set. A
/// group that was not closed is closed when its turn of the event loop is over, so that it makes no difference to what
/// is animated later; outside of a group, a duration holds for as long. Main thread only. Stands for AppKit's class of
/// the same name.
class VXKIT_EXPORT NSAnimationContext {
public:
    NSAnimationContext(const NSAnimationContext&) = delete;
    NSAnimationContext& operator=(const NSAnimationContext&) = delete;
    ~NSAnimationContext();

    /// Opens a group, which is current until it is closed. AppKit: `+beginGrouping`.
    static void beginGrouping();
    /// Closes the current group. Nothing where none is open. AppKit: `+endGrouping`.
    static void endGrouping();
    /// That of the innermost open group, or of all that is set outside of one. It is there for as long as the group is
    /// open. AppKit: `+currentContext`.
    [[nodiscard]] static NSAnimationContext& currentContext();
    /// How many groups are open.
    [[nodiscard]] static std::size_t openGroups();

    /// Calls `changes` with the context of a group that is open meanwhile. When everything that it animated has come to
    /// its end, by itself or otherwise, the event loop calls `completionHandler`, once; so it does where nothing was
    /// animated. AppKit: `+runAnimationGroup:completionHandler:`.
    static void runAnimationGroup(const std::function<void(NSAnimationContext& context)>& changes,
                                  std::function<void()> completionHandler = {});

    /// Seconds that what is set from now on takes: 0.25 at first. 0 or less, or no number, is at once.
    /// AppKit: `-duration`.
    [[nodiscard]] double duration() const { return m_duration; }
    /// Counts for what is set from now on. AppKit: `-setDuration:`.
    void setDuration(double seconds) { m_duration = seconds; }

private:
    friend class FrameAnimations;

    class Groups;

    NSAnimationContext(double duration, std::function<void()> whenEnded);

    static constexpr double standardDuration = 0.25; // seconds

    double m_duration;
    int m_loopLevel; // of the event loop in whose turn it was opened
    std::shared_ptr<AnimationGroup> m_group;
};

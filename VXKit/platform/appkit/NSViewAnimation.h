// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSAnimation.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

/// Key in a description: the view or window that is changed, a QPointer.
inline constexpr const char* NSViewAnimationTargetKey = "NSViewAnimationTargetKey";
/// Key in a description: the frame to begin with, an NSRect.
inline constexpr const char* NSViewAnimationStartFrameKey = "NSViewAnimationStartFrameKey";
/// Key in a description: the frame to end with, an NSRect.
inline constexpr const char* NSViewAnimationEndFrameKey = "NSViewAnimationEndFrameKey";
/// Key in a description: one of the effects below, a string.
inline constexpr const char* NSViewAnimationEffectKey = "NSViewAnimationEffectKey";

/// Effect: the target is shown at the start and becomes as opaque as it was.
inline constexpr const char* NSViewAnimationFadeInEffect = "NSViewAnimationFadeInEffect";
/// Effect: the target becomes transparent, is hidden at the end (a window ordered out) and has the opacity then that it
/// had before.
inline constexpr const char* NSViewAnimationFadeOutEffect = "NSViewAnimationFadeOutEffect";

/// A value in a description; of which type, its key says.
using NSViewAnimationValue = std::variant<QPointer<QWidget>, NSRect, std::string>;
/// What is to happen to one view or window. Without a frame to begin with it begins where it is, without one to end
/// with it ends there; values of another type than the key's, and unknown effects, count as not there.
using NSViewAnimationDescription = std::map<std::string, NSViewAnimationValue, std::less<>>;

/// Changes the frames and the opacity of views and windows, in step, as described.
///
/// A target that dies meanwhile is left out of the rest; the animation ends all the same. Stopped, everything stays as
/// it is then, except that what fades has its own opacity again. Where a window cannot be translucent, it is shown
/// whole until it is ordered out. To move frames alone, an animator is simpler (see FrameAnimator.h). Stands for
/// AppKit's class of the same name.
class VXKIT_EXPORT NSViewAnimation : public NSAnimation {
public:
    /// AppKit: `-initWithViewAnimations:`.
    explicit NSViewAnimation(std::vector<NSViewAnimationDescription> viewAnimations = {});
    ~NSViewAnimation() override;

    /// What is to happen, as it was set. AppKit: `-viewAnimations`.
    [[nodiscard]] const std::vector<NSViewAnimationDescription>& viewAnimations() const { return m_viewAnimations; }
    /// Counts for the next start. AppKit: `-setViewAnimations:`.
    void setViewAnimations(std::vector<NSViewAnimationDescription> viewAnimations);

    /// Begins with what is described at this moment.
    void startAnimation() override;
    /// Leaves the frames as they are then, and gives what fades its own opacity again.
    void stopAnimation() override;
    /// Moves and fades all targets to the value that belongs to `progress`; with 1 the effects are finished.
    void setCurrentProgress(float progress) override;

protected:
    /// The duration, and NSAnimation's standard one where that is below 0 or no number.
    [[nodiscard]] double secondsToRun() const override;

private:
    class Change;

    using Changes = std::vector<std::shared_ptr<Change>>;

    static void finish(const Changes& changes, bool isOver);

    std::vector<NSViewAnimationDescription> m_viewAnimations;
    Changes m_changes; // of the latest run
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

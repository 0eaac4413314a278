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

/// What a description says under these keys: the view or window, where its frame begins and ends, and an effect.
inline constexpr const char* NSViewAnimationTargetKey = "NSViewAnimationTargetKey";
inline constexpr const char* NSViewAnimationStartFrameKey = "NSViewAnimationStartFrameKey";
inline constexpr const char* NSViewAnimationEndFrameKey = "NSViewAnimationEndFrameKey";
inline constexpr const char* NSViewAnimationEffectKey = "NSViewAnimationEffectKey";

/// Effects. What fades in is shown at its start, what fades out is hidden (a window ordered out) at its end and has the
/// opacity then that it had before.
inline constexpr const char* NSViewAnimationFadeInEffect = "NSViewAnimationFadeInEffect";
inline constexpr const char* NSViewAnimationFadeOutEffect = "NSViewAnimationFadeOutEffect";

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

    [[nodiscard]] const std::vector<NSViewAnimationDescription>& viewAnimations() const { return m_viewAnimations; }
    /// Counts for the next start. AppKit: `-setViewAnimations:`.
    void setViewAnimations(std::vector<NSViewAnimationDescription> viewAnimations);

    void startAnimation() override;
    void stopAnimation() override;
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

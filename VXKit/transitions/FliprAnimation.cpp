// SPDX-License-Identifier: MIT
#include <VXKit/transitions/FliprAnimation.h>

namespace {

constexpr double placeholderDuration = 100000000; // seconds
constexpr float endOfDrawing = 0.99F;

} // namespace

FliprAnimation::FliprAnimation(NSAnimationCurve curve) : NSAnimation(placeholderDuration, curve) {}

void FliprAnimation::startAtProgress(float progress, double duration) {
    NSAnimation::setCurrentProgress(progress);
    setDuration(duration);
    startAnimation();
}

void FliprAnimation::setCurrentProgress(float progress) {
    NSAnimation::setCurrentProgress(progress);
    auto* const card = dynamic_cast<FliprAnimationDelegate*>(delegate());
    if (!card) {
        return;
    }
    if (isAnimating() && !haveSwitched && progress > halfWay) {
        card->update();
        haveSwitched = true;
    }
    if (isAnimating() && progress < endOfDrawing) {
        card->display();
    }
}

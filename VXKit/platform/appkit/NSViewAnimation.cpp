// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSViewAnimation.h>

#include <VXKit/platform/appkit/AnimationTarget.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>

#include <QGraphicsOpacityEffect>

#include <optional>
#include <utility>

namespace {

template <class T>
const T* valueOf(const NSViewAnimationDescription& description, const char* key) {
    const auto found = description.find(key);
    return found == description.end() ? nullptr : std::get_if<T>(&found->second);
}

} // namespace

/// What happens to one target while the animation runs.
class NSViewAnimation::Change {
public:
    Change(QWidget& target, const NSViewAnimationDescription& description) : m_target(&target) {
        const auto* start = valueOf<NSRect>(description, NSViewAnimationStartFrameKey);
        const auto* end = valueOf<NSRect>(description, NSViewAnimationEndFrameKey);
        m_moves = start || end;
        if (m_moves) {
            m_from = start ? *start : frameOfTarget(target);
            m_to = end ? *end : frameOfTarget(target);
        }
        const auto* effect = valueOf<std::string>(description, NSViewAnimationEffectKey);
        m_fadesIn = effect && *effect == NSViewAnimationFadeInEffect;
        m_fadesOut = effect && *effect == NSViewAnimationFadeOutEffect;
    }

    void begin() {
        if (m_fadesIn || m_fadesOut) {
            rememberOpacity();
        }
        apply(0);
        if (m_target && m_fadesIn) {
            setShown(true);
        }
    }

    void apply(double value) {
        if (m_target && m_moves) {
            setFrameOfTarget(*m_target,
                             value == 1   ? m_to
                             : value == 0 ? m_from
                                          : rectBetween(m_from, m_to, value),
                             true);
        }
        if (m_target && (m_fadesIn || m_fadesOut)) {
            setOpacity(m_opacity * (m_fadesIn ? value : 1 - value));
        }
    }

    /// At the end of the animation, or where it was stopped.
    void finish(bool isOver) {
        if (m_target && m_fadesOut && isOver) {
            setShown(false);
        }
        if (m_target && (m_fadesIn || m_fadesOut)) {
            restoreOpacity();
        }
        m_target = nullptr; // nothing more happens to it
    }

private:
    [[nodiscard]] NSWindow* window() const { return qobject_cast<NSWindow*>(m_target); }

    void rememberOpacity() {
        if (const NSWindow* faded = window()) {
            // One that was made invisible to be faded in is to be seen in the end.
            m_opacity = m_fadesIn && faded->alphaValue() == 0 ? 1 : faded->alphaValue();
            return;
        }
        // Views have no opacity of their own.
        m_effect = new QGraphicsOpacityEffect(m_target);
        m_target->setGraphicsEffect(m_effect);
    }

    void setOpacity(double opacity) {
        if (NSWindow* faded = window()) {
            faded->setAlphaValue(opacity);
        } else if (m_effect) {
            m_effect->setOpacity(opacity);
        }
    }

    void restoreOpacity() {
        if (NSWindow* faded = window()) {
            faded->setAlphaValue(m_opacity);
        } else if (m_effect && m_target->graphicsEffect() == m_effect) {
            m_target->setGraphicsEffect(nullptr);
        }
    }

    void setShown(bool shown) {
        if (NSWindow* faded = window()) {
            shown ? faded->orderFront(nullptr) : faded->orderOut(nullptr);
        } else {
            m_target->setVisible(shown);
        }
    }

    QPointer<QWidget> m_target;
    bool m_moves = false;
    NSRect m_from;
    NSRect m_to;
    bool m_fadesIn = false;
    bool m_fadesOut = false;
    double m_opacity = 1;
    QPointer<QGraphicsOpacityEffect> m_effect;
};

NSViewAnimation::NSViewAnimation(std::vector<NSViewAnimationDescription> viewAnimations)
    : m_viewAnimations(std::move(viewAnimations)) {}

NSViewAnimation::~NSViewAnimation() {
    finish(Changes(m_changes), false);
}

void NSViewAnimation::setViewAnimations(std::vector<NSViewAnimationDescription> viewAnimations) {
    m_viewAnimations = std::move(viewAnimations);
}

void NSViewAnimation::startAnimation() {
    if (isAnimating()) {
        return;
    }
    m_changes.clear();
    for (const NSViewAnimationDescription& description : m_viewAnimations) {
        const auto* target = valueOf<QPointer<QWidget>>(description, NSViewAnimationTargetKey);
        if (target && *target) {
            m_changes.push_back(std::make_shared<Change>(**target, description));
        }
    }
    const std::weak_ptr<const bool> alive = m_alive;
    const Changes changes = m_changes;
    for (const std::shared_ptr<Change>& change : changes) {
        change->begin();
    }
    if (!alive.expired()) {
        NSAnimation::startAnimation();
    }
}

void NSViewAnimation::stopAnimation() {
    if (!isAnimating()) {
        return;
    }
    const std::weak_ptr<const bool> alive = m_alive;
    finish(Changes(m_changes), false);
    if (!alive.expired()) {
        NSAnimation::stopAnimation();
    }
}

void NSViewAnimation::setCurrentProgress(float progress) {
    NSAnimation::setCurrentProgress(progress);
    const auto value = static_cast<double>(currentValue());
    const bool isOver = currentProgress() == 1;
    // By itself from here on: whoever is told of a frame may stop this, or be its end.
    const Changes changes = m_changes;
    for (const std::shared_ptr<Change>& change : changes) {
        change->apply(value);
    }
    if (isOver) {
        finish(changes, true);
    }
}

double NSViewAnimation::secondsToRun() const {
    return duration() >= 0 ? duration() : standardDuration;
}

void NSViewAnimation::finish(const Changes& changes, bool isOver) {
    for (const std::shared_ptr<Change>& change : changes) {
        change->finish(isOver);
    }
}

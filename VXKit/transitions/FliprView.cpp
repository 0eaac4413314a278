// SPDX-License-Identifier: MIT
#include <VXKit/transitions/FliprView.h>

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSCursor.h>
#include <VXKit/platform/appkit/NSPanel.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QImage>
#include <QPainter>

#include <chrono>
#include <cmath>
#include <utility>

namespace {

constexpr float halfTurn = 3.1415927F; // radians
constexpr float eyeDistance = 1600;    // points

constexpr double leastDuration = 0.75; // seconds
constexpr float leastFrames = 5;
constexpr float firstProgress = 0.05F;

// What the panel begins with. After the half, the card keeps the distance that this corner has from the screen's, not
// from the panel's: the panel is moved by it, too, so that the picture lands on its window all the same.
constexpr NSRect startingRect{{128, 128}, {512, 768}};

constexpr double shadowAlpha = 0.8;
constexpr double shadowBlurRadius = 25;
constexpr NSSize shadowOffset{0, -8};

bool inAnimation = false;

std::function<std::int64_t()>& testClock() {
    static std::function<std::int64_t()> clock;
    return clock;
}

/// Nanoseconds since some moment.
std::int64_t upTime() {
    if (testClock()) {
        return testClock()();
    }
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

NSColor systemShadowColor() {
    return NSColor::blackColor();
}

/// The window as it fills its frame. What the window manager draws around it stays transparent.
std::shared_ptr<NSImage> pictureOfFrame(NSWindow& window) {
    std::shared_ptr<NSImage> content = snapshotOfWindow(window);
    const NSRect frame = window.frame();
    const NSRect contentRect = window.contentRectForFrameRect(frame);
    if (!content || contentRect.size == frame.size) {
        return content;
    }
    std::shared_ptr<NSImage> picture = NSImage::initWithSize(frame.size);
    picture->lockFocus(window.devicePixelRatioF());
    content->drawAtPoint({contentRect.origin.x - frame.origin.x, contentRect.origin.y - frame.origin.y}, NSZeroRect,
                         NSCompositeSourceOver, 1);
    picture->unlockFocus();
    return picture;
}

/// While it lives, what changes in windows is not seen.
class SuspendedScreenUpdates {
public:
    SuspendedScreenUpdates() { NSDisableScreenUpdates(); }
    SuspendedScreenUpdates(const SuspendedScreenUpdates&) = delete;
    SuspendedScreenUpdates& operator=(const SuspendedScreenUpdates&) = delete;
    ~SuspendedScreenUpdates() { NSEnableScreenUpdates(); }
};

} // namespace

FliprCorners FliprCorners::atValue(float value, float direction, const NSSize& size) {
    const auto hw = static_cast<float>(size.width / 2);
    const auto hh = static_cast<float>(size.height / 2);
    const auto angle = static_cast<double>(direction * halfTurn * value);
    const auto s = static_cast<float>(std::sin(angle) * static_cast<double>(hw));
    const auto c = static_cast<float>(std::cos(angle) * static_cast<double>(hw));
    float rightX = 0;
    float rightHeight = 0;
    float leftX = 0;
    float leftHeight = 0;
    if (value <= FliprAnimation::halfWay) {
        rightX = c * eyeDistance / (eyeDistance + s) + hw;
        rightHeight = hh * eyeDistance / (eyeDistance + s);
        leftX = -c * eyeDistance / (eyeDistance - s) + hw;
        leftHeight = hh * eyeDistance / (eyeDistance - s);
    } else {
        // The back side is seen, so the edges trade their depth.
        rightX = -c * eyeDistance / (eyeDistance - s) + hw;
        rightHeight = hh * eyeDistance / (eyeDistance - s);
        leftX = c * eyeDistance / (eyeDistance + s) + hw;
        leftHeight = hh * eyeDistance / (eyeDistance + s);
    }
    const auto point = [](float x, float y) { return NSMakePoint(static_cast<double>(x), static_cast<double>(y)); };
    return {point(rightX, hh + rightHeight), point(leftX, hh + leftHeight), point(rightX, hh - rightHeight),
            point(leftX, hh - leftHeight)};
}

FliprTiming FliprTiming::forFrameTimes(float first, float frameTime) {
    const float spent = first + frameTime;
    const float needed = leastFrames * frameTime;
    const bool isSlow = static_cast<double>(needed) > leastDuration - static_cast<double>(spent);
    const double duration = isSlow ? static_cast<double>(needed + spent) : leastDuration;
    return {duration, static_cast<float>(static_cast<double>(spent) / duration)};
}

FliprView::FliprView(const NSRect& frame, const NSRect& originalRect) : m_originalRect(originalRect) {
    setFrame(frame);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_shadow.setShadowColor(systemShadowColor().colorWithAlphaComponent(shadowAlpha));
    m_shadow.setShadowBlurRadius(shadowBlurRadius);
    m_shadow.setShadowOffset(shadowOffset);
}

FliprView::~FliprView() {
    if (m_animation) {
        m_animation->setDelegate(nullptr);
        m_animation->stopAnimation();
        endFlip();
    }
}

bool FliprView::isInAnimation() {
    return inAnimation;
}

/// Whether somebody else decided about one of the windows since the flip began.
bool FliprView::isOvertaken() const {
    const auto changed = [](const QPointer<NSWindow>& window, const std::optional<unsigned>& orderings) {
        return !window || (orderings && window->orderings() != *orderings);
    };
    return changed(m_initialWindow, m_initialOrderings) || changed(m_finalWindow, m_finalOrderings);
}

void FliprView::setInitialWindow(NSWindow& initialWindow, NSWindow& finalWindow, bool forward) {
    interrupt();
    const bool wasInAnimation = std::exchange(inAnimation, true);
    NSWindow* const panel = flippingWindow();
    if (!panel || panel->contentView() != this) {
        inAnimation = wasInAnimation;
        return;
    }
    const QPointer<FliprView> self(this);
    const auto animation = std::make_shared<FliprAnimation>(NSAnimationEaseInOut);
    m_animation = animation;
    m_initialWindow = &initialWindow;
    m_finalWindow = &finalWindow;
    m_initialOrderings = initialWindow.orderings();
    connect(&initialWindow, &QObject::destroyed, this, [this] { lose(m_initialWindow); });
    connect(&finalWindow, &QObject::destroyed, this, [this] { lose(m_finalWindow); });
    m_direction = forward ? 1.0F : -1.0F;
    // What is called on the way may be the end of anything: of a window, of this flip, of the view.
    const auto goesOn = [&] {
        if (!self || m_animation != animation) {
            return false;
        }
        const bool isOurs = !isOvertaken();
        if (!isOurs) {
            interrupt();
        }
        return isOurs;
    };

    panel->setFrame(panelFrameFor(initialWindow.frame()), false);
    if (!goesOn()) {
        return;
    }
    m_originalRect.size = initialWindow.frame().size;
    std::shared_ptr<NSImage> initialImage = pictureOfFrame(initialWindow);
    if (!goesOn()) {
        return;
    }
    m_transitionFilter.setInputImage(std::move(initialImage));

    const bool isSeen = !blockingAnimationsJump();
    // Where nothing is to be seen on the way, the end is the first that is.
    const std::unique_ptr<SuspendedScreenUpdates> untilTheEnd =
        isSeen ? nullptr : std::make_unique<SuspendedScreenUpdates>();
    float firstFrameTime = 0;
    {
        const SuspendedScreenUpdates suspended;
        finalWindow.makeKeyAndOrderFront(nullptr);
        if (!goesOn()) {
            return;
        }
        std::shared_ptr<NSImage> finalImage = pictureOfFrame(finalWindow);
        if (!goesOn()) {
            return;
        }
        m_finalImage = std::move(finalImage);
        finalWindow.setAlphaValue(0);
        m_initialOrderings.reset(); // this one is our own
        initialWindow.orderOut(nullptr);
        if (!goesOn()) {
            return;
        }
        animation->setDelegate(this);
        animation->setCurrentProgress(0);
        m_initialOrderings = initialWindow.orderings();
        m_finalOrderings = finalWindow.orderings();
        if (isSeen) {
            panel->orderWindow(NSWindowBelow, finalWindow.windowNumber());
            if (!goesOn()) {
                return;
            }
            // Else there would be neither window for a moment.
            waitUntilShown(*panel);
        } else {
            waitUntilShown(finalWindow);
        }
        if (!goesOn()) {
            return;
        }
        firstFrameTime = m_frameTime;
        animation->setCurrentProgress(firstProgress);
    }
    if (!goesOn()) {
        return;
    }
    const FliprTiming timing = FliprTiming::forFrameTimes(firstFrameTime, m_frameTime);
    animation->startAtProgress(timing.progress, timing.duration);
}

/// Where the panel belongs for the card at rest to cover `windowFrame`.
NSRect FliprView::panelFrameFor(const NSRect& windowFrame) const {
    const NSSize now = window()->frame().size;
    return {{windowFrame.origin.x - m_originalRect.origin.x, windowFrame.origin.y - m_originalRect.origin.y},
            {windowFrame.size.width - m_originalRect.size.width + now.width,
             windowFrame.size.height - m_originalRect.size.height + now.height}};
}

void FliprView::update() {
    NSWindow* const panel = window();
    if (!panel || isOvertaken()) {
        return interrupt();
    }
    const QPointer<FliprView> self(this);
    m_dontDisplay = true;
    // The window server moves a window with what it shows: the card would be seen where it does not belong.
    panel->display();
    if (!self || !m_finalWindow) {
        return;
    }
    m_originalRect = NSInsetRect(startingRect, horizontalMargin, verticalMargin);
    const NSRect windowFrame = m_finalWindow->frame();
    const NSRect panelFrame = panelFrameFor(windowFrame);
    m_originalRect.size = windowFrame.size;
    panel->setFrame(panelFrame, true);
    if (self) {
        m_dontDisplay = false;
    }
}

void FliprView::display() {
    NSWindow* const panel = window();
    if (m_animation && isOvertaken()) {
        return interrupt();
    }
    // All of it, because where there is no compositing manager the panel is cut to the card.
    if (panel) {
        panel->display();
    }
}

void FliprView::drawCard() {
    if (!m_initialWindow || m_dontDisplay) {
        return;
    }
    const float value = m_animation->currentValue();
    if (value > FliprAnimation::halfWay && m_finalImage) {
        m_transitionFilter.setInputImage(std::exchange(m_finalImage, nullptr));
    }
    const FliprCorners corners = FliprCorners::atValue(value, m_direction, m_originalRect.size);
    m_transitionFilter.setInputTopRight(corners.topRight);
    m_transitionFilter.setInputTopLeft(corners.topLeft);
    m_transitionFilter.setInputBottomRight(corners.bottomRight);
    m_transitionFilter.setInputBottomLeft(corners.bottomLeft);
    const NSRect area = bounds();
    m_transitionFilter.drawOutputImageInRect(area, {{-m_originalRect.origin.x, -m_originalRect.origin.y}, area.size},
                                             NSCompositeSourceOver, 1);
}

void FliprView::drawRect(const NSRect& /*dirtyRect*/) {
    if (!m_initialWindow || m_dontDisplay) {
        return;
    }
    const std::int64_t start = upTime();
    // Without a compositing manager the panel ends with the card, and nothing of a shadow would be seen.
    if (WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency)) {
        m_shadow.set();
    }
    drawCard();
    constexpr double nanosecondsPerSecond = 1000000000;
    m_frameTime = static_cast<float>(static_cast<double>(upTime() - start) / nanosecondsPerSecond);
}

void FliprView::animationDidEnd(NSAnimation& /*animation*/) {
    endFlip();
}

void FliprView::animationDidStop(NSAnimation& /*animation*/) {
    endFlip();
}

/// One of the windows is about to be no more, which its pointers learn later than others.
void FliprView::lose(QPointer<NSWindow>& window) {
    window = nullptr;
    interrupt();
}

/// Brings what turns to its end at once.
void FliprView::interrupt() {
    if (m_animation && m_animation->isAnimating()) {
        m_animation->stopAnimation();
    } else if (m_animation) {
        endFlip();
    }
}

void FliprView::endFlip() {
    const QPointer<FliprView> self(this);
    const QPointer<NSWindow> finalWindow(m_finalWindow);
    for (const QPointer<NSWindow>& window : {m_initialWindow, m_finalWindow}) {
        if (window) {
            window->disconnect(this);
        }
    }
    {
        const SuspendedScreenUpdates suspended;
        NSWindow* const panel = window();
        // Some window servers give the keyboard to whatever is shown.
        const bool hasKeyboard = panel && panel->isActiveWindow();
        if (panel) {
            panel->orderOut(nullptr);
        }
        if (finalWindow) {
            finalWindow->setAlphaValue(1);
            finalWindow->display();
        }
        if (finalWindow && hasKeyboard) {
            finalWindow->makeKeyWindow();
        }
    }
    if (!self) {
        return;
    }
    m_animation = nullptr;
    m_initialWindow = nullptr;
    m_finalWindow = nullptr;
    m_finalImage = nullptr;
    m_initialOrderings.reset();
    m_finalOrderings.reset();
    m_dontDisplay = false;
    NSCursor::unhide();
    inAnimation = false;
}

FliprClockForTesting::FliprClockForTesting(std::function<std::int64_t()> nanoseconds)
    : m_previous(std::exchange(testClock(), std::move(nanoseconds))) {}

FliprClockForTesting::~FliprClockForTesting() {
    testClock() = std::move(m_previous);
}

// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTCopyPopUp.h>

#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSViewAnimation.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

// Points.
constexpr double sideLength = 200;
constexpr double bottom = 250;
constexpr double overshoot = 15; // on every side
constexpr double createdLength = sideLength + 2 * overshoot;
constexpr double zoomOffset = 85;
constexpr double zoomLength = 15;
constexpr double cornerRadius = 15;
constexpr NSPoint iconOrigin{36, 36};

constexpr double squareAlpha = 0.35;
constexpr double secondsShown = 1.5;
constexpr double fadeDuration = -1.0; // below 0 is NSViewAnimation's own

NSBezierPath squareIn(const NSRect& rect) {
    return NSBezierPath::bezierPathWithRoundedRect(rect, cornerRadius, cornerRadius);
}

class CopyPopUpWindow : public NSWindow {
public:
    explicit CopyPopUpWindow(const NSRect& contentRect)
        : NSWindow(contentRect, NSBorderlessWindowMask, NSBackingStoreBuffered, true) {
        setHasShadow(false);
        setOpaque(false);
        setBackgroundColor(NSColor::clearColor());
        setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
        // It is to be seen wherever the person is, above a full-screen window too, and to be in nobody's way.
        setManagement(NSWindowManagement::Bypassing);
        setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
        setIgnoresMouseEvents(true);
    }

protected:
    /// The square, solid: where it cannot be translucent, the window is cut to it.
    void drawCoverage() const override {
        const NSSize size = frame().size;
        const double side = std::min({sideLength, size.width, size.height});
        NSColor::blackColor().setFill();
        squareIn(NSMakeRect((size.width - side) / 2, (size.height - side) / 2, side, side)).fill();
    }
};

/// Told for the class, which has no instances.
class FadeDelegate : public NSAnimationDelegate {
public:
    void animationDidEnd(NSAnimation& animation) override { LTCopyPopUp::animationDidEnd(animation); }
    // However it ends, the pop-up is gone then.
    void animationDidStop(NSAnimation& animation) override { LTCopyPopUp::animationDidEnd(animation); }
};

/// The window that is popped up, and its fade.
struct Slot {
    QPointer<NSWindow> window; // owned
    std::unique_ptr<NSViewAnimation> fade;
};

Slot& slot() {
    static Slot shared;
    return shared;
}

FadeDelegate& fadeDelegate() {
    static FadeDelegate delegate;
    return delegate;
}

/// No window outlasts the application object.
void emptySlot() {
    slot().fade.reset();
    delete slot().window.data();
}

std::shared_ptr<NSImage> paintedPicture() {
    std::shared_ptr<NSImage> picture = NSImage::initWithSize({sideLength, sideLength});
    picture->lockFocus();
    NSColor::colorWithCalibratedWhite(0.0, squareAlpha).set();
    squareIn(NSMakeRect(0, 0, sideLength, sideLength)).fill();
    VXKitImage(QStringLiteral("CopyIcon"))->drawAtPoint(iconOrigin, NSZeroRect, NSCompositeSourceOver, 1.0);
    picture->unlockFocus();
    picture->setScalesWhenResized(true);
    return picture;
}

} // namespace

void LTCopyPopUp::pop() {
    // A window that died leaves its fade behind, whose end would be that of the next one.
    if (slot().window || slot().fade || !QGuiApplication::primaryScreen()) {
        return;
    }
    const double x = NSScreen::mainScreen().frame().size.width / 2 - sideLength / 2;
    const NSRect atRest = NSMakeRect(x, bottom, sideLength, sideLength);
    const QPointer<NSWindow> window = new CopyPopUpWindow(NSInsetRect(atRest, -overshoot, -overshoot));
    slot().window = window;
    qRemovePostRoutine(emptySlot);
    qAddPostRoutine(emptySlot);

    auto imageView = std::make_unique<NSImageView>(NSMakeRect(0, 0, createdLength, createdLength));
    imageView->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    imageView->setImageScaling(NSScaleProportionally);
    imageView->setImage(paintedPicture());
    ViewCore::of(window->contentView())->addSubview(imageView.release());

    // The event loop runs in these two.
    zoomOnFromRect(*window, NSMakeRect(x + zoomOffset, bottom + zoomOffset, zoomLength, zoomLength));
    if (window) {
        window->setFrame(atRest, true, true);
    }
    if (window) {
        NSTimer::scheduledTimerWithTimeInterval(secondsShown, NSTimerRepeats::No, [window](NSTimer& timer) {
            if (window) { // if not, the slot may hold another one by now
                _startFading(timer);
            }
        });
    }
}

void LTCopyPopUp::_startFading(NSTimer& /*timer*/) {
    NSViewAnimationDescription description;
    description[NSViewAnimationEffectKey] = NSViewAnimationFadeOutEffect;
    description[NSViewAnimationTargetKey] = QPointer<QWidget>(slot().window);
    slot().fade = std::make_unique<NSViewAnimation>(std::vector{std::move(description)});
    NSViewAnimation& fade = *slot().fade;
    fade.setAnimationBlockingMode(NSAnimationNonblocking);
    fade.setDuration(fadeDuration);
    fade.setAnimationCurve(NSAnimationEaseInOut);
    fade.setDelegate(&fadeDelegate());
    fade.startAnimation();
}

void LTCopyPopUp::animationDidEnd(NSAnimation& /*animation*/) {
    // The animation goes at the end of this, and the window may be in the middle of something.
    const std::unique_ptr<NSViewAnimation> fade = std::move(slot().fade);
    if (NSWindow* const window = std::exchange(slot().window, nullptr)) {
        window->orderOut(nullptr);
        window->deleteLater();
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/app/LTStatusItemView.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QPointer>

#include <cmath>

namespace {

constexpr double pulseInterval = 0.1; // seconds
constexpr double pulseStep = 0.1;
constexpr double leastFraction = 0.4;
constexpr double fullFraction = 1.0;

} // namespace

LTStatusItemView::LTStatusItemView(const NSRect& frame) {
    setFrame(frame);
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    const auto observe = [&](const char* name, void (LTStatusItemView::*handler)(const NSNotification&)) {
        m_observations.push_back(centre.addObserverForName(
            name, nullptr, [this, handler](const NSNotification& notification) { (this->*handler)(notification); }));
    };
    if (VXApplicationHooks().shouldCloseMainWindowOnDeactivate()) {
        observe(NSApplicationDidResignActiveNotification, &LTStatusItemView::applicationDidDeactivate);
    }
    observe(LTSyncManagerHasBegunSyncing, &LTStatusItemView::startAnimation);
    observe(LTSyncManagerHasEndedSyncing, &LTStatusItemView::endAnimation);
}

LTStatusItemView::~LTStatusItemView() = default;

void LTStatusItemView::startAnimation(const NSNotification& /*notification*/) {
    curFraction = static_cast<float>(fullFraction);
    dir = true;
    const QPointer<LTStatusItemView> self(this);
    timer = NSTimer::scheduledTimerWithTimeInterval(pulseInterval, NSTimerRepeats::Yes, [self](NSTimer& ticking) {
        if (self) {
            self->display();
        } else {
            ticking.invalidate();
        }
    });
}

void LTStatusItemView::endAnimation(const NSNotification& /*notification*/) {
    if (timer) {
        timer->invalidate();
        timer = nullptr;
    }
    display();
}

void LTStatusItemView::applicationDidDeactivate(const NSNotification& /*notification*/) {
    if (LTApplicationController* controller = VXApplicationHooks().applicationController()) {
        controller->closeMainWindow();
    }
    highlight = false;
    display();
}

void LTStatusItemView::toggleHighlight() {
    highlight = !highlight;
    display();
}

void LTStatusItemView::setHighlighted(bool flag) {
    highlight = flag;
    display();
}

void LTStatusItemView::mouseDown(const NSEvent& /*event*/) {
    highlight = !highlight;
    setNeedsDisplay(true);
    // Before the window is toggled, so that the application in front is noted while it still is.
    if (NSApplication* application = NSApplication::sharedApplication()) {
        application->activateIgnoringOtherApps(true);
    }
    if (LTApplicationController* controller = VXApplicationHooks().applicationController()) {
        controller->toggleMainWindow();
    }
}

double LTStatusItemView::stepPulse() {
    if (!timer) {
        return fullFraction;
    }
    const auto before = static_cast<double>(curFraction);
    curFraction = static_cast<float>(dir ? before - pulseStep : before + pulseStep);
    const auto fraction = static_cast<double>(curFraction);
    if (fraction <= leastFraction || fraction >= fullFraction) {
        dir = !dir;
    }
    return fraction;
}

void LTStatusItemView::drawRect(const NSRect& rect) {
    const double fraction = stepPulse();
    if (highlight) {
        LTApplicationController* controller = VXApplicationHooks().applicationController();
        if (NSStatusItem* item = controller ? controller->statusItem() : nullptr) {
            item->drawStatusBarBackgroundInRect(bounds(), true);
        }
    }
    const std::shared_ptr<NSImage> image =
        NSImage::imageNamed(highlight ? QStringLiteral("StatusIconHighlighted") : QStringLiteral("StatusIcon"));
    if (image) {
        const NSSize size = frame().size;
        const double x = std::trunc(size.width / 2 - image->size().width / 2);
        const double y = std::trunc(size.height / 2 - image->size().height / 2);
        image->drawAtPoint({x, y}, NSZeroRect, NSCompositeSourceOver, fraction);
    }
    NSView::drawRect(rect);
}

NSRect LTStatusItemView::frameOfStatusItem() const {
    const NSWindow* holder = window();
    return holder ? holder->frame() : NSZeroRect;
}

// SPDX-License-Identifier: MIT
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QPointer>

#include <utility>

namespace {

constexpr float shareOfResizeTime = 0.4F;
constexpr double overshoot = 12.5;      // points, on every side
constexpr double leastLength = 1;       // points, of the square that a window pops out of
constexpr double halfOfLastSquare = 10; // points

/// An effect on a window: what it needs to know to end it well, whatever others do with the window meanwhile.
class Effect {
public:
    Effect(NSWindow& window, const NSRect& zoomRect)
        : m_window(&window), m_zoom(_createZoomWindowWithRect(window, zoomRect)) {
        m_orderings = window.orderings();
        QObject::connect(&window, &QObject::destroyed, m_zoom, [zoom = m_zoom] { delete zoom; });
    }
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;
    ~Effect() {
        if (m_zoom) {
            m_zoom->close();
        }
    }

    /// Shows the picture in the window's place. Not at all where there is to be no motion: it would flash up.
    void show(bool hasHUDShadow) {
        if (blockingAnimationsJump()) {
            return;
        }
        m_zoom->orderFront(nullptr);
        if (hasHUDShadow) {
            setUpWindowShadow(*m_zoom);
        }
        waitUntilShown(*m_zoom);
    }

    void animateTo(const NSRect& rect) {
        if (m_zoom) {
            m_zoom->setFrame(rect, true, true);
        }
    }

    /// Shows the window, which comes from under the picture, unless somebody else decided about it meanwhile.
    void showWindow() {
        if (!isOurs()) {
            return;
        }
        m_window->makeKeyAndOrderFront(nullptr);
        if (m_window) {
            waitUntilShown(*m_window);
        }
    }

    void hideWindow() {
        if (isOurs()) {
            m_window->orderOut(nullptr);
        }
    }

private:
    [[nodiscard]] bool isOurs() const { return m_window && m_window->orderings() == m_orderings; }

    QPointer<NSWindow> m_window;
    QPointer<NoodleZoomWindow> m_zoom;
    unsigned m_orderings = 0;
};

} // namespace

NoodleZoomWindow::NoodleZoomWindow(const NSRect& contentRect, const NSRect& stage, std::shared_ptr<NSImage> picture)
    : SnapshotWindow(contentRect, stage, std::move(picture)) {
    setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    setReleasedWhenClosed(true);
}

double NoodleZoomWindow::animationResizeTime(const NSRect& newFrame) const {
    return SnapshotWindow::animationResizeTime(newFrame) * static_cast<double>(shareOfResizeTime);
}

NoodleZoomWindow* _createZoomWindowWithRect(NSWindow& window, const NSRect& rect) {
    const NSRect frame = window.frame();
    const bool wasOneShot = window.isOneShot();
    window.setOneShot(false);
    if (window.windowNumber() < 1) {
        // It has never been laid out. Qt does that without the screen seeing any of it; the picture is painted below.
        const bool wasUpdating = window.updatesEnabled();
        window.setAttribute(Qt::WA_DontShowOnScreen);
        window.setUpdatesEnabled(false);
        window.orderBack(nullptr);
        window.orderOut(nullptr);
        window.setUpdatesEnabled(wasUpdating);
        window.setAttribute(Qt::WA_DontShowOnScreen, false);
    }
    auto picture = snapshotOfWindow(window);
    // All that the effects ever show of it lies here.
    const NSRect stage = NSUnionRect(rect, NSInsetRect(frame, -overshoot, -overshoot));
    auto* const zoom = new NoodleZoomWindow(rect, stage, std::move(picture));
    zoom->setHasShadow(window.hasShadow());
    window.setOneShot(wasOneShot);
    return zoom;
}

void zoomOnFromRect(NSWindow& window, const NSRect& rect) {
    if (window.isVisible()) {
        return;
    }
    const NSRect frame = window.frame();
    window.setFrame(frame, true);
    Effect effect(window, rect);
    effect.show(false);
    effect.animateTo(frame);
    effect.showWindow();
}

void zoomOffToRect(NSWindow& window, const NSRect& rect) {
    const NSRect frame = window.frame();
    if (!window.isVisible()) {
        return;
    }
    Effect effect(window, frame);
    effect.show(false);
    effect.hideWindow();
    effect.animateTo(rect);
}

void pop(NSWindow& window) {
    window.display();
    const NSRect frame = window.frame();
    if (window.isVisible()) {
        return;
    }
    Effect effect(window, NSMakeRect(NSMidX(frame), NSMidY(frame), leastLength, leastLength));
    effect.show(true);
    effect.animateTo(NSInsetRect(frame, -overshoot, -overshoot));
    effect.animateTo(frame);
    effect.showWindow();
}

void popAway(NSWindow& window) {
    const NSRect frame = window.frame();
    zoomOffToRect(window, NSMakeRect(NSMidX(frame) - halfOfLastSquare, NSMidY(frame) - halfOfLastSquare,
                                     2 * halfOfLastSquare, 2 * halfOfLastSquare));
}

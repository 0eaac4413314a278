// SPDX-License-Identifier: MIT
#include <VXKit/hud/LTHUDWindow.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSGradient.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>

#include <QApplication>
#include <QPointer>

namespace {

// Points.
constexpr double cornerRadius = 5;
constexpr double titleBarHeight = 19;
constexpr double buttonLaneHeight = 36;
constexpr double squareTopDepth = 20; // of a sheet, whose slot hides where it begins
constexpr double slotShadowHeight = 7;
constexpr double leastLeftAbove = 14; // of the window, above the bottom of the visible frame
constexpr double sheetDepth = 46;     // below the parent's top
constexpr double slotMargin = 28;
constexpr double anchorMargin = 53;
constexpr double anchorDrop = 2;
constexpr double mouthHeight = 5; // of slot and anchor
constexpr double slotCornerRadius = 3;

constexpr double bodyAlpha = 0.8;
constexpr double panelWhite = 0.05;
constexpr double sheetWhite = 0.2;
constexpr double sheetLaneWhite = 0.15;
constexpr double inactiveTitleBarOpacity = 0.75;
constexpr double upwards = 90; // degrees

void setWhite(double white, double alpha) {
    NSColor::colorWithCalibratedWhite(white, alpha).set();
}

void drawTitleBar(const NSSize& size) {
    VXKitImage(QStringLiteral("HUDWindowTitleBar"))
        ->drawInRect(NSMakeRect(0, size.height - titleBarHeight, size.width, titleBarHeight), NSZeroRect,
                     NSCompositeSourceOver, VXApplicationIsActive() ? 1.0 : inactiveTitleBarOpacity);
}

/// A shadow that falls from the slot into the sheet.
void drawSlotShadow(const NSSize& size) {
    const NSGradient shading(NSColor::colorWithCalibratedWhite(0.0, 0.0),
                             NSColor::colorWithCalibratedWhite(0.278, 1.0));
    shading.drawInRect(NSMakeRect(0, size.height - slotShadowHeight, size.width, slotShadowHeight), upwards);
}

} // namespace

LTHUDWindow::LTHUDWindow(const NSRect& contentRect, unsigned /*styleMask*/, NSBackingStoreType backing, bool /*defer*/)
    : NSWindow(contentRect, NSBorderlessWindowMask, backing, false) {
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    const auto observe = [&](const char* name, NSNotificationSender sender) {
        m_observations.push_back(
            centre.addObserverForName(name, sender, [this](const NSNotification&) { updateBackground(); }));
    };
    observe(NSWindowDidResizeNotification, this);
    observe(NSApplicationDidBecomeActiveNotification, nullptr);
    observe(NSApplicationDidResignActiveNotification, nullptr);
    if (!NSApplication::sharedApplication()) {
        // A plain Qt program, where nothing is posted.
        connect(qApp, &QGuiApplication::applicationStateChanged, this, [this] { updateBackground(); });
    }
    setOpaque(false);
    setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
    updateBackground();
    enableBlurForWindow(*this);
}

LTHUDWindow::~LTHUDWindow() = default;

void LTHUDWindow::setHasButtonLane(bool flag) {
    if (flag == _hasButtonLane) {
        return;
    }
    _hasButtonLane = flag;
    display();
}

void LTHUDWindow::awakeFromNib() {
    updateBackground();
}

void LTHUDWindow::display() {
    updateBackground();
    NSWindow::display();
}

void LTHUDWindow::makeKeyAndOrderFront(QObject* sender) {
    NSWindow::makeKeyAndOrderFront(sender);
    setUpWindowShadow(*this);
}

void LTHUDWindow::sendEvent(const NSEvent& event) {
    if (event.type() == NSLeftMouseDown) {
        if (NSApplication* application = NSApplication::sharedApplication()) {
            application->activateIgnoringOtherApps(true);
        }
    }
    NSWindow::sendEvent(event);
}

void LTHUDWindow::mouseDown(const NSEvent& event) {
    if (NSApplication* application = NSApplication::sharedApplication()) {
        application->activateIgnoringOtherApps(true);
    }
    becomeKeyWindow();
    NSWindow::mouseDown(event);
}

void LTHUDWindow::mouseDragged(const NSEvent& event) {
    if (isSheet()) {
        return;
    }
    const NSPoint origin = frame().origin;
    setFrameOrigin({origin.x + event.deltaX(), origin.y - event.deltaY()});
}

void LTHUDWindow::setFrameOrigin(const NSPoint& origin) {
    NSWindow::setFrameOrigin(clamped({origin, frame().size}).origin);
}

void LTHUDWindow::setFrame(const NSRect& frame, bool display) {
    NSWindow::setFrame(clamped(frame), display);
}

void LTHUDWindow::setFrame(const NSRect& frame, bool display, bool animate) {
    NSWindow::setFrame(clamped(frame), display, animate);
}

NSRect LTHUDWindow::clamped(NSRect frame) {
    const NSRect visible = NSScreen::mainScreen().visibleFrame();
    if (NSMaxY(frame) > NSMaxY(visible)) {
        frame.origin.y = NSMaxY(visible) - frame.size.height;
    }
    // Last, so that it decides for a window higher than the visible frame.
    if (visible.origin.y + leastLeftAbove > NSMaxY(frame)) {
        frame.origin.y = visible.origin.y + leastLeftAbove - frame.size.height;
    }
    return frame;
}

void LTHUDWindow::updateBackground() {
    const NSSize size = frame().size;
    if (!(size.width > 0 && size.height > 0)) {
        return;
    }
    const Look look{size, devicePixelRatioF(), isSheet(), _hasButtonLane, VXApplicationIsActive()};
    // A window is sized and displayed several times until it stands, and looks the same most of the time.
    if (look != m_look || !m_background) {
        m_look = look;
        m_background = makeBackground();
    }
    if (backgroundColor().patternImage() != m_background) {
        setBackgroundColor(NSColor::colorWithPatternImage(m_background));
    }
}

std::shared_ptr<NSImage> LTHUDWindow::makeBackground() const {
    const NSSize size = m_look.size;
    auto image = NSImage::initWithSize(size);
    image->lockFocus();
    const NSRect bounds{NSZeroPoint, size};
    NSBezierPath outline = NSBezierPath::bezierPathWithRoundedRect(bounds, cornerRadius, cornerRadius);
    if (isSheet()) {
        outline.appendBezierPathWithRect(NSMakeRect(0, squareTopDepth, size.width, size.height - squareTopDepth));
    }
    outline.closePath();
    outline.setClip();

    if (!isSheet()) {
        drawTitleBar(size);
    }
    setWhite(isSheet() ? sheetWhite : panelWhite, bodyAlpha);
    NSBezierPath::fillRect(NSMakeRect(0, 0, size.width, isSheet() ? size.height : size.height - titleBarHeight));
    if (_hasButtonLane) {
        setWhite(isSheet() ? sheetLaneWhite : panelWhite, bodyAlpha);
        NSBezierPath::fillRect(NSMakeRect(0, 0, size.width, buttonLaneHeight));
    }
    if (isSheet()) {
        drawSlotShadow(size);
    }
    image->unlockFocus();
    return image;
}

void LTHUDWindow::runHUDSheetForWindow(NSWindow& parent) {
    NSApplication* const application = NSApplication::sharedApplication();
    if (!application) {
        return;
    }
    const QPointer<LTHUDWindow> self(this);
    const QPointer<NSWindow> parentGuard(&parent);
    const NSRect parentFrame = parent.frame();
    const double top = NSMaxY(parentFrame) - sheetDepth;

    _LTSheetWindowSlot slot(
        NSMakeRect(parentFrame.origin.x + slotMargin, top, parentFrame.size.width - 2 * slotMargin, mouthHeight),
        NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    parent.addChildWindow(&slot, NSWindowAbove);

    NSWindow anchor(NSMakeRect(parentFrame.origin.x + anchorMargin, top - anchorDrop,
                               parentFrame.size.width - 2 * anchorMargin, mouthHeight),
                    NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    anchor.setManagement(NSWindowManagement::Bypassing);
    anchor.setAlphaValue(0);
    parent.addChildWindow(&anchor, NSWindowAbove);

    // Without its parent nobody could see why nothing else takes input.
    const auto giveUp = [application, self] {
        if (self) {
            application->abortModalForWindow(*self);
        }
    };
    connect(&parent, &QObject::destroyed, &anchor, giveUp);
    bool isParentClosed = false;
    const NSNotificationObservation willClose = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowWillCloseNotification, &parent, [&](const NSNotification&) {
            isParentClosed = true;
            giveUp();
        });

    _setSheet(true);
    updateBackground();
    const Qt::WindowModality modality = windowModality();
    // From the first moment on, so that the run need not hide the window and show it again.
    setWindowModality(Qt::ApplicationModal);
    application->beginSheet(*this, anchor);
    if (self && parentGuard && !isParentClosed) {
        display();
        application->runModalForWindow(*this);
    }

    if (self) {
        orderOut(nullptr);
        setWindowModality(modality);
    }
    for (NSWindow* mouth : {&anchor, static_cast<NSWindow*>(&slot)}) {
        if (parentGuard) {
            parent.removeChildWindow(mouth);
        }
        mouth->orderOut(nullptr);
    }
}

_LTSheetWindowSlot::_LTSheetWindowSlot(const NSRect& contentRect, unsigned /*styleMask*/, NSBackingStoreType backing,
                                       bool defer)
    : NSWindow(contentRect, NSBorderlessWindowMask, backing, defer) {
    m_didResize = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResizeNotification, this, [this](const NSNotification&) { updateBackground(); });
    setOpaque(false);
    setHasShadow(false);
    // To the pixel where it belongs, also where its parent bypasses the window manager.
    setManagement(NSWindowManagement::Bypassing);
    updateBackground();
}

void _LTSheetWindowSlot::updateBackground() {
    const NSSize size = frame().size;
    if (!(size.width > 0 && size.height > 0)) {
        return;
    }
    const auto image = NSImage::initWithSize(size);
    image->lockFocus();
    NSColor::colorWithCalibratedWhite(0.65, 0.35).set();
    NSBezierPath::bezierPathWithRoundedRect({NSZeroPoint, size}, slotCornerRadius, slotCornerRadius).fill();
    image->unlockFocus();
    setBackgroundColor(NSColor::colorWithPatternImage(image));
}

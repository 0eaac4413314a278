// SPDX-License-Identifier: MIT
#include <VXKit/app/LTWindow.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <algorithm>
#include <optional>

namespace {

// Points.
constexpr double arrowHeight = 14;
constexpr float arrowHalfWidth = 14;
constexpr double largestCornerRadius = 10;
constexpr double separatorDepth = 48; // below the window's top
constexpr double outlineInset = 0.75;
constexpr double opaqueOutlineWidth = 2;
constexpr double translucentOutlineWidth = 1;
constexpr double rightMargin = 20;

constexpr double bodyWhite = 0.05;
constexpr double inactiveFade = 0.25;

constexpr float quarterCircle = 0.5522848F; // of the radius, from the end of a quarter circle to its control point

/// The host's status item's view; null where it has none.
const LTStatusItemView* statusItemView() {
    const LTApplicationController* controller = VXApplicationHooks().applicationController();
    const NSStatusItem* item = controller ? controller->statusItem() : nullptr;
    return item ? dynamic_cast<const LTStatusItemView*>(item->view()) : nullptr;
}

/// Where the status item is on the screen; nothing where the host has none.
std::optional<NSRect> statusItemFrame() {
    const LTStatusItemView* view = statusItemView();
    return view ? std::optional(view->frameOfStatusItem()) : std::nullopt;
}

/// Whether the host's hook asks for an opaque main window; the look follows it, the body need not.
bool looksOpaque() {
    return VXApplicationHooks().mainWindowOpacity() == 1.0F;
}

float bodyOpacity() {
    auto opacity = static_cast<double>(VXApplicationHooks().mainWindowOpacity());
    if (!VXApplicationIsActive()) {
        opacity -= inactiveFade;
    }
    const auto rounded = static_cast<float>(opacity);
    // A window that closes when the application is left is never seen through, whatever the hook says.
    return VXApplicationHooks().shouldCloseMainWindowOnDeactivate() ? 1.0F : rounded;
}

void setWhite(double white, double alpha) {
    NSColor::colorWithCalibratedWhite(white, alpha).set();
}

void drawBody(const NSSize& size, float arrowCentre) {
    setWhite(bodyWhite, static_cast<double>(bodyOpacity()));
    NSBezierPath body = NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, size.width, size.height - arrowHeight),
                                                                largestCornerRadius, largestCornerRadius);
    body.closePath();
    body.fill();

    NSBezierPath arrow;
    arrow.moveToPoint({static_cast<double>(arrowCentre - arrowHalfWidth), size.height - arrowHeight});
    arrow.lineToPoint({static_cast<double>(arrowCentre), size.height});
    arrow.lineToPoint({static_cast<double>(arrowCentre + arrowHalfWidth), size.height - arrowHeight});
    arrow.closePath();
    arrow.fill();
}

void drawSeparator(const NSSize& size) {
    const double y = size.height - separatorDepth;
    if (looksOpaque()) {
        setWhite(0.14, 1.0);
        NSBezierPath line;
        line.moveToPoint({0, y});
        line.lineToPoint({size.width, y});
        line.stroke();
        return;
    }
    const bool isActive = VXApplicationIsActive();
    setWhite(0.0, isActive ? 0.8 : 0.6);
    NSRectFillUsingOperation(NSMakeRect(0, y + 1, size.width, 1), NSCompositeSourceOver);
    setWhite(1.0, isActive ? 0.14 : 0.25);
    NSRectFillUsingOperation(NSMakeRect(0, y, size.width, 1), NSCompositeSourceOver);
}

void setOutlineColor() {
    if (looksOpaque()) {
        setWhite(0.8, 1.0);
    } else {
        setWhite(VXApplicationIsActive() ? 0.2 : 0.4, 1.0);
    }
}

} // namespace

LTWindow::LTWindow(const NSRect& contentRect, unsigned /*styleMask*/, NSBackingStoreType backing, bool /*defer*/)
    : NSWindow(contentRect, NSBorderlessWindowMask, backing, false) {
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    const auto observe = [&](const char* name, NSNotificationSender sender) {
        m_observations.push_back(
            centre.addObserverForName(name, sender, [this](const NSNotification&) { updateBackground(); }));
    };
    observe(NSWindowDidResizeNotification, this);
    observe(NSWindowDidMoveNotification, this);
    // A tray takes the item in when it likes, and a panel moves it when others come and go.
    m_observations.push_back(
        centre.addObserverForName(NSWindowDidMoveNotification, nullptr, [this](const NSNotification& notification) {
            const LTStatusItemView* view = statusItemView();
            if (view && isVisible() && notification.object == NSNotificationSender(view->window())) {
                setFrame(constrainFrameRect(frame()), true);
            }
        }));
    if (!VXApplicationHooks().shouldCloseMainWindowOnDeactivate()) {
        observe(NSApplicationDidResignActiveNotification, nullptr);
        observe(NSApplicationDidBecomeActiveNotification, nullptr);
    }
    setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    setOpaque(false);
    setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
    // A window manager would keep it away from the panel that it hangs from.
    setManagement(NSWindowManagement::Bypassing);
}

LTWindow::~LTWindow() = default;

void LTWindow::awakeFromNib() {
    setFrame(frame(), true);
}

NSRect LTWindow::frame() const {
    const NSRect own = NSWindow::frame();
    const std::optional<NSRect> item = statusItemFrame();
    if (!item) {
        return own;
    }
    const NSSize size = own.size;
    double x = item->origin.x - (size.width / 2 - item->size.width / 2);
    const double y = item->origin.y - size.height;
    // Neither the left edge nor where the screen begins is looked at: the status items of the main screen are at its
    // right end.
    const double screenWidth = NSScreen::mainScreen().frame().size.width;
    if (x + size.width > screenWidth) {
        x = screenWidth - size.width - rightMargin;
    }
    return {{x, y}, size};
}

NSRect LTWindow::constrainFrameRect(const NSRect& frame) const {
    const std::optional<NSRect> item = statusItemFrame();
    if (!item) {
        return frame;
    }
    const std::vector<NSScreen> screens = NSScreen::screens();
    const auto screen = std::find_if(screens.begin(), screens.end(), [&](const NSScreen& candidate) {
        return NSPointInRect({NSMidX(*item), NSMidY(*item)}, candidate.frame());
    });
    if (screen == screens.end() || NSMidY(*item) > NSMidY(screen->frame()) ||
        NSMinY(frame) >= NSMinY(screen->frame())) {
        return frame;
    }
    return {{frame.origin.x, NSMaxY(*item)}, frame.size};
}

void LTWindow::display() {
    updateBackground();
    NSWindow::display();
}

void LTWindow::makeKeyAndOrderFront(QObject* sender) {
    NSWindow::makeKeyAndOrderFront(sender);
    setUpWindowShadow(*this);
}

void LTWindow::sendEvent(const NSEvent& event) {
    if (event.type() == NSLeftMouseDown && !VXApplicationIsActive()) {
        if (NSApplication* application = NSApplication::sharedApplication()) {
            application->activateIgnoringOtherApps(true);
        }
        return;
    }
    NSWindow::sendEvent(event);
}

void LTWindow::mouseDown(const NSEvent& event) {
    makeFirstResponder(nullptr);
    NSWindow::mouseDown(event);
}

/// The middle of the status item in the window's coordinates: the middle of the window, unless the screen's edge has
/// moved that.
float LTWindow::arrowCentre() const {
    const NSRect own = frame();
    const NSRect item = statusItemFrame().value_or(own);
    return static_cast<float>((item.origin.x - own.origin.x) + item.size.width / 2);
}

void LTWindow::updateBackground() {
    const NSSize size = frame().size;
    if (size.width == 0 || size.height == 0) {
        return;
    }
    const std::shared_ptr<NSImage> image = NSImage::initWithSize(size);
    image->lockFocus();
    drawBody(size, arrowCentre());
    drawSeparator(size);
    setOutlineColor();
    const NSRect body = NSMakeRect(0, 0, size.width, size.height - arrowHeight);
    NSBezierPath outline = bezierPathWithRoundRectAndTriangle(NSInsetRect(body, outlineInset, outlineInset));
    outline.setLineWidth(looksOpaque() ? opaqueOutlineWidth : translucentOutlineWidth);
    outline.stroke();
    image->unlockFocus();
    setBackgroundColor(NSColor::colorWithPatternImage(image));
}

NSBezierPath LTWindow::bezierPathWithRoundRectAndTriangle(const NSRect& rect) const {
    const auto xRadius = static_cast<float>(std::min(rect.size.width / 2, largestCornerRadius));
    const auto yRadius = static_cast<float>(std::min(rect.size.height / 2, largestCornerRadius));
    const NSRect inner = NSInsetRect(rect, static_cast<double>(xRadius), static_cast<double>(yRadius));
    const auto dX = static_cast<double>(xRadius * quarterCircle);
    const auto dY = static_cast<double>(yRadius * quarterCircle);
    const double arrow = static_cast<double>(arrowCentre()) + rect.origin.x;
    const auto halfWidth = static_cast<double>(arrowHalfWidth);

    NSBezierPath path;
    path.moveToPoint({NSMinX(inner), NSMinY(rect)});
    path.lineToPoint({NSMaxX(inner), NSMinY(rect)});
    path.curveToPoint({NSMaxX(rect), NSMinY(inner)}, {NSMaxX(inner) + dX, NSMinY(rect)},
                      {NSMaxX(rect), NSMinY(inner) - dY});
    path.lineToPoint({NSMaxX(rect), NSMaxY(inner)});
    path.curveToPoint({NSMaxX(inner), NSMaxY(rect)}, {NSMaxX(rect), NSMaxY(inner) + dY},
                      {NSMaxX(inner) + dX, NSMaxY(rect)});
    path.lineToPoint({arrow + halfWidth, NSMaxY(rect)});
    path.lineToPoint({arrow, NSMaxY(rect) + arrowHeight});
    path.lineToPoint({arrow - halfWidth, NSMaxY(rect)});
    path.lineToPoint({NSMinX(inner), NSMaxY(rect)});
    path.curveToPoint({NSMinX(rect), NSMaxY(inner)}, {NSMinX(inner) - dX, NSMaxY(rect)},
                      {NSMinX(rect), NSMaxY(inner) + dY});
    path.lineToPoint({NSMinX(rect), NSMinY(inner)});
    path.curveToPoint({NSMinX(inner), NSMinY(rect)}, {NSMinX(rect), NSMinY(inner) - dY},
                      {NSMinX(inner) - dX, NSMinY(rect)});
    path.closePath();
    return path;
}

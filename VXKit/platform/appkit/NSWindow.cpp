// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSWindow.h>

#include <VXKit/platform/appkit/Backdrop.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/FrameAnimations.h>
#include <VXKit/platform/appkit/FrameAnimator.h>
#include <VXKit/platform/appkit/KeyCodes.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/WindowAccessibility.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QApplication>
#include <QGuiApplication>
#include <QMetaObject>
#include <QMouseEvent>
#include <QPainter>
#include <QPalette>
#include <QScopedValueRollback>
#include <QTransform>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>
#include <utility>

namespace {

constexpr double resizeTime = 0.20;          // seconds that an animated change of the frame takes …
constexpr double resizeDistance = 150;       // … for each so many points
constexpr double shareAboveCentre = 1.0 / 3; // of the free height, above a centred window
constexpr int solidAlpha = 128; // from here on a pixel belongs to the window where it cannot be translucent
constexpr int transparent = 0;
constexpr double windowWhite = 0.93;
constexpr std::chrono::milliseconds longestAnswer(500); // of a window manager that is asked for a frame
constexpr std::size_t mostAsked = 100;

int screenUpdatesDisabled = 0;

/// All windows, the lowest first, by level and within a level as they were ordered last.
std::vector<NSWindow*>& allWindows() {
    static std::vector<NSWindow*> windows;
    return windows;
}

QPointer<NSWindow>& currentMainWindow() {
    static QPointer<NSWindow> window;
    return window;
}

/// The main window that there was when another program got the keyboard.
QPointer<NSWindow>& mainWindowBefore() {
    static QPointer<NSWindow> window;
    return window;
}

void post(const char* name, const NSWindow* window) {
    NSNotificationCenter::defaultCenter().postNotificationName(name, window);
}

void resignMainWindow() {
    if (const NSWindow* before = std::exchange(currentMainWindow(), nullptr)) {
        post(NSWindowDidResignMainNotification, before);
    }
}

NSWindow* windowWithNumber(int number) {
    const auto found = std::find_if(allWindows().begin(), allWindows().end(),
                                    [number](const NSWindow* window) { return window->windowNumber() == number; });
    return number > 0 && found != allWindows().end() ? *found : nullptr;
}

/// Where a window of `level` belongs that is ordered in front of its level, or behind it.
std::vector<NSWindow*>::iterator placeInLevel(int level, NSWindowOrderingMode place) {
    return std::find_if(allWindows().begin(), allWindows().end(), [&](const NSWindow* window) {
        return place == NSWindowAbove ? window->level() > level : window->level() >= level;
    });
}

std::vector<QPointer<NSWindow>> watched(const std::vector<NSWindow*>& windows) {
    return {windows.begin(), windows.end()};
}

/// Qt tells of a second press before the double click that it makes of it, which alone reaches widgets.
bool becomesDoubleClick(const QEvent& event) {
    return event.type() == QEvent::MouseButtonPress &&
           static_cast<const QMouseEvent&>(event).flags().testFlag(Qt::MouseEventCreatedDoubleClick);
}

bool isInputOfMouse(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
        return true;
    default:
        return false;
    }
}

bool isInputOfWindow(QEvent::Type type) {
    return isInputOfMouse(type) || type == QEvent::KeyPress || type == QEvent::KeyRelease;
}

/// The pixels of `look` whose alpha is at least `least`, in points.
QRegion regionOfAlpha(const QImage& look, int least) {
    const QImage pixels = look.devicePixelRatio() == 1
                              ? look
                              : look.scaled((QSizeF(look.size()) / look.devicePixelRatio()).toSize(),
                                            Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // Bands of rows that are alike, as a region wants them, and a row is one run almost everywhere.
    std::vector<QRect> rects;
    std::size_t bandStart = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(pixels.constScanLine(y));
        const auto* const end = row + pixels.width();
        const auto isSolid = [least](QRgb pixel) { return qAlpha(pixel) >= least; };
        const std::size_t rowStart = rects.size();
        for (const auto* from = std::find_if(row, end, isSolid); from != end;) {
            const auto* const to = std::find_if_not(from, end, isSolid);
            rects.emplace_back(static_cast<int>(from - row), y, static_cast<int>(to - from), 1);
            from = std::find_if(to, end, isSolid);
        }
        const auto band = std::span(rects).subspan(bandStart, rowStart - bandStart);
        const auto added = std::span(rects).subspan(rowStart);
        const bool isAlike = !band.empty() && band.front().bottom() == y - 1 &&
                             std::equal(band.begin(), band.end(), added.begin(), added.end(),
                                        [](const QRect& above, const QRect& below) {
                                            return above.left() == below.left() && above.right() == below.right();
                                        });
        if (isAlike) {
            std::for_each(band.begin(), band.end(), [y](QRect& rect) { rect.setBottom(y); });
            rects.resize(rowStart);
        } else {
            bandStart = rowStart;
        }
    }
    QRegion region;
    region.setRects(rects.data(), static_cast<int>(rects.size()));
    return region;
}

/// The same colours without their transparency.
QImage madeOpaque(const QImage& look) {
    QImage opaque = look.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < opaque.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(opaque.scanLine(y));
        std::transform(row, row + opaque.width(), row, [](QRgb pixel) { return pixel | 0xff000000U; });
    }
    return opaque.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

double largestChange(const NSRect& from, const NSRect& to) {
    return std::max({std::abs(NSMinX(to) - NSMinX(from)), std::abs(NSMaxX(to) - NSMaxX(from)),
                     std::abs(NSMinY(to) - NSMinY(from)), std::abs(NSMaxY(to) - NSMaxY(from))});
}

} // namespace

/// Hands what the native window gets to sendEvent. An object of its own, so that a subclass may watch its views with an
/// event filter of the window's.
class NSWindow::InputFilter : public QObject {
public:
    explicit InputFilter(NSWindow* window) : QObject(window), m_window(*window) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            m_window.putBypassingWindowsBelow();
        }
        if (isInputOfMouse(event->type()) && m_window.m_ignoresMouseEvents) {
            return true; // where the window server hands it over all the same
        }
        if (!isInputOfWindow(event->type()) || becomesDoubleClick(*event)) {
            return false;
        }
        const NSEvent translated(*event, &m_window);
        const NSEvent::Delivery delivery(translated);
        m_window.sendEvent(translated);
        return true;
    }

private:
    NSWindow& m_window;
};

void NSDisableScreenUpdates() {
    ++screenUpdatesDisabled;
}

void NSEnableScreenUpdates() {
    if (screenUpdatesDisabled == 0 || --screenUpdatesDisabled > 0) {
        return;
    }
    const std::vector<QPointer<NSWindow>> windows = watched(allWindows());
    // What appears first, so that there is never nothing.
    for (NSWindow* window : windows) {
        if (window->m_alphaValue > 0 && !window->m_goesOutLater && std::exchange(window->m_changesAlphaLater, false)) {
            window->applyLateAlpha();
        }
    }
    for (const QPointer<NSWindow>& window : windows) {
        if (window && std::exchange(window->m_changesAlphaLater, false)) {
            window->applyLateAlpha();
        }
        if (window && window->m_goesOutLater) {
            window->orderOutNow();
        }
    }
}

NSWindow::NSWindow(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType /*backing*/, bool /*defer*/)
    : m_styleMask(styleMask), m_contentView(new NSView(this)), m_inputFilter(new InputFilter(this)),
      m_backgroundColor(NSColor::colorWithCalibratedWhite(windowWhite, 1)) {
    describeWindowsToAccessibility();
    setAttribute(Qt::WA_QuitOnClose, false);
    // Showing a window and giving it the keyboard are two things here.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    applyWindowFlags();
    m_answers.setSingleShot(true);
    m_answers.callOnTimeout(this, &NSWindow::stopWaitingForAnswers);
    m_frame = frameRectForContentRect(contentRect);
    place(m_frame);
    allWindows().insert(placeInLevel(m_level, NSWindowAbove), this);
    connect(&WindowEffects::sharedEffects(), &WindowEffects::compositingChanged, this, [this] {
        scheduleShapeUpdate();
        applyAlpha();
    });
}

NSWindow::~NSWindow() {
    std::erase(allWindows(), this);
    if (m_parentWindow) {
        m_parentWindow->removeChildWindow(this);
    }
}

std::vector<NSWindow*> NSWindow::windows() {
    return allWindows();
}

NSWindow* NSWindow::keyWindow() {
    const auto found = std::find_if(allWindows().begin(), allWindows().end(),
                                    [](const NSWindow* window) { return window->isKeyWindow(); });
    return found == allWindows().end() ? nullptr : *found;
}

NSWindow* NSWindow::mainWindow() {
    return currentMainWindow();
}

void NSWindow::applyWindowFlags() {
    Qt::WindowFlags flags;
    if (m_management == NSWindowManagement::Bypassing) {
        flags = Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint;
    } else if ((m_styleMask & NSTitledWindowMask) == 0) {
        flags = Qt::Dialog | Qt::FramelessWindowHint;
    } else {
        flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
        flags.setFlag(Qt::WindowCloseButtonHint, (m_styleMask & NSClosableWindowMask) != 0);
        flags.setFlag(Qt::WindowMinimizeButtonHint, (m_styleMask & NSMiniaturizableWindowMask) != 0);
        flags.setFlag(Qt::WindowMaximizeButtonHint, (m_styleMask & NSResizableWindowMask) != 0);
    }
    flags.setFlag(Qt::WindowStaysOnTopHint, m_level > NSNormalWindowLevel);
    if (windowHandle()) {
        // QWidget's own would hide the window.
        windowHandle()->setFlag(Qt::WindowStaysOnTopHint, flags.testFlag(Qt::WindowStaysOnTopHint));
        overrideWindowFlags(flags);
    } else {
        setWindowFlags(flags);
    }
}

void NSWindow::setManagement(NSWindowManagement management) {
    if (management == m_management) {
        return;
    }
    m_management = management;
    // Which of the two a native window is was decided when it was made.
    if (testAttribute(Qt::WA_WState_Created)) {
        destroy();
        m_windowNumber = numberOfUnknown;
    }
    applyWindowFlags();
}

void NSWindow::setLevel(int level) {
    if (level == m_level) {
        return;
    }
    m_level = level;
    applyWindowFlags();
    std::erase(allWindows(), this);
    allWindows().insert(placeInLevel(level, NSWindowAbove), this);
    if (isVisible()) {
        raise();
        orderHigherLevelsFront();
    }
}

void NSWindow::setOpaque(bool flag) {
    m_isOpaque = flag;
    setAttribute(Qt::WA_TranslucentBackground, !flag);
    scheduleShapeUpdate();
}

void NSWindow::setCollectionBehavior(unsigned behavior) {
    m_collectionBehavior = behavior;
    WindowEffects::sharedEffects().setOnAllDesktops(*this,
                                                    (behavior & NSWindowCollectionBehaviorCanJoinAllSpaces) != 0);
}

NSRect NSWindow::frameRectForContentRect(const NSRect& contentRect) const {
    const QMargins around = borders();
    return {{contentRect.origin.x - around.left(), contentRect.origin.y - around.bottom()},
            {contentRect.size.width + around.left() + around.right(),
             contentRect.size.height + around.top() + around.bottom()}};
}

QMargins NSWindow::borders() const {
    return windowHandle() ? windowHandle()->frameMargins() : QMargins();
}

NSRect NSWindow::contentRectForFrameRect(const NSRect& frame) const {
    const NSRect around = frameRectForContentRect(frame);
    return {{2 * frame.origin.x - around.origin.x, 2 * frame.origin.y - around.origin.y},
            {2 * frame.size.width - around.size.width, 2 * frame.size.height - around.size.height}};
}

NSRect NSWindow::frame() const {
    if ((geometry() == m_placedGeometry && borders() == m_placedBorders) || isLateAnswer(geometry())) {
        return m_frame;
    }
    return frameRectForContentRect(NSScreenRectFromGlobal(QRectF(geometry())));
}

void NSWindow::place(const NSRect& frame) {
    const QRect wanted = NSRoundedEdges(NSScreenRectToGlobal(contentRectForFrameRect(frame)));
    {
        // Qt tells of the change while it makes it, piece by piece.
        const QScopedValueRollback<bool> placing(m_isPlacing, true);
        m_placedGeometry = wanted;
        applySizeLimits(wanted.size());
        setGeometry(wanted);
    }
    m_placedGeometry = geometry();
    m_placedBorders = borders();
    rememberAsked(m_placedGeometry);
    moveToPixel();
    layOutContent();
}

/// A window manager answers when it likes, and Qt takes each answer for the window's geometry, also one to a question
/// that was asked some questions ago. Whoever works out the next frame from the last, as in a drag, must not see that.
void NSWindow::rememberAsked(const QRect& geometry) {
    if (m_management == NSWindowManagement::Bypassing || !QWidget::isVisible()) {
        m_asked.clear();
        return;
    }
    if (m_asked.size() == mostAsked) {
        m_asked.erase(m_asked.begin());
    }
    m_asked.push_back(geometry);
    m_answers.start(longestAnswer);
}

/// Whether it is what was asked for lately, be it size and place at different times: the two are not changed at once.
bool NSWindow::isLateAnswer(const QRect& geometry) const {
    const auto has = [&](auto isTheSame) { return std::any_of(m_asked.begin(), m_asked.end(), isTheSame); };
    return has([&](const QRect& asked) { return asked.size() == geometry.size(); }) &&
           has([&](const QRect& asked) { return asked.topLeft() == geometry.topLeft(); });
}

void NSWindow::stopWaitingForAnswers() {
    m_asked.clear();
    if (geometry() != m_placedGeometry && QWidget::isVisible()) {
        // Qt did not pass on a frame that was that of the latest answer by chance. Another answer to this is the last
        // word.
        place(m_frame);
    }
}

/// Where a point has several pixels, a window that stands where it says may begin between two points.
void NSWindow::moveToPixel() {
    if (m_management == NSWindowManagement::Bypassing && windowHandle() && devicePixelRatioF() != 1) {
        const QPointF corner = NSScreenRectToGlobal(m_frame).topLeft();
        if (corner != QPointF(m_placedGeometry.topLeft())) {
            WindowEffects::sharedEffects().moveToPixel(*this, corner);
        }
    }
}

void NSWindow::layOutContent() {
    if (ViewCore* view = ViewCore::of(m_contentView)) {
        view->setFrame(NSMakeRect(0, 0, width(), height()));
    } else if (m_contentView) {
        m_contentView->setGeometry(rect());
    }
}

/// Tells Qt, and by it the window manager, how small and how large the window may be made that is of `size` now. It is
/// the limits that give way: they are not meant for the program itself.
void NSWindow::applySizeLimits(const QSize& size) {
    if ((m_styleMask & NSResizableWindowMask) != 0) {
        const auto contentSize = [this](const NSSize& ofFrame) {
            return NSRoundedEdges(NSRectToQRectF(contentRectForFrameRect({NSZeroPoint, ofFrame}))).size();
        };
        setMinimumSize(contentSize(m_minSize).boundedTo(size));
        setMaximumSize(contentSize(m_maxSize).expandedTo(size).boundedTo({QWIDGETSIZE_MAX, QWIDGETSIZE_MAX}));
    } else if ((m_styleMask & NSTitledWindowMask) != 0) {
        setFixedSize(size);
    }
}

void NSWindow::setFrame(const NSRect& frame, bool display) {
    FrameAnimations::frameIsSet(*this);
    const QPointer<NSWindow> self(this);
    const NSRect before = NSWindow::frame();
    m_frame = frame;
    place(frame);
    moveChildren(before);
    if (self) {
        announceChange(before, NSWindow::frame());
    }
    if (self && display) {
        self->display();
    }
}

void NSWindow::setFrame(const NSRect& frame, bool display, bool animate) {
    const NSRect from = this->frame();
    if (!animate || from == frame) {
        setFrame(frame, display);
        return;
    }
    runBlockingAnimation(*this, animationResizeTime(frame), [&](double progress) {
        const bool isLast = progress == 1;
        setFrame(isLast ? frame : rectBetween(from, frame, progress), display || !isLast);
    });
}

WindowAnimator NSWindow::animator() {
    return WindowAnimator(*this);
}

void NSWindow::setFrameOrigin(const NSPoint& origin) {
    setFrame({origin, frame().size}, false);
}

void NSWindow::center() {
    const NSRect visible = NSScreen::mainScreen().visibleFrame();
    const NSSize size = frame().size;
    setFrameOrigin({std::floor(visible.origin.x + (visible.size.width - size.width) / 2),
                    std::floor(visible.origin.y + (visible.size.height - size.height) * (1 - shareAboveCentre))});
}

NSRect NSWindow::constrainFrameRect(const NSRect& frame) const {
    return frame;
}

double NSWindow::animationResizeTime(const NSRect& newFrame) const {
    return resizeTime * largestChange(frame(), newFrame) / resizeDistance;
}

void NSWindow::takeGeometryFromQt() {
    if (m_isPlacing || geometry() == m_placedGeometry) {
        return;
    }
    if (isLateAnswer(geometry())) {
        layOutContent();
        return;
    }
    const QPointer<NSWindow> self(this);
    // Where the borders have become known since, they were there before the change as well.
    const NSRect before = borders() == m_placedBorders
                              ? m_frame
                              : frameRectForContentRect(NSScreenRectFromGlobal(QRectF(m_placedGeometry)));
    m_frame = frameRectForContentRect(NSScreenRectFromGlobal(QRectF(geometry())));
    m_placedGeometry = geometry();
    m_placedBorders = borders();
    m_asked.clear();
    applySizeLimits(size());
    layOutContent();
    moveChildren(before);
    if (self) {
        announceChange(before, NSWindow::frame());
    }
}

void NSWindow::announceChange(const NSRect& before, const NSRect& after) {
    const QPointer<NSWindow> self(this);
    if (before.size != after.size) {
        scheduleShapeUpdate();
    }
    if (before.origin != after.origin) {
        post(NSWindowDidMoveNotification, this);
    }
    if (self && before.size != after.size) {
        post(NSWindowDidResizeNotification, this);
    }
}

void NSWindow::moveChildren(const NSRect& before) {
    const NSRect after = NSWindow::frame();
    const double dX = after.origin.x - before.origin.x;
    const double dY = after.origin.y - before.origin.y;
    if (dX == 0 && dY == 0) {
        return;
    }
    for (const QPointer<NSWindow>& child : watched(childWindows())) {
        if (child) {
            const NSPoint origin = child->frame().origin;
            child->setFrameOrigin({origin.x + dX, origin.y + dY});
        }
    }
}

void NSWindow::setMinSize(const NSSize& size) {
    m_minSize = size;
    applySizeLimits(QWidget::size());
}

void NSWindow::setMaxSize(const NSSize& size) {
    m_maxSize = size;
    applySizeLimits(QWidget::size());
}

void NSWindow::setContentView(QWidget* view) {
    if (!view || view == m_contentView) {
        return;
    }
    // Before the old one goes, which the new one may have been in.
    view->setParent(this);
    delete std::exchange(m_contentView, view);
    view->lower();
    place(NSWindow::frame());
    view->show();
}

void NSWindow::setAlphaValue(double alpha) {
    m_alphaValue = std::clamp(std::isnan(alpha) ? 1.0 : alpha, 0.0, 1.0);
    applyAlpha();
}

void NSWindow::applyAlpha() {
    if (screenUpdatesDisabled > 0) {
        m_changesAlphaLater = true;
        return;
    }
    const bool canBeTranslucent = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
    if (canBeTranslucent) {
        setWindowOpacity(m_alphaValue);
    } else {
        scheduleShapeUpdate();
    }
}

/// What waited for screen updates: at once, because what goes on the screen next may rely on it.
void NSWindow::applyLateAlpha() {
    m_comesInLater = false;
    applyAlpha();
    if (m_shapeIsStale && !m_goesOutLater) {
        updateShape();
    }
}

void NSWindow::setBackgroundColor(const NSColor& color) {
    m_backgroundColor = color;
    scheduleShapeUpdate();
    update();
}

void NSWindow::setBackgroundBlurRadius(double radius) {
    m_backgroundBlurRadius = radius;
    WindowEffects::sharedEffects().setBlur(*this, radius, {});
    scheduleShapeUpdate();
}

void NSWindow::blurWindowBelow(NSWindow& below) {
    const bool isBlurredAnyway = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Blur);
    if (m_backgroundBlurRadius > 0 && !m_isOpaque && !isBlurredAnyway) {
        m_backdrop = blurredBackdrop(below, NSWindow::frame(), m_backgroundBlurRadius, coverage());
        update();
    }
}

void NSWindow::setIgnoresMouseEvents(bool flag) {
    if (flag == m_ignoresMouseEvents) {
        return;
    }
    m_ignoresMouseEvents = flag;
    takeInput(std::nullopt);
    scheduleShapeUpdate();
}

/// `region` of the window takes clicks, all of it where that is nothing, unless none of it does.
void NSWindow::takeInput(const std::optional<QRegion>& region) {
    WindowEffects::sharedEffects().setInputRegion(*this, m_ignoresMouseEvents ? std::optional(QRegion()) : region);
}

void NSWindow::display() {
    if (!QWidget::isVisible()) {
        return;
    }
    if (m_shapeIsStale && !WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency)) {
        // It is part of what is shown.
        updateShape();
    }
    repaint();
}

void NSWindow::orderFront(QObject* /*sender*/) {
    orderWindow(NSWindowAbove, 0);
}

void NSWindow::orderBack(QObject* /*sender*/) {
    orderWindow(NSWindowBelow, 0);
}

void NSWindow::orderOut(QObject* /*sender*/) {
    orderWindow(NSWindowOut, 0);
}

void NSWindow::orderWindow(NSWindowOrderingMode place, int otherWindowNumber) {
    ++m_orderings;
    if (place != NSWindowOut) {
        orderIn(place, otherWindowNumber);
        return;
    }
    if (m_parentWindow) {
        m_parentWindow->setWentOutWithParent(this, false);
    }
    if (!isVisible()) {
        return;
    }
    if (screenUpdatesDisabled > 0) {
        m_goesOutLater = true;
    } else {
        orderOutNow();
    }
}

void NSWindow::orderIn(NSWindowOrderingMode place, int otherWindowNumber) {
    m_goesOutLater = false;
    const NSRect wanted = constrainFrameRect(frame());
    if (wanted != NSWindow::frame()) {
        NSWindow::setFrame(wanted, false);
    }
    const bool comesIn = !QWidget::isVisible();
    if (comesIn) {
        if (screenUpdatesDisabled > 0) {
            m_changesAlphaLater = true;
            m_comesInLater = true; // cut to nothing where it cannot be translucent
            if (WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency)) {
                setWindowOpacity(0);
            }
        } else {
            applyAlpha();
        }
        show();
        moveToPixel();
        display();
    }
    std::vector<NSWindow*>& windows = allWindows();
    std::erase(windows, this);
    NSWindow* const other = windowWithNumber(otherWindowNumber);
    if (other) {
        WindowEffects::sharedEffects().order(
            *this, place == NSWindowAbove ? WindowEffects::Place::Above : WindowEffects::Place::Below, other);
        const auto at = std::find(windows.begin(), windows.end(), other);
        windows.insert(place == NSWindowAbove ? std::next(at) : at, this);
    } else if (place == NSWindowAbove) {
        windows.insert(placeInLevel(m_level, place), this);
        raise();
        m_comesToFront = true;
        putBypassingWindowsBelow();
        orderHigherLevelsFront();
    } else {
        windows.insert(placeInLevel(m_level, place), this);
        lower();
        orderLowerLevelsBack();
    }
    const std::vector<Child> children = m_children;
    for (const Child& child : children) {
        if (child.window && (child.wentOutWithParent || child.window->isVisible())) {
            setWentOutWithParent(child.window, false);
            child.window->orderWindow(child.place, m_windowNumber);
        }
    }
}

void NSWindow::orderHigherLevelsFront() const {
    const std::vector<NSWindow*> windows = allWindows();
    for (NSWindow* window : windows) {
        if (window->m_level > m_level && window->isVisible()) {
            window->raise();
        }
    }
}

/// A window manager leaves the windows that pass it by above all of its own, and where it puts a new one is known when
/// that is on the screen.
void NSWindow::putBypassingWindowsBelow() {
    if (m_management == NSWindowManagement::Bypassing || !windowHandle() || !windowHandle()->isExposed() ||
        !std::exchange(m_comesToFront, false)) {
        return;
    }
    for (NSWindow* window : allWindows()) {
        if (window->m_management == NSWindowManagement::Bypassing && window->m_level <= m_level &&
            window->isVisible()) {
            WindowEffects::sharedEffects().order(*window, WindowEffects::Place::Below, this);
        }
    }
}

/// Above all that the window manager puts to the front while no window of ours stands in between.
void NSWindow::raiseBypassingWindows() const {
    if (m_management == NSWindowManagement::Bypassing) {
        return;
    }
    for (NSWindow* window : allWindows()) {
        if (window->m_management == NSWindowManagement::Bypassing && window->isVisible()) {
            window->raise();
        }
    }
}

void NSWindow::orderLowerLevelsBack() const {
    const std::vector<NSWindow*> windows = allWindows();
    std::for_each(windows.rbegin(), windows.rend(), [this](NSWindow* window) {
        if (window->m_level < m_level && window->isVisible()) {
            window->lower();
        }
    });
}

void NSWindow::orderOutNow() {
    m_goesOutLater = false;
    if (m_isKey) {
        // Before it goes: a window manager gives the keyboard of a window that goes to one of its own choosing.
        passKeyboardOn();
    }
    hide();
    m_backdrop = QImage();
    raiseBypassingWindows();
}

void NSWindow::passKeyboardOn() {
    const NSApplication* application = NSApplication::sharedApplication();
    // Of an application that was left, another program is about to have it. The keyboard counts, not what a subclass
    // calls active.
    if (!application || !application->NSApplication::isActive()) {
        return;
    }
    NSWindow* const modal = application->modalWindow();
    const auto canTakeIt = [this](const NSWindow* window) {
        return window && window != this && window->isVisible() && window->canBecomeKeyWindow();
    };
    if (canTakeIt(modal)) {
        modal->makeKeyWindow();
        return;
    }
    const auto next = std::find_if(allWindows().rbegin(), allWindows().rend(), canTakeIt);
    if (next != allWindows().rend()) {
        (*next)->makeKeyWindow();
    }
}

void NSWindow::orderChildrenOut() {
    const QPointer<NSWindow> self(this);
    for (const QPointer<NSWindow>& child : watched(childWindows())) {
        if (self && child && child->m_parentWindow == this && child->isVisible()) {
            setWentOutWithParent(child, true);
            child->orderOutNow();
        }
    }
}

void NSWindow::setWentOutWithParent(const NSWindow* child, bool flag) {
    const auto entry =
        std::find_if(m_children.begin(), m_children.end(), [child](const Child& each) { return each.window == child; });
    if (entry != m_children.end()) {
        entry->wentOutWithParent = flag;
    }
}

void NSWindow::makeKeyAndOrderFront(QObject* sender) {
    orderFront(sender);
    makeKeyWindow();
}

void NSWindow::makeKeyWindow() {
    if (!isVisible() || !canBecomeKeyWindow()) {
        return;
    }
    WindowEffects::sharedEffects().takeKeyboard(*this);
    if (windowHandle() == QGuiApplication::focusWindow() && !isActiveWindow()) {
        // It was hidden and shown in one go: Qt's widgets take it for inactive from then on, while Qt itself has not
        // noticed that the keyboard was ever elsewhere and will tell them nothing.
        QApplication::setActiveWindow(this);
    }
}

void NSWindow::addChildWindow(NSWindow* child, NSWindowOrderingMode place) {
    if (!child || child == this) {
        return;
    }
    if (child->m_parentWindow) {
        child->m_parentWindow->removeChildWindow(child);
    }
    child->m_parentWindow = this;
    m_children.push_back({child, place, false});
    if (isVisible()) {
        child->orderWindow(place, m_windowNumber);
    } else {
        m_children.back().wentOutWithParent = true;
    }
}

void NSWindow::removeChildWindow(NSWindow* child) {
    std::erase_if(m_children, [child](const Child& entry) { return !entry.window || entry.window == child; });
    if (child && child->m_parentWindow == this) {
        child->m_parentWindow = nullptr;
    }
}

std::vector<NSWindow*> NSWindow::childWindows() const {
    std::vector<NSWindow*> windows;
    for (const Child& child : m_children) {
        if (child.window) {
            windows.push_back(child.window);
        }
    }
    return windows;
}

bool NSWindow::canBecomeKeyWindow() const {
    return (m_styleMask & NSTitledWindowMask) != 0;
}

bool NSWindow::canBecomeMainWindow() const {
    return (m_styleMask & NSTitledWindowMask) != 0 && isVisible();
}

bool NSWindow::isMainWindow() const {
    return currentMainWindow() == this;
}

void NSWindow::becomeKeyWindow() {
    if (m_isKey || !canBecomeKeyWindow()) {
        return;
    }
    if (!isActiveWindow()) {
        makeKeyWindow();
        return;
    }
    const QPointer<NSWindow> self(this);
    // Qt tells the one that loses the keyboard after the one that gets it.
    if (NSWindow* before = keyWindow()) {
        before->resignKeyWindow();
    }
    if (!self || m_isKey) {
        return;
    }
    m_isKey = true;
    post(NSWindowDidBecomeKeyNotification, this);
    if (!self || !m_isKey) {
        return;
    }
    if (canBecomeMainWindow()) {
        becomeMainWindow();
    } else if (NSWindow* before = mainWindowBefore(); before && !currentMainWindow() && before->canBecomeMainWindow()) {
        before->becomeMainWindow();
    }
}

void NSWindow::becomeMainWindow() {
    mainWindowBefore() = nullptr;
    if (isMainWindow()) {
        return;
    }
    const QPointer<NSWindow> self(this);
    resignMainWindow();
    if (self) {
        currentMainWindow() = this;
        post(NSWindowDidBecomeMainNotification, this);
    }
}

void NSWindow::resignKeyWindow() {
    if (!m_isKey) {
        return;
    }
    m_isKey = false;
    post(NSWindowDidResignKeyNotification, this);
    // A panel that takes the keyboard leaves the main window the main one; another application does not.
    if (!QApplication::activeWindow() && currentMainWindow()) {
        mainWindowBefore() = currentMainWindow();
        resignMainWindow();
    }
}

QWidget* NSWindow::firstResponder() const {
    QWidget* focused = focusWidget();
    return focused ? focused : const_cast<NSWindow*>(this);
}

bool NSWindow::makeFirstResponder(QWidget* responder) {
    if (!responder || responder == this) {
        // Not merely taken from the view: Qt would look for another one when the window is activated next.
        setFocus(Qt::OtherFocusReason);
        return true;
    }
    if (!isAncestorOf(responder) || !responder->isEnabled() || responder->focusPolicy() == Qt::NoFocus) {
        return false;
    }
    responder->setFocus(Qt::OtherFocusReason);
    return true;
}

void NSWindow::sendEvent(const NSEvent& event) {
    const QPointer<NSWindow> self(this);
    ViewCore* content = ViewCore::of(m_contentView);
    if (event.type() == NSKeyDown && content && (content->performKeyEquivalent(event) || !self)) {
        return;
    }
    if (event.type() == NSKeyDown && pressDefaultButton(event)) {
        return;
    }
    if (takeFirstClick(event)) {
        return;
    }
    if (event.qtEvent()) {
        if (QWindow* handle = windowHandle()) {
            // As QObject's, which is public, and past this window's own filter.
            static_cast<QObject*>(handle)->event(event.qtEvent());
        }
        return;
    }
    // Nothing of Qt's to hand on: straight to the view.
    const NSPoint location = event.locationInWindow();
    const bool isKey = event.type() == NSKeyDown || event.type() == NSKeyUp;
    const NSEvent::Delivery delivery(event);
    QWidget* receiver = isKey ? firstResponder() : childAt(QPointF(location.x, height() - location.y).toPoint());
    while (receiver && receiver != this && !ViewCore::of(receiver)) {
        receiver = receiver->parentWidget();
    }
    if (ViewCore* view = ViewCore::of(receiver)) {
        view->handleEvent(event);
    } else {
        handleUnusedEvent(event);
    }
}

/// Where a click makes the window the one with the keyboard, and the view under it does not want such a click, the
/// window alone gets it. For a managed window it is the window manager that makes it so, before it passes on the click,
/// afterwards, or with a click not at all: none is withheld there, as nowhere on such a desktop.
bool NSWindow::takeFirstClick(const NSEvent& event) {
    const NSEventType type = event.type();
    if (type == NSLeftMouseDown) {
        m_isInFirstClick = false;
        if (m_management == NSWindowManagement::Managed || !isVisible() || isKeyWindow() || !canBecomeKeyWindow()) {
            return false;
        }
        const NSPoint location = event.locationInWindow();
        const auto* view = dynamic_cast<ViewCore*>(childAt(QPointF(location.x, height() - location.y).toPoint()));
        m_isInFirstClick = view && !view->acceptsFirstMouse(event);
        const QPointer<NSWindow> self(this);
        makeKeyWindow();
        if (!self) {
            return true;
        }
    }
    if (!m_isInFirstClick || (type != NSLeftMouseDown && type != NSLeftMouseDragged && type != NSLeftMouseUp)) {
        return false;
    }
    m_isInFirstClick = type != NSLeftMouseUp;
    handleUnusedEvent(event);
    return true;
}

void NSWindow::setDefaultButtonCell(const NSButtonCell* cell) {
    m_defaultButton = cell ? cell->controlView() : nullptr;
}

NSButtonCell* NSWindow::defaultButtonCell() const {
    return m_defaultButton ? &m_defaultButton->cell() : nullptr;
}

bool NSWindow::pressDefaultButton(const NSEvent& event) {
    constexpr unsigned others = NSCommandKeyMask | NSAlternateKeyMask | NSControlKeyMask;
    if (!isReturnOrEnter(event) || (event.modifierFlags() & others) != 0 || !m_defaultButton ||
        !m_defaultButton->isVisible()) {
        return false;
    }
    // A key that is held was pressed for what was there before.
    if (!event.isARepeat()) {
        m_defaultButton->performClick(this);
    }
    return true;
}

void NSWindow::mouseDown(const NSEvent& /*event*/) {}
void NSWindow::mouseDragged(const NSEvent& /*event*/) {}
void NSWindow::mouseUp(const NSEvent& /*event*/) {}
void NSWindow::rightMouseDown(const NSEvent& /*event*/) {}
void NSWindow::keyDown(const NSEvent& event) {
    if (event.qtEvent()) {
        event.qtEvent()->ignore();
    }
}

void NSWindow::awakeFromNib() {}

bool NSWindow::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::WinIdChange:
        if (windowHandle()) {
            windowHandle()->installEventFilter(m_inputFilter);
        }
        break;
    case QEvent::WindowActivate:
        if (canBecomeKeyWindow()) {
            const bool result = QWidget::event(event);
            becomeKeyWindow();
            return result;
        }
        break;
    case QEvent::WindowDeactivate: {
        const bool result = QWidget::event(event);
        if (m_isKey) {
            resignKeyWindow();
        }
        return result;
    }
    default:
        break;
    }
    return QWidget::event(event);
}

void NSWindow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    paintBackground(painter, event->rect());
}

/// Puts the background in place of what is in `dirty`, by a painter in the window's coordinates as Qt has them.
void NSWindow::paintBackground(QPainter& painter, const QRect& dirty) const {
    if (!m_opaqueBackground.isNull() && !m_shapeIsStale) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QPointF(0, 0), m_opaqueBackground);
        return;
    }
    {
        const NSGraphicsContext context(painter, height(), false);
        m_backgroundColor.setFill();
        NSRectFill(NSMakeRect(dirty.x(), height() - dirty.y() - dirty.height(), dirty.width(), dirty.height()));
    }
    if (!m_backdrop.isNull()) {
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.drawImage(QPointF(0, 0), m_backdrop);
    }
}

void NSDrawWindowBackground(const NSRect& rect) {
    const ViewCore* view = ViewCore::focusView();
    if (!view || NSIsEmptyRect(rect)) {
        return;
    }
    const NSGraphicsContext& context = *NSGraphicsContext::currentContext();
    const QWidget& window = *view->widget()->window();
    // The phase is the window's bottom left corner in the view's coordinates.
    const NSPoint corner = context.patternPhase();
    const double top = context.isFlipped() ? corner.y - window.height() : corner.y + window.height();
    const double down = context.isFlipped() ? 1 : -1;
    const QTransform windowToView(1, 0, 0, down, corner.x, top);
    QPainter& painter = context.painter();
    painter.save();
    painter.setClipRect(NSRectToQRectF(rect), Qt::IntersectClip);
    painter.setTransform(windowToView, true);
    const QRect dirty = windowToView.inverted().mapRect(NSRectToQRectF(rect)).toAlignedRect();
    if (const auto* own = qobject_cast<const NSWindow*>(&window)) {
        own->paintBackground(painter, dirty);
    } else {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(dirty, window.palette().brush(window.backgroundRole()));
    }
    painter.restore();
}

void NSWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    takeGeometryFromQt();
}

void NSWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    takeGeometryFromQt();
}

void NSWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_windowNumber = static_cast<int>(winId());
    updateShape();
}

void NSWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (m_isOneShot) {
        m_windowNumber = -1;
    }
    if (event->spontaneous()) {
        return; // the window manager's doing: the window is still ordered in
    }
    m_goesOutLater = false;
    const QPointer<NSWindow> self(this);
    orderChildrenOut();
    if (self && isMainWindow()) {
        resignMainWindow();
    }
}

void NSWindow::closeEvent(QCloseEvent* event) {
    const QPointer<NSWindow> self(this);
    ++m_orderings;
    post(NSWindowWillCloseNotification, this);
    if (!self) {
        return;
    }
    QWidget::closeEvent(event);
    // Here and not by Qt's hiding alone, so that the keyboard passes on as from any window that is ordered out.
    if (event->isAccepted() && QWidget::isVisible()) {
        orderOutNow();
    }
}

void NSWindow::dispatch(QEvent& event) {
    handleUnusedEvent(NSEvent::forDelivery(event, this));
}

void NSWindow::handleUnusedEvent(const NSEvent& event) {
    switch (event.type()) {
    case NSLeftMouseDown:
        return mouseDown(event);
    case NSLeftMouseDragged:
        return mouseDragged(event);
    case NSLeftMouseUp:
        return mouseUp(event);
    case NSRightMouseDown:
        return rightMouseDown(event);
    case NSKeyDown:
        return keyDown(event);
    default:
        return;
    }
}

void NSWindow::mousePressEvent(QMouseEvent* event) {
    dispatch(*event);
}
void NSWindow::mouseReleaseEvent(QMouseEvent* event) {
    dispatch(*event);
}
void NSWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    dispatch(*event);
}
void NSWindow::mouseMoveEvent(QMouseEvent* event) {
    dispatch(*event);
}
void NSWindow::keyPressEvent(QKeyEvent* event) {
    dispatch(*event);
}

void NSWindow::scheduleShapeUpdate() {
    if (!QWidget::isVisible() || std::exchange(m_shapeIsStale, true)) {
        return;
    }
    const auto update = [this] {
        if (m_shapeIsStale) {
            updateShape();
        }
    };
    QMetaObject::invokeMethod(this, update, Qt::QueuedConnection);
}

/// What drawCoverage draws, in pixels; null for a window without a size.
QImage NSWindow::coverage() const {
    QImage look(size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    if (!look.isNull()) {
        look.setDevicePixelRatio(devicePixelRatioF());
        look.fill(Qt::transparent);
        QPainter painter(&look);
        const NSGraphicsContext context(painter, height(), false);
        drawCoverage();
    }
    return look;
}

void NSWindow::drawCoverage() const {
    m_backgroundColor.setFill();
    NSRectFill(NSMakeRect(0, 0, width(), height()));
}

/// Cuts the window to what it covers: its clicks where it can be translucent, itself where it cannot.
void NSWindow::updateShape() {
    m_shapeIsStale = false;
    WindowEffects& effects = WindowEffects::sharedEffects();
    const bool canBeTranslucent = effects.isAvailable(WindowEffects::Effect::Translucency);
    m_opaqueBackground = QImage();
    if (!canBeTranslucent && (m_alphaValue <= 0 || m_comesInLater)) {
        // Nothing of it: a region beside the window.
        setMask(QRegion(-1, -1, 1, 1));
        return;
    }
    if (m_isOpaque) {
        clearMask();
        return;
    }
    const QImage look = coverage();
    if (look.isNull()) {
        return;
    }
    const QRegion region = regionOfAlpha(look, canBeTranslucent ? transparent + 1 : solidAlpha);
    effects.setShadowShape(*this, look);
    if (m_backgroundBlurRadius > 0) {
        effects.setBlur(*this, m_backgroundBlurRadius, region);
    }
    if (canBeTranslucent) {
        clearMask();
        // A window without a background shows something all the same: what its views draw.
        takeInput(region.isEmpty() ? std::nullopt : std::optional(region));
        return;
    }
    if (region.isEmpty()) {
        clearMask();
        return;
    }
    m_opaqueBackground = madeOpaque(look);
    setMask(region);
    update();
}

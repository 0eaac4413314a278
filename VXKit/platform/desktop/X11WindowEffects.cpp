// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/desktop/X11ShadowWindow.h>

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QPlatformSurfaceEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <xcb/shape.h>
#include <xcb/xinput.h>

namespace {

constexpr const char* blurProperty = "_KDE_NET_WM_BLUR_BEHIND_REGION";
constexpr const char* desktopProperty = "_NET_WM_DESKTOP";

constexpr std::uint32_t allDesktops = 0xffffffff;

/// Who makes a request of the window manager: a common application for itself. Compare x11SourcePager.
constexpr std::uint32_t sourceApplication = 1;

/// Turning the wheel presses these buttons.
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

/// Whether the window manager is not told of the window, as Qt's platform decides it.
bool bypassesWindowManager(const QWidget& widget) {
    const Qt::WindowType type = widget.windowType();
    return widget.windowFlags().testFlag(Qt::X11BypassWindowManagerHint) || type == Qt::Popup || type == Qt::ToolTip;
}

xcb_window_t nativeOf(const QWidget& widget) {
    return static_cast<xcb_window_t>(widget.internalWinId());
}

int scaled(int points, double pixelRatio) {
    return static_cast<int>(std::lround(points * pixelRatio));
}

/// A rectangle of a window in its pixels; sides that meet in points meet in pixels.
QRect scaled(const QRect& rect, double pixelRatio) {
    const QPoint topLeft(scaled(rect.left(), pixelRatio), scaled(rect.top(), pixelRatio));
    const QPoint end(scaled(rect.left() + rect.width(), pixelRatio), scaled(rect.top() + rect.height(), pixelRatio));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

std::vector<std::uint32_t> wordsOf(const QRegion& region, double pixelRatio) {
    std::vector<std::uint32_t> words;
    for (const QRect& rect : region) {
        const QRect native = scaled(rect, pixelRatio);
        for (const int number : {native.x(), native.y(), native.width(), native.height()}) {
            words.push_back(static_cast<std::uint32_t>(number));
        }
    }
    return words;
}

std::vector<xcb_rectangle_t> rectanglesOf(const QRegion& region, double pixelRatio) {
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& rect : region) {
        const QRect native = scaled(rect, pixelRatio);
        rectangles.push_back({static_cast<std::int16_t>(native.x()), static_cast<std::int16_t>(native.y()),
                              static_cast<std::uint16_t>(native.width()), static_cast<std::uint16_t>(native.height())});
    }
    return rectangles;
}

void configureOrder(const X11Connection& x11, xcb_window_t window, xcb_window_t sibling, WindowEffects::Place place) {
    const std::array<std::uint32_t, 2> order{sibling, place == WindowEffects::Place::Above ? XCB_STACK_MODE_ABOVE
                                                                                           : XCB_STACK_MODE_BELOW};
    x11.ignoreErrors(xcb_configure_window_checked(
        x11.connection(), window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, order.data()));
    x11.flush();
}

/// Whether `frame` is the window manager's frame around a window of this application.
bool isFrameOfOwnWindow(const X11Connection& x11, xcb_window_t frame) {
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), [&](QWindow* window) {
        return window->isVisible() && window->handle() &&
               x11.frameOf(static_cast<xcb_window_t>(window->winId())) == frame;
    });
}

/// Whether the mouse is over a window of this application, be it a frame around one, or one that lies within a window
/// of another program, as in a tray.
bool isMouseOverOwnWindow(const X11Connection& x11) {
    xcb_window_t outermost = XCB_NONE;
    xcb_window_t window = x11.root();
    while (window != XCB_NONE) {
        const auto pointer = x11.reply(xcb_query_pointer_reply, xcb_query_pointer(x11.connection(), window));
        window = pointer ? pointer->child : xcb_window_t{XCB_NONE};
        if (x11.isOwn(window)) {
            return true;
        }
        outermost = outermost == XCB_NONE ? window : outermost;
    }
    return outermost != XCB_NONE && isFrameOfOwnWindow(x11, outermost);
}

} // namespace

/// What was asked for one window, and what stands for it at the server.
struct X11WindowEffects::Window {
    explicit Window(QWidget& itsWidget) : widget(itsWidget) {}

    /// What the picture of the shadow was drawn for.
    struct Picture {
        QSize body;
        double pixelRatio = 0;
        WindowShadow shadow;
        qint64 shape = 0;

        friend bool operator==(const Picture&, const Picture&) = default;
    };

    /// Whether the window is on the screen, though perhaps covered.
    [[nodiscard]] bool isSeen() const { return handle && handle->isVisible() && handle->isExposed(); }

    /// Where the picture belongs, in pixels of the root window.
    [[nodiscard]] QPoint shadowOrigin() const {
        const QPoint fromBody = QPoint(shadow->offsetX, shadow->offsetY) - QPoint(1, 1) * windowShadowMargin(*shadow);
        const double pixelRatio = handle->devicePixelRatio();
        return nativeFromPoints(handle->geometry(), x11Screens()).topLeft() +
               QPoint(scaled(fromBody.x(), pixelRatio), scaled(fromBody.y(), pixelRatio));
    }

    QWidget& widget;
    QPointer<QWindow> handle;

    std::optional<WindowShadow> shadow;
    QImage shadowShape;
    std::unique_ptr<X11ShadowWindow> shadowWindow;
    Picture picture;
    bool isShadowOutdated = false;

    double blurRadius = 0;
    QRegion blurRegion;
    bool isOnAllDesktops = false;
    bool isOwedKeyboard = false; ///< asked for before the window was on the screen
    std::optional<QRegion> inputRegion;
};

X11WindowEffects::X11WindowEffects(QObject* parent) : WindowEffects(parent), m_compositingManager("_NET_WM_CM_S0") {
    connect(&m_compositingManager, &X11SelectionOwner::changed, this, &X11WindowEffects::compositingHasChanged);
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    m_isBlurAnnounced = x11->hasProperty(x11->root(), blurProperty);
    if (const auto* input = xcb_get_extension_data(x11->connection(), &xcb_input_id); input && input->present) {
        m_inputExtension = input->major_opcode;
    }
    connect(x11, &X11Connection::rootPropertyChanged, this, &X11WindowEffects::rootPropertyHasChanged,
            Qt::QueuedConnection);
    qApp->installNativeEventFilter(this);
}

X11WindowEffects::~X11WindowEffects() = default;

bool X11WindowEffects::isAvailable(Effect effect) const {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return WindowEffects::isAvailable(effect);
    }
    switch (effect) {
    case Effect::Shadow:
    case Effect::Translucency:
        return m_compositingManager.window() != XCB_NONE;
    case Effect::Blur:
        return m_isBlurAnnounced && m_compositingManager.window() != XCB_NONE;
    case Effect::AllDesktops:
        return x11->windowManagerSupports(desktopProperty);
    case Effect::PressesElsewhere:
        return m_inputExtension != 0;
    case Effect::ColorInversion:
    case Effect::InputRegion:
        return true;
    }
    return false;
}

void X11WindowEffects::setShadow(QWidget& window, const std::optional<WindowShadow>& shadow) {
    Window& state = stateOf(window);
    if (state.shadow != shadow) {
        state.shadow = shadow;
        updateShadow(state);
    }
}

void X11WindowEffects::setShadowShape(QWidget& window, const QImage& coverage) {
    Window& state = stateOf(window);
    // A quarter of the memory, and all that counts.
    state.shadowShape = coverage.convertToFormat(QImage::Format_Alpha8);
    updateShadowLater(state);
}

void X11WindowEffects::setBlur(QWidget& window, double radius, const QRegion& region) {
    Window& state = stateOf(window);
    state.blurRadius = radius;
    state.blurRegion = region;
    applyBlur(state);
}

void X11WindowEffects::setOnAllDesktops(QWidget& window, bool isOnAll) {
    Window& state = stateOf(window);
    if (state.isOnAllDesktops == isOnAll) {
        return;
    }
    state.isOnAllDesktops = isOnAll;
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !nativeOf(window) || bypassesWindowManager(window)) {
        return;
    }
    if (window.isVisible()) {
        askForDesktops(state);
    } else if (isOnAll) {
        applyBeforeMapping(state);
    } else {
        x11->removeProperty(nativeOf(window), desktopProperty);
    }
}

void X11WindowEffects::setInputRegion(QWidget& window, const std::optional<QRegion>& region) {
    Window& state = stateOf(window);
    if (state.inputRegion != region) {
        state.inputRegion = region;
        applyInputRegion(state);
    }
}

void X11WindowEffects::order(QWidget& window, Place place, QWidget* sibling) {
    if (!sibling) {
        WindowEffects::order(window, place, sibling);
        return;
    }
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !nativeOf(window) || !nativeOf(*sibling)) {
        return;
    }
    if (bypassesWindowManager(window)) {
        configureOrder(*x11, nativeOf(window), x11->frameOf(nativeOf(*sibling)), place);
    } else if (bypassesWindowManager(*sibling)) {
        // The window manager knows nothing of the sibling, so it is the sibling that goes to the other side.
        configureOrder(*x11, nativeOf(*sibling), x11->frameOf(nativeOf(window)),
                       place == Place::Above ? Place::Below : Place::Above);
    } else {
        x11->sendToRoot(nativeOf(window), "_NET_RESTACK_WINDOW",
                        {x11SourcePager, nativeOf(*sibling),
                         place == Place::Above ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW, 0, 0});
    }
    stackShadows();
}

void X11WindowEffects::takeKeyboard(QWidget& window) {
    Window& state = stateOf(window);
    state.isOwedKeyboard = true;
    giveKeyboard(state);
}

bool X11WindowEffects::hasKeyboard() const {
    const X11Connection* x11 = X11Connection::shared();
    const bool isOwed =
        std::any_of(m_windows.begin(), m_windows.end(), [](const auto& entry) { return entry.second->isOwedKeyboard; });
    return x11 && (isOwed || x11->hasKeyboard());
}

void X11WindowEffects::moveToPixel(QWidget& window, const QPointF& topLeft) {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeOf(window);
    if (!x11 || !native || !bypassesWindowManager(window)) {
        return;
    }
    const QPoint pixel = nativeFromPoints(topLeft, x11Screens());
    const std::array<std::uint32_t, 2> place{static_cast<std::uint32_t>(pixel.x()),
                                             static_cast<std::uint32_t>(pixel.y())};
    x11->ignoreErrors(xcb_configure_window_checked(x11->connection(), native, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                                                   place.data()));
}

std::optional<QRect> X11WindowEffects::serverFrame(const QWidget& window) const {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeOf(window);
    if (!x11 || !native) {
        return std::nullopt;
    }
    const auto placeCookie = xcb_translate_coordinates(x11->connection(), native, x11->root(), 0, 0);
    const auto sizeCookie = xcb_get_geometry(x11->connection(), native);
    const auto place = x11->reply(xcb_translate_coordinates_reply, placeCookie);
    const auto size = x11->reply(xcb_get_geometry_reply, sizeCookie);
    if (!place || !size) {
        return std::nullopt;
    }
    return pointsFromNative(QRect(place->dst_x, place->dst_y, size->width, size->height), x11Screens());
}

bool X11WindowEffects::eventFilter(QObject* object, QEvent* event) {
    Window* window = find(object);
    if (!window) {
        return false;
    }
    switch (event->type()) {
    case QEvent::WinIdChange:
        adoptNativeWindow(*window);
        break;
    case QEvent::Show:
        if (object == &window->widget) {
            applyBeforeMapping(*window);
        }
        break;
    case QEvent::Move:
        moveShadow(*window);
        break;
    case QEvent::Resize:
        updateShadowLater(*window);
        break;
    case QEvent::ScreenChangeInternal:
        applyBlur(*window);
        applyInputRegion(*window);
        updateShadowLater(*window);
        break;
    case QEvent::Hide:
        window->isOwedKeyboard = false;
        updateShadow(*window);
        break;
    case QEvent::Expose:
        updateShadow(*window);
        giveKeyboard(*window);
        break;
    case QEvent::PlatformSurface:
        if (static_cast<QPlatformSurfaceEvent*>(event)->surfaceEventType() ==
            QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed) {
            window->shadowWindow.reset();
        }
        break;
    default:
        break;
    }
    return false;
}

bool X11WindowEffects::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (x11EventNumber(*event)) {
    case XCB_MAP_NOTIFY:
        if (Window* window = find(reinterpret_cast<const xcb_map_notify_event_t*>(event)->window)) {
            // Some window managers look at the property only here, and forget it with every unmapping.
            if (window->isOnAllDesktops) {
                askForDesktops(*window);
            }
            stackShadow(*window);
        }
        break;
    case XCB_REPARENT_NOTIFY:
        if (Window* window = find(reinterpret_cast<const xcb_reparent_notify_event_t*>(event)->window)) {
            stackShadow(*window);
        }
        break;
    case XCB_CONFIGURE_NOTIFY:
        if (Window* window = find(reinterpret_cast<const xcb_configure_notify_event_t*>(event)->window)) {
            stackShadow(*window);
        }
        break;
    case XCB_GE_GENERIC: {
        const auto* press = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event);
        const bool isPress =
            m_emitsPresses && press->extension == m_inputExtension && press->event_type == XCB_INPUT_RAW_BUTTON_PRESS;
        const bool isWheel = isPress && press->detail >= firstWheelButton && press->detail <= lastWheelButton;
        if (isPress && !isWheel && !isMouseOverOwnWindow(*x11)) {
            QMetaObject::invokeMethod(this, &WindowEffects::pressedElsewhere, Qt::QueuedConnection);
        }
        break;
    }
    default:
        break;
    }
    return false;
}

void X11WindowEffects::setEmitsPresses(bool emits) {
    const X11Connection* x11 = X11Connection::shared();
    m_emitsPresses = emits;
    if (!x11 || m_inputExtension == 0) {
        return;
    }
    // Raw presses come to the root window whoever else has grabbed the mouse. Qt selects nothing for this group of
    // devices on the root window.
    struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t mask = 0;
    } selection;
    if (emits) {
        selection.mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    }
    x11->ignoreErrors(xcb_input_xi_select_events_checked(x11->connection(), x11->root(), 1, &selection.head));
    x11->flush();
}

X11WindowEffects::Window& X11WindowEffects::stateOf(QWidget& window) {
    std::unique_ptr<Window>& state = m_windows[&window];
    if (!state) {
        state = std::make_unique<Window>(window);
        window.installEventFilter(this);
        connect(&window, &QObject::destroyed, this, [this](QObject* gone) { m_windows.erase(gone); });
        adoptNativeWindow(*state);
    }
    return *state;
}

X11WindowEffects::Window* X11WindowEffects::find(const QObject* widgetOrHandle) const {
    const auto found = m_windows.find(widgetOrHandle);
    if (found != m_windows.end()) {
        return found->second.get();
    }
    for (const auto& [widget, window] : m_windows) {
        if (window->handle == widgetOrHandle) {
            return window.get();
        }
    }
    return nullptr;
}

X11WindowEffects::Window* X11WindowEffects::find(xcb_window_t native) const {
    for (const auto& [widget, window] : m_windows) {
        if (native != XCB_NONE && nativeOf(window->widget) == native) {
            return window.get();
        }
    }
    return nullptr;
}

void X11WindowEffects::adoptNativeWindow(Window& window) {
    QWindow* handle = window.widget.windowHandle();
    if (handle != window.handle) {
        if (window.handle) {
            window.handle->removeEventFilter(this);
            window.handle->disconnect(this);
        }
        window.handle = handle;
        if (handle) {
            handle->installEventFilter(this);
            connect(handle, &QWindow::opacityChanged, this, [this, handle](double opacity) {
                Window* changed = find(handle);
                if (changed && changed->shadowWindow) {
                    changed->shadowWindow->setOpacity(opacity);
                }
            });
        }
    }
    applyBlur(window);
    applyInputRegion(window);
    updateShadow(window);
}

void X11WindowEffects::applyBeforeMapping(const Window& window) {
    const X11Connection* x11 = X11Connection::shared();
    if (x11 && window.isOnAllDesktops && nativeOf(window.widget) && !bypassesWindowManager(window.widget)) {
        x11->setProperty(nativeOf(window.widget), desktopProperty, XCB_ATOM_CARDINAL, {allDesktops});
    }
}

void X11WindowEffects::applyBlur(const Window& window) const {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeOf(window.widget);
    if (!x11 || !native) {
        return;
    }
    if (window.blurRadius > 0 && isAvailable(Effect::Blur)) {
        x11->setProperty(native, blurProperty, XCB_ATOM_CARDINAL,
                         wordsOf(window.blurRegion, window.widget.devicePixelRatioF()));
    } else {
        x11->removeProperty(native, blurProperty);
    }
    x11->flush();
}

void X11WindowEffects::applyInputRegion(const Window& window) const {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_window_t native = nativeOf(window.widget);
    if (!x11 || !native) {
        return;
    }
    if (!window.inputRegion) {
        x11->ignoreErrors(
            xcb_shape_mask_checked(x11->connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, native, 0, 0, XCB_NONE));
    } else {
        const std::vector<xcb_rectangle_t> rectangles =
            rectanglesOf(*window.inputRegion, window.widget.devicePixelRatioF());
        x11->ignoreErrors(xcb_shape_rectangles_checked(
            x11->connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, native, 0, 0,
            static_cast<std::uint32_t>(rectangles.size()), rectangles.data()));
    }
    x11->flush();
}

void X11WindowEffects::askForDesktops(const Window& window) const {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !nativeOf(window.widget) || bypassesWindowManager(window.widget)) {
        return;
    }
    const std::uint32_t desktop =
        window.isOnAllDesktops
            ? allDesktops
            : x11->wordOfProperty(x11->root(), "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL).value_or(0);
    x11->sendToRoot(nativeOf(window.widget), desktopProperty, {desktop, sourceApplication, 0, 0, 0});
}

void X11WindowEffects::giveKeyboard(Window& window) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !window.isOwedKeyboard || !window.isSeen()) {
        return;
    }
    window.isOwedKeyboard = false;
    const xcb_window_t native = nativeOf(window.widget);
    if (bypassesWindowManager(window.widget)) {
        // With the server's own time, since the server refuses one before the last change of the keyboard's owner.
        x11->ignoreErrors(
            xcb_set_input_focus_checked(x11->connection(), XCB_INPUT_FOCUS_PARENT, native, XCB_CURRENT_TIME));
        x11->flush();
    } else {
        x11->sendToRoot(native, "_NET_ACTIVE_WINDOW", {x11SourcePager, x11->latestTime(), XCB_NONE, 0, 0});
    }
}

void X11WindowEffects::updateShadow(Window& window) {
    window.isShadowOutdated = false;
    if (!window.shadow || !window.isSeen() || !isAvailable(Effect::Shadow)) {
        window.shadowWindow.reset();
        return;
    }
    if (!window.shadowWindow) {
        window.shadowWindow = X11ShadowWindow::make();
        window.picture = {};
    }
    if (!window.shadowWindow) {
        return;
    }
    const Window::Picture picture{window.handle->size(), window.handle->devicePixelRatio(), *window.shadow,
                                  window.shadowShape.isNull() ? 0 : window.shadowShape.cacheKey()};
    if (picture != window.picture) {
        window.picture = picture;
        window.shadowWindow->setPicture(
            windowShadowImage(picture.body, window.shadowShape, picture.shadow, picture.pixelRatio),
            window.shadowOrigin());
    }
    window.shadowWindow->setOpacity(window.handle->opacity());
    window.shadowWindow->moveTo(window.shadowOrigin());
    stackShadow(window);
    window.shadowWindow->show();
}

void X11WindowEffects::updateShadowLater(Window& window) {
    if (!window.shadow || window.isShadowOutdated) {
        return;
    }
    window.isShadowOutdated = true;
    QMetaObject::invokeMethod(
        this,
        [this, widget = QPointer<QWidget>(&window.widget)] {
            Window* outdated = widget ? find(widget) : nullptr;
            if (outdated && outdated->isShadowOutdated) {
                updateShadow(*outdated);
            }
        },
        Qt::QueuedConnection);
}

void X11WindowEffects::moveShadow(Window& window) {
    if (window.shadowWindow && window.shadow && window.handle) {
        window.shadowWindow->moveTo(window.shadowOrigin());
    }
}

void X11WindowEffects::stackShadow(Window& window) const {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !window.shadowWindow) {
        return;
    }
    const xcb_window_t native = nativeOf(window.widget);
    const xcb_window_t frame = bypassesWindowManager(window.widget) ? native : x11->frameOf(native);
    if (frame != XCB_NONE) {
        window.shadowWindow->putBelow(frame);
    }
}

void X11WindowEffects::stackShadows() const {
    for (const auto& [widget, window] : m_windows) {
        stackShadow(*window);
    }
}

void X11WindowEffects::compositingHasChanged() {
    for (const auto& [widget, window] : m_windows) {
        applyBlur(*window);
        updateShadow(*window);
    }
    Q_EMIT compositingChanged();
}

void X11WindowEffects::rootPropertyHasChanged(xcb_atom_t property) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    if (property == x11->atom("_NET_CLIENT_LIST_STACKING")) {
        stackShadows();
    } else if (property == x11->atom(blurProperty)) {
        const bool isAnnounced = x11->hasProperty(x11->root(), blurProperty);
        if (isAnnounced != m_isBlurAnnounced) {
            m_isBlurAnnounced = isAnnounced;
            compositingHasChanged();
        }
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/desktop/X11WindowState.h>

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QPlatformSurfaceEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <cmath>

#include <xcb/xinput.h>

using X11WindowState::blurProperty;
using X11WindowState::desktopProperty;
using X11WindowState::nativeOf;

namespace {

/// Turning the wheel presses these buttons.
constexpr std::uint32_t firstWheelButton = 4;
constexpr std::uint32_t lastWheelButton = 7;

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

bool X11WindowState::bypassesWindowManager(const QWidget& widget) {
    const Qt::WindowType type = widget.windowType();
    return widget.windowFlags().testFlag(Qt::X11BypassWindowManagerHint) || type == Qt::Popup || type == Qt::ToolTip;
}

xcb_window_t X11WindowState::nativeOf(const QWidget& widget) {
    return static_cast<xcb_window_t>(widget.internalWinId());
}

int X11WindowState::scaled(int points, double pixelRatio) {
    return static_cast<int>(std::lround(points * pixelRatio));
}

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

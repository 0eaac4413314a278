// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/desktop/X11WindowState.h>

#include <QPoint>
#include <QRect>
#include <QRegion>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <xcb/shape.h>

using X11WindowState::blurProperty;
using X11WindowState::bypassesWindowManager;
using X11WindowState::desktopProperty;
using X11WindowState::nativeOf;
using X11WindowState::scaled;

namespace {

constexpr std::uint32_t allDesktops = 0xffffffff;

/// Who makes a request of the window manager: a common application for itself. Compare x11SourcePager.
constexpr std::uint32_t sourceApplication = 1;

/// A rectangle of a window in its pixels; sides that meet in points meet in pixels.
QRect scaledRect(const QRect& rect, double pixelRatio) {
    const QPoint topLeft(scaled(rect.left(), pixelRatio), scaled(rect.top(), pixelRatio));
    const QPoint end(scaled(rect.left() + rect.width(), pixelRatio), scaled(rect.top() + rect.height(), pixelRatio));
    return {topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y())};
}

std::vector<std::uint32_t> wordsOf(const QRegion& region, double pixelRatio) {
    std::vector<std::uint32_t> words;
    for (const QRect& rect : region) {
        const QRect native = scaledRect(rect, pixelRatio);
        for (const int number : {native.x(), native.y(), native.width(), native.height()}) {
            words.push_back(static_cast<std::uint32_t>(number));
        }
    }
    return words;
}

std::vector<xcb_rectangle_t> rectanglesOf(const QRegion& region, double pixelRatio) {
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& rect : region) {
        const QRect native = scaledRect(rect, pixelRatio);
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

} // namespace

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

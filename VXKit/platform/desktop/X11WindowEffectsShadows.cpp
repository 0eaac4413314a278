// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <VXKit/platform/desktop/X11Connection.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/desktop/X11ShadowWindow.h>
#include <VXKit/platform/desktop/X11WindowState.h>

#include <QImage>
#include <QMetaObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

using X11WindowState::bypassesWindowManager;
using X11WindowState::nativeOf;
using X11WindowState::scaled;

QPoint X11WindowEffects::Window::shadowOrigin() const {
    const QPoint fromBody = QPoint(shadow->offsetX, shadow->offsetY) - QPoint(1, 1) * windowShadowMargin(*shadow);
    const double pixelRatio = handle->devicePixelRatio();
    return nativeFromPoints(handle->geometry(), x11Screens()).topLeft() +
           QPoint(scaled(fromBody.x(), pixelRatio), scaled(fromBody.y(), pixelRatio));
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

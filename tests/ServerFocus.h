// SPDX-License-Identifier: MIT
#pragma once

#include <QGuiApplication>
#include <QWidget>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

/// Whether keys go to `window` by the word of the X server, which Qt's follows late and sometimes runs ahead of. True
/// on other platforms, which have nobody else to ask.
inline bool hasServerFocus(const QWidget& window) {
    // The offscreen platform may have the interface too, with no connection behind it.
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection) {
        return true;
    }
    const std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr), &std::free);
    return focus && focus->focus == static_cast<xcb_window_t>(window.internalWinId());
}

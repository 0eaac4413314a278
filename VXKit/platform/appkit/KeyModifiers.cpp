// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/KeyModifiers.h>

#include <QGuiApplication>

#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

#include <xcb/xcb.h>

namespace {

constexpr std::array<std::pair<Qt::KeyboardModifier, std::uint32_t>, 4> bitsOfModifiers = {{
    {Qt::ControlModifier, cmdKey},
    {Qt::ShiftModifier, shiftKey},
    {Qt::AltModifier, optionKey},
    {Qt::MetaModifier, controlKey},
}};

/// Qt knows of no lock.
bool capsLockIsOn() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The offscreen platform may have the interface too, with no connection behind it.
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection) {
        return false;
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr), &std::free);
    return pointer && (pointer->mask & XCB_KEY_BUT_MASK_LOCK) != 0;
}

} // namespace

std::uint32_t GetCurrentKeyModifiers() {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        return 0;
    }
    const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
    std::uint32_t bits = capsLockIsOn() ? alphaLock : 0;
    for (const auto& [modifier, bit] : bitsOfModifiers) {
        if (held.testFlag(modifier)) {
            bits |= bit;
        }
    }
    return bits;
}

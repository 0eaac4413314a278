// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QObject>

#include <cstdint>

#include <xcb/xcb.h>

/// Watches who owns a selection that stands for a manager of the desktop, such as _NET_SYSTEM_TRAY_S0 or
/// _NET_WM_CM_S0.
///
/// A new owner is noticed by the message that managers send to the root window, and by Qt's own watch on the selection
/// of the compositing manager, since not every one of those sends the message; the end of an owner by the end of its
/// window. Private to platform/desktop.
class X11SelectionOwner final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    /// Watches `selection`, by its name. Never has an owner where the application is not on X11.
    explicit X11SelectionOwner(const char* selection, QObject* parent = nullptr);
    ~X11SelectionOwner() override;

    /// The owner's window, or XCB_NONE.
    [[nodiscard]] xcb_window_t window() const { return m_window; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

Q_SIGNALS:
    /// window() has changed. Emitted from the event loop, not from within an X event's delivery.
    void changed();

private:
    void askLater();
    void ask();

    xcb_atom_t m_selection = XCB_NONE;
    xcb_window_t m_window = XCB_NONE;
    std::uint8_t m_selectionEvent = 0; ///< number of the event that tells of a new owner, 0 where there is none
    bool m_isGoingToAsk = false;
};

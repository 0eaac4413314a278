// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11SelectionOwner.h>

#include <VXKit/platform/desktop/X11Connection.h>

#include <QCoreApplication>
#include <QMetaObject>

#include <string_view>

namespace {

constexpr std::string_view selectionExtension = "XFIXES";

/// The selection event of the XFIXES extension, as its protocol lays it out.
struct SelectionEvent {
    std::uint8_t responseType;
    std::uint8_t subtype;
    std::uint16_t sequence;
    xcb_window_t window;
    xcb_window_t owner;
    xcb_atom_t selection;
};

xcb_window_t ownerOf(const X11Connection& x11, xcb_atom_t selection) {
    const auto owner = x11.reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(x11.connection(), selection));
    return owner ? owner->owner : xcb_window_t{XCB_NONE};
}

} // namespace

X11SelectionOwner::X11SelectionOwner(const char* selection, QObject* parent) : QObject(parent) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    m_selection = x11->atom(selection);
    // Qt asks the extension to tell of the compositing manager's selection; here it need only be known by its number.
    const auto extension =
        x11->reply(xcb_query_extension_reply,
                   xcb_query_extension(x11->connection(), selectionExtension.size(), selectionExtension.data()));
    if (extension && extension->present) {
        m_selectionEvent = extension->first_event;
    }
    qApp->installNativeEventFilter(this);
    ask();
}

X11SelectionOwner::~X11SelectionOwner() = default;

bool X11SelectionOwner::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const auto number = x11EventNumber(*event);
    if (number == XCB_CLIENT_MESSAGE) {
        const auto* told = reinterpret_cast<const xcb_client_message_event_t*>(event);
        if (told->type == x11->atom("MANAGER") && told->data.data32[1] == m_selection) {
            askLater();
        }
    } else if (number == XCB_DESTROY_NOTIFY) {
        if (reinterpret_cast<const xcb_destroy_notify_event_t*>(event)->window == m_window) {
            askLater();
        }
    } else if (m_selectionEvent != 0 && number == m_selectionEvent) {
        if (reinterpret_cast<const SelectionEvent*>(event)->selection == m_selection) {
            askLater();
        }
    }
    return false;
}

void X11SelectionOwner::askLater() {
    if (m_isGoingToAsk) {
        return;
    }
    m_isGoingToAsk = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isGoingToAsk = false;
            ask();
        },
        Qt::QueuedConnection);
}

void X11SelectionOwner::ask() {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    const xcb_window_t before = m_window;
    m_window = ownerOf(*x11, m_selection);
    // An owner that dies before its end is watched would stay for ever, so the server is asked again after that.
    while (m_window != XCB_NONE) {
        x11->selectEvents(m_window, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        const xcb_window_t still = ownerOf(*x11, m_selection);
        if (still == m_window) {
            break;
        }
        m_window = still;
    }
    if (m_window != before) {
        Q_EMIT changed();
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11Connection.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <xcb/xinput.h>

namespace {

/// What one property is read to at most, in 32-bit words: a list of this many windows or hints is broken.
constexpr std::uint32_t longestProperty = 1U << 16U;

xcb_screen_t* firstScreen(xcb_connection_t* connection) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    return setup ? xcb_setup_roots_iterator(setup).data : nullptr;
}

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

} // namespace

X11Connection* X11Connection::shared() {
    static QPointer<X11Connection> shared;
    if (shared) {
        return QCoreApplication::closingDown() ? nullptr : shared.data();
    }
    if (!qGuiApp || QCoreApplication::closingDown()) {
        return nullptr;
    }
    const auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* connection = native ? native->connection() : nullptr;
    xcb_screen_t* screen = connection ? firstScreen(connection) : nullptr;
    if (!screen) {
        return nullptr;
    }
    shared = new X11Connection(connection, screen, qGuiApp);
    return shared;
}

X11Connection::X11Connection(xcb_connection_t* connection, xcb_screen_t* screen, QObject* parent)
    : QObject(parent), m_connection(connection), m_screen(screen) {
    if (const auto* input = xcb_get_extension_data(m_connection, &xcb_input_id); input && input->present) {
        m_inputExtension = input->major_opcode;
    }
    selectEvents(root(), XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    qGuiApp->installNativeEventFilter(this);
}

X11Connection::~X11Connection() = default;

xcb_atom_t X11Connection::atom(const char* name) const {
    const auto length = std::strlen(name);
    const auto known = m_atoms.constFind(QByteArray::fromRawData(name, static_cast<qsizetype>(length)));
    if (known != m_atoms.constEnd()) {
        return *known;
    }
    const auto interned =
        reply(xcb_intern_atom_reply, xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(length), name));
    return interned ? *m_atoms.insert(QByteArray(name), interned->atom) : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<std::uint32_t> X11Connection::wordsOfProperty(xcb_window_t window, const char* property,
                                                          xcb_atom_t type) const {
    const auto value = reply(xcb_get_property_reply,
                             xcb_get_property(m_connection, 0, window, atom(property), type, 0, longestProperty));
    if (!value || value->type != type || value->format != 32) {
        return {};
    }
    std::vector<std::uint32_t> words(value->value_len);
    if (!words.empty()) {
        std::memcpy(words.data(), xcb_get_property_value(value.get()), words.size() * sizeof(std::uint32_t));
    }
    return words;
}

std::optional<std::uint32_t> X11Connection::wordOfProperty(xcb_window_t window, const char* property,
                                                           xcb_atom_t type) const {
    const std::vector<std::uint32_t> words = wordsOfProperty(window, property, type);
    return words.empty() ? std::nullopt : std::optional(words.front());
}

QByteArray X11Connection::bytesOfProperty(xcb_window_t window, const char* property) const {
    const auto value = reply(xcb_get_property_reply, xcb_get_property(m_connection, 0, window, atom(property),
                                                                      XCB_ATOM_ANY, 0, longestProperty));
    if (!value || value->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(value.get())), xcb_get_property_value_length(value.get())};
}

bool X11Connection::hasProperty(xcb_window_t window, const char* property) const {
    const auto value =
        reply(xcb_get_property_reply, xcb_get_property(m_connection, 0, window, atom(property), XCB_ATOM_ANY, 0, 0));
    return value && value->type != XCB_ATOM_NONE;
}

void X11Connection::setProperty(xcb_window_t window, const char* property, xcb_atom_t type,
                                const std::vector<std::uint32_t>& words) const {
    ignoreErrors(xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                                             static_cast<std::uint32_t>(words.size()), words.data()));
}

void X11Connection::removeProperty(xcb_window_t window, const char* property) const {
    ignoreErrors(xcb_delete_property_checked(m_connection, window, atom(property)));
}

bool X11Connection::windowManagerSupports(const char* hint) const {
    if (!m_supportedHints) {
        m_supportedHints = wordsOfProperty(root(), "_NET_SUPPORTED", XCB_ATOM_ATOM);
    }
    return std::find(m_supportedHints->begin(), m_supportedHints->end(), atom(hint)) != m_supportedHints->end();
}

void X11Connection::sendToRoot(xcb_window_t window, const char* message,
                               const std::array<std::uint32_t, 5>& data) const {
    send(root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, window, message, data);
}

void X11Connection::sendTo(xcb_window_t window, const char* message, const std::array<std::uint32_t, 5>& data) const {
    send(window, XCB_EVENT_MASK_NO_EVENT, window, message, data);
}

void X11Connection::send(xcb_window_t receiver, std::uint32_t eventMask, xcb_window_t window, const char* message,
                         const std::array<std::uint32_t, 5>& data) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy(data.begin(), data.end(), std::begin(event.data.data32));
    ignoreErrors(xcb_send_event_checked(m_connection, 0, receiver, eventMask, reinterpret_cast<const char*>(&event)));
    flush();
}

void X11Connection::selectEvents(xcb_window_t window, std::uint32_t eventMask) const {
    const auto attributes = reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(m_connection, window));
    if (!attributes) {
        return;
    }
    const std::uint32_t all = attributes->your_event_mask | eventMask;
    if (all != attributes->your_event_mask) {
        ignoreErrors(xcb_change_window_attributes_checked(m_connection, window, XCB_CW_EVENT_MASK, &all));
    }
}

bool X11Connection::isOwn(xcb_window_t window) const {
    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    return window != XCB_NONE && (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

bool X11Connection::hasKeyboard() const {
    const auto focus = reply(xcb_get_input_focus_reply, xcb_get_input_focus(m_connection));
    return focus && isOwn(focus->focus);
}

xcb_window_t X11Connection::frameOf(xcb_window_t window) const {
    while (window != XCB_NONE) {
        const auto tree = reply(xcb_query_tree_reply, xcb_query_tree(m_connection, window));
        if (!tree) {
            return XCB_NONE;
        }
        if (tree->parent == root()) {
            break;
        }
        window = tree->parent;
    }
    return window;
}

bool X11Connection::nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) {
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    noteTime(event);
    if (x11EventNumber(event) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto& change = as<xcb_property_notify_event_t>(event);
    if (change.window == root()) {
        if (change.atom == atom("_NET_SUPPORTED")) {
            m_supportedHints.reset();
        }
        Q_EMIT rootPropertyChanged(change.atom);
    }
    return false;
}

void X11Connection::noteTime(const xcb_generic_event_t& event) {
    // Clients that send events make up the time in them.
    switch (event.response_type) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        m_latestTime = as<xcb_button_press_event_t>(event).time;
        return;
    case XCB_PROPERTY_NOTIFY:
        m_latestTime = as<xcb_property_notify_event_t>(event).time;
        return;
    case XCB_GE_GENERIC: {
        // All events of XInput 2 have their time in the same place.
        const auto& input = as<xcb_input_button_press_event_t>(event);
        if (m_inputExtension != 0 && input.extension == m_inputExtension && input.time != XCB_CURRENT_TIME) {
            m_latestTime = input.time;
        }
        return;
    }
    default:
        return;
    }
}

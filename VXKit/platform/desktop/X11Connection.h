// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QHash>
#include <QObject>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

/// A reply of the X server, freed with its holder.
struct X11ReplyDeleter {
    void operator()(void* reply) const { std::free(reply); }
};
template <class Reply>
using X11Reply = std::unique_ptr<Reply, X11ReplyDeleter>;

/// The source of a request that a pager, not the window itself, makes: window managers grant it without suspicion.
constexpr std::uint32_t x11SourcePager = 2;

/// The number of an event, without the bit that tells whether the server or a client sent it.
[[nodiscard]] inline std::uint8_t x11EventNumber(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentEventBit = 0x80;
    return static_cast<std::uint8_t>(event.response_type & ~sentEventBit);
}

/// Qt's own connection to the X server, and the few questions that the desktop's backends ask over it.
///
/// Private to platform/desktop. Windows of other programs vanish at any time and servers refuse: every question has an
/// answer for that (nothing, an empty list), and every order is given so that an error of the server is dropped without
/// a word. Waits for the server where it answers something. Main thread only. For the owner of a selection see
/// X11SelectionOwner, for coordinates X11Geometry.h.
class X11Connection final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

public:
    /// The connection of the running application, or null where it is not on X11 (or there is no application object, or
    /// it is about to end). Belongs to the application object; ask anew instead of keeping it.
    [[nodiscard]] static X11Connection* shared();

    ~X11Connection() override;

    [[nodiscard]] xcb_connection_t* connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t& screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }

    /// The atom called `name`, which is made where the server does not have it; asked of the server once.
    [[nodiscard]] xcb_atom_t atom(const char* name) const;

    /// What `function` (an xcb_…_reply) answers to `cookie`, or null after an error.
    template <class Reply, class Cookie>
    [[nodiscard]] X11Reply<Reply> reply(Reply* (*function)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                                        Cookie cookie) const {
        return X11Reply<Reply>(function(m_connection, cookie, nullptr));
    }

    /// Drops the error that a checked request may end in, so that Qt does not complain of it.
    void ignoreErrors(xcb_void_cookie_t cookie) const { xcb_discard_reply(m_connection, cookie.sequence); }

    /// Sends what is still buffered.
    void flush() const { xcb_flush(m_connection); }

    /// A property made of 32-bit words, in full; empty where there is none, or one of another type or word length.
    [[nodiscard]] std::vector<std::uint32_t> wordsOfProperty(xcb_window_t window, const char* property,
                                                             xcb_atom_t type) const;

    /// The first word of such a property.
    [[nodiscard]] std::optional<std::uint32_t> wordOfProperty(xcb_window_t window, const char* property,
                                                              xcb_atom_t type) const;

    /// A property made of bytes, whatever its type; null where there is none.
    [[nodiscard]] QByteArray bytesOfProperty(xcb_window_t window, const char* property) const;

    /// Whether `window` has `property`, whatever its value.
    [[nodiscard]] bool hasProperty(xcb_window_t window, const char* property) const;

    /// Sets a property made of 32-bit words.
    void setProperty(xcb_window_t window, const char* property, xcb_atom_t type,
                     const std::vector<std::uint32_t>& words) const;

    /// Takes a property away.
    void removeProperty(xcb_window_t window, const char* property) const;

    /// Whether the window manager announces `hint` in _NET_SUPPORTED. The list is read again when it changes.
    [[nodiscard]] bool windowManagerSupports(const char* hint) const;

    /// Asks the window manager for something about `window`: a client message to the root window.
    void sendToRoot(xcb_window_t window, const char* message, const std::array<std::uint32_t, 5>& data) const;

    /// Sends a client message to `window` itself.
    void sendTo(xcb_window_t window, const char* message, const std::array<std::uint32_t, 5>& data) const;

    /// Adds to the events that this application hears of `window`; those selected before stay selected.
    void selectEvents(xcb_window_t window, std::uint32_t eventMask) const;

    /// Whether `window` was made by this application, a Qt window or not.
    [[nodiscard]] bool isOwn(xcb_window_t window) const;

    /// Whether a window of this application has the keyboard, by the server's own word: a window that bypasses the
    /// window manager takes it without the manager's knowledge, and Qt tells late that it has gone.
    [[nodiscard]] bool hasKeyboard() const;

    /// The window that stands for `window` among the children of the root window: the window manager's frame around it,
    /// or `window` itself where it has none. XCB_NONE for a window that is gone.
    [[nodiscard]] xcb_window_t frameOf(xcb_window_t window) const;

    /// The server's time of the latest event that carried one, for requests that want to be known as recent;
    /// XCB_CURRENT_TIME before the first.
    [[nodiscard]] xcb_timestamp_t latestTime() const { return m_latestTime; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

Q_SIGNALS:
    /// A property of the root window was set or taken away. From within the event's delivery: do little.
    void rootPropertyChanged(xcb_atom_t property);

private:
    X11Connection(xcb_connection_t* connection, xcb_screen_t* screen, QObject* parent);

    void noteTime(const xcb_generic_event_t& event);
    void send(xcb_window_t receiver, std::uint32_t eventMask, xcb_window_t window, const char* message,
              const std::array<std::uint32_t, 5>& data) const;

    xcb_connection_t* m_connection;
    xcb_screen_t* m_screen;
    std::uint8_t m_inputExtension = 0; ///< the major code of XInput, 0 where the server has none
    xcb_timestamp_t m_latestTime = XCB_CURRENT_TIME;
    mutable QHash<QByteArray, xcb_atom_t> m_atoms;
    mutable std::optional<std::vector<std::uint32_t>> m_supportedHints;
};

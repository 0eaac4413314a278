// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QPointF>
#include <QPointer>
#include <QString>

#include <cstdint>

class NSWindow;
class QEvent;

/// What an event is, by AppKit's numbers.
enum NSEventType {
    NSLeftMouseDown = 1,      ///< the left button was pressed
    NSLeftMouseUp = 2,        ///< the left button was released
    NSRightMouseDown = 3,     ///< the right button was pressed
    NSRightMouseUp = 4,       ///< the right button was released
    NSMouseMoved = 5,         ///< the pointer has moved while no button is down
    NSLeftMouseDragged = 6,   ///< the pointer has moved while the left button is down
    NSRightMouseDragged = 7,  ///< the pointer has moved while the right button is down
    NSMouseEntered = 8,       ///< the pointer has come over the view
    NSMouseExited = 9,        ///< the pointer has left the view
    NSKeyDown = 10,           ///< a key was pressed, or is held down and repeats itself
    NSKeyUp = 11,             ///< a key was released
    NSScrollWheel = 22,       ///< the wheel was turned, or a touchpad scrolled by
    NSOtherMouseDown = 25,    ///< another button was pressed
    NSOtherMouseUp = 26,      ///< another button was released
    NSOtherMouseDragged = 27, ///< the pointer has moved while another button is down
};

/// Caps Lock; a bit of NSEvent::modifierFlags, as those below.
inline constexpr unsigned NSAlphaShiftKeyMask = 1U << 16U;
/// Shift.
inline constexpr unsigned NSShiftKeyMask = 1U << 17U;
/// Control on an Apple keyboard; the Super key of a PC keyboard.
inline constexpr unsigned NSControlKeyMask = 1U << 18U;
/// Option, which is Alt.
inline constexpr unsigned NSAlternateKeyMask = 1U << 19U;
/// The key that carries a desktop's shortcuts: Control on a PC keyboard.
inline constexpr unsigned NSCommandKeyMask = 1U << 20U;
/// The key is one of the keypad.
inline constexpr unsigned NSNumericPadKeyMask = 1U << 21U;

/// An event of the mouse or the keyboard, as a window hands it to its views.
///
/// Lives as long as its delivery; copy what outlasts that. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSEvent {
public:
    /// An event of `window` made from one of Qt's. The motion since the last event of the mouse is worked out from its
    /// place on the screen, so the same Qt event must not be turned into two of these: see forDelivery.
    /// The type is 0 for an event of another kind.
    NSEvent(QEvent& event, NSWindow* window);

    /// One that no device caused: a click told by another program, or a test's.
    /// AppKit: `+mouseEventWithType:location:modifierFlags:timestamp:windowNumber:…`.
    [[nodiscard]] static NSEvent mouseEventWithType(NSEventType type, const NSPoint& location, unsigned modifierFlags,
                                                    NSWindow* window, int clickCount);
    /// The same for a key. AppKit: `+keyEventWithType:location:modifierFlags:…`.
    [[nodiscard]] static NSEvent keyEventWithType(NSEventType type, unsigned modifierFlags, NSWindow* window,
                                                  const QString& characters, std::uint16_t keyCode);

    /// The event as a view gets it, of which `event` is Qt's own form: the one that the window is just delivering, or a
    /// new one where the event came by another way.
    [[nodiscard]] static NSEvent forDelivery(QEvent& event, NSWindow* window);

    /// The event that is being delivered, or null. AppKit: `NSApplication -currentEvent`.
    [[nodiscard]] static const NSEvent* currentEvent();

    /// What the event is; 0 for one of Qt's that is none of these. AppKit: `-type`.
    [[nodiscard]] NSEventType type() const { return m_type; }
    /// The window that the event is for; null when it is gone.
    [[nodiscard]] NSWindow* window() const;
    /// The number of that window (NSWindow::windowNumber); -1 where there is none. AppKit: `-windowNumber`.
    [[nodiscard]] int windowNumber() const;
    /// In points from the bottom left of the window; of an event of the mouse.
    [[nodiscard]] NSPoint locationInWindow() const { return m_location; }
    /// How far the pointer has moved to the right since the last event, in points. Of an event of the wheel, how far it
    /// was turned, in lines. AppKit: `-deltaX`.
    [[nodiscard]] double deltaX() const { return m_deltaX; }
    /// The same for y, which grows DOWNWARDS for the pointer. AppKit: `-deltaY`.
    [[nodiscard]] double deltaY() const { return m_deltaY; }
    /// 1 for a click, 2 for the second of a double click; the same of the button's release.
    [[nodiscard]] int clickCount() const { return m_clickCount; }
    /// 0 left, 1 right, 2 and above the others.
    [[nodiscard]] int buttonNumber() const { return m_buttonNumber; }
    /// The bits above.
    [[nodiscard]] unsigned modifierFlags() const { return m_modifierFlags; }
    /// The number of the key by its place on an ANSI keyboard: Return 36, keypad Enter 76, Tab 48, V 9, Escape 53.
    /// NSUnknownKeyCode for a key that has none.
    [[nodiscard]] std::uint16_t keyCode() const { return m_keyCode; }
    /// The text that the key makes with the modifiers that are held. AppKit: `-characters`.
    [[nodiscard]] QString characters() const { return m_characters; }
    /// The text that it would make if no modifier but Shift were held. AppKit: `-charactersIgnoringModifiers`.
    [[nodiscard]] QString charactersIgnoringModifiers() const { return m_charactersIgnoringModifiers; }
    /// Whether the key is held down. AppKit: `-isARepeat`.
    [[nodiscard]] bool isARepeat() const { return m_isARepeat; }
    /// Seconds on a clock that only ever goes forward. AppKit: `-timestamp`.
    [[nodiscard]] double timestamp() const { return m_timestamp; }

    /// Qt's event behind it, for the platform alone; null for one that no device caused.
    [[nodiscard]] QEvent* qtEvent() const { return m_qtEvent; }

    /// Makes an event the current one while it lives.
    class VXKIT_EXPORT Delivery {
    public:
        /// `event` must live as long.
        explicit Delivery(const NSEvent& event);
        Delivery(const Delivery&) = delete;
        Delivery& operator=(const Delivery&) = delete;
        ~Delivery();

    private:
        const NSEvent* m_previous;
    };

private:
    NSEvent() = default;

    void readMouse(QEvent& event);
    void readKey(QEvent& event);
    void readWheel(QEvent& event);
    void readPlace(const QPointF& global);

    NSEventType m_type{};
    QPointer<QObject> m_window;
    NSPoint m_location;
    double m_deltaX = 0;
    double m_deltaY = 0;
    int m_clickCount = 0;
    int m_buttonNumber = 0;
    unsigned m_modifierFlags = 0;
    std::uint16_t m_keyCode = 0;
    QString m_characters;
    QString m_charactersIgnoringModifiers;
    bool m_isARepeat = false;
    double m_timestamp = 0;
    QEvent* m_qtEvent = nullptr;
};

/// The key code of a key that has no place of its own in AppKit's numbering.
inline constexpr std::uint16_t NSUnknownKeyCode = 0xffff;

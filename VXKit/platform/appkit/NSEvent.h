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
    NSLeftMouseDown = 1,
    NSLeftMouseUp = 2,
    NSRightMouseDown = 3,
    NSRightMouseUp = 4,
    NSMouseMoved = 5,
    NSLeftMouseDragged = 6,
    NSRightMouseDragged = 7,
    NSMouseEntered = 8,
    NSMouseExited = 9,
    NSKeyDown = 10,
    NSKeyUp = 11,
    NSScrollWheel = 22,
    NSOtherMouseDown = 25,
    NSOtherMouseUp = 26,
    NSOtherMouseDragged = 27,
};

/// Bits of NSEvent::modifierFlags. The Command bit is the key that carries a desktop's shortcuts: Control on a PC
/// keyboard, whose Super key is the Control bit.
inline constexpr unsigned NSAlphaShiftKeyMask = 1U << 16U;
inline constexpr unsigned NSShiftKeyMask = 1U << 17U;
inline constexpr unsigned NSControlKeyMask = 1U << 18U;
inline constexpr unsigned NSAlternateKeyMask = 1U << 19U;
inline constexpr unsigned NSCommandKeyMask = 1U << 20U;
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

    [[nodiscard]] NSEventType type() const { return m_type; }
    /// The window that the event is for; null when it is gone.
    [[nodiscard]] NSWindow* window() const;
    [[nodiscard]] int windowNumber() const;
    /// In points from the bottom left of the window; of an event of the mouse.
    [[nodiscard]] NSPoint locationInWindow() const { return m_location; }
    /// How far the pointer has moved since the last event, in points; x grows to the right and y DOWNWARDS. Of an event
    /// of the wheel, how far it was turned, in lines.
    [[nodiscard]] double deltaX() const { return m_deltaX; }
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
    /// The text that the key makes, and the same as if no modifier but Shift were held.
    [[nodiscard]] QString characters() const { return m_characters; }
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

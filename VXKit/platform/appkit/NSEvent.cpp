// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSEvent.h>

#include <VXKit/platform/appkit/NSWindow.h>

#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

constexpr double millisecondsPerSecond = 1000;
constexpr double wheelUnitsPerLine = 120; // Qt counts in eighths of a degree, and a notch of 15 degrees is a line

const NSEvent* current = nullptr;

/// Where the pointer was at the last event, in Qt's global coordinates.
std::optional<QPointF>& lastPointerPosition() {
    static std::optional<QPointF> position;
    return position;
}

/// Of the last button that was pressed.
int lastClickCount = 0;

struct KeyPlace {
    int key;
    std::uint16_t code;
};

// The places of an ANSI keyboard.
constexpr std::array keyPlaces{
    KeyPlace{Qt::Key_A, 0},          KeyPlace{Qt::Key_S, 1},          KeyPlace{Qt::Key_D, 2},
    KeyPlace{Qt::Key_F, 3},          KeyPlace{Qt::Key_H, 4},          KeyPlace{Qt::Key_G, 5},
    KeyPlace{Qt::Key_Z, 6},          KeyPlace{Qt::Key_X, 7},          KeyPlace{Qt::Key_C, 8},
    KeyPlace{Qt::Key_V, 9},          KeyPlace{Qt::Key_B, 11},         KeyPlace{Qt::Key_Q, 12},
    KeyPlace{Qt::Key_W, 13},         KeyPlace{Qt::Key_E, 14},         KeyPlace{Qt::Key_R, 15},
    KeyPlace{Qt::Key_Y, 16},         KeyPlace{Qt::Key_T, 17},         KeyPlace{Qt::Key_1, 18},
    KeyPlace{Qt::Key_2, 19},         KeyPlace{Qt::Key_3, 20},         KeyPlace{Qt::Key_4, 21},
    KeyPlace{Qt::Key_6, 22},         KeyPlace{Qt::Key_5, 23},         KeyPlace{Qt::Key_Equal, 24},
    KeyPlace{Qt::Key_9, 25},         KeyPlace{Qt::Key_7, 26},         KeyPlace{Qt::Key_Minus, 27},
    KeyPlace{Qt::Key_8, 28},         KeyPlace{Qt::Key_0, 29},         KeyPlace{Qt::Key_BracketRight, 30},
    KeyPlace{Qt::Key_O, 31},         KeyPlace{Qt::Key_U, 32},         KeyPlace{Qt::Key_BracketLeft, 33},
    KeyPlace{Qt::Key_I, 34},         KeyPlace{Qt::Key_P, 35},         KeyPlace{Qt::Key_Return, 36},
    KeyPlace{Qt::Key_L, 37},         KeyPlace{Qt::Key_J, 38},         KeyPlace{Qt::Key_Apostrophe, 39},
    KeyPlace{Qt::Key_K, 40},         KeyPlace{Qt::Key_Semicolon, 41}, KeyPlace{Qt::Key_Backslash, 42},
    KeyPlace{Qt::Key_Comma, 43},     KeyPlace{Qt::Key_Slash, 44},     KeyPlace{Qt::Key_N, 45},
    KeyPlace{Qt::Key_M, 46},         KeyPlace{Qt::Key_Period, 47},    KeyPlace{Qt::Key_Tab, 48},
    KeyPlace{Qt::Key_Backtab, 48},   KeyPlace{Qt::Key_Space, 49},     KeyPlace{Qt::Key_QuoteLeft, 50},
    KeyPlace{Qt::Key_Backspace, 51}, KeyPlace{Qt::Key_Escape, 53},    KeyPlace{Qt::Key_Enter, 76},
    KeyPlace{Qt::Key_F5, 96},        KeyPlace{Qt::Key_F6, 97},        KeyPlace{Qt::Key_F7, 98},
    KeyPlace{Qt::Key_F3, 99},        KeyPlace{Qt::Key_F8, 100},       KeyPlace{Qt::Key_F9, 101},
    KeyPlace{Qt::Key_F11, 103},      KeyPlace{Qt::Key_F10, 109},      KeyPlace{Qt::Key_F12, 111},
    KeyPlace{Qt::Key_Help, 114},     KeyPlace{Qt::Key_Home, 115},     KeyPlace{Qt::Key_PageUp, 116},
    KeyPlace{Qt::Key_Delete, 117},   KeyPlace{Qt::Key_F4, 118},       KeyPlace{Qt::Key_End, 119},
    KeyPlace{Qt::Key_F2, 120},       KeyPlace{Qt::Key_PageDown, 121}, KeyPlace{Qt::Key_F1, 122},
    KeyPlace{Qt::Key_Left, 123},     KeyPlace{Qt::Key_Right, 124},    KeyPlace{Qt::Key_Down, 125},
    KeyPlace{Qt::Key_Up, 126},
};

std::uint16_t keyCodeOf(int key) {
    const auto* const found =
        std::find_if(keyPlaces.begin(), keyPlaces.end(), [key](const KeyPlace& place) { return place.key == key; });
    return found == keyPlaces.end() ? NSUnknownKeyCode : found->code;
}

unsigned modifierFlagsOf(Qt::KeyboardModifiers modifiers) {
    unsigned flags = 0;
    const auto add = [&](Qt::KeyboardModifier modifier, unsigned flag) {
        if (modifiers.testFlag(modifier)) {
            flags |= flag;
        }
    };
    add(Qt::ShiftModifier, NSShiftKeyMask);
    add(Qt::ControlModifier, NSCommandKeyMask);
    add(Qt::MetaModifier, NSControlKeyMask);
    add(Qt::AltModifier, NSAlternateKeyMask);
    add(Qt::KeypadModifier, NSNumericPadKeyMask);
    return flags;
}

int buttonNumberOf(Qt::MouseButton button) {
    switch (button) {
    case Qt::NoButton:
    case Qt::LeftButton:
        return 0;
    case Qt::RightButton:
        return 1;
    default:
        return 2;
    }
}

int buttonNumberOf(NSEventType type) {
    switch (type) {
    case NSRightMouseDown:
    case NSRightMouseUp:
    case NSRightMouseDragged:
        return 1;
    case NSOtherMouseDown:
    case NSOtherMouseUp:
    case NSOtherMouseDragged:
        return 2;
    default:
        return 0;
    }
}

NSEventType pick(int buttonNumber, NSEventType left, NSEventType right, NSEventType other) {
    return buttonNumber == 0 ? left : buttonNumber == 1 ? right : other;
}

Qt::MouseButton heldButton(Qt::MouseButtons buttons) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
        if (buttons.testFlag(button)) {
            return button;
        }
    }
    return buttons ? Qt::MiddleButton : Qt::NoButton;
}

/// The text of a key by itself: Qt's names of the keys with a sign are the signs' own numbers.
QString charactersOfKey(const QKeyEvent& event) {
    const int key = event.key();
    if (key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde) {
        const QChar character(static_cast<char16_t>(key));
        return event.modifiers().testFlag(Qt::ShiftModifier) ? QString(character) : QString(character.toLower());
    }
    return event.text();
}

} // namespace

NSEvent::NSEvent(QEvent& event, NSWindow* window) : m_window(window), m_qtEvent(&event) {
    if (event.isInputEvent()) {
        const auto& input = static_cast<const QInputEvent&>(event);
        m_modifierFlags = modifierFlagsOf(input.modifiers());
        m_timestamp = static_cast<double>(input.timestamp()) / millisecondsPerSecond;
    }
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        readMouse(event);
        break;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        readKey(event);
        break;
    case QEvent::Wheel:
        readWheel(event);
        break;
    case QEvent::Enter:
        m_type = NSMouseEntered;
        readPlace(static_cast<const QEnterEvent&>(event).globalPosition());
        break;
    case QEvent::Leave:
        m_type = NSMouseExited;
        // Qt does not tell where.
        readPlace(lastPointerPosition().value_or(QPointF()));
        break;
    default:
        break;
    }
}

NSEvent NSEvent::mouseEventWithType(NSEventType type, const NSPoint& location, unsigned modifierFlags, NSWindow* window,
                                    int clickCount) {
    NSEvent event;
    event.m_type = type;
    event.m_location = location;
    event.m_modifierFlags = modifierFlags;
    event.m_window = window;
    event.m_clickCount = clickCount;
    event.m_buttonNumber = buttonNumberOf(type);
    return event;
}

NSEvent NSEvent::keyEventWithType(NSEventType type, unsigned modifierFlags, NSWindow* window, const QString& characters,
                                  std::uint16_t keyCode) {
    NSEvent event;
    event.m_type = type;
    event.m_modifierFlags = modifierFlags;
    event.m_window = window;
    event.m_characters = characters;
    event.m_charactersIgnoringModifiers = characters;
    event.m_keyCode = keyCode;
    return event;
}

NSEvent NSEvent::forDelivery(QEvent& event, NSWindow* window) {
    // Qt hands each view along the way an event of its own, with coordinates of its own; what AppKit tells of it is the
    // same for all.
    if (current && current->m_qtEvent && current->m_qtEvent->type() == event.type()) {
        NSEvent delivered(*current);
        delivered.m_qtEvent = &event;
        return delivered;
    }
    return {event, window};
}

const NSEvent* NSEvent::currentEvent() {
    return current;
}

NSWindow* NSEvent::window() const {
    return static_cast<NSWindow*>(m_window.data());
}

int NSEvent::windowNumber() const {
    return window() ? window()->windowNumber() : -1;
}

void NSEvent::readMouse(QEvent& event) {
    const auto& mouse = static_cast<const QMouseEvent&>(event);
    const bool isMove = mouse.type() == QEvent::MouseMove;
    m_buttonNumber = buttonNumberOf(isMove ? heldButton(mouse.buttons()) : mouse.button());
    if (isMove) {
        m_type = mouse.buttons() ? pick(m_buttonNumber, NSLeftMouseDragged, NSRightMouseDragged, NSOtherMouseDragged)
                                 : NSMouseMoved;
    } else if (mouse.type() == QEvent::MouseButtonRelease) {
        m_type = pick(m_buttonNumber, NSLeftMouseUp, NSRightMouseUp, NSOtherMouseUp);
        m_clickCount = lastClickCount;
    } else {
        m_type = pick(m_buttonNumber, NSLeftMouseDown, NSRightMouseDown, NSOtherMouseDown);
        m_clickCount = mouse.type() == QEvent::MouseButtonDblClick ? 2 : 1;
        lastClickCount = m_clickCount;
    }
    const QPointF global = mouse.globalPosition();
    if (const std::optional<QPointF>& last = lastPointerPosition(); isMove && last) {
        m_deltaX = global.x() - last->x();
        m_deltaY = global.y() - last->y();
    }
    lastPointerPosition() = global;
    readPlace(global);
}

void NSEvent::readPlace(const QPointF& global) {
    if (const NSWindow* in = window()) {
        const QPointF inWindow = in->QWidget::mapFromGlobal(global);
        m_location = {inWindow.x(), in->QWidget::height() - inWindow.y()};
    }
}

void NSEvent::readKey(QEvent& event) {
    const auto& key = static_cast<const QKeyEvent&>(event);
    m_type = key.type() == QEvent::KeyPress ? NSKeyDown : NSKeyUp;
    m_keyCode = keyCodeOf(key.key());
    m_characters = key.text();
    m_charactersIgnoringModifiers = charactersOfKey(key);
    m_isARepeat = key.isAutoRepeat();
}

void NSEvent::readWheel(QEvent& event) {
    const auto& wheel = static_cast<const QWheelEvent&>(event);
    m_type = NSScrollWheel;
    m_deltaX = wheel.angleDelta().x() / wheelUnitsPerLine;
    m_deltaY = wheel.angleDelta().y() / wheelUnitsPerLine;
    readPlace(wheel.globalPosition());
}

NSEvent::Delivery::Delivery(const NSEvent& event) : m_previous(std::exchange(current, &event)) {}

NSEvent::Delivery::~Delivery() {
    current = m_previous;
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSWindow.h>

#include <VXKit/platform/appkit/KeyCodes.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/WindowAccessibility.h>
#include <VXKit/platform/appkit/WindowList.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QApplication>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

using WindowList::allWindows;
using WindowList::placeInLevel;

namespace {

constexpr double windowWhite = 0.93;

/// Qt tells of a second press before the double click that it makes of it, which alone reaches widgets.
bool becomesDoubleClick(const QEvent& event) {
    return event.type() == QEvent::MouseButtonPress &&
           static_cast<const QMouseEvent&>(event).flags().testFlag(Qt::MouseEventCreatedDoubleClick);
}

bool isInputOfMouse(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
        return true;
    default:
        return false;
    }
}

bool isInputOfWindow(QEvent::Type type) {
    return isInputOfMouse(type) || type == QEvent::KeyPress || type == QEvent::KeyRelease;
}

} // namespace

/// Hands what the native window gets to sendEvent. An object of its own, so that a subclass may watch its views with an
/// event filter of the window's.
class NSWindow::InputFilter : public QObject {
public:
    explicit InputFilter(NSWindow* window) : QObject(window), m_window(*window) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Expose) {
            m_window.putBypassingWindowsBelow();
        }
        if (isInputOfMouse(event->type()) && m_window.m_ignoresMouseEvents) {
            return true; // where the window server hands it over all the same
        }
        if (!isInputOfWindow(event->type()) || becomesDoubleClick(*event)) {
            return false;
        }
        const NSEvent translated(*event, &m_window);
        const NSEvent::Delivery delivery(translated);
        m_window.sendEvent(translated);
        return true;
    }

private:
    NSWindow& m_window;
};

NSWindow::NSWindow(const NSRect& contentRect, unsigned styleMask, NSBackingStoreType /*backing*/, bool /*defer*/)
    : m_styleMask(styleMask), m_contentView(new NSView(this)), m_inputFilter(new InputFilter(this)),
      m_backgroundColor(NSColor::colorWithCalibratedWhite(windowWhite, 1)) {
    describeWindowsToAccessibility();
    setAttribute(Qt::WA_QuitOnClose, false);
    // Showing a window and giving it the keyboard are two things here.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    applyWindowFlags();
    m_answers.setSingleShot(true);
    m_answers.callOnTimeout(this, &NSWindow::stopWaitingForAnswers);
    m_frame = frameRectForContentRect(contentRect);
    place(m_frame);
    allWindows().insert(placeInLevel(m_level, NSWindowAbove), this);
    connect(&WindowEffects::sharedEffects(), &WindowEffects::compositingChanged, this, [this] {
        scheduleShapeUpdate();
        applyAlpha();
    });
}

NSWindow::~NSWindow() {
    std::erase(allWindows(), this);
    if (m_parentWindow) {
        m_parentWindow->removeChildWindow(this);
    }
}

void NSWindow::applyWindowFlags() {
    Qt::WindowFlags flags;
    if (m_management == NSWindowManagement::Bypassing) {
        flags = Qt::Window | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint;
    } else if ((m_styleMask & NSTitledWindowMask) == 0) {
        flags = Qt::Dialog | Qt::FramelessWindowHint;
    } else {
        flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
        flags.setFlag(Qt::WindowCloseButtonHint, (m_styleMask & NSClosableWindowMask) != 0);
        flags.setFlag(Qt::WindowMinimizeButtonHint, (m_styleMask & NSMiniaturizableWindowMask) != 0);
        flags.setFlag(Qt::WindowMaximizeButtonHint, (m_styleMask & NSResizableWindowMask) != 0);
    }
    flags.setFlag(Qt::WindowStaysOnTopHint, m_level > NSNormalWindowLevel);
    if (windowHandle()) {
        // QWidget's own would hide the window.
        windowHandle()->setFlag(Qt::WindowStaysOnTopHint, flags.testFlag(Qt::WindowStaysOnTopHint));
        overrideWindowFlags(flags);
    } else {
        setWindowFlags(flags);
    }
}

void NSWindow::setManagement(NSWindowManagement management) {
    if (management == m_management) {
        return;
    }
    m_management = management;
    // Which of the two a native window is was decided when it was made.
    if (testAttribute(Qt::WA_WState_Created)) {
        destroy();
        m_windowNumber = numberOfUnknown;
    }
    applyWindowFlags();
}

void NSWindow::setCollectionBehavior(unsigned behavior) {
    m_collectionBehavior = behavior;
    WindowEffects::sharedEffects().setOnAllDesktops(*this,
                                                    (behavior & NSWindowCollectionBehaviorCanJoinAllSpaces) != 0);
}

void NSWindow::setContentView(QWidget* view) {
    if (!view || view == m_contentView) {
        return;
    }
    // Before the old one goes, which the new one may have been in.
    view->setParent(this);
    delete std::exchange(m_contentView, view);
    view->lower();
    place(NSWindow::frame());
    view->show();
}

QWidget* NSWindow::firstResponder() const {
    QWidget* focused = focusWidget();
    return focused ? focused : const_cast<NSWindow*>(this);
}

bool NSWindow::makeFirstResponder(QWidget* responder) {
    if (!responder || responder == this) {
        // Not merely taken from the view: Qt would look for another one when the window is activated next.
        setFocus(Qt::OtherFocusReason);
        return true;
    }
    if (!isAncestorOf(responder) || !responder->isEnabled() || responder->focusPolicy() == Qt::NoFocus) {
        return false;
    }
    responder->setFocus(Qt::OtherFocusReason);
    return true;
}

void NSWindow::sendEvent(const NSEvent& event) {
    const QPointer<NSWindow> self(this);
    ViewCore* content = ViewCore::of(m_contentView);
    if (event.type() == NSKeyDown && content && (content->performKeyEquivalent(event) || !self)) {
        return;
    }
    if (event.type() == NSKeyDown && pressDefaultButton(event)) {
        return;
    }
    if (takeFirstClick(event)) {
        return;
    }
    if (event.qtEvent()) {
        if (QWindow* handle = windowHandle()) {
            // As QObject's, which is public, and past this window's own filter.
            static_cast<QObject*>(handle)->event(event.qtEvent());
        }
        return;
    }
    // Nothing of Qt's to hand on: straight to the view.
    const NSPoint location = event.locationInWindow();
    const bool isKey = event.type() == NSKeyDown || event.type() == NSKeyUp;
    const NSEvent::Delivery delivery(event);
    QWidget* receiver = isKey ? firstResponder() : childAt(QPointF(location.x, height() - location.y).toPoint());
    while (receiver && receiver != this && !ViewCore::of(receiver)) {
        receiver = receiver->parentWidget();
    }
    if (ViewCore* view = ViewCore::of(receiver)) {
        view->handleEvent(event);
    } else {
        handleUnusedEvent(event);
    }
}

/// Where a click makes the window the one with the keyboard, and the view under it does not want such a click, the
/// window alone gets it. For a managed window it is the window manager that makes it so, before it passes on the click,
/// afterwards, or with a click not at all: none is withheld there, as nowhere on such a desktop.
bool NSWindow::takeFirstClick(const NSEvent& event) {
    const NSEventType type = event.type();
    if (type == NSLeftMouseDown) {
        m_isInFirstClick = false;
        if (m_management == NSWindowManagement::Managed || !isVisible() || isKeyWindow() || !canBecomeKeyWindow()) {
            return false;
        }
        const NSPoint location = event.locationInWindow();
        const auto* view = dynamic_cast<ViewCore*>(childAt(QPointF(location.x, height() - location.y).toPoint()));
        m_isInFirstClick = view && !view->acceptsFirstMouse(event);
        const QPointer<NSWindow> self(this);
        makeKeyWindow();
        if (!self) {
            return true;
        }
    }
    if (!m_isInFirstClick || (type != NSLeftMouseDown && type != NSLeftMouseDragged && type != NSLeftMouseUp)) {
        return false;
    }
    m_isInFirstClick = type != NSLeftMouseUp;
    handleUnusedEvent(event);
    return true;
}

void NSWindow::setDefaultButtonCell(const NSButtonCell* cell) {
    m_defaultButton = cell ? cell->controlView() : nullptr;
}

NSButtonCell* NSWindow::defaultButtonCell() const {
    return m_defaultButton ? &m_defaultButton->cell() : nullptr;
}

bool NSWindow::pressDefaultButton(const NSEvent& event) {
    constexpr unsigned others = NSCommandKeyMask | NSAlternateKeyMask | NSControlKeyMask;
    if (!isReturnOrEnter(event) || (event.modifierFlags() & others) != 0 || !m_defaultButton ||
        !m_defaultButton->isVisible()) {
        return false;
    }
    // A key that is held was pressed for what was there before.
    if (!event.isARepeat()) {
        m_defaultButton->performClick(this);
    }
    return true;
}

void NSWindow::mouseDown(const NSEvent& /*event*/) {}
void NSWindow::mouseDragged(const NSEvent& /*event*/) {}
void NSWindow::mouseUp(const NSEvent& /*event*/) {}
void NSWindow::rightMouseDown(const NSEvent& /*event*/) {}
void NSWindow::keyDown(const NSEvent& event) {
    if (event.qtEvent()) {
        event.qtEvent()->ignore();
    }
}

void NSWindow::awakeFromNib() {}

bool NSWindow::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::WinIdChange:
        if (windowHandle()) {
            windowHandle()->installEventFilter(m_inputFilter);
        }
        break;
    case QEvent::WindowActivate:
        if (canBecomeKeyWindow()) {
            const bool result = QWidget::event(event);
            becomeKeyWindow();
            return result;
        }
        break;
    case QEvent::WindowDeactivate: {
        const bool result = QWidget::event(event);
        if (m_isKey) {
            resignKeyWindow();
        }
        return result;
    }
    default:
        break;
    }
    return QWidget::event(event);
}

void NSWindow::dispatch(QEvent& event) {
    handleUnusedEvent(NSEvent::forDelivery(event, this));
}

void NSWindow::handleUnusedEvent(const NSEvent& event) {
    switch (event.type()) {
    case NSLeftMouseDown:
        return mouseDown(event);
    case NSLeftMouseDragged:
        return mouseDragged(event);
    case NSLeftMouseUp:
        return mouseUp(event);
    case NSRightMouseDown:
        return rightMouseDown(event);
    case NSKeyDown:
        return keyDown(event);
    default:
        return;
    }
}

void NSWindow::mousePressEvent(QMouseEvent* event) {
    dispatch(*event);
}

void NSWindow::mouseReleaseEvent(QMouseEvent* event) {
    dispatch(*event);
}

void NSWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    dispatch(*event);
}

void NSWindow::mouseMoveEvent(QMouseEvent* event) {
    dispatch(*event);
}

void NSWindow::keyPressEvent(QKeyEvent* event) {
    dispatch(*event);
}

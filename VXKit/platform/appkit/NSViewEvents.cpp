// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSView.h>

#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSWindow.h>

#include <QEvent>
#include <QFocusEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// Asks the views below `widget`, through the plain widgets between.
bool performKeyEquivalentBelow(const QWidget& widget, const NSEvent& event) {
    // Watched, because one that is asked may take away those that are still to be.
    const QObjectList& objects = widget.children();
    const std::vector<QPointer<QObject>> children(objects.begin(), objects.end());
    return std::any_of(children.begin(), children.end(), [&](const QPointer<QObject>& object) {
        auto* child = qobject_cast<QWidget*>(object.data());
        if (!child || child->isWindow() || !child->isVisible() || !child->isEnabled()) {
            return false;
        }
        ViewCore* view = ViewCore::of(child);
        return view ? view->performKeyEquivalent(event) : performKeyEquivalentBelow(*child, event);
    });
}

/// The double click that a widget class of Qt's handles at this moment. Most pass it on to their mousePressEvent, which
/// is the view's again.
const QEvent* doubleClickOfWidget = nullptr;

QMouseEvent asPress(const QMouseEvent& doubleClick) {
    return {QEvent::MouseButtonPress, doubleClick.position(), doubleClick.scenePosition(), doubleClick.globalPosition(),
            doubleClick.button(),     doubleClick.buttons(),  doubleClick.modifiers(),     doubleClick.source()};
}

} // namespace

void ViewCore::handleAsWidget(QEvent& /*event*/) {}

void ViewCore::dispatch(QEvent& event) {
    if (&event == doubleClickOfWidget) {
        // Back from a class that takes it for a press: it is told of one, and the view no second time.
        QMouseEvent press = asPress(static_cast<const QMouseEvent&>(event));
        handleAsWidget(press);
        event.setAccepted(press.isAccepted());
        return;
    }
    const QPointer<QWidget> self(m_self);
    handleEvent(NSEvent::forDelivery(event, window()));
    if (!self) {
        // Qt would ask what is gone for its parent, to hand the event on.
        event.accept();
    }
}

void ViewCore::handleEvent(const NSEvent& event) {
    switch (event.type()) {
    case NSLeftMouseDown:
        return mouseDown(event);
    case NSLeftMouseUp:
        return mouseUp(event);
    case NSLeftMouseDragged:
        return mouseDragged(event);
    case NSRightMouseDown:
        return rightMouseDown(event);
    case NSRightMouseUp:
        return rightMouseUp(event);
    case NSRightMouseDragged:
        return rightMouseDragged(event);
    case NSOtherMouseDown:
        return otherMouseDown(event);
    case NSOtherMouseUp:
        return otherMouseUp(event);
    case NSOtherMouseDragged:
        return otherMouseDragged(event);
    case NSMouseMoved:
        return mouseMoved(event);
    case NSMouseEntered:
        return mouseEntered(event);
    case NSMouseExited:
        return mouseExited(event);
    case NSScrollWheel:
        return scrollWheel(event);
    case NSKeyDown:
        return keyDown(event);
    case NSKeyUp:
        return keyUp(event);
    }
    passToWidget(event);
}

void ViewCore::focus(QFocusEvent& event) {
    QEvent* const outer = std::exchange(m_focusEvent, &event);
    const QPointer<QWidget> self(m_self);
    event.type() == QEvent::FocusIn ? becomeFirstResponder() : resignFirstResponder();
    if (self) {
        m_focusEvent = outer;
    }
}

bool ViewCore::becomeFirstResponder() {
    if (m_focusEvent) {
        handleAsWidget(*m_focusEvent);
    }
    return true;
}

bool ViewCore::resignFirstResponder() {
    if (m_focusEvent) {
        handleAsWidget(*m_focusEvent);
    }
    return true;
}

void ViewCore::passToWidget(const NSEvent& event) {
    if (event.qtEvent()) {
        const bool isDoubleClick = event.qtEvent()->type() == QEvent::MouseButtonDblClick;
        const QScopedValueRollback<const QEvent*> doubleClick(doubleClickOfWidget,
                                                              isDoubleClick ? event.qtEvent() : nullptr);
        handleAsWidget(*event.qtEvent());
        return;
    }
    // Qt takes its own events on to the parent, this one nobody else does.
    if (ViewCore* next = of(superview())) {
        next->handleEvent(event);
    } else if (NSWindow* last = window()) {
        last->handleUnusedEvent(event);
    }
}

void ViewCore::mouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::rightMouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseDragged(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::otherMouseUp(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseMoved(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseEntered(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::mouseExited(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::scrollWheel(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::keyDown(const NSEvent& event) {
    passToWidget(event);
}

void ViewCore::keyUp(const NSEvent& event) {
    passToWidget(event);
}

bool ViewCore::acceptsFirstMouse(const NSEvent& /*event*/) const {
    return false;
}

bool ViewCore::performKeyEquivalent(const NSEvent& event) {
    return performKeyEquivalentBelow(*m_self, event);
}

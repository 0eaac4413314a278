// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSWindow.h>

#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/WindowList.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QApplication>
#include <QPointer>
#include <QWindow>

#include <algorithm>
#include <utility>

using WindowList::allWindows;
using WindowList::areScreenUpdatesDisabled;
using WindowList::placeInLevel;
using WindowList::post;
using WindowList::watched;

namespace {

int screenUpdatesDisabled = 0;

QPointer<NSWindow>& currentMainWindow() {
    static QPointer<NSWindow> window;
    return window;
}

/// The main window that there was when another program got the keyboard.
QPointer<NSWindow>& mainWindowBefore() {
    static QPointer<NSWindow> window;
    return window;
}

void resignMainWindow() {
    if (const NSWindow* before = std::exchange(currentMainWindow(), nullptr)) {
        post(NSWindowDidResignMainNotification, before);
    }
}

NSWindow* windowWithNumber(int number) {
    const auto found = std::find_if(allWindows().begin(), allWindows().end(),
                                    [number](const NSWindow* window) { return window->windowNumber() == number; });
    return number > 0 && found != allWindows().end() ? *found : nullptr;
}

} // namespace

namespace WindowList {

std::vector<NSWindow*>& allWindows() {
    static std::vector<NSWindow*> windows;
    return windows;
}

std::vector<NSWindow*>::iterator placeInLevel(int level, NSWindowOrderingMode place) {
    return std::find_if(allWindows().begin(), allWindows().end(), [&](const NSWindow* window) {
        return place == NSWindowAbove ? window->level() > level : window->level() >= level;
    });
}

std::vector<QPointer<NSWindow>> watched(const std::vector<NSWindow*>& windows) {
    return {windows.begin(), windows.end()};
}

void post(const char* name, const NSWindow* window) {
    NSNotificationCenter::defaultCenter().postNotificationName(name, window);
}

bool areScreenUpdatesDisabled() {
    return screenUpdatesDisabled > 0;
}

} // namespace WindowList

void NSDisableScreenUpdates() {
    ++screenUpdatesDisabled;
}

void NSEnableScreenUpdates() {
    if (screenUpdatesDisabled == 0 || --screenUpdatesDisabled > 0) {
        return;
    }
    const std::vector<QPointer<NSWindow>> windows = watched(allWindows());
    // What appears first, so that there is never nothing.
    for (NSWindow* window : windows) {
        if (window->m_alphaValue > 0 && !window->m_goesOutLater && std::exchange(window->m_changesAlphaLater, false)) {
            window->applyLateAlpha();
        }
    }
    for (const QPointer<NSWindow>& window : windows) {
        if (window && std::exchange(window->m_changesAlphaLater, false)) {
            window->applyLateAlpha();
        }
        if (window && window->m_goesOutLater) {
            window->orderOutNow();
        }
    }
}

std::vector<NSWindow*> NSWindow::windows() {
    return allWindows();
}

NSWindow* NSWindow::keyWindow() {
    const auto found = std::find_if(allWindows().begin(), allWindows().end(),
                                    [](const NSWindow* window) { return window->isKeyWindow(); });
    return found == allWindows().end() ? nullptr : *found;
}

NSWindow* NSWindow::mainWindow() {
    return currentMainWindow();
}

void NSWindow::setLevel(int level) {
    if (level == m_level) {
        return;
    }
    m_level = level;
    applyWindowFlags();
    std::erase(allWindows(), this);
    allWindows().insert(placeInLevel(level, NSWindowAbove), this);
    if (isVisible()) {
        raise();
        orderHigherLevelsFront();
    }
}

void NSWindow::orderFront(QObject* /*sender*/) {
    orderWindow(NSWindowAbove, 0);
}

void NSWindow::orderBack(QObject* /*sender*/) {
    orderWindow(NSWindowBelow, 0);
}

void NSWindow::orderOut(QObject* /*sender*/) {
    orderWindow(NSWindowOut, 0);
}

void NSWindow::orderWindow(NSWindowOrderingMode place, int otherWindowNumber) {
    ++m_orderings;
    if (place != NSWindowOut) {
        orderIn(place, otherWindowNumber);
        return;
    }
    if (m_parentWindow) {
        m_parentWindow->setWentOutWithParent(this, false);
    }
    if (!isVisible()) {
        return;
    }
    if (areScreenUpdatesDisabled()) {
        m_goesOutLater = true;
    } else {
        orderOutNow();
    }
}

void NSWindow::orderIn(NSWindowOrderingMode place, int otherWindowNumber) {
    m_goesOutLater = false;
    const NSRect wanted = constrainFrameRect(frame());
    if (wanted != NSWindow::frame()) {
        NSWindow::setFrame(wanted, false);
    }
    const bool comesIn = !QWidget::isVisible();
    if (comesIn) {
        if (areScreenUpdatesDisabled()) {
            m_changesAlphaLater = true;
            m_comesInLater = true; // cut to nothing where it cannot be translucent
            if (WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency)) {
                setWindowOpacity(0);
            }
        } else {
            applyAlpha();
        }
        show();
        moveToPixel();
        display();
    }
    std::vector<NSWindow*>& windows = allWindows();
    std::erase(windows, this);
    NSWindow* const other = windowWithNumber(otherWindowNumber);
    if (other) {
        WindowEffects::sharedEffects().order(
            *this, place == NSWindowAbove ? WindowEffects::Place::Above : WindowEffects::Place::Below, other);
        const auto at = std::find(windows.begin(), windows.end(), other);
        windows.insert(place == NSWindowAbove ? std::next(at) : at, this);
    } else if (place == NSWindowAbove) {
        windows.insert(placeInLevel(m_level, place), this);
        raise();
        m_comesToFront = true;
        putBypassingWindowsBelow();
        orderHigherLevelsFront();
    } else {
        windows.insert(placeInLevel(m_level, place), this);
        lower();
        orderLowerLevelsBack();
    }
    const std::vector<Child> children = m_children;
    for (const Child& child : children) {
        if (child.window && (child.wentOutWithParent || child.window->isVisible())) {
            setWentOutWithParent(child.window, false);
            child.window->orderWindow(child.place, m_windowNumber);
        }
    }
}

void NSWindow::orderHigherLevelsFront() const {
    const std::vector<NSWindow*> windows = allWindows();
    for (NSWindow* window : windows) {
        if (window->m_level > m_level && window->isVisible()) {
            window->raise();
        }
    }
}

/// A window manager leaves the windows that pass it by above all of its own, and where it puts a new one is known when
/// that is on the screen.
void NSWindow::putBypassingWindowsBelow() {
    if (m_management == NSWindowManagement::Bypassing || !windowHandle() || !windowHandle()->isExposed() ||
        !std::exchange(m_comesToFront, false)) {
        return;
    }
    for (NSWindow* window : allWindows()) {
        if (window->m_management == NSWindowManagement::Bypassing && window->m_level <= m_level &&
            window->isVisible()) {
            WindowEffects::sharedEffects().order(*window, WindowEffects::Place::Below, this);
        }
    }
}

/// Above all that the window manager puts to the front while no window of ours stands in between.
void NSWindow::raiseBypassingWindows() const {
    if (m_management == NSWindowManagement::Bypassing) {
        return;
    }
    for (NSWindow* window : allWindows()) {
        if (window->m_management == NSWindowManagement::Bypassing && window->isVisible()) {
            window->raise();
        }
    }
}

void NSWindow::orderLowerLevelsBack() const {
    const std::vector<NSWindow*> windows = allWindows();
    std::for_each(windows.rbegin(), windows.rend(), [this](NSWindow* window) {
        if (window->m_level < m_level && window->isVisible()) {
            window->lower();
        }
    });
}

void NSWindow::orderOutNow() {
    m_goesOutLater = false;
    if (m_isKey) {
        // Before it goes: a window manager gives the keyboard of a window that goes to one of its own choosing.
        passKeyboardOn();
    }
    hide();
    m_backdrop = QImage();
    raiseBypassingWindows();
}

void NSWindow::passKeyboardOn() {
    const NSApplication* application = NSApplication::sharedApplication();
    // Of an application that was left, another program is about to have it. The keyboard counts, not what a subclass
    // calls active.
    if (!application || !application->NSApplication::isActive()) {
        return;
    }
    NSWindow* const modal = application->modalWindow();
    const auto canTakeIt = [this](const NSWindow* window) {
        return window && window != this && window->isVisible() && window->canBecomeKeyWindow();
    };
    if (canTakeIt(modal)) {
        modal->makeKeyWindow();
        return;
    }
    const auto next = std::find_if(allWindows().rbegin(), allWindows().rend(), canTakeIt);
    if (next != allWindows().rend()) {
        (*next)->makeKeyWindow();
    }
}

void NSWindow::orderChildrenOut() {
    const QPointer<NSWindow> self(this);
    for (const QPointer<NSWindow>& child : watched(childWindows())) {
        if (self && child && child->m_parentWindow == this && child->isVisible()) {
            setWentOutWithParent(child, true);
            child->orderOutNow();
        }
    }
}

void NSWindow::setWentOutWithParent(const NSWindow* child, bool flag) {
    const auto entry =
        std::find_if(m_children.begin(), m_children.end(), [child](const Child& each) { return each.window == child; });
    if (entry != m_children.end()) {
        entry->wentOutWithParent = flag;
    }
}

void NSWindow::makeKeyAndOrderFront(QObject* sender) {
    orderFront(sender);
    makeKeyWindow();
}

void NSWindow::makeKeyWindow() {
    if (!isVisible() || !canBecomeKeyWindow()) {
        return;
    }
    WindowEffects::sharedEffects().takeKeyboard(*this);
    if (windowHandle() == QGuiApplication::focusWindow() && !isActiveWindow()) {
        // It was hidden and shown in one go: Qt's widgets take it for inactive from then on, while Qt itself has not
        // noticed that the keyboard was ever elsewhere and will tell them nothing.
        QApplication::setActiveWindow(this);
    }
}

void NSWindow::addChildWindow(NSWindow* child, NSWindowOrderingMode place) {
    if (!child || child == this) {
        return;
    }
    if (child->m_parentWindow) {
        child->m_parentWindow->removeChildWindow(child);
    }
    child->m_parentWindow = this;
    m_children.push_back({child, place, false});
    if (isVisible()) {
        child->orderWindow(place, m_windowNumber);
    } else {
        m_children.back().wentOutWithParent = true;
    }
}

void NSWindow::removeChildWindow(NSWindow* child) {
    std::erase_if(m_children, [child](const Child& entry) { return !entry.window || entry.window == child; });
    if (child && child->m_parentWindow == this) {
        child->m_parentWindow = nullptr;
    }
}

std::vector<NSWindow*> NSWindow::childWindows() const {
    std::vector<NSWindow*> windows;
    for (const Child& child : m_children) {
        if (child.window) {
            windows.push_back(child.window);
        }
    }
    return windows;
}

bool NSWindow::canBecomeKeyWindow() const {
    return (m_styleMask & NSTitledWindowMask) != 0;
}

bool NSWindow::canBecomeMainWindow() const {
    return (m_styleMask & NSTitledWindowMask) != 0 && isVisible();
}

bool NSWindow::isMainWindow() const {
    return currentMainWindow() == this;
}

void NSWindow::becomeKeyWindow() {
    if (m_isKey || !canBecomeKeyWindow()) {
        return;
    }
    if (!isActiveWindow()) {
        makeKeyWindow();
        return;
    }
    const QPointer<NSWindow> self(this);
    // Qt tells the one that loses the keyboard after the one that gets it.
    if (NSWindow* before = keyWindow()) {
        before->resignKeyWindow();
    }
    if (!self || m_isKey) {
        return;
    }
    m_isKey = true;
    post(NSWindowDidBecomeKeyNotification, this);
    if (!self || !m_isKey) {
        return;
    }
    if (canBecomeMainWindow()) {
        becomeMainWindow();
    } else if (NSWindow* before = mainWindowBefore(); before && !currentMainWindow() && before->canBecomeMainWindow()) {
        before->becomeMainWindow();
    }
}

void NSWindow::becomeMainWindow() {
    mainWindowBefore() = nullptr;
    if (isMainWindow()) {
        return;
    }
    const QPointer<NSWindow> self(this);
    resignMainWindow();
    if (self) {
        currentMainWindow() = this;
        post(NSWindowDidBecomeMainNotification, this);
    }
}

void NSWindow::resignKeyWindow() {
    if (!m_isKey) {
        return;
    }
    m_isKey = false;
    post(NSWindowDidResignKeyNotification, this);
    // A panel that takes the keyboard leaves the main window the main one; another application does not.
    if (!QApplication::activeWindow() && currentMainWindow()) {
        mainWindowBefore() = currentMainWindow();
        resignMainWindow();
    }
}

void NSWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (m_isOneShot) {
        m_windowNumber = -1;
    }
    if (event->spontaneous()) {
        return; // the window manager's doing: the window is still ordered in
    }
    m_goesOutLater = false;
    const QPointer<NSWindow> self(this);
    orderChildrenOut();
    if (self && isMainWindow()) {
        resignMainWindow();
    }
}

void NSWindow::closeEvent(QCloseEvent* event) {
    const QPointer<NSWindow> self(this);
    ++m_orderings;
    post(NSWindowWillCloseNotification, this);
    if (!self) {
        return;
    }
    QWidget::closeEvent(event);
    // Here and not by Qt's hiding alone, so that the keyboard passes on as from any window that is ordered out.
    if (event->isAccepted() && QWidget::isVisible()) {
        orderOutNow();
    }
}

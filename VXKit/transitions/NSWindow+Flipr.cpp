// SPDX-License-Identifier: MIT
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <VXKit/transitions/FliprPanel.h>
#include <VXKit/transitions/FliprView.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>

#include <utility>

namespace {

bool cannotBeMade = false;

QPointer<FliprPanel>& sharedPanel() {
    static QPointer<FliprPanel> panel;
    return panel;
}

/// No window outlasts the application object.
void deleteSharedPanel() {
    delete std::exchange(sharedPanel(), nullptr).data();
}

} // namespace

NSPanel* flippingWindow() {
    if (sharedPanel() && FliprView::isInAnimation()) {
        return sharedPanel();
    }
    deleteSharedPanel();
    if (cannotBeMade || !QGuiApplication::primaryScreen()) {
        return nullptr;
    }
    sharedPanel() = new FliprPanel;
    qRemovePostRoutine(deleteSharedPanel);
    qAddPostRoutine(deleteSharedPanel);
    return sharedPanel();
}

void releaseFlippingWindow() {
    if (FliprPanel* const panel = std::exchange(sharedPanel(), nullptr)) {
        panel->deleteLater();
    }
}

void flipToShowWindow(NSWindow& window, NSWindow& other, bool forward) {
    const QPointer<NSWindow> from(&window);
    const QPointer<NSWindow> to(&other);
    other.setFrame(other.frame(), true);
    if (!from || !to) {
        return;
    }
    if (from == to) {
        other.makeKeyAndOrderFront(nullptr);
        return;
    }
    if (!flippingWindow()) {
        other.makeKeyAndOrderFront(nullptr);
        if (from) {
            window.orderOut(nullptr);
        }
        return;
    }
    sharedPanel()->card().setInitialWindow(window, other, forward);
}

NoFlippingWindowForTesting::NoFlippingWindowForTesting() {
    cannotBeMade = true;
}

NoFlippingWindowForTesting::~NoFlippingWindowForTesting() {
    cannotBeMade = false;
}

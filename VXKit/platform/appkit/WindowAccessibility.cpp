// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WindowAccessibility.h>

#include <VXKit/platform/appkit/NSWindow.h>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLatin1String>
#include <QObject>
#include <QString>

namespace {

class WindowAccessible : public QAccessibleWidget {
public:
    explicit WindowAccessible(NSWindow& window) : QAccessibleWidget(&window, QAccessible::Window) {}

    [[nodiscard]] QAccessible::Role role() const override {
        return widget()->isModal() ? QAccessible::Dialog : QAccessible::Window;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.modal = widget()->isModal();
        return state;
    }
};

/// Asked for an object's classes from its own up, so that a host's description of a class below NSWindow comes first.
QAccessibleInterface* describe(const QString& className, QObject* object) {
    if (className != QLatin1String(NSWindow::staticMetaObject.className())) {
        return nullptr;
    }
    auto* const window = qobject_cast<NSWindow*>(object);
    return window ? new WindowAccessible(*window) : nullptr;
}

} // namespace

void describeWindowsToAccessibility() {
    QAccessible::installFactory(describe); // which Qt does once
}

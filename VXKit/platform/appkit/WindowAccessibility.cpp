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
        // What the mouse goes through is a picture that comes and goes, not a place to be.
        state.invisible = state.invisible || isPicture();
        return state;
    }
    [[nodiscard]] int childCount() const override { return isPicture() ? 0 : QAccessibleWidget::childCount(); }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return isPicture() ? nullptr : QAccessibleWidget::child(index);
    }

private:
    [[nodiscard]] bool isPicture() const { return qobject_cast<NSWindow*>(widget())->ignoresMouseEvents(); }
};

/// Asked for an object's classes from its own up, so that a host's description of a class below NSWindow comes first.
QAccessibleInterface* describeWindow(const QString& className, QObject* object) {
    if (className != QLatin1String(NSWindow::staticMetaObject.className())) {
        return nullptr;
    }
    auto* const window = qobject_cast<NSWindow*>(object);
    return window ? new WindowAccessible(*window) : nullptr;
}

} // namespace

void describeWindowsToAccessibility() {
    QAccessible::installFactory(describeWindow); // which Qt does once
}

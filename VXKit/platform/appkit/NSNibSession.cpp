// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNibSession.h>

#include <VXKit/platform/appkit/LayoutPlacement.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/NibMasks.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QLayout>
#include <QLineEdit>
#include <QMetaProperty>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr const char* actionProperty = "action";
constexpr const char* autoresizingMaskProperty = "autoresizingMask";

template <class Setter>
void applyProperty(const QWidget& object, const char* name, const Setter& set) {
    const QVariant value = object.property(name);
    if (value.isValid()) {
        set(value);
    }
}

/// Calls `work` when a widget that has no size yet gets its first.
class FirstSize : public QObject {
public:
    FirstSize(QWidget& widget, std::function<void()> work) : QObject(&widget), m_work(std::move(work)) {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::Resize && m_work) {
            std::exchange(m_work, nullptr)();
            deleteLater();
        }
        return false;
    }

private:
    std::function<void()> m_work;
};

} // namespace

void NSNibConnections::Session::log(const QString& fault) {
    m_isWithoutFault = false;
    NSLog("%@: %@", m_path, fault);
}

void NSNibConnections::Session::finish(QWidget& root) {
    m_root = &root;
    for (const QString& fault : m_document.smallFaults) {
        log(fault);
    }
    collectObjects();
    applyEnumerations();
    if (auto* window = qobject_cast<NSWindow*>(&root)) {
        placeWindow(*window);
    } else if (ViewCore* view = ViewCore::of(&root)) {
        view->setFrame(view->frame());
    }
    applyProperties();
    layOut(root);
    setTabOrder();
    connectSignals();
}

void NSNibConnections::Session::connectActions(const std::weak_ptr<const bool>& ownersLife) {
    for (const QPointer<QWidget>& object : m_objects) {
        if (object) {
            connectAction(*object, ownersLife);
        }
    }
    const QList<QAction*> menuEntries = m_root ? m_root->findChildren<QAction*>() : QList<QAction*>();
    for (QAction* object : menuEntries) {
        connectAction(*object, ownersLife);
    }
}

void NSNibConnections::Session::awake() const {
    for (const QPointer<QWidget>& object : m_objects) {
        if (auto* window = qobject_cast<NSWindow*>(object.data())) {
            window->awakeFromNib();
        } else if (auto* view = dynamic_cast<ViewCore*>(object.data())) {
            view->awakeFromNib();
        }
    }
}

QObject* NSNibConnections::Session::objectNamed(const QString& name) const {
    if (name.isEmpty() || !m_root) {
        return nullptr;
    }
    return m_root->objectName() == name ? m_root : m_root->findChild<QObject*>(name);
}

QString NSNibConnections::Session::classNameOf(const QObject& object) const {
    const auto found = std::find(m_objects.begin(), m_objects.end(), &object);
    return found == m_objects.end() ? QString::fromLatin1(object.metaObject()->className())
                                    : m_document.objects[static_cast<std::size_t>(found - m_objects.begin())].className;
}

void NSNibConnections::Session::collectObjects() {
    m_objects.resize(m_document.objects.size());
    QWidgetList widgets = m_root->findChildren<QWidget*>();
    widgets.prepend(m_root);
    for (QWidget* widget : widgets) {
        const QVariant number = widget->property(NibDocument::numberProperty);
        if (number.isValid()) {
            widget->setProperty(NibDocument::numberProperty, QVariant());
            m_objects[number.toUInt()] = widget;
        }
    }
}

bool NSNibConnections::Session::isOfNib(const QWidget& widget) const {
    return std::find(m_objects.begin(), m_objects.end(), &widget) != m_objects.end();
}

void NSNibConnections::Session::applyEnumerations() {
    for (std::size_t number = 0; number < m_objects.size(); ++number) {
        if (m_objects[number]) {
            for (const NibDocument::Enumeration& enumeration : m_document.objects[number].enumerations) {
                applyEnumeration(*m_objects[number], enumeration);
            }
        }
    }
}

void NSNibConnections::Session::applyEnumeration(QWidget& object, const NibDocument::Enumeration& enumeration) {
    const QByteArray name = enumeration.name.toUtf8();
    const int index = object.metaObject()->indexOfProperty(name.constData());
    if (index < 0) {
        // One of the nib's own, or of a class that is not here.
        object.setProperty(name.constData(), enumeration.value);
        return;
    }
    const QMetaProperty property = object.metaObject()->property(index);
    bool isKnown = false;
    const int value = property.enumerator().keysToValue(unscoped(enumeration.value).constData(), &isKnown);
    if (!property.isEnumType() || !isKnown || !property.write(&object, value)) {
        logEnumeration(enumeration);
    }
}

QByteArray NSNibConnections::Session::unscoped(const QString& keys) {
    QStringList names = keys.split(QLatin1Char('|'));
    for (QString& name : names) {
        name = name.section(QStringLiteral("::"), -1).trimmed();
    }
    return names.join(QLatin1Char('|')).toUtf8();
}

void NSNibConnections::Session::logEnumeration(const NibDocument::Enumeration& enumeration) {
    log(QStringLiteral("\"%1\" is no value of the property \"%2\"").arg(enumeration.value, enumeration.name));
}

void NSNibConnections::Session::placeWindow(NSWindow& window) {
    // Of the file; the window's own would limit what it is set to below.
    const QSize least = window.minimumSize();
    const QSize most = window.maximumSize();
    const NSRect content = window.contentRectForFrameRect(static_cast<const NSWindow&>(window).NSWindow::frame());
    const auto frameSize = [&window](const QSize& size) {
        return window.frameRectForContentRect(NSMakeRect(0, 0, size.width(), size.height())).size;
    };
    if (!least.isEmpty()) {
        window.setMinSize(frameSize(least));
    }
    if (most != QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX)) {
        window.setMaxSize(frameSize(most));
    }
    window.setFrame(window.frameRectForContentRect(content), false);
}

void NSNibConnections::Session::applyProperties() {
    for (const QPointer<QWidget>& object : m_objects) {
        if (!object) {
            continue;
        }
        if (auto* button = dynamic_cast<NSButton*>(object.data())) {
            applyProperty(*button, "title", [&](const QVariant& title) { button->setTitle(title.toString()); });
            applyProperty(*button, "tag", [&](const QVariant& tag) { button->setTag(tag.toInt()); });
        } else if (auto* imageView = dynamic_cast<NSImageView*>(object.data())) {
            applyProperty(*imageView, "image",
                          [&](const QVariant& image) { imageView->setImage(NSImage::imageNamed(image.toString())); });
        }
    }
}

void NSNibConnections::Session::layOut(QWidget& widget) {
    if (widget.layout()) {
        widget.layout()->activate();
    }
    const bool hasSize = widget.isWindow() || widget.testAttribute(Qt::WA_Resized);
    // Adopting a view adds children of other kinds.
    const QObjectList children = widget.children();
    for (QObject* child : children) {
        auto* view = qobject_cast<QWidget*>(child);
        if (!view) {
            continue;
        }
        if (isOfNib(*view) && !isPlacedByLayout(widget.layout(), *view)) {
            adopt(widget, *view, hasSize);
        }
        layOut(*view);
    }
}

void NSNibConnections::Session::adopt(QWidget& superview, QWidget& view, bool superviewHasSize) {
    const QVariant mask = view.property(autoresizingMaskProperty);
    const bool isInView = dynamic_cast<ViewCore*>(&superview) != nullptr;
    if (!isInView && !mask.isValid()) {
        return;
    }
    ViewCore::attach(superview);
    ViewCore& core = ViewCore::attach(view);
    if (mask.isValid()) {
        if (const std::optional<unsigned> bits = NibMasks::autoresizingMask(mask.toString())) {
            core.setAutoresizingMask(*bits);
        } else {
            log(QStringLiteral("\"%1\" is no autoresizing mask").arg(mask.toString()));
        }
    }
    const auto setFrame = [&core] { core.setFrame(core.frame()); };
    if (superviewHasSize) {
        setFrame();
    } else {
        // How far the view is from the bottom edge is known then.
        new FirstSize(superview, [view = QPointer<QWidget>(&view), setFrame] {
            if (view) {
                setFrame();
            }
        });
    }
}

void NSNibConnections::Session::setTabOrder() {
    QList<QWidget*> widgets;
    for (const QString& name : m_document.tabStops) {
        if (auto* widget = qobject_cast<QWidget*>(objectNamed(name))) {
            widgets.append(widget);
        } else {
            log(QStringLiteral("there is no widget \"%1\", which the tab order names").arg(name));
        }
    }
    for (qsizetype index = 0; index < widgets.size(); ++index) {
        const bool isLast = index + 1 == widgets.size();
        QWidget* const next = isLast ? widgets.front() : widgets[index + 1];
        if (!isLast) {
            QWidget::setTabOrder(widgets[index], next);
        }
        if (ViewCore* view = ViewCore::of(widgets[index])) {
            view->setNextKeyView(next);
        }
    }
}

void NSNibConnections::Session::connectSignals() {
    for (const NibDocument::Connection& connection : m_document.connections) {
        QObject* const sender = objectNamed(connection.sender);
        QObject* const receiver = objectNamed(connection.receiver);
        if (!sender || !receiver) {
            log(QStringLiteral("there is no object \"%1\", which a connection names")
                    .arg(sender ? connection.receiver : connection.sender));
            continue;
        }
        const QMetaMethod signal = methodOf(*sender, connection.signal);
        const QMetaMethod slot = methodOf(*receiver, connection.slot);
        const bool canConnect =
            signal.methodType() == QMetaMethod::Signal && slot.isValid() && QMetaObject::checkConnectArgs(signal, slot);
        if (!canConnect || !QObject::connect(sender, signal, receiver, slot)) {
            log(QStringLiteral("%1 of \"%2\" cannot be connected to %3 of \"%4\"")
                    .arg(connection.signal, connection.sender, connection.slot, connection.receiver));
        }
    }
}

QMetaMethod NSNibConnections::Session::methodOf(const QObject& object, const QString& signature) {
    const QByteArray normalized = QMetaObject::normalizedSignature(signature.toUtf8().constData());
    return object.metaObject()->method(object.metaObject()->indexOfMethod(normalized.constData()));
}

void NSNibConnections::Session::connectAction(QObject& control, const std::weak_ptr<const bool>& ownersLife) {
    const QVariant property = control.property(actionProperty);
    if (!property.isValid()) {
        return;
    }
    const QString name = property.toString();
    const auto found = actions.find(name);
    if (found == actions.end()) {
        log(QStringLiteral("the owner has no action \"%1\", which \"%2\" names").arg(name, control.objectName()));
        return;
    }
    const auto send = [ownersLife, method = found->second, sender = &control] {
        if (!ownersLife.expired()) {
            method(sender);
        }
    };
    if (auto* button = qobject_cast<QAbstractButton*>(&control)) {
        QObject::connect(button, &QAbstractButton::clicked, button, send);
    } else if (auto* lineEdit = qobject_cast<QLineEdit*>(&control)) {
        QObject::connect(lineEdit, &QLineEdit::returnPressed, lineEdit, send);
    } else if (auto* comboBox = qobject_cast<QComboBox*>(&control)) {
        QObject::connect(comboBox, &QComboBox::activated, comboBox, send);
    } else if (auto* menuEntry = qobject_cast<QAction*>(&control)) {
        QObject::connect(menuEntry, &QAction::triggered, menuEntry, send);
    } else {
        log(QStringLiteral("\"%1\" of class %2 sends no action").arg(control.objectName(), classNameOf(control)));
    }
}

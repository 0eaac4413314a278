// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNib.h>

#include <VXKit/platform/appkit/LayoutPlacement.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSNibDocument.h>
#include <VXKit/platform/appkit/NSPanel.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/PlainLineEdit.h>
#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QLayout>
#include <QLineEdit>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSet>
#include <QStringList>
#include <QUiLoader>
#include <QVariant>

#include <algorithm>
#include <memory>
#include <numeric>
#include <optional>
#include <span>
#include <utility>

namespace {

constexpr const char* actionProperty = "action";
constexpr const char* autoresizingMaskProperty = "autoresizingMask";
constexpr unsigned defaultStyleMask =
    NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask | NSResizableWindowMask;

struct MaskBit {
    QLatin1String name;
    unsigned value;
};

constexpr MaskBit autoresizingBits[] = {
    {QLatin1String("NSViewNotSizable"), NSViewNotSizable},
    {QLatin1String("NSViewMinXMargin"), NSViewMinXMargin},
    {QLatin1String("NSViewWidthSizable"), NSViewWidthSizable},
    {QLatin1String("NSViewMaxXMargin"), NSViewMaxXMargin},
    {QLatin1String("NSViewMinYMargin"), NSViewMinYMargin},
    {QLatin1String("NSViewHeightSizable"), NSViewHeightSizable},
    {QLatin1String("NSViewMaxYMargin"), NSViewMaxYMargin},
};

constexpr MaskBit styleBits[] = {
    {QLatin1String("NSBorderlessWindowMask"), NSBorderlessWindowMask},
    {QLatin1String("NSTitledWindowMask"), NSTitledWindowMask},
    {QLatin1String("NSClosableWindowMask"), NSClosableWindowMask},
    {QLatin1String("NSMiniaturizableWindowMask"), NSMiniaturizableWindowMask},
    {QLatin1String("NSResizableWindowMask"), NSResizableWindowMask},
};

/// The mask that `text` tells, a number or names with bars between; nothing where it tells none.
std::optional<unsigned> maskFromText(const QString& text, std::span<const MaskBit> bits) {
    bool isNumber = false;
    const unsigned number = text.trimmed().toUInt(&isNumber);
    const unsigned all =
        std::accumulate(bits.begin(), bits.end(), 0U, [](unsigned sum, const MaskBit& bit) { return sum | bit.value; });
    if (isNumber) {
        return (number & ~all) == 0 ? std::optional(number) : std::nullopt;
    }
    unsigned mask = 0;
    for (const QString& name : text.split(QLatin1Char('|'))) {
        const auto bit = std::find_if(bits.begin(), bits.end(),
                                      [&](const MaskBit& candidate) { return candidate.name == name.trimmed(); });
        if (bit == bits.end()) {
            return std::nullopt;
        }
        mask |= bit->value;
    }
    return mask;
}

/// Takes away the folders in which Qt looks for plugins, from its making until it puts them back. A loader of forms
/// loads all of Designer's plugins in them when it is made, a whole web engine among them, before it can be told not
/// to.
class PluginFoldersAway {
protected:
    PluginFoldersAway() : m_folders(QCoreApplication::libraryPaths()) { QCoreApplication::setLibraryPaths({}); }

    void putBack() const { QCoreApplication::setLibraryPaths(m_folders); }

private:
    QStringList m_folders;
};

/// What Qt has a widget of by itself. Without Designer's plugins, which a program must not run because of a nib.
const QSet<QString>& widgetsOfQt(const QUiLoader& loader) {
    static const QSet<QString> widgets = [&] {
        const QStringList names = loader.availableWidgets();
        return QSet<QString>(names.begin(), names.end());
    }();
    return widgets;
}

/// The objects at the top of nibs that nobody took.
std::vector<QPointer<QWidget>>& keptObjects() {
    // Never destroyed, so that what is in it is not lost track of.
    static auto* const objects = new std::vector<QPointer<QWidget>>;
    return *objects;
}

/// Runs when the application object ends; what it deletes could not be deleted later.
void deleteKeptObjects() {
    std::vector<QPointer<QWidget>> objects = std::exchange(keptObjects(), {});
    // The last first, as it may count on what was there before it.
    std::reverse(objects.begin(), objects.end());
    for (const QPointer<QWidget>& object : objects) {
        if (object && !object->parent()) {
            delete object;
        }
    }
}

void keepUntilApplicationEnds(QWidget* object) {
    std::vector<QPointer<QWidget>>& objects = keptObjects();
    if (objects.empty()) {
        qAddPostRoutine(deleteKeptObjects);
    }
    objects.emplace_back(object);
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

/// A nib that is being instantiated.
class NSNibConnections::Session {
public:
    Session(const QString& path, const NibDocument& document) : m_path(path), m_document(document) {}

    [[nodiscard]] const NibDocument& document() const { return m_document; }
    [[nodiscard]] bool isWithoutFault() const { return m_isWithoutFault; }

    void log(const QString& fault) {
        m_isWithoutFault = false;
        NSLog("%@: %@", m_path, fault);
    }

    void finish(QWidget& root) {
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

    void connectActions(const std::weak_ptr<const bool>& ownersLife) {
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

    void awake() const {
        for (const QPointer<QWidget>& object : m_objects) {
            if (auto* window = qobject_cast<NSWindow*>(object.data())) {
                window->awakeFromNib();
            } else if (auto* view = dynamic_cast<ViewCore*>(object.data())) {
                view->awakeFromNib();
            }
        }
    }

    [[nodiscard]] QObject* objectNamed(const QString& name) const {
        if (name.isEmpty() || !m_root) {
            return nullptr;
        }
        return m_root->objectName() == name ? m_root : m_root->findChild<QObject*>(name);
    }

    /// The class of an object as the file has it.
    [[nodiscard]] QString classNameOf(const QObject& object) const {
        const auto found = std::find(m_objects.begin(), m_objects.end(), &object);
        return found == m_objects.end()
                   ? QString::fromLatin1(object.metaObject()->className())
                   : m_document.objects[static_cast<std::size_t>(found - m_objects.begin())].className;
    }

    std::map<QString, std::function<void(QObject*)>> actions;

private:
    void collectObjects() {
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

    [[nodiscard]] bool isOfNib(const QWidget& widget) const {
        return std::find(m_objects.begin(), m_objects.end(), &widget) != m_objects.end();
    }

    void applyEnumerations() {
        for (std::size_t number = 0; number < m_objects.size(); ++number) {
            if (m_objects[number]) {
                for (const NibDocument::Enumeration& enumeration : m_document.objects[number].enumerations) {
                    applyEnumeration(*m_objects[number], enumeration);
                }
            }
        }
    }

    void applyEnumeration(QWidget& object, const NibDocument::Enumeration& enumeration) {
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

    /// The keys of an enumeration without its name, which newer Designers write more of than Qt reads.
    [[nodiscard]] static QByteArray unscoped(const QString& keys) {
        QStringList names = keys.split(QLatin1Char('|'));
        for (QString& name : names) {
            name = name.section(QStringLiteral("::"), -1).trimmed();
        }
        return names.join(QLatin1Char('|')).toUtf8();
    }

    void logEnumeration(const NibDocument::Enumeration& enumeration) {
        log(QStringLiteral("\"%1\" is no value of the property \"%2\"").arg(enumeration.value, enumeration.name));
    }

    static void placeWindow(NSWindow& window) {
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

    void applyProperties() {
        for (const QPointer<QWidget>& object : m_objects) {
            if (!object) {
                continue;
            }
            if (auto* button = dynamic_cast<NSButton*>(object.data())) {
                applyProperty(*button, "title", [&](const QVariant& title) { button->setTitle(title.toString()); });
                applyProperty(*button, "tag", [&](const QVariant& tag) { button->setTag(tag.toInt()); });
            } else if (auto* imageView = dynamic_cast<NSImageView*>(object.data())) {
                applyProperty(*imageView, "image", [&](const QVariant& image) {
                    imageView->setImage(NSImage::imageNamed(image.toString()));
                });
            }
        }
    }

    template <class Setter>
    static void applyProperty(QWidget& object, const char* name, const Setter& set) {
        const QVariant value = object.property(name);
        if (value.isValid()) {
            set(value);
        }
    }

    /// Gives the views below `widget` their frames, from the top down, so that each superview has its size before.
    void layOut(QWidget& widget) {
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

    /// Makes the place that Designer gave a view its frame, with the springs that the file asks for.
    void adopt(QWidget& superview, QWidget& view, bool superviewHasSize) {
        const QVariant mask = view.property(autoresizingMaskProperty);
        const bool isInView = dynamic_cast<ViewCore*>(&superview) != nullptr;
        if (!isInView && !mask.isValid()) {
            return;
        }
        ViewCore::attach(superview);
        ViewCore& core = ViewCore::attach(view);
        if (mask.isValid()) {
            if (const std::optional<unsigned> bits = maskFromText(mask.toString(), autoresizingBits)) {
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

    void setTabOrder() {
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

    void connectSignals() {
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
            const bool canConnect = signal.methodType() == QMetaMethod::Signal && slot.isValid() &&
                                    QMetaObject::checkConnectArgs(signal, slot);
            if (!canConnect || !QObject::connect(sender, signal, receiver, slot)) {
                log(QStringLiteral("%1 of \"%2\" cannot be connected to %3 of \"%4\"")
                        .arg(connection.signal, connection.sender, connection.slot, connection.receiver));
            }
        }
    }

    [[nodiscard]] static QMetaMethod methodOf(const QObject& object, const QString& signature) {
        const QByteArray normalized = QMetaObject::normalizedSignature(signature.toUtf8().constData());
        return object.metaObject()->method(object.metaObject()->indexOfMethod(normalized.constData()));
    }

    void connectAction(QObject& control, const std::weak_ptr<const bool>& ownersLife) {
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

    const QString& m_path;
    const NibDocument& m_document;
    QPointer<QWidget> m_root;
    std::vector<QPointer<QWidget>> m_objects; // by their numbers
    bool m_isWithoutFault = true;
};

/// Makes the objects of a form: of the kit's classes by what was registered, and Qt's.
class NSNib::Loader : private PluginFoldersAway, public QUiLoader {
public:
    explicit Loader(NSNibConnections::Session& session) : m_session(session) {
        clearPluginPaths();
        putBack();
    }

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        QWidget* const superview = contentOf(parent);
        QString wanted = className;
        // A file may have a class extend itself.
        QSet<QString> asked;
        while (!wanted.isEmpty() && !asked.contains(wanted)) {
            asked.insert(wanted);
            if (const auto found = factories().find(wanted); found != factories().end()) {
                return makeOfKit(found->second, wanted, superview, name);
            }
            if (widgetsOfQt(*this).contains(wanted)) {
                return QUiLoader::createWidget(wanted, superview, name);
            }
            if (wanted == className && !std::exchange(m_logged[className], true)) {
                m_session.log(QStringLiteral("the class %1 is not known").arg(className));
            }
            wanted = m_session.document().baseClasses.value(wanted);
        }
        return QUiLoader::createWidget(QStringLiteral("QWidget"), superview, name);
    }

    QLayout* createLayout(const QString& className, QObject* parent, const QString& name) override {
        QObject* const place = parent && parent->isWidgetType() ? contentOf(static_cast<QWidget*>(parent)) : parent;
        if (availableLayouts().contains(className)) {
            return QUiLoader::createLayout(className, place, name);
        }
        m_session.log(QStringLiteral("the layout class %1 is not known").arg(className));
        return QUiLoader::createLayout(QStringLiteral("QVBoxLayout"), place, name);
    }

private:
    [[nodiscard]] static QWidget* contentOf(QWidget* parent) {
        auto* const window = qobject_cast<NSWindow*>(parent);
        return window ? window->contentView() : parent;
    }

    QWidget* makeOfKit(const Factory& factory, const QString& className, QWidget* parent, const QString& name) {
        QWidget* object = nullptr;
        if (factory.makesWindow && parent) {
            m_session.log(QStringLiteral("\"%1\" of class %2 is a window within a view").arg(name, className));
            object = new NSView(parent);
        } else {
            object = factory.make(parent, styleMaskOf(name));
        }
        if (factory.makesWindow) {
            // Until it has its size; a window of a fixed size would keep that which it was made with.
            object->setMinimumSize(0, 0);
            object->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
        }
        object->setObjectName(name);
        return object;
    }

    unsigned styleMaskOf(const QString& name) {
        const QString text = m_session.document().styleMasks.value(name);
        if (text.isNull()) {
            return defaultStyleMask;
        }
        const std::optional<unsigned> mask = maskFromText(text, styleBits);
        if (!mask) {
            m_session.log(QStringLiteral("\"%1\" is no style mask").arg(text));
        }
        return mask.value_or(defaultStyleMask);
    }

    NSNibConnections::Session& m_session;
    std::map<QString, bool> m_logged;
};

NSNibConnections::NSNibConnections(Session& session) : m_session(session) {}

NSNibConnections::~NSNibConnections() = default;

void NSNibConnections::action(const QString& name, std::function<void(QObject* sender)> method) {
    m_session.actions[name] = std::move(method);
}

QObject* NSNibConnections::objectNamed(const QString& name) {
    QObject* object = m_session.objectNamed(name);
    if (!object) {
        m_session.log(QStringLiteral("there is no object \"%1\" for the outlet").arg(name));
    }
    return object;
}

void NSNibConnections::logOtherClass(const QString& name, const std::type_info& wanted) {
    m_session.log(QStringLiteral("the object \"%1\" is of class %2, the outlet for it of class %3")
                      .arg(name, m_session.classNameOf(*m_session.objectNamed(name)),
                           QString::fromStdString(demangled(wanted.name()))));
}

NSNibOwner::NSNibOwner() : m_life(std::make_shared<const bool>(true)) {}

NSNibOwner::~NSNibOwner() = default;

void NSNibOwner::connectNib(NSNibConnections& /*connections*/) {}

void NSNibOwner::awakeFromNib() {}

NSNib::NSNib(const QString& nibName, NSBundle* bundle) {
    const NSBundle& source = bundle ? *bundle : NSBundle::mainBundle();
    m_path = source.pathForResource(nibName, QStringLiteral("ui"));
    if (m_path.isNull()) {
        NSLog("%@/%@.ui: there is no such nib", source.resourcePath(), nibName);
        return;
    }
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        NSLog("%@: %@", m_path, file.errorString());
        return;
    }
    auto document = std::make_unique<NibDocument>(NibDocument::read(file.readAll()));
    if (document->fault.isNull()) {
        m_document = std::move(document);
    } else {
        NSLog("%@: %@", m_path, document->fault);
    }
}

NSNib::~NSNib() = default;

bool NSNib::isValid() const {
    return m_document != nullptr;
}

bool NSNib::instantiateNibWithOwner(NSNibOwner& owner, std::vector<std::unique_ptr<QWidget>>* topLevelObjects) {
    if (!m_document) {
        return false;
    }
    NSNibConnections::Session session(m_path, *m_document);
    Loader loader(session);
    loader.setWorkingDirectory(QFileInfo(m_path).dir());
    QByteArray form = m_document->form;
    QBuffer buffer(&form);
    buffer.open(QIODevice::ReadOnly);
    QWidget* const root = loader.load(&buffer);
    if (!root) {
        session.log(loader.errorString());
        return false;
    }
    if (topLevelObjects) {
        topLevelObjects->emplace_back(root);
    } else {
        keepUntilApplicationEnds(root);
    }
    const std::weak_ptr<const bool> ownersLife = owner.m_life;
    session.finish(*root);
    NSNibConnections connections(session);
    owner.connectNib(connections);
    session.connectActions(ownersLife);
    session.awake();
    if (!ownersLife.expired()) {
        owner.awakeFromNib();
    }
    return session.isWithoutFault();
}

void NSNib::registerFactory(const QString& className, Factory factory) {
    factories().insert_or_assign(className, std::move(factory));
}

std::map<QString, NSNib::Factory>& NSNib::factories() {
    // Never destroyed: hosts may register classes before main, in static objects.
    static auto* const registered = new std::map<QString, Factory>{
        {QStringLiteral("NSButton"), factoryOf<NSButton>()},
        {QStringLiteral("NSImageView"), factoryOf<NSImageView>()},
        {QStringLiteral("NSPanel"), factoryOf<NSPanel>()},
        {QStringLiteral("NSTextField"), factoryOf<NSTextField>()},
        {QStringLiteral("NSView"), factoryOf<NSView>()},
        {QStringLiteral("NSWindow"), factoryOf<NSWindow>()},
        {QStringLiteral("PlainLineEdit"), factoryOf<PlainLineEdit>()},
    };
    return *registered;
}

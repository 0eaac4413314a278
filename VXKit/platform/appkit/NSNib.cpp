// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNib.h>

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/appkit/NSNibDocument.h>
#include <VXKit/platform/appkit/NSNibLoader.h>
#include <VXKit/platform/appkit/NSNibSession.h>
#include <VXKit/platform/appkit/NSPanel.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/PlainLineEdit.h>
#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/platform/foundation/NSLog.h>

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

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

} // namespace

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

QStringList NSNib::viewClasses() {
    QStringList names;
    for (const auto& [name, factory] : factories()) {
        if (!factory.makesWindow) {
            names.append(name);
        }
    }
    return names;
}

QWidget* NSNib::makeView(const QString& className, QWidget* parent) {
    const auto found = factories().find(className);
    return found == factories().end() || found->second.makesWindow ? nullptr : found->second.make(parent, 0);
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

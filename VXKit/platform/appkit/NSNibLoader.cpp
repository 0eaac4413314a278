// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNibLoader.h>

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/NibMasks.h>

#include <QSet>

#include <optional>
#include <utility>

namespace {

constexpr unsigned defaultStyleMask =
    NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask | NSResizableWindowMask;

/// What Qt has a widget of by itself. Without Designer's plugins, which a program must not run because of a nib.
const QSet<QString>& widgetsOfQt(const QUiLoader& loader) {
    static const QSet<QString> widgets = [&] {
        const QStringList names = loader.availableWidgets();
        return QSet<QString>(names.begin(), names.end());
    }();
    return widgets;
}

} // namespace

NSNib::Loader::Loader(NSNibConnections::Session& session) : m_session(session) {
    clearPluginPaths();
    putBack();
}

QWidget* NSNib::Loader::createWidget(const QString& className, QWidget* parent, const QString& name) {
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

QLayout* NSNib::Loader::createLayout(const QString& className, QObject* parent, const QString& name) {
    QObject* const place = parent && parent->isWidgetType() ? contentOf(static_cast<QWidget*>(parent)) : parent;
    if (availableLayouts().contains(className)) {
        return QUiLoader::createLayout(className, place, name);
    }
    m_session.log(QStringLiteral("the layout class %1 is not known").arg(className));
    return QUiLoader::createLayout(QStringLiteral("QVBoxLayout"), place, name);
}

QWidget* NSNib::Loader::contentOf(QWidget* parent) {
    auto* const window = qobject_cast<NSWindow*>(parent);
    return window ? window->contentView() : parent;
}

QWidget* NSNib::Loader::makeOfKit(const Factory& factory, const QString& className, QWidget* parent,
                                  const QString& name) {
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

unsigned NSNib::Loader::styleMaskOf(const QString& name) {
    const QString text = m_session.document().styleMasks.value(name);
    if (text.isNull()) {
        return defaultStyleMask;
    }
    const std::optional<unsigned> mask = NibMasks::styleMask(text);
    if (!mask) {
        m_session.log(QStringLiteral("\"%1\" is no style mask").arg(text));
    }
    return mask.value_or(defaultStyleMask);
}

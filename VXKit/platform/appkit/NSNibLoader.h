// SPDX-License-Identifier: MIT
// What makes the objects of a nib. For NSNib alone.
#pragma once

#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSNibSession.h>

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QUiLoader>

#include <map>

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

/// Makes the objects of a form: of the kit's classes by what was registered, and Qt's.
class NSNib::Loader : private PluginFoldersAway, public QUiLoader {
public:
    explicit Loader(NSNibConnections::Session& session);

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override;
    QLayout* createLayout(const QString& className, QObject* parent, const QString& name) override;

private:
    [[nodiscard]] static QWidget* contentOf(QWidget* parent);
    QWidget* makeOfKit(const Factory& factory, const QString& className, QWidget* parent, const QString& name);
    unsigned styleMaskOf(const QString& name);

    NSNibConnections::Session& m_session;
    std::map<QString, bool> m_logged;
};

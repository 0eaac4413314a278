// SPDX-License-Identifier: MIT
#pragma once

#include <designer/DesignerWidget.h>

#include <QList>
#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <vector>

/// The plugin by which Qt Designer, and every loader of forms that is told of it, has the kit's classes.
///
/// A program that loads nibs needs it not: NSNib knows the classes by itself.
class DesignerPlugin : public QObject, public QDesignerCustomWidgetCollectionInterface {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    /// The collection of all designerClasses().
    explicit DesignerPlugin(QObject* parent = nullptr);

    /// In the order of the list. They belong to the plugin.
    [[nodiscard]] QList<QDesignerCustomWidgetInterface*> customWidgets() const override;

private:
    std::vector<DesignerWidget> m_widgets;
};

// SPDX-License-Identifier: MIT
#include <designer/DesignerPlugin.h>

#include <VXKit/app/VXNibClasses.h>
#include <designer/DesignerPalette.h>

DesignerPlugin::DesignerPlugin(QObject* parent) : QObject(parent) {
    VXRegisterNibClasses();
    for (const DesignerClass& described : designerClasses()) {
        m_widgets.emplace_back(described);
    }
}

QList<QDesignerCustomWidgetInterface*> DesignerPlugin::customWidgets() const {
    QList<QDesignerCustomWidgetInterface*> widgets;
    for (const DesignerWidget& widget : m_widgets) {
        // The interface asks for pointers through which widgets are made, of a collection that is constant.
        widgets.append(const_cast<DesignerWidget*>(&widget));
    }
    return widgets;
}

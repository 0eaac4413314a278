// SPDX-License-Identifier: MIT
#pragma once

#include <designer/DesignerPalette.h>

#include <QIcon>
#include <QString>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

class QDesignerFormEditorInterface;
class QWidget;

/// A class of the kit as Designer and loaders of forms have it.
class DesignerWidget : public QDesignerCustomWidgetInterface {
public:
    /// The class `described`, which must outlive this.
    explicit DesignerWidget(const DesignerClass& described) : m_class(described) {}

    [[nodiscard]] QString name() const override;
    [[nodiscard]] QString group() const override;
    [[nodiscard]] QString toolTip() const override;
    [[nodiscard]] QString whatsThis() const override;
    [[nodiscard]] QString includeFile() const override;
    [[nodiscard]] QIcon icon() const override;
    [[nodiscard]] bool isContainer() const override { return m_class.isContainer; }
    /// What is dropped into a form, and what Qt's class for it is where the form is read without the plugin.
    [[nodiscard]] QString domXml() const override;

    [[nodiscard]] bool isInitialized() const override { return m_isInitialized; }
    void initialize(QDesignerFormEditorInterface* core) override;

    /// Made as a nib makes it, and awoken as one in a nib is (awakeFromNib): before it is first shown, when it has its
    /// properties.
    [[nodiscard]] QWidget* createWidget(QWidget* parent) override;

private:
    const DesignerClass& m_class;
    bool m_isInitialized = false;
};

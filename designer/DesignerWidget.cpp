// SPDX-License-Identifier: MIT
#include <designer/DesignerWidget.h>

#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSView.h>
#include <designer/DesignerView.h>

#include <QEvent>
#include <QLatin1String>
#include <QObject>
#include <QPixmap>
#include <QSize>
#include <QWidget>

namespace {

constexpr int iconSize = 22; // points, as Designer's own

/// Wakes a view when it is about to be seen for the first time.
class Awakening : public QObject {
public:
    explicit Awakening(QWidget& view) : QObject(&view) { view.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Polish) {
            watched->removeEventFilter(this);
            deleteLater();
            if (auto* const view = dynamic_cast<ViewCore*>(watched)) {
                view->awakeFromNib();
            }
        }
        return false;
    }
};

QString minimumSizeXml(const DesignerClass& described) {
    return described.leastWidth == 0 && described.leastHeight == 0
               ? QString()
               : QStringLiteral("<property name=\"minimumSize\"><size><width>%1</width><height>%2</height></size>"
                                "</property>")
                     .arg(described.leastWidth)
                     .arg(described.leastHeight);
}

} // namespace

QString DesignerWidget::name() const {
    return QString::fromLatin1(m_class.className);
}

QString DesignerWidget::group() const {
    return QStringLiteral("VXKit");
}

QString DesignerWidget::toolTip() const {
    return QString::fromLatin1(m_class.summary);
}

QString DesignerWidget::whatsThis() const {
    return QStringLiteral("%1. %2").arg(toolTip(), QString::fromLatin1(m_class.explanation)).trimmed();
}

QString DesignerWidget::includeFile() const {
    return QString::fromLatin1(m_class.includeFile);
}

QIcon DesignerWidget::icon() const {
    const QIcon drawing(QStringLiteral(":/VXKit/designer/icons/%1.svg").arg(name()));
    // Designer's list takes an icon that has no sizes of its own, as a drawing's has none, for none at all.
    QIcon icon;
    for (const double pixelRatio : {1.0, 2.0}) {
        icon.addPixmap(drawing.pixmap(QSize(iconSize, iconSize), pixelRatio));
    }
    return icon;
}

QString DesignerWidget::domXml() const {
    return QStringLiteral(
               "<ui language=\"c++\">"
               "<widget class=\"%1\" name=\"%2\">"
               "<property name=\"geometry\"><rect><x>0</x><y>0</y><width>%3</width><height>%4</height></rect>"
               "</property>%5%6"
               "</widget>"
               "<customwidgets><customwidget><class>%1</class><extends>%7</extends></customwidget>"
               "</customwidgets>"
               "</ui>")
        .arg(name(), QString::fromLatin1(m_class.objectName), QString::number(m_class.width),
             QString::number(m_class.height), minimumSizeXml(m_class), QString::fromLatin1(m_class.properties),
             QString::fromLatin1(m_class.extends));
}

void DesignerWidget::initialize(QDesignerFormEditorInterface* /*core*/) {
    m_isInitialized = true;
}

QWidget* DesignerWidget::createWidget(QWidget* parent) {
    QWidget* const widget =
        name() == QLatin1String("NSView") ? new DesignerView(parent) : NSNib::makeView(name(), parent);
    if (widget) {
        new Awakening(*widget);
    }
    return widget;
}

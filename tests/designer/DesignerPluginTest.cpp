// SPDX-License-Identifier: MIT
#include "DesignerTestSupport.h"

#include <VXKit/app/VXNibClasses.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSView.h>

#include <QBuffer>
#include <QIcon>
#include <QMetaObject>
#include <QPluginLoader>
#include <QSet>
#include <QStringList>
#include <QXmlStreamReader>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <algorithm>
#include <vector>

namespace {

constexpr int iconSize = 22; // of Designer's list, in points

class DesignerPluginTest : public PlainQtProgram {
protected:
    DesignerPluginTest() {
        auto* const collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(m_loader.instance());
        EXPECT_TRUE(collection) << m_loader.errorString().toStdString();
        if (collection) {
            widgets = collection->customWidgets();
        }
    }

    static std::string nameOf(const QDesignerCustomWidgetInterface* widget) { return widget->name().toStdString(); }

    /// The names of what a view that is dropped into a form is given.
    static QList<QByteArray> givenProperties(const QDesignerCustomWidgetInterface& widget) {
        QList<QByteArray> names;
        QXmlStreamReader form(widget.domXml());
        while (!form.atEnd()) {
            if (form.readNext() == QXmlStreamReader::StartElement && form.name() == QLatin1String("property")) {
                names.append(form.attributes().value(QLatin1String("name")).toLatin1());
            }
        }
        EXPECT_FALSE(form.hasError()) << form.errorString().toStdString();
        return names;
    }

    static std::unique_ptr<QWidget> dropped(const QDesignerCustomWidgetInterface& widget) {
        QUiLoader loader;
        loader.addPluginPath(QFileInfo(QStringLiteral(DESIGNER_PLUGIN)).path());
        QByteArray form = widget.domXml().toUtf8();
        form.replace("<ui language=\"c++\">", "<ui version=\"4.0\">");
        QBuffer buffer(&form);
        buffer.open(QIODevice::ReadOnly);
        return std::unique_ptr<QWidget>(loader.load(&buffer));
    }

    QList<QDesignerCustomWidgetInterface*> widgets;

private:
    QPluginLoader m_loader{QStringLiteral(DESIGNER_PLUGIN)};
};

} // namespace

TEST_F(DesignerPluginTest, OffersTheViewsThatNibsKnowAndNoOthers) {
    VXRegisterNibClasses();
    QStringList inNibs = NSNib::viewClasses();
    // A status item's view is no part of a form.
    EXPECT_TRUE(inNibs.removeOne(QStringLiteral("LTStatusItemView")));
    QStringList offered;
    for (const auto* widget : widgets) {
        offered.append(widget->name());
    }
    inNibs.sort();
    offered.sort();
    EXPECT_EQ(offered.join(u' ').toStdString(), inNibs.join(u' ').toStdString());
}

TEST_F(DesignerPluginTest, MakesViewsWhoseMetaObjectsHaveTheNamesThatFormsAreWrittenWith) {
    for (auto* widget : widgets) {
        QWidget parent;
        const QWidget* const made = widget->createWidget(&parent);
        ASSERT_TRUE(made) << nameOf(widget);
        EXPECT_EQ(made->metaObject()->className(), nameOf(widget));
        EXPECT_EQ(made->parentWidget(), &parent) << nameOf(widget);
        EXPECT_TRUE(ViewCore::of(made)) << nameOf(widget);
    }
}

TEST_F(DesignerPluginTest, NamesHeadersThatDeclareTheClasses) {
    for (const auto* widget : widgets) {
        QFile header(QStringLiteral(VXKIT_SOURCE_ROOT "/") + widget->includeFile());
        ASSERT_TRUE(header.open(QIODevice::ReadOnly)) << nameOf(widget);
        const QByteArray text = header.readAll();
        const QByteArray name = widget->name().toLatin1();
        EXPECT_TRUE(text.contains("class VXKIT_EXPORT " + name + " : ") || text.contains("using " + name + " = "))
            << nameOf(widget);
    }
}

TEST_F(DesignerPluginTest, ListsItsClassesTogetherWithWordsAndAPictureForEach) {
    std::vector<QImage> pictures;
    QSet<QString> words;
    for (const auto* widget : widgets) {
        EXPECT_EQ(widget->group(), QStringLiteral("VXKit")) << nameOf(widget);
        EXPECT_FALSE(widget->toolTip().isEmpty()) << nameOf(widget);
        EXPECT_TRUE(widget->whatsThis().startsWith(widget->toolTip())) << nameOf(widget);
        words.insert(widget->toolTip());
        EXPECT_FALSE(widget->icon().availableSizes().isEmpty()) << nameOf(widget);
        const QImage picture = widget->icon().pixmap(iconSize).toImage().convertToFormat(QImage::Format_ARGB32);
        ASSERT_EQ(picture.size(), QSize(iconSize, iconSize)) << nameOf(widget);
        EXPECT_EQ(std::count(pictures.begin(), pictures.end(), picture), 0) << nameOf(widget);
        pictures.push_back(picture);
    }
    EXPECT_EQ(words.size(), widgets.size());
}

TEST_F(DesignerPluginTest, DropsViewsThatHaveEveryPropertyTheyAreGiven) {
    for (const auto* widget : widgets) {
        const std::unique_ptr<QWidget> view = dropped(*widget);
        ASSERT_TRUE(view) << nameOf(widget);
        EXPECT_EQ(view->metaObject()->className(), nameOf(widget));
        for (const QByteArray& name : givenProperties(*widget)) {
            EXPECT_GE(view->metaObject()->indexOfProperty(name), 0) << nameOf(widget) << "." << name.toStdString();
        }
        EXPECT_FALSE(view->size().isEmpty()) << nameOf(widget);
        EXPECT_FALSE(view->objectName().isEmpty()) << nameOf(widget);
    }
}

TEST_F(DesignerPluginTest, LetsOnlyBoxesAndPlainViewsTakeOtherWidgets) {
    QStringList containers;
    for (const auto* widget : widgets) {
        if (widget->isContainer()) {
            containers.append(widget->name());
        }
    }
    EXPECT_EQ(containers, QStringList({QStringLiteral("NSView"), QStringLiteral("NSBox")}));
}

TEST_F(DesignerPluginTest, IsInitializedOnceDesignerHasDoneSo) {
    ASSERT_FALSE(widgets.isEmpty());
    QDesignerCustomWidgetInterface* const widget = widgets.first();
    EXPECT_FALSE(widget->isInitialized());
    widget->initialize(nullptr);
    EXPECT_TRUE(widget->isInitialized());
}

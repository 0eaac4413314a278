// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSNib.h>

#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/appkit/NSNibDocument.h>
#include <VXKit/platform/appkit/NSPanel.h>
#include <VXKit/platform/appkit/NSTextField.h>

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QTabWidget>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// What was written to standard error while `work` ran, by whomever, as lines.
std::vector<std::string> linesLoggedBy(const std::function<void()>& work) {
    testing::internal::CaptureStderr();
    work();
    const QString log = QString::fromStdString(testing::internal::GetCapturedStderr());
    std::vector<std::string> lines;
    for (const QString& line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        lines.push_back(line.toStdString());
    }
    return lines;
}

/// A view that writes down when it is awoken, and what was there then.
class WritingView : public NSView {
public:
    using NSView::NSView;

    void awakeFromNib() override {
        log.push_back(objectName().toStdString());
        superviewWhenAwoken = superview();
    }

    static inline std::vector<std::string> log;
    QWidget* superviewWhenAwoken = nullptr;
};

/// A view that is made with a frame, as most of AppKit's are.
class FramedView : public NSView {
public:
    explicit FramedView(const NSRect& frame) { setFrame(frame); }
};

class PanelOwner : public NSNibOwner {
public:
    void connectNib(NSNibConnections& connections) override {
        connections.outlet(QStringLiteral("panel"), panel);
        connections.outlet(QStringLiteral("box"), box);
        connections.outlet(QStringLiteral("button"), button);
        connections.outlet(QStringLiteral("checkBox"), checkBox);
        connections.outlet(QStringLiteral("label"), label);
        connections.outlet(QStringLiteral("line"), line);
        connections.outlet(QStringLiteral("count"), count);
        connections.outlet(QStringLiteral("choice"), choice);
        connections.outlet(QStringLiteral("entry"), entry);
        for (const char* name : {"go:", "enter:", "choose:"}) {
            connections.action(QString::fromLatin1(name), [this, name](QObject* sender) {
                sent.push_back(name + std::string(" from ") + sender->objectName().toStdString());
            });
        }
    }

    QPointer<NSPanel> panel;
    NSView* box = nullptr;
    NSButton* button = nullptr;
    NSButton* checkBox = nullptr;
    NSTextField* label = nullptr;
    QPointer<QLineEdit> line;
    QLabel* count = nullptr;
    QComboBox* choice = nullptr;
    QAction* entry = nullptr;
    std::vector<std::string> sent;
};

class WritingOwner : public NSNibOwner {
public:
    void connectNib(NSNibConnections& connections) override {
        connections.outlet(QStringLiteral("first"), first);
        connections.outlet(QStringLiteral("second"), second);
    }
    void awakeFromNib() override { WritingView::log.emplace_back(first ? "owner" : "owner before its outlets"); }

    WritingView* first = nullptr;
    WritingView* second = nullptr;
};

/// Puts what is called `name` into a field.
template <class T>
class OneOutlet : public NSNibOwner {
public:
    explicit OneOutlet(QString name) : m_name(std::move(name)) {}

    void connectNib(NSNibConnections& connections) override { connections.outlet(m_name, object); }

    QPointer<T> object;

private:
    QString m_name;
};

NSRect frameOf(const QWidget* widget) {
    const ViewCore* view = ViewCore::of(widget);
    return view ? view->frame() : NSMakeRect(-1, -1, -1, -1);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

class NSNibTest : public AppKitHost {
protected:
    void SetUp() override {
        NSNib::registerClass<WritingView>(QStringLiteral("WritingView"));
        NSNib::registerClass<FramedView>(QStringLiteral("FramedView"));
        WritingView::log.clear();
    }

    /// Loads a nib that is without fault.
    void load(const QString& name, NSNibOwner& owner) {
        const std::vector<std::string> log = linesLoggedBy([&, nibName = name] {
            NSNib nib(nibName);
            EXPECT_TRUE(nib.isValid());
            EXPECT_TRUE(nib.instantiateNibWithOwner(owner, &topLevelObjects));
        });
        EXPECT_THAT(log, IsEmpty());
        ASSERT_FALSE(topLevelObjects.empty());
    }

    /// What is logged when a nib is loaded that has faults.
    std::vector<std::string> faultsOf(const QString& name, NSNibOwner& owner) {
        return linesLoggedBy([&] { EXPECT_FALSE(NSNib(name).instantiateNibWithOwner(owner, &topLevelObjects)); });
    }

    std::vector<std::unique_ptr<QWidget>> topLevelObjects;
};

} // namespace

TEST_F(NSNibTest, ConnectsOutletsToTheObjectsOfTheirNames) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    ASSERT_TRUE(owner.panel && owner.box && owner.button && owner.label && owner.line && owner.count && owner.entry);
    EXPECT_EQ(owner.panel, topLevelObjects[0].get());
    EXPECT_EQ(owner.button->parentWidget(), owner.box);
    EXPECT_EQ(owner.button->objectName(), QStringLiteral("button"));
}

TEST_F(NSNibTest, PutsWhatIsInAWindowIntoItsContentView) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    EXPECT_EQ(owner.box->parentWidget(), owner.panel->contentView());
    EXPECT_EQ(owner.line->parentWidget(), owner.panel->contentView());
    EXPECT_EQ(owner.box->window(), owner.panel);
}

TEST_F(NSNibTest, SetsDesignersPropertiesOfTheKitsClasses) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    EXPECT_EQ(owner.panel->windowTitle(), QStringLiteral("Notes & more"));
    EXPECT_EQ(owner.button->title(), QStringLiteral("&Go"));
    EXPECT_EQ(owner.button->displayTitle(), QStringLiteral("Go"));
    EXPECT_EQ(owner.button->toolTip(), QStringLiteral("Goes"));
    EXPECT_EQ(owner.button->accessibleName(), QStringLiteral("Start"));
    EXPECT_EQ(owner.button->tag(), 7);
    EXPECT_TRUE(owner.button->isEnabled());
    EXPECT_FALSE(owner.checkBox->isEnabled());
    EXPECT_EQ(owner.checkBox->state(), NSOnState);
    EXPECT_EQ(owner.checkBox->title(), QStringLiteral("Always"));
    EXPECT_EQ(owner.checkBox->focusPolicy(), Qt::ClickFocus);
    EXPECT_EQ(owner.label->stringValue(), QStringLiteral("Name"));
    EXPECT_EQ(owner.line->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    EXPECT_EQ(owner.choice->count(), 2);
}

TEST_F(NSNibTest, MakesAWindowOfTheStyleAndSizesInTheFile) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    EXPECT_EQ(owner.panel->styleMask(), NSTitledWindowMask | NSResizableWindowMask);
    EXPECT_EQ(owner.panel->contentRectForFrameRect(owner.panel->frame()).size, NSMakeSize(400, 300));
    EXPECT_EQ(owner.panel->minSize(), NSMakeSize(300, 200));
    EXPECT_EQ(owner.panel->maxSize(), NSMakeSize(800, 600));
    EXPECT_EQ(frameOf(owner.panel->contentView()), NSMakeRect(0, 0, 400, 300));
    EXPECT_FALSE(owner.panel->isVisible());
}

TEST_F(NSNibTest, TurnsPlacesFromTheTopLeftIntoFramesFromTheBottomLeft) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    EXPECT_EQ(frameOf(owner.box), NSMakeRect(20, 170, 200, 100));
    EXPECT_EQ(frameOf(owner.button), NSMakeRect(10, 61, 80, 24));
    EXPECT_EQ(frameOf(owner.checkBox), NSMakeRect(10, 31, 80, 24));
    EXPECT_EQ(frameOf(owner.label), NSMakeRect(20, 133, 120, 17));
    EXPECT_EQ(frameOf(owner.line), NSMakeRect(150, 126, 120, 24));
    EXPECT_EQ(frameOf(owner.count), NSMakeRect(300, 270, 80, 20));
    EXPECT_EQ(owner.button->geometry(), QRect(10, 15, 80, 24));
}

TEST_F(NSNibTest, FollowsTheWindowBySpringsAndStruts) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    NSRect frame = owner.panel->frame();
    frame.size.width += 100;
    frame.size.height += 50;
    owner.panel->setFrame(frame, false);
    EXPECT_EQ(frameOf(owner.box), NSMakeRect(20, 220, 300, 100));
    EXPECT_EQ(frameOf(owner.button), NSMakeRect(110, 61, 80, 24));
    EXPECT_EQ(frameOf(owner.label), NSMakeRect(20, 133, 120, 17)) << "without springs";
    EXPECT_EQ(frameOf(owner.line), NSMakeRect(150, 126, 120, 24)) << "without springs";
    EXPECT_EQ(frameOf(owner.count), NSMakeRect(400, 320, 80, 20));
    show(*owner.panel);
    EXPECT_EQ(frameOf(owner.box), NSMakeRect(20, 220, 300, 100)) << "after showing";
}

TEST_F(NSNibTest, KeepsFramesOfViewsInAViewAtTheTop) {
    WritingOwner owner;
    load(QStringLiteral("View"), owner);
    NSWindow window(NSMakeRect(50, 50, 301, 201), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    QWidget* const root = topLevelObjects[0].release();
    EXPECT_EQ(frameOf(root), NSMakeRect(0, 0, 301, 201));
    window.setContentView(root);
    EXPECT_EQ(frameOf(owner.first), NSMakeRect(1, 182, 31, 17));
    EXPECT_EQ(frameOf(owner.second), NSMakeRect(3, 7, 5, 6));
    window.setFrame(NSMakeRect(50, 50, 311, 221), false);
    EXPECT_EQ(frameOf(owner.first), NSMakeRect(1, 182, 41, 37));
    EXPECT_EQ(frameOf(owner.second).origin.x, 3 + 10 * 3.0 / 26) << "the springs share the change by their lengths";
}

TEST_F(NSNibTest, LaysOutWhatIsInLayouts) {
    OneOutlet<NSWindow> owner(QStringLiteral("window"));
    load(QStringLiteral("Layouts"), owner);
    NSWindow& window = *owner.object;
    const auto named = [&window](const char* name) {
        auto* widget = window.findChild<QWidget*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    };
    show(window);
    EXPECT_EQ(window.layout(), nullptr);
    // 300 high, less four margins and spacings of 20, 20, 10, 10, the row's 40 and the tabs' 120.
    EXPECT_EQ(frameOf(named("stretched")), NSMakeRect(20, 200, 360, 80));
    EXPECT_EQ(frameOf(named("fixed")), NSMakeRect(320, 150, 60, 40));
    EXPECT_EQ(frameOf(named("free")), NSMakeRect(10, 30, 100, 30));
    EXPECT_EQ(named("onPage")->geometry(), QRect(5, 6, 70, 20)) << "whose page got its size late";

    window.setFrame({window.frame().origin, {window.frame().size.width + 50, window.frame().size.height + 60}}, false);
    settle();
    EXPECT_EQ(frameOf(named("stretched")), NSMakeRect(20, 200, 410, 140));
    EXPECT_EQ(frameOf(named("fixed")), NSMakeRect(370, 150, 60, 40));
    EXPECT_EQ(frameOf(named("free")), NSMakeRect(10, 90, 150, 30));
    EXPECT_EQ(named("onPage")->geometry(), QRect(5, 6, 70, 20));
}

TEST_F(NSNibTest, KeepsTheSpringsOfViewsInAPageThatGetsItsSizeLate) {
    OneOutlet<NSWindow> owner(QStringLiteral("window"));
    load(QStringLiteral("Layouts"), owner);
    show(*owner.object);
    auto* page = owner.object->findChild<QWidget*>(QStringLiteral("page"));
    auto* onPage = owner.object->findChild<QWidget*>(QStringLiteral("onPage"));
    ASSERT_TRUE(page && onPage);
    page->resize(page->width(), page->height() + 30);
    EXPECT_EQ(onPage->geometry(), QRect(5, 6, 70, 20));
    ViewCore::of(onPage)->setAutoresizingMask(NSViewMaxYMargin);
    page->resize(page->width(), page->height() + 30);
    EXPECT_EQ(onPage->geometry(), QRect(5, 36, 70, 20));
}

TEST_F(NSNibTest, SendsTheActionsOfItsControlsToTheOwner) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    show(*owner.panel);
    owner.button->click();
    owner.line->setFocus();
    QTest::keyClick(owner.line.data(), Qt::Key_Return);
    owner.choice->setFocus();
    QTest::keyClick(owner.choice, Qt::Key_Down);
    owner.entry->trigger();
    EXPECT_THAT(owner.sent,
                ElementsAre("go: from button", "enter: from line", "choose: from choice", "go: from entry"));
}

TEST_F(NSNibTest, SendsNothingToAnOwnerThatIsGone) {
    auto owner = std::make_unique<PanelOwner>();
    load(QStringLiteral("Panel"), *owner);
    NSButton* const button = owner->button;
    owner.reset();
    button->click();
    EXPECT_FALSE(button->isDown());
}

TEST_F(NSNibTest, LetsTheOwnerGoInItsOwnAction) {
    class ClosingOwner : public NSNibOwner {
    public:
        explicit ClosingOwner(std::function<void()> work) : m_work(std::move(work)) {}
        void connectNib(NSNibConnections& connections) override {
            for (const char* name : {"go:", "enter:", "choose:"}) {
                connections.action(QString::fromLatin1(name), [this](QObject*) { m_work(); });
            }
        }

    private:
        std::function<void()> m_work;
    };
    int calls = 0;
    std::unique_ptr<ClosingOwner> owner;
    owner = std::make_unique<ClosingOwner>([&] {
        ++calls;
        owner.reset();
    });
    load(QStringLiteral("Panel"), *owner);
    auto* button = topLevelObjects[0]->findChild<QAbstractButton*>(QStringLiteral("button"));
    ASSERT_NE(button, nullptr);
    button->click();
    button->click();
    EXPECT_EQ(calls, 1);
}

TEST_F(NSNibTest, ConnectsSignalsTabOrderAndBuddiesOfTheFile) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    owner.line->setText(QStringLiteral("typed"));
    EXPECT_EQ(owner.label->stringValue(), QStringLiteral("typed"));
    EXPECT_EQ(owner.count->buddy(), owner.line);
    show(*owner.panel);
    owner.choice->setFocus();
    QTest::keyClick(owner.panel->windowHandle(), Qt::Key_Tab);
    EXPECT_EQ(owner.panel->firstResponder(), owner.line);
    QTest::keyClick(owner.panel->windowHandle(), Qt::Key_Tab);
    EXPECT_EQ(owner.panel->firstResponder(), owner.button);
}

TEST_F(NSNibTest, AwakesEachObjectOnceAndThenTheOwner) {
    WritingOwner owner;
    load(QStringLiteral("View"), owner);
    EXPECT_THAT(WritingView::log, ElementsAre("first", "second", "owner"));
    EXPECT_EQ(owner.second->superviewWhenAwoken, owner.first);
}

TEST_F(NSNibTest, MakesObjectsOfTheirOwnEachTime) {
    NSNib nib(QStringLiteral("Panel"));
    PanelOwner first;
    PanelOwner second;
    ASSERT_TRUE(nib.instantiateNibWithOwner(first, &topLevelObjects));
    ASSERT_TRUE(nib.instantiateNibWithOwner(second, &topLevelObjects));
    EXPECT_EQ(topLevelObjects.size(), 2U);
    EXPECT_NE(first.panel, second.panel);
    second.button->click();
    EXPECT_THAT(first.sent, IsEmpty());
    EXPECT_THAT(second.sent, ElementsAre("go: from button"));
    topLevelObjects.erase(topLevelObjects.begin());
    EXPECT_EQ(first.panel, nullptr);
    EXPECT_EQ(second.button->title(), QStringLiteral("&Go"));
}

TEST_F(NSNibTest, DoesNotDangleWhereAnObjectIsDeleted) {
    PanelOwner owner;
    load(QStringLiteral("Panel"), owner);
    delete owner.line.data();
    EXPECT_EQ(owner.line, nullptr);
    owner.button->click();
    EXPECT_EQ(owner.sent.size(), 1U);
}

TEST_F(NSNibTest, TakesAnotherClassUnderANameThatIsRegistered) {
    class OtherView : public WritingView {
    public:
        using WritingView::WritingView;
    };
    NSNib::registerClass<OtherView>(QStringLiteral("WritingView"));
    WritingOwner owner;
    load(QStringLiteral("View"), owner);
    EXPECT_NE(dynamic_cast<OtherView*>(owner.first), nullptr);
}

TEST_F(NSNibTest, LogsANibThatIsNotThereOnce) {
    PanelOwner owner;
    for (const char* name : {"Missing", "../nibs/Panel", "../../etc/passwd", "", "nibs"}) {
        const std::vector<std::string> log = linesLoggedBy([&] {
            NSNib nib(QString::fromLatin1(name));
            EXPECT_FALSE(nib.isValid());
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
        });
        EXPECT_THAT(log, ElementsAre(HasSubstr(std::string(name) + ".ui: there is no such nib"))) << name;
    }
    EXPECT_EQ(owner.panel, nullptr);
}

TEST_F(NSNibTest, LogsWhereAFileIsNoForm) {
    const std::map<QString, std::string> faults = {
        {QStringLiteral("Empty"), "line 1, column 0: Premature end of document."},
        {QStringLiteral("Garbage"), "line 1, column "},
        {QStringLiteral("Mismatched"), "line 4, column 10: "},
        {QStringLiteral("Bogus"), "line 1, column 63: there is an element \"bogus\" in one \"widget\""},
        {QStringLiteral("Old"), "line 1, column 18: it is a form of Designer's version 3.0"},
        {QStringLiteral("Page"), "line 1, column 6: it is not a form of Designer's"},
        {QStringLiteral("Nothing"), "there is no widget in it"},
    };
    for (const auto& [name, fault] : faults) {
        PanelOwner owner;
        const std::string path = ":/nibs/" + name.toStdString() + ".ui: ";
        const std::vector<std::string> log = linesLoggedBy([&, nibName = name] {
            NSNib nib(nibName);
            EXPECT_FALSE(nib.isValid());
            EXPECT_FALSE(nib.instantiateNibWithOwner(owner));
        });
        EXPECT_THAT(log, ElementsAre(HasSubstr(path + fault)));
        EXPECT_EQ(owner.panel, nullptr);
    }
}

TEST_F(NSNibTest, LogsEachFaultOfAFileOnceAndLoadsTheRest) {
    OneOutlet<NSView> owner(QStringLiteral("_view"));
    const std::vector<std::string> log = faultsOf(QStringLiteral("Faults"), owner);
    const auto fault = [](const char* text) { return AllOf(HasSubstr(":/nibs/Faults.ui: "), HasSubstr(text)); };
    EXPECT_THAT(log, UnorderedElementsAre(fault("the class AcmeDial is not known"),
                                          fault("the class AcmeNothing is not known"),
                                          fault("the class AcmeCircle is not known"),
                                          fault("\"innerWindow\" of class NSWindow is a window within a view"),
                                          fault("\"NSViewFloats\" is no autoresizing mask"),
                                          fault("\"Qt::SomeFocus\" is no value of the property \"focusPolicy\""),
                                          fault("there is no widget \"missing\", which the tab order names"),
                                          fault("clicked() of \"button\" cannot be connected to fly() of \"label\""),
                                          fault("there is no object \"nobody\", which a connection names"),
                                          fault("the owner has no action \"go:\", which \"label\" names"),
                                          fault("the owner has no action \"fly:\", which \"button\" names")));
    ASSERT_NE(owner.object, nullptr);
    const auto* dial = owner.object->findChild<QSlider*>(QStringLiteral("dial"));
    ASSERT_NE(dial, nullptr) << "what it extends, by way of what that extends";
    EXPECT_EQ(dial->value(), 42);
    EXPECT_EQ(dial->geometry(), QRect(1, 2, 30, 40));
    EXPECT_NE(owner.object->findChild<QLabel*>(QStringLiteral("within")), nullptr);
}

TEST_F(NSNibTest, LogsOutletsThatCannotBeConnected) {
    class Owner : public NSNibOwner {
    public:
        void connectNib(NSNibConnections& connections) override {
            connections.outlet(QStringLiteral("third"), third);
            connections.outlet(QStringLiteral("first"), first);
            connections.outlet(QStringLiteral("second"), second);
        }
        NSView* third = reinterpret_cast<NSView*>(1);
        NSButton* first = reinterpret_cast<NSButton*>(1);
        QPointer<NSView> second;
    };
    Owner owner;
    const std::vector<std::string> log = faultsOf(QStringLiteral("View"), owner);
    EXPECT_THAT(log, ElementsAre(HasSubstr(":/nibs/View.ui: there is no object \"third\" for the outlet"),
                                 HasSubstr(":/nibs/View.ui: the object \"first\" is of class WritingView, the outlet "
                                           "for it of class NSButton")));
    EXPECT_EQ(owner.third, nullptr);
    EXPECT_EQ(owner.first, nullptr);
    EXPECT_NE(owner.second, nullptr);
}

TEST_F(NSNibTest, LogsAnActionOfWhatSendsNone) {
    class Owner : public NSNibOwner {
    public:
        void connectNib(NSNibConnections& connections) override {
            connections.action(QStringLiteral("go:"), [](QObject*) {});
            connections.action(QStringLiteral("fly:"), [](QObject*) {});
        }
    };
    Owner owner;
    EXPECT_THAT(faultsOf(QStringLiteral("Faults"), owner),
                testing::Contains(HasSubstr("\"label\" of class NSTextField sends no action")));
}

TEST_F(NSNibTest, OutlastsPropertiesOfWrongTypes) {
    OneOutlet<NSView> owner(QStringLiteral("_view"));
    const std::vector<std::string> log = faultsOf(QStringLiteral("WrongTypes"), owner);
    const auto fault = [](const char* text) { return AllOf(HasSubstr(":/nibs/WrongTypes.ui: "), HasSubstr(text)); };
    EXPECT_THAT(log,
                UnorderedElementsAre(fault("the property \"toolTip\" has no value"),
                                     fault("\"Sideways\" is no value of the property \"cursor\""),
                                     fault("\"Wide\" is no value of the property \"hsizetype\""),
                                     fault("\"High\" is no value of the property \"vsizetype\""),
                                     fault("the layout class AcmeLayout is not known"),
                                     fault("\"QLayout::Whatever\" is no value of the property \"sizeConstraint\"")));
    ASSERT_NE(owner.object, nullptr);
    EXPECT_NE(owner.object->findChild<QLabel*>(QStringLiteral("inLayout")), nullptr);
}

TEST(NSNib, LeavesWhatNobodyTookUntilTheApplicationEnds) {
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    int argumentCount = 1;
    NSNib::registerClass<WritingView>(QStringLiteral("WritingView"));
    std::vector<QPointer<NSView>> views;
    for (int round = 0; round < 2; ++round) {
        const NSApplication application(argumentCount, arguments);
        QWidget parent;
        for (int time = 0; time < 3; ++time) {
            OneOutlet<NSView> owner(QStringLiteral("_view"));
            ASSERT_TRUE(NSNib(QStringLiteral("View")).instantiateNibWithOwner(owner));
            views.push_back(owner.object);
        }
        views.back()->setParent(&parent);
        delete views[views.size() - 2];
        QCoreApplication::sendPostedEvents();
        ASSERT_NE(views[views.size() - 3], nullptr) << "the owner and the nib are gone";
        ASSERT_NE(views.back(), nullptr);
    }
    for (const QPointer<NSView>& view : views) {
        EXPECT_EQ(view, nullptr);
    }
}

TEST(NibDocument, RefusesElementsThatLieTooDeep) {
    constexpr int depth = 10'000;
    QByteArray content("<ui version=\"4.0\">");
    for (int count = 0; count < depth; ++count) {
        content += "<widget class=\"QWidget\">";
    }
    for (int count = 0; count < depth; ++count) {
        content += "</widget>";
    }
    content += "</ui>";
    EXPECT_THAT(NibDocument::read(content).fault.toStdString(), HasSubstr("line 1, column "));
    EXPECT_THAT(NibDocument::read(content).fault.toStdString(), HasSubstr("elements lie more than 250 deep"));
}

TEST(NibDocument, TakesWhatAPersonDraws) {
    QByteArray content("<ui version=\"4.0\">");
    for (int count = 0; count < 100; ++count) {
        content += "<widget class=\"QWidget\">";
    }
    for (int count = 0; count < 100; ++count) {
        content += "</widget>";
    }
    const NibDocument document = NibDocument::read(content + "</ui>");
    EXPECT_TRUE(document.fault.isNull()) << document.fault.toStdString();
    EXPECT_EQ(document.objects.size(), 100U);
}

TEST(NibDocument, FindsAFaultInEveryFileThatWasCutOff) {
    const QByteArray content = contentOf(QStringLiteral(":/nibs/Panel.ui")).trimmed();
    ASSERT_TRUE(NibDocument::read(content).fault.isNull());
    for (qsizetype length = 0; length < content.size(); ++length) {
        EXPECT_FALSE(NibDocument::read(content.left(length)).fault.isNull()) << length;
    }
}

TEST(NibDocument, RefusesWhatFollowsTheForm) {
    const QByteArray form("<ui version=\"4.0\"><widget class=\"QWidget\"/></ui>");
    EXPECT_TRUE(NibDocument::read(form + "\n").fault.isNull());
    EXPECT_FALSE(NibDocument::read(form + form).fault.isNull());
}

TEST(NibDocument, RefusesEntitiesThatGrow) {
    QByteArray content("<!DOCTYPE ui [<!ENTITY a \"aaaaaaaaaaaaaaaa\">");
    for (char name = 'b'; name < 'k'; ++name) {
        const char before = static_cast<char>(name - 1);
        content += QByteArray("<!ENTITY ") + name + " \"";
        for (int count = 0; count < 16; ++count) {
            content += QByteArray("&") + before + ";";
        }
        content += "\">";
    }
    content += "]><ui version=\"4.0\"><widget class=\"QLabel\"><property name=\"text\"><string>&j;</string></property>"
               "</widget></ui>";
    EXPECT_FALSE(NibDocument::read(content).fault.isNull());
}

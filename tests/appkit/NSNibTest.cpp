// SPDX-License-Identifier: MIT
#include "NSNibTestSupport.h"

#include <VXKit/platform/appkit/NSImageView.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QAbstractButton>
#include <QBrush>
#include <QCursor>
#include <QPalette>
#include <QTabWidget>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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

NSRect frameOf(const QWidget* widget) {
    const ViewCore* view = ViewCore::of(widget);
    return view ? view->frame() : NSMakeRect(-1, -1, -1, -1);
}

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

TEST_F(NSNibTest, SetsCursorsPalettesPicturesAndPropertiesThatAClassDoesNotHave) {
    OneOutlet<NSView> owner(QStringLiteral("_view"));
    load(QStringLiteral("Looks"), owner);
    ASSERT_NE(owner.object, nullptr);
    EXPECT_EQ(owner.object->cursor().shape(), Qt::PointingHandCursor);
    const QBrush text = owner.object->palette().brush(QPalette::Active, QPalette::WindowText);
    EXPECT_EQ(text, QBrush(QColor(10, 20, 30), Qt::Dense4Pattern));
    EXPECT_EQ(owner.object->property("mood").toString(), QStringLiteral("Acme::Calm"));
    const auto* picture = owner.object->findChild<NSImageView*>(QStringLiteral("picture"));
    ASSERT_NE(picture, nullptr);
    ASSERT_NE(picture->image(), nullptr);
    EXPECT_EQ(picture->image(), NSImage::imageNamed(QStringLiteral("Pin")));
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

TEST_F(NSNibTest, KeepsPlacesAndSpringsOfViewsInAPageThatIsShownLater) {
    OneOutlet<NSWindow> owner(QStringLiteral("window"));
    load(QStringLiteral("Layouts"), owner);
    show(*owner.object);
    auto* tabs = owner.object->findChild<QTabWidget*>(QStringLiteral("tabs"));
    auto* page = owner.object->findChild<QWidget*>(QStringLiteral("otherPage"));
    auto* onPage = owner.object->findChild<QWidget*>(QStringLiteral("onOtherPage"));
    ASSERT_TRUE(tabs && page && onPage);
    tabs->setCurrentWidget(page);
    settle();
    EXPECT_EQ(frameOf(onPage), NSMakeRect(5, page->height() - 26, 70, 20));
    EXPECT_EQ(onPage->geometry(), QRect(5, 6, 70, 20));
    page->resize(page->width(), page->height() + 30);
    EXPECT_EQ(onPage->geometry(), QRect(5, 36, 70, 20)) << "as far from the bottom as before";
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

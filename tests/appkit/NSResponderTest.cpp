// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QWindow>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class NSResponder : public AppKitHost {
protected:
    void showAndForget() {
        show(window);
        ASSERT_TRUE(window.isActiveWindow());
        QTest::mouseMove(window.windowHandle(), QPoint(50, 50));
        log.clear();
        window.sent.clear();
    }

    HostView& add(ViewCore& superview, const NSRect& frame, const std::string& name) {
        return addHostView(superview, frame, name, log);
    }

    void click(const QPoint& place) {
        QTest::mouseMove(window.windowHandle(), place);
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, place);
    }
    void press(Qt::Key key) { QTest::keyPress(window.windowHandle(), key); }

    std::vector<std::string> log;
    HostWindow window{NSMakeRect(100, 100, 200, 100)};
};

} // namespace

TEST_F(NSResponder, GetsTheEventsOfThePointerOverIt) {
    add(window.content(), NSMakeRect(0, 0, 100, 100), "left");
    add(window.content(), NSMakeRect(100, 0, 100, 100), "right");
    showAndForget();
    click(QPoint(150, 50));
    EXPECT_THAT(log, testing::Contains("right.mouseDown"));
    EXPECT_THAT(log, testing::Contains("right.mouseUp"));
    EXPECT_THAT(log, testing::Not(testing::Contains("left.mouseDown")));
    EXPECT_THAT(window.unused, IsEmpty()) << "a used event goes nowhere else";
}

TEST_F(NSResponder, KeepsADragThatBeganInIt) {
    add(window.content(), NSMakeRect(0, 0, 100, 100), "left").setFocusPolicy(Qt::NoFocus);
    add(window.content(), NSMakeRect(100, 0, 100, 100), "right");
    showAndForget();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseMove(window.windowHandle(), QPoint(150, 50));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(150, 50));
    EXPECT_THAT(log, ElementsAre("left.mouseDown", "left.mouseDragged", "left.mouseUp"));
}

TEST_F(NSResponder, PassesWhatItHasNoUseForToItsSuperviewAndAtLastToTheWindow) {
    HostView& outer = add(window.content(), NSMakeRect(0, 0, 200, 100), "outer");
    HostView& inner = add(outer, NSMakeRect(0, 0, 200, 100), "inner");
    outer.passesOn = true;
    inner.passesOn = true;
    outer.setFocusPolicy(Qt::NoFocus);
    inner.setFocusPolicy(Qt::NoFocus);
    showAndForget();
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    QTest::mouseMove(window.windowHandle(), QPoint(60, 50));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, QPoint(60, 50));
    QTest::mousePress(window.windowHandle(), Qt::RightButton, {}, QPoint(50, 50));
    QTest::mouseRelease(window.windowHandle(), Qt::RightButton, {}, QPoint(50, 50));
    EXPECT_THAT(log, ElementsAre("inner.mouseDown", "outer.mouseDown", "inner.mouseDragged", "outer.mouseDragged",
                                 "inner.mouseUp", "outer.mouseUp", "inner.rightMouseDown", "outer.rightMouseDown"));
    EXPECT_THAT(window.unused, ElementsAre("mouseDown", "mouseDragged", "mouseUp", "rightMouseDown"));
}

TEST_F(NSResponder, PassesKeysOnTheSameWay) {
    HostView& outer = add(window.content(), NSMakeRect(0, 0, 200, 100), "outer");
    HostView& inner = add(outer, NSMakeRect(0, 0, 200, 100), "inner");
    outer.passesOn = true;
    inner.passesOn = true;
    showAndForget();
    ASSERT_TRUE(window.makeFirstResponder(&inner));
    log.clear();
    press(Qt::Key_A);
    EXPECT_THAT(
        log, ElementsAre("outer.performKeyEquivalent", "inner.performKeyEquivalent", "inner.keyDown", "outer.keyDown"));
    EXPECT_THAT(window.unused, ElementsAre("keyDown"));
    inner.passesOn = false;
    window.unused.clear();
    press(Qt::Key_A);
    EXPECT_THAT(window.unused, IsEmpty());
}

TEST_F(NSResponder, KeepsWhatTheWidgetClassDoesWithEvents) {
    auto* const button = new ViewOf<QPushButton>(QStringLiteral("Go"));
    button->setFrame(NSMakeRect(0, 0, 100, 50));
    int clicks = 0;
    QObject::connect(button, &QPushButton::clicked, [&] { ++clicks; });
    window.content().addSubview(button);
    auto* const field = new ViewOf<QLineEdit>;
    field->QWidget::setObjectName(QStringLiteral("field"));
    static_cast<ViewCore*>(field)->setFrame(NSMakeRect(0, 50, 200, 50));
    window.content().addSubview(field);
    showAndForget();
    click(QPoint(50, 75));
    EXPECT_EQ(clicks, 1);
    click(QPoint(100, 25));
    EXPECT_EQ(window.firstResponder(), field);
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_B, Qt::Key_C}) {
        QTest::keyClick(window.windowHandle(), key);
    }
    EXPECT_EQ(field->text(), QStringLiteral("abc"));
    QTest::mouseDClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(10, 25));
    EXPECT_EQ(field->selectedText(), QStringLiteral("abc")) << "a double click selects the word";
}

TEST_F(NSResponder, ResignsBeforeTheNextBecomesFirstResponder) {
    HostView& first = add(window.content(), NSMakeRect(0, 0, 100, 100), "first");
    HostView& second = add(window.content(), NSMakeRect(100, 0, 100, 100), "second");
    showAndForget();
    window.makeFirstResponder(nullptr);
    log.clear();
    EXPECT_TRUE(window.makeFirstResponder(&first));
    EXPECT_TRUE(window.makeFirstResponder(&second));
    EXPECT_EQ(window.firstResponder(), &second);
    EXPECT_TRUE(window.makeFirstResponder(&second)) << "it is already";
    EXPECT_THAT(log, ElementsAre("first.become", "first.resign", "second.become"));
}

TEST_F(NSResponder, GivesTheKeysBackToTheWindow) {
    HostView& view = add(window.content(), NSMakeRect(0, 0, 100, 100), "view");
    showAndForget();
    window.makeFirstResponder(&view);
    log.clear();
    EXPECT_TRUE(window.makeFirstResponder(nullptr));
    EXPECT_THAT(log, ElementsAre("view.resign"));
    EXPECT_EQ(window.firstResponder(), &window);
    press(Qt::Key_A);
    EXPECT_THAT(window.unused, ElementsAre("keyDown"));
    HostWindow other(NSMakeRect(0, 0, 10, 10));
    show(other);
    show(window);
    EXPECT_EQ(window.firstResponder(), &window) << "also after it was gone for a while";
}

TEST_F(NSResponder, IsNoneThatTakesNoKeysOrIsElsewhere) {
    HostView& deaf = add(window.content(), NSMakeRect(0, 0, 100, 100), "deaf");
    HostView& disabled = add(window.content(), NSMakeRect(0, 0, 100, 100), "disabled");
    HostView& good = add(window.content(), NSMakeRect(0, 0, 100, 100), "good");
    HostView elsewhere("elsewhere", log);
    deaf.setFocusPolicy(Qt::NoFocus);
    disabled.setEnabled(false);
    showAndForget();
    window.makeFirstResponder(&good);
    EXPECT_FALSE(window.makeFirstResponder(&deaf));
    EXPECT_FALSE(window.makeFirstResponder(&disabled));
    EXPECT_FALSE(window.makeFirstResponder(&elsewhere));
    EXPECT_EQ(window.firstResponder(), &good);
}

TEST_F(NSResponder, KeepsWhatTheWidgetClassDoesWithFocus) {
    auto* const field = new ViewOf<QLineEdit>(QStringLiteral("abc"));
    static_cast<ViewCore*>(field)->setFrame(NSMakeRect(0, 0, 100, 50));
    window.content().addSubview(field);
    add(window.content(), NSMakeRect(100, 0, 100, 100), "other");
    showAndForget();
    window.makeFirstResponder(nullptr);
    field->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(field->selectedText(), QStringLiteral("abc")) << "what is tabbed into is selected";
}

TEST_F(NSResponder, AsksForKeyEquivalentsFromTheLowestViewUpBeforeTheFirstResponder) {
    HostView& first = add(window.content(), NSMakeRect(0, 0, 100, 100), "first");
    add(first, NSMakeRect(0, 0, 10, 10), "inner");
    add(window.content(), NSMakeRect(100, 0, 100, 100), "second");
    showAndForget();
    window.makeFirstResponder(&first);
    log.clear();
    press(Qt::Key_A);
    EXPECT_THAT(log, ElementsAre("first.performKeyEquivalent", "inner.performKeyEquivalent",
                                 "second.performKeyEquivalent", "first.keyDown"));
}

TEST_F(NSResponder, IsNotAskedAfterOneThatAnsweredTheKey) {
    HostView& first = add(window.content(), NSMakeRect(0, 0, 100, 100), "first");
    HostView& second = add(window.content(), NSMakeRect(100, 0, 100, 100), "second");
    add(window.content(), NSMakeRect(100, 0, 100, 100), "third");
    second.answersKeys = true;
    showAndForget();
    window.makeFirstResponder(&first);
    log.clear();
    press(Qt::Key_Return);
    EXPECT_THAT(log, ElementsAre("first.performKeyEquivalent", "second.performKeyEquivalent"));
    EXPECT_THAT(window.unused, IsEmpty());
}

TEST_F(NSResponder, IsNotAskedForKeyEquivalentsWhileItIsHiddenOrDisabled) {
    HostView& hidden = add(window.content(), NSMakeRect(0, 0, 100, 100), "hidden");
    add(hidden, NSMakeRect(0, 0, 10, 10), "inHidden");
    HostView& disabled = add(window.content(), NSMakeRect(0, 0, 100, 100), "disabled");
    add(disabled, NSMakeRect(0, 0, 10, 10), "inDisabled");
    hidden.setHidden(true);
    disabled.setEnabled(false);
    hidden.answersKeys = true;
    disabled.answersKeys = true;
    showAndForget();
    press(Qt::Key_Return);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(NSResponder, IsAskedForKeyEquivalentsThroughPlainWidgets) {
    auto* const plain = new QWidget(window.contentView());
    auto* const view = new HostView("view", log);
    view->setParent(plain);
    view->answersKeys = true;
    showAndForget();
    press(Qt::Key_Return);
    EXPECT_THAT(log, ElementsAre("view.performKeyEquivalent"));
}

TEST_F(NSResponder, MayEndAViewThatIsStillToBeAskedForAKeyEquivalent) {
    struct Ender : NSView {
        bool performKeyEquivalent(const NSEvent& /*event*/) override {
            delete next;
            return false;
        }
        QPointer<QWidget> next;
    };
    auto* const ender = new Ender;
    window.content().addSubview(ender);
    ender->next = &add(window.content(), NSMakeRect(0, 0, 10, 10), "next");
    add(window.content(), NSMakeRect(0, 0, 10, 10), "last");
    showAndForget();
    press(Qt::Key_Return);
    EXPECT_THAT(log, testing::Contains("last.performKeyEquivalent"));
    EXPECT_FALSE(ender->next);
}

TEST_F(NSResponder, MayEndInItsOwnMouseDown) {
    QPointer<HostView> view = &add(window.content(), NSMakeRect(0, 0, 100, 100), "view");
    view->passesOn = true;
    showAndForget();
    view->handler = [&](const NSEvent&) { delete view; };
    click(QPoint(50, 50));
    EXPECT_FALSE(view);
    click(QPoint(50, 50));
    EXPECT_THAT(window.unused, testing::Contains("mouseDown")) << "the window goes on";
}

TEST_F(NSResponder, MayEndInItsOwnKeyDown) {
    QPointer<HostView> view = &add(window.content(), NSMakeRect(0, 0, 100, 100), "view");
    view->passesOn = true;
    showAndForget();
    window.makeFirstResponder(view);
    view->handler = [&](const NSEvent&) { delete view; };
    press(Qt::Key_A);
    EXPECT_FALSE(view);
    window.unused.clear();
    press(Qt::Key_A);
    EXPECT_THAT(window.unused, ElementsAre("keyDown"));
}

TEST_F(NSResponder, MayEndWhenItBecomesFirstResponder) {
    HostView& other = add(window.content(), NSMakeRect(0, 0, 100, 100), "other");
    QPointer<HostView> view = &add(window.content(), NSMakeRect(100, 0, 100, 100), "view");
    showAndForget();
    window.makeFirstResponder(&other);
    view->whenTaking = [&] {
        view->removeFromSuperview();
        view->deleteLater();
    };
    window.makeFirstResponder(view);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(view);
    EXPECT_TRUE(window.makeFirstResponder(&other));
    EXPECT_EQ(window.firstResponder(), &other);
}

TEST_F(NSResponder, MayEndWhenItResigns) {
    HostView& other = add(window.content(), NSMakeRect(0, 0, 100, 100), "other");
    QPointer<HostView> view = &add(window.content(), NSMakeRect(100, 0, 100, 100), "view");
    showAndForget();
    window.makeFirstResponder(view);
    view->whenLeaving = [&] { delete view; };
    window.makeFirstResponder(&other);
    EXPECT_FALSE(view);
    EXPECT_EQ(window.firstResponder(), &other);
}

TEST_F(NSResponder, MayEndItsWindowInAClick) {
    auto* const brief = new HostWindow(NSMakeRect(0, 0, 100, 100));
    QPointer<NSWindow> guard(brief);
    HostView& view = add(brief->content(), NSMakeRect(0, 0, 100, 100), "view");
    show(*brief);
    view.handler = [&](const NSEvent&) { delete guard; };
    QTest::mousePress(brief->windowHandle(), Qt::LeftButton, {}, QPoint(50, 50));
    EXPECT_FALSE(guard);
    settle();
}

TEST_F(NSResponder, IsSentNothingThatTheWindowDrops) {
    HostView& view = add(window.content(), NSMakeRect(0, 0, 100, 100), "view");
    showAndForget();
    window.makeFirstResponder(&view);
    log.clear();
    window.dropsEvents = true;
    click(QPoint(50, 50));
    press(Qt::Key_A);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_THAT(window.sentTypes(), ElementsAre(NSLeftMouseDown, NSLeftMouseUp, NSKeyDown));
    window.dropsEvents = false;
    click(QPoint(50, 50));
    EXPECT_THAT(log, ElementsAre("view.mouseDown", "view.mouseUp"));
}

TEST_F(NSResponder, HasEachEventPassTheWindowOnce) {
    HostView& outer = add(window.content(), NSMakeRect(0, 0, 200, 100), "outer");
    HostView& inner = add(outer, NSMakeRect(0, 0, 200, 100), "inner");
    outer.passesOn = true;
    inner.passesOn = true;
    showAndForget();
    window.makeFirstResponder(&inner);
    click(QPoint(50, 50));
    QTest::keyClick(window.windowHandle(), Qt::Key_A);
    EXPECT_THAT(window.sentTypes(), ElementsAre(NSLeftMouseDown, NSLeftMouseUp, NSKeyDown, NSKeyUp));
}

TEST_F(NSResponder, HasEachEventPassTheWindowOnceAfterTheWindowWasMadeAnew) {
    showAndForget();
    window.orderOut(nullptr);
    window.setManagement(NSWindowManagement::Bypassing);
    show(window);
    QTest::mouseMove(window.windowHandle(), QPoint(50, 50));
    window.sent.clear();
    click(QPoint(50, 50));
    EXPECT_THAT(window.sentTypes(), ElementsAre(NSLeftMouseDown, NSLeftMouseUp));
}

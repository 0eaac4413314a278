// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <QWheelEvent>
#include <QWindow>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

class NSEventTest : public AppKitHost {
protected:
    NSEventTest() {
        view = &addHostView(window.content(), NSMakeRect(20, 10, 100, 60), "view", log);
        show(window);
        view->setFocus();
        QTest::mouseMove(handle(), QPoint(30, 50));
        settle();
        forget();
    }

    QWindow* handle() const { return window.windowHandle(); }

    void forget() {
        window.sent.clear();
        view->events.clear();
        log.clear();
    }

    const NSEvent& key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        forget();
        QTest::keyPress(handle(), key, modifiers);
        return window.sent.back();
    }

    std::vector<std::string> log;
    HostWindow window{NSMakeRect(100, 100, 200, 100)};
    HostView* view;
};

} // namespace

TEST_F(NSEventTest, NumbersTheEventsOfTheMouseAsAppKitDoes) {
    const QPoint place(30, 50);
    const QPoint elsewhere(32, 51);
    QTest::mouseMove(handle(), QPoint(10, 10));
    forget();
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton}) {
        QTest::mouseMove(handle(), place);
        QTest::mousePress(handle(), button, {}, place);
        QTest::mouseMove(handle(), elsewhere);
        QTest::mouseRelease(handle(), button, {}, elsewhere);
    }
    EXPECT_THAT(window.sentTypes(), ElementsAre(5, 1, 6, 2, 5, 3, 7, 4, 5, 25, 27, 26));
}

TEST_F(NSEventTest, NumbersTheButtonsLeftRightAndOthers) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
        QTest::mousePress(handle(), button, {}, QPoint(30, 50));
        QTest::mouseRelease(handle(), button, {}, QPoint(30, 50));
    }
    std::vector<int> buttons;
    for (const NSEvent& event : window.sent) {
        buttons.push_back(event.buttonNumber());
    }
    EXPECT_THAT(buttons, ElementsAre(0, 0, 1, 1, 2, 2, 2, 2));
}

TEST_F(NSEventTest, NumbersKeysAndTheWheelAsAppKitDoes) {
    QTest::keyClick(handle(), Qt::Key_A);
    QWheelEvent wheel(QPointF(30, 50), handle()->mapToGlobal(QPointF(30, 50)), QPoint(), QPoint(0, -240), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(handle(), &wheel);
    EXPECT_THAT(window.sentTypes(), ElementsAre(10, 11, 22));
    EXPECT_EQ(window.sent.back().deltaY(), -2) << "in lines";
    EXPECT_EQ(window.sent.back().locationInWindow(), NSMakePoint(30, 50));
}

TEST_F(NSEventTest, CountsTheClicksOfADoubleClick) {
    QTest::mouseDClick(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    EXPECT_THAT(window.sentTypes(), ElementsAre(1, 2, 1, 2));
    EXPECT_THAT(log, ElementsAre("view.mouseDown", "view.mouseUp", "view.mouseDown", "view.mouseUp"));
    std::vector<int> counts;
    for (const NSEvent& event : view->events) {
        counts.push_back(event.clickCount());
    }
    EXPECT_THAT(counts, ElementsAre(1, 1, 2, 2));
}

TEST_F(NSEventTest, CountsAClickAfterADoubleClickAnew) {
    QTest::mouseDClick(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    QTest::mouseClick(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    EXPECT_EQ(window.sent.back().clickCount(), 1);
}

TEST_F(NSEventTest, CountsTwoSlowClicksAsSingleOnes) {
    QTest::mouseClick(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    QTest::mouseClick(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    EXPECT_THAT(window.sentTypes(), ElementsAre(1, 2, 1, 2));
    EXPECT_EQ(window.sent[2].clickCount(), 1);
    EXPECT_EQ(window.sent[3].clickCount(), 1);
}

TEST_F(NSEventTest, TellsMotionWithYGrowingDownwards) {
    QTest::mousePress(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    QTest::mouseMove(handle(), QPoint(35, 62));
    QTest::mouseMove(handle(), QPoint(33, 60));
    ASSERT_EQ(window.sent.size(), 3U);
    EXPECT_EQ(window.sent[0].deltaX(), 0);
    EXPECT_EQ(window.sent[0].deltaY(), 0);
    EXPECT_EQ(window.sent[1].deltaX(), 5);
    EXPECT_EQ(window.sent[1].deltaY(), 12);
    EXPECT_EQ(window.sent[2].deltaX(), -2);
    EXPECT_EQ(window.sent[2].deltaY(), -2);
    QTest::mouseRelease(handle(), Qt::LeftButton, {}, QPoint(33, 60));
}

TEST_F(NSEventTest, TellsTheWindowAndTheViewOfTheSameMotion) {
    QTest::mousePress(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    QTest::mouseMove(handle(), QPoint(35, 62));
    QTest::mouseRelease(handle(), Qt::LeftButton, {}, QPoint(35, 62));
    ASSERT_EQ(view->events.size(), 3U);
    ASSERT_EQ(window.sent.size(), 3U);
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(view->events[index].type(), window.sent[index].type());
        EXPECT_EQ(view->events[index].deltaX(), window.sent[index].deltaX());
        EXPECT_EQ(view->events[index].deltaY(), window.sent[index].deltaY());
        EXPECT_EQ(view->events[index].locationInWindow(), window.sent[index].locationInWindow());
        EXPECT_EQ(view->events[index].window(), &window);
    }
    EXPECT_EQ(view->events[1].deltaY(), 12);
}

TEST_F(NSEventTest, TellsTheMotionOnTheScreenWhileTheWindowMovesAlong) {
    QTest::mousePress(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    // The window goes where the pointer goes, so the pointer stays at one place in it.
    window.setFrameOrigin({107, 91});
    QTest::mouseMove(handle(), QPoint(30, 50));
    EXPECT_EQ(window.sent.back().deltaX(), 7);
    EXPECT_EQ(window.sent.back().deltaY(), 9);
    QTest::mouseRelease(handle(), Qt::LeftButton, {}, QPoint(30, 50));
}

TEST_F(NSEventTest, TellsItsPlaceFromTheBottomLeftOfTheWindow) {
    QTest::mousePress(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    QTest::mouseMove(handle(), QPoint(32, 90));
    QTest::mouseRelease(handle(), Qt::LeftButton, {}, QPoint(32, 90));
    EXPECT_EQ(window.sent[0].locationInWindow(), NSMakePoint(30, 50));
    EXPECT_EQ(window.sent[1].locationInWindow(), NSMakePoint(32, 10));
    EXPECT_EQ(view->events[1].locationInWindow(), NSMakePoint(32, 10));
    EXPECT_EQ(window.sent[0].windowNumber(), window.windowNumber());
}

TEST_F(NSEventTest, TellsWhereThePointerCameInAndWentOut) {
    struct : NSView {
        void mouseEntered(const NSEvent& event) override { entered.push_back(event); }
        void mouseExited(const NSEvent& event) override { exited.push_back(event); }
        std::vector<NSEvent> entered;
        std::vector<NSEvent> exited;
    } crossed;
    crossed.setFrame(NSMakeRect(140, 10, 40, 40));
    window.content().addSubview(&crossed);
    QTest::mouseMove(handle(), QPoint(10, 10));
    QTest::mouseMove(handle(), QPoint(150, 70));
    QTest::mouseMove(handle(), QPoint(10, 10));
    ASSERT_EQ(crossed.entered.size(), 1U);
    ASSERT_EQ(crossed.exited.size(), 1U);
    EXPECT_EQ(crossed.entered.front().type(), NSMouseEntered);
    EXPECT_EQ(crossed.exited.front().type(), NSMouseExited);
    EXPECT_EQ(crossed.entered.front().locationInWindow(), NSMakePoint(150, 30));
    crossed.removeFromSuperview();
}

TEST_F(NSEventTest, NumbersTheKeysByTheirPlace) {
    EXPECT_EQ(key(Qt::Key_Return).keyCode(), 36);
    EXPECT_EQ(key(Qt::Key_Enter, Qt::KeypadModifier).keyCode(), 76);
    EXPECT_EQ(key(Qt::Key_V).keyCode(), 9);
    EXPECT_EQ(key(Qt::Key_V, Qt::ControlModifier).keyCode(), 9);
    EXPECT_EQ(key(Qt::Key_Escape).keyCode(), 53);
    EXPECT_EQ(key(Qt::Key_Tab).keyCode(), 48);
    EXPECT_EQ(key(Qt::Key_Backtab, Qt::ShiftModifier).keyCode(), 48);
    EXPECT_EQ(key(Qt::Key_Backspace).keyCode(), 51);
    EXPECT_EQ(key(Qt::Key_Up).keyCode(), 126);
}

TEST_F(NSEventTest, HasOneNumberForAllUnknownKeys) {
    EXPECT_EQ(key(Qt::Key_LaunchMail).keyCode(), 0xffff);
    EXPECT_EQ(NSUnknownKeyCode, 0xffff);
}

TEST_F(NSEventTest, TellsTheModifiersByAppKitsBits) {
    EXPECT_EQ(key(Qt::Key_A).modifierFlags(), 0U);
    EXPECT_EQ(key(Qt::Key_A, Qt::ShiftModifier).modifierFlags(), 1U << 17U);
    EXPECT_EQ(key(Qt::Key_A, Qt::MetaModifier).modifierFlags(), 1U << 18U);
    EXPECT_EQ(key(Qt::Key_A, Qt::AltModifier).modifierFlags(), 1U << 19U);
    EXPECT_EQ(key(Qt::Key_A, Qt::ControlModifier).modifierFlags(), 1U << 20U) << "the key of the shortcuts";
    EXPECT_EQ(key(Qt::Key_Enter, Qt::KeypadModifier).modifierFlags(), 1U << 21U);
    EXPECT_EQ(key(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier).modifierFlags(), (1U << 20U) | (1U << 17U));
    QTest::mouseClick(handle(), Qt::LeftButton, Qt::AltModifier, QPoint(30, 50));
    EXPECT_EQ(window.sent.back().modifierFlags(), 1U << 19U);
}

TEST_F(NSEventTest, TellsTheTextOfAKeyWithAndWithoutModifiers) {
    EXPECT_EQ(key(Qt::Key_V).characters(), QStringLiteral("v"));
    EXPECT_EQ(key(Qt::Key_V, Qt::ShiftModifier).charactersIgnoringModifiers(), QStringLiteral("V"));
    EXPECT_EQ(key(Qt::Key_V, Qt::ControlModifier).charactersIgnoringModifiers(), QStringLiteral("v"));
}

TEST_F(NSEventTest, IsTheCurrentOneWhileItIsDelivered) {
    EXPECT_EQ(NSEvent::currentEvent(), nullptr);
    int type = 0;
    view->handler = [&](const NSEvent&) { type = NSEvent::currentEvent() ? NSEvent::currentEvent()->type() : -1; };
    QTest::mousePress(handle(), Qt::LeftButton, {}, QPoint(30, 50));
    view->handler = nullptr;
    EXPECT_EQ(type, NSLeftMouseDown);
    EXPECT_EQ(NSEvent::currentEvent(), nullptr);
    QTest::mouseRelease(handle(), Qt::LeftButton, {}, QPoint(30, 50));
}

TEST_F(NSEventTest, OutlivesItsWindow) {
    auto other = std::make_unique<HostWindow>(NSMakeRect(0, 0, 10, 10));
    const NSEvent event = NSEvent::mouseEventWithType(NSLeftMouseDown, {1, 2}, 0, other.get(), 1);
    other.reset();
    EXPECT_EQ(event.window(), nullptr);
    EXPECT_EQ(event.windowNumber(), -1);
}

TEST_F(NSEventTest, ReachesAViewWithoutADevice) {
    window.sendEvent(NSEvent::mouseEventWithType(NSLeftMouseDown, {30, 50}, NSShiftKeyMask, &window, 2));
    ASSERT_EQ(view->events.size(), 1U);
    EXPECT_EQ(view->events[0].clickCount(), 2);
    EXPECT_EQ(view->events[0].modifierFlags(), NSShiftKeyMask);
    EXPECT_EQ(view->events[0].locationInWindow(), NSMakePoint(30, 50));
    EXPECT_EQ(view->events[0].qtEvent(), nullptr);
    window.sendEvent(NSEvent::mouseEventWithType(NSRightMouseDown, {30, 50}, 0, &window, 1));
    EXPECT_EQ(view->events[1].buttonNumber(), 1);
    window.sendEvent(NSEvent::keyEventWithType(NSKeyDown, 0, &window, QStringLiteral("\r"), 36));
    ASSERT_EQ(view->events.size(), 3U);
    EXPECT_EQ(view->events[2].keyCode(), 36);
    EXPECT_EQ(view->events[2].characters(), QStringLiteral("\r"));
}

TEST_F(NSEventTest, WithoutADeviceGoesOnToTheSuperviewAndTheWindowWhenUnused) {
    std::vector<std::string> told;
    HostView& inner = addHostView(*view, NSMakeRect(0, 0, 50, 50), "inner", told);
    inner.passesOn = true;
    view->passesOn = true;
    window.sendEvent(NSEvent::mouseEventWithType(NSLeftMouseDown, {30, 20}, 0, &window, 1));
    EXPECT_THAT(told, ElementsAre("inner.mouseDown"));
    EXPECT_THAT(log, ElementsAre("view.mouseDown"));
    EXPECT_THAT(window.unused, ElementsAre("mouseDown"));
}

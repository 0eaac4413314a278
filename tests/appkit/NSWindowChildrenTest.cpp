// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ChildWindows : public AppKitHost {
protected:
    HostWindow parent{NSMakeRect(100, 100, 200, 100)};
    HostWindow child{NSMakeRect(110, 90, 50, 50)};
};

} // namespace

TEST_F(ChildWindows, AreOrderedInWhenTheyAreAddedToAWindowThatIsIn) {
    parent.orderFront(nullptr);
    parent.addChildWindow(&child, NSWindowAbove);
    EXPECT_TRUE(child.isVisible());
    EXPECT_EQ(child.parentWindow(), &parent);
    EXPECT_THAT(parent.childWindows(), ElementsAre(&child));
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&parent, &child));
    HostWindow below(NSMakeRect(0, 0, 10, 10));
    parent.addChildWindow(&below, NSWindowBelow);
    EXPECT_THAT(NSWindow::windows(), ElementsAre(&below, &parent, &child));
}

TEST_F(ChildWindows, ComeWithTheirParent) {
    parent.addChildWindow(&child, NSWindowAbove);
    EXPECT_FALSE(child.isVisible());
    parent.orderFront(nullptr);
    EXPECT_TRUE(child.isVisible());
}

TEST_F(ChildWindows, MoveWithTheirParent) {
    parent.orderFront(nullptr);
    parent.addChildWindow(&child, NSWindowAbove);
    HostWindow grandchild(NSMakeRect(120, 80, 10, 10));
    child.addChildWindow(&grandchild, NSWindowAbove);
    parent.setFrame(NSMakeRect(105.5, 93, 300, 200), true);
    EXPECT_EQ(child.frame(), NSMakeRect(115.5, 83, 50, 50));
    EXPECT_EQ(grandchild.frame(), NSMakeRect(125.5, 73, 10, 10));
    parent.setFrame(NSMakeRect(105.5, 93, 400, 300), true);
    EXPECT_EQ(child.frame(), NSMakeRect(115.5, 83, 50, 50)) << "but do not grow with it";
    child.setFrameOrigin({0, 0});
    EXPECT_EQ(parent.frame().origin, NSMakePoint(105.5, 93)) << "and do not draw it along";
}

TEST_F(ChildWindows, MoveWithAParentThatTheWindowManagerMoved) {
    show(parent);
    parent.addChildWindow(&child, NSWindowAbove);
    parent.windowHandle()->setPosition(parent.QWidget::pos() + QPoint(7, 9));
    EXPECT_TRUE(QTest::qWaitFor([&] { return child.frame() == NSMakeRect(117, 81, 50, 50); }));
}

TEST_F(ChildWindows, GoOutAndComeInWithTheirParent) {
    parent.orderFront(nullptr);
    parent.addChildWindow(&child, NSWindowAbove);
    HostWindow hidden(NSMakeRect(0, 0, 10, 10));
    parent.addChildWindow(&hidden, NSWindowAbove);
    hidden.orderOut(nullptr);
    parent.orderOut(nullptr);
    EXPECT_FALSE(child.isVisible());
    parent.orderFront(nullptr);
    EXPECT_TRUE(child.isVisible());
    EXPECT_FALSE(hidden.isVisible()) << "one that was out by itself stays out";
    child.orderOut(nullptr);
    parent.orderFront(nullptr);
    EXPECT_FALSE(child.isVisible()) << "and so does one that went out since";
}

TEST_F(ChildWindows, GoWithAParentThatIsClosed) {
    parent.orderFront(nullptr);
    parent.addChildWindow(&child, NSWindowAbove);
    parent.close();
    EXPECT_FALSE(child.isVisible());
}

TEST_F(ChildWindows, StayAloneWhenTheyAreRemoved) {
    parent.orderFront(nullptr);
    parent.addChildWindow(&child, NSWindowAbove);
    parent.removeChildWindow(&child);
    EXPECT_TRUE(child.isVisible());
    EXPECT_EQ(child.parentWindow(), nullptr);
    EXPECT_THAT(parent.childWindows(), IsEmpty());
    parent.setFrameOrigin({0, 0});
    EXPECT_EQ(child.frame(), NSMakeRect(110, 90, 50, 50));
    parent.orderOut(nullptr);
    EXPECT_TRUE(child.isVisible());
}

TEST_F(ChildWindows, BelongToTheLatestParent) {
    HostWindow other(NSMakeRect(0, 0, 10, 10));
    parent.addChildWindow(&child, NSWindowAbove);
    other.addChildWindow(&child, NSWindowAbove);
    EXPECT_EQ(child.parentWindow(), &other);
    EXPECT_THAT(parent.childWindows(), IsEmpty());
    EXPECT_THAT(other.childWindows(), ElementsAre(&child));
    other.removeChildWindow(&child);
}

TEST_F(ChildWindows, MayDieBeforeTheirParentAndAfterIt) {
    auto brief = std::make_unique<HostWindow>(NSMakeRect(0, 0, 10, 10));
    parent.orderFront(nullptr);
    parent.addChildWindow(brief.get(), NSWindowAbove);
    brief.reset();
    EXPECT_THAT(parent.childWindows(), IsEmpty());
    parent.setFrameOrigin({1, 2});
    parent.orderOut(nullptr);
    auto briefParent = std::make_unique<HostWindow>(NSMakeRect(0, 0, 10, 10));
    briefParent->orderFront(nullptr);
    briefParent->addChildWindow(&child, NSWindowAbove);
    briefParent.reset();
    EXPECT_EQ(child.parentWindow(), nullptr);
    EXPECT_TRUE(child.isVisible());
    child.setFrameOrigin({5, 5});
}

TEST_F(ChildWindows, MayDieWhenTheirParentMovesOrGoesOut) {
    QPointer<HostWindow> first(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    QPointer<HostWindow> second(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    parent.orderFront(nullptr);
    parent.addChildWindow(first, NSWindowAbove);
    parent.addChildWindow(second, NSWindowAbove);
    {
        const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidMoveNotification, first.data(), [&](const NSNotification&) { delete second; });
        parent.setFrameOrigin({1, 2});
        EXPECT_FALSE(second);
    }
    QPointer<HostWindow> third(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    parent.addChildWindow(third, NSWindowAbove);
    third->makeKeyWindow();
    ASSERT_TRUE(QTest::qWaitFor([&] { return third->isKeyWindow(); }));
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidResignKeyNotification, third.data(), [&](const NSNotification&) {
            delete first;
            third->deleteLater();
            parent.removeChildWindow(third);
        });
    parent.orderOut(nullptr);
    settle();
    EXPECT_FALSE(first);
    EXPECT_FALSE(third);
    EXPECT_THAT(parent.childWindows(), IsEmpty());
}

TEST_F(ChildWindows, MayEndTheirParentWhenItMoves) {
    QPointer<HostWindow> brief(new HostWindow(NSMakeRect(0, 0, 10, 10)));
    brief->orderFront(nullptr);
    brief->addChildWindow(&child, NSWindowAbove);
    const auto observation = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, &child, [&](const NSNotification&) { delete brief; });
    brief->setFrame(NSMakeRect(5, 5, 20, 20), true);
    EXPECT_FALSE(brief);
}

// SPDX-License-Identifier: MIT
#include "HUDWindowHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>

#include <QTest>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class LTHUDWindowAtTwoPixelsAPoint : public testing::Test {};

} // namespace

TEST_F(LTHUDWindowTest, IsABorderlessTranslucentPanelOnEveryDesktop) {
    panel = makePanel();
    EXPECT_EQ(panel->styleMask(), 0U);
    EXPECT_FALSE(panel->isOpaque());
    EXPECT_TRUE(panel->canBecomeKeyWindow());
    EXPECT_EQ(panel->collectionBehavior(), 1U);
    EXPECT_TRUE(panel->hasButtonLane());
    EXPECT_FALSE(panel->isSheet());
    EXPECT_EQ(panel->frame(), panelFrame);
    EXPECT_TRUE(panel->backgroundColor().patternImage());
}

TEST_F(LTHUDWindowTest, BlursWhatIsBehindIt) {
    const RecordedEffects& effects = recordEffects();
    panel = makePanel();
    EXPECT_EQ(effects.blurRadius, 3.0);
}

TEST_F(LTHUDWindowTest, PaintsTitleBarBodyAndButtonLane) {
    application.setActive(true);
    panel = makePanel();
    panel->updateBackground();
    const QRgb body = over(0.05, 0.8, 0);
    EXPECT_THAT(pixelAt(*panel, 100, 100), LooksLike(body)) << "right below the title bar";
    EXPECT_THAT(pixelAt(*panel, 100, 36), LooksLike(body)) << "right above the lane";
    EXPECT_THAT(pixelAt(*panel, 100, 35), LooksLike(over(0.05, 0.8, body)));
    EXPECT_THAT(pixelAt(*panel, 100, 0), LooksLike(over(0.05, 0.8, body)));
    for (const double y : {101.0, 110.0, 119.0}) {
        EXPECT_THAT(pixelAt(*panel, 100, y), LooksLike(titleBarPixel(panelFrame.size, 100, y, 1.0))) << y;
    }
}

TEST_F(LTHUDWindowTest, HasRoundedCornersOfRadiusFive) {
    panel = makePanel();
    for (const double x : {0.0, 199.0}) {
        EXPECT_EQ(qAlpha(pixelAt(*panel, x, 0)), 0) << x;
        EXPECT_EQ(qAlpha(pixelAt(*panel, x, 119)), 0) << x;
        EXPECT_GT(qAlpha(pixelAt(*panel, x, 6)), 200) << x;
    }
    EXPECT_EQ(qAlpha(pixelAt(*panel, 0, 1)), 0) << "less would be a smaller radius";
}

TEST_F(LTHUDWindowTest, HasAPalerTitleBarWhileTheApplicationIsInactive) {
    panel = makePanel();
    application.setActive(false);
    panel->updateBackground();
    EXPECT_THAT(pixelAt(*panel, 100, 110), LooksLike(titleBarPixel(panelFrame.size, 100, 110, 0.75)));
    EXPECT_FALSE(isNear(titleBarPixel(panelFrame.size, 100, 110, 0.75), titleBarPixel(panelFrame.size, 100, 110, 1)));
}

TEST_F(LTHUDWindowTest, RedrawsWhenTheApplicationBecomesActiveOrInactive) {
    panel = makePanel();
    application.setActive(false);
    panel->updateBackground();
    const QRgb pale = pixelAt(*panel, 100, 110);
    application.setActive(true);
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    centre.postNotificationName(NSApplicationDidBecomeActiveNotification, &application);
    const QRgb full = pixelAt(*panel, 100, 110);
    EXPECT_NE(full, pale);
    application.setActive(false);
    centre.postNotificationName(NSApplicationDidResignActiveNotification, &application);
    EXPECT_EQ(pixelAt(*panel, 100, 110), pale);
}

TEST_F(LTHUDWindowTest, RedrawsWhenItIsResized) {
    panel = makePanel();
    panel->setFrame(NSMakeRect(100, 100, 240, 150), false);
    EXPECT_EQ(panel->backgroundColor().patternImage()->size(), (NSSize{240, 150}));
}

TEST_F(LTHUDWindowTest, AWindowWithoutASizeKeepsItsBackground) {
    panel = makePanel();
    panel->setFrame(NSMakeRect(100, 100, 0, 0), false);
    EXPECT_TRUE(panel->backgroundColor().patternImage());
}

TEST_F(LTHUDWindowTest, TogglingTheButtonLaneRedrawsOnlyWhereItChanges) {
    panel = makePanel();
    const NSImage* const before = panel->backgroundColor().patternImage().get();
    panel->setHasButtonLane(true);
    EXPECT_EQ(panel->backgroundColor().patternImage().get(), before);
    panel->setHasButtonLane(false);
    EXPECT_NE(panel->backgroundColor().patternImage().get(), before);
    EXPECT_THAT(pixelAt(*panel, 100, 20), LooksLike(over(0.05, 0.8, 0)));
}

TEST_F(LTHUDWindowTest, DisplayingAndAwakingBringTheBackgroundBack) {
    panel = makePanel();
    const std::shared_ptr<const NSImage> look = panel->backgroundColor().patternImage();
    panel->setBackgroundColor(NSColor::whiteColor());
    panel->display();
    EXPECT_EQ(panel->backgroundColor().patternImage(), look);
    panel->setBackgroundColor(NSColor::whiteColor());
    panel->awakeFromNib();
    EXPECT_EQ(panel->backgroundColor().patternImage(), look);
    application.setActive(!application.isActive());
    panel->display();
    EXPECT_NE(panel->backgroundColor().patternImage(), look) << "it looks otherwise now";
}

TEST_F(LTHUDWindowTest, GetsItsShadowWhenItIsShownWithTheKeyboard) {
    recordEffects();
    panel = makePanel();
    panel->orderFront(nullptr);
    EXPECT_THAT(shadows, IsEmpty());
    panel->makeKeyAndOrderFront(nullptr);
    ASSERT_EQ(shadows.size(), 1U);
    EXPECT_EQ(shadows[0].first, panel.get());
}

TEST_F(LTHUDWindowTest, ItsTopStaysBelowTheTopOfTheVisibleFrame) {
    panel = makePanel();
    const NSRect visible = visibleFrame();
    const double highest = NSMaxY(visible) - 120;
    panel->setFrameOrigin({30, highest});
    EXPECT_EQ(panel->frame(), NSMakeRect(30, highest, 200, 120)) << "its edge is allowed";
    panel->setFrameOrigin({30, highest + 0.5});
    EXPECT_EQ(panel->frame(), NSMakeRect(30, highest, 200, 120));
    panel->setFrame(NSMakeRect(40, highest, 210, 130), false);
    EXPECT_EQ(panel->frame(), NSMakeRect(40, highest - 10, 210, 130)) << "the new height counts";
    const AnimationDurationsForTesting none(0);
    panel->setFrame(NSMakeRect(50, highest + 50, 200, 120), true, true);
    EXPECT_EQ(panel->frame(), NSMakeRect(50, highest, 200, 120));
}

TEST_F(LTHUDWindowTest, FourteenPointsOfItStayAboveTheBottomOfTheVisibleFrame) {
    panel = makePanel();
    const double lowest = visibleFrame().origin.y + 14 - 120;
    panel->setFrameOrigin({30, lowest});
    EXPECT_EQ(panel->frame(), NSMakeRect(30, lowest, 200, 120)) << "its edge is allowed";
    panel->setFrameOrigin({30, lowest - 0.5});
    EXPECT_EQ(panel->frame(), NSMakeRect(30, lowest, 200, 120));
    panel->setFrame(NSMakeRect(40, -5000, 200, 60), false);
    EXPECT_EQ(panel->frame(), NSMakeRect(40, visibleFrame().origin.y + 14 - 60, 200, 60));
    const AnimationDurationsForTesting none(0);
    panel->setFrame(NSMakeRect(50, -5000, 200, 120), true, true);
    EXPECT_EQ(panel->frame(), NSMakeRect(50, lowest, 200, 120));
}

TEST_F(LTHUDWindowTest, AWindowHigherThanTheVisibleFrameObeysTheFirstRuleOnlyAsFarAsTheSecondLetsIt) {
    panel = makePanel();
    const NSRect visible = visibleFrame();
    const double height = visible.size.height + 300;
    panel->setFrame(NSMakeRect(0, visible.origin.y, 200, height), false);
    EXPECT_EQ(NSMaxY(panel->frame()), NSMaxY(visible)) << "the first rule moved it down";
    panel->setFrame(NSMakeRect(0, visible.origin.y - height - 100, 200, height), false);
    EXPECT_EQ(NSMaxY(panel->frame()), visible.origin.y + 14) << "the second one up";
}

TEST_F(LTHUDWindowTest, NeitherItsXNorItsSizeIsClamped) {
    panel = makePanel();
    panel->setFrame(NSMakeRect(-5000, 200, 3000, 50), false);
    EXPECT_EQ(panel->frame(), NSMakeRect(-5000, 200, 3000, 50));
}

namespace {

NSEvent press(NSWindow& window) {
    return NSEvent::mouseEventWithType(NSLeftMouseDown, {100, 60}, 0, &window, 1);
}

/// Sends the pointer over `steps` while its left button is down on the background.
void drag(LTHUDWindow& panel, const std::vector<QPoint>& steps) {
    const QPoint start = panel.mapToGlobal(QPoint(100, 60));
    const auto send = [&](QEvent::Type type, const QPoint& global, Qt::MouseButton button, Qt::MouseButtons buttons) {
        const QPointF local = panel.mapFromGlobal(global);
        QMouseEvent event(type, local, QPointF(global), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(panel.windowHandle(), &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    for (const QPoint& step : steps) {
        send(QEvent::MouseMove, start + step, Qt::NoButton, Qt::LeftButton);
    }
    send(QEvent::MouseButtonRelease, start + steps.back(), Qt::LeftButton, Qt::NoButton);
}

} // namespace

TEST_F(LTHUDWindowTest, IsDraggedByItsBackground) {
    panel = makePanel();
    panel->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    drag(*panel, {{3, 5}, {10, 20}});
    EXPECT_EQ(panel->frame(), NSMakeRect(110, 80, 200, 120));
}

TEST_F(LTHUDWindowTest, DraggingStopsAtTheTopAndLeavesFourteenPointsAtTheBottom) {
    panel = makePanel();
    panel->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    drag(*panel, {{0, -10}, {0, -3000}});
    EXPECT_EQ(NSMaxY(panel->frame()), NSMaxY(visibleFrame()));
    drag(*panel, {{0, 10}, {0, 3000}});
    EXPECT_EQ(NSMaxY(panel->frame()), visibleFrame().origin.y + 14);
}

TEST_F(LTHUDWindowTest, ASheetCannotBeDragged) {
    panel = makePanel();
    panel->_setSheet(true);
    panel->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    drag(*panel, {{3, 5}, {10, 20}});
    EXPECT_EQ(panel->frame(), panelFrame);
}

TEST_F(LTHUDWindowTest, APressActivatesTheApplicationAndStillReachesItsView) {
    panel = makePanel();
    class Pressed : public NSView {
    public:
        explicit Pressed(std::vector<std::string>& told) : m_told(told) {}
        void mouseDown(const NSEvent& /*event*/) override { m_told.emplace_back("view"); }

    private:
        std::vector<std::string>& m_told;
    };
    auto view = std::make_unique<Pressed>(application.told);
    view->setFrame(NSMakeRect(0, 0, 200, 120));
    ViewCore::of(panel->contentView())->addSubview(view.release());
    panel->orderFront(nullptr);
    application.told.clear();
    panel->sendEvent(press(*panel));
    EXPECT_THAT(application.told, ElementsAre("activate", "view"));
    application.told.clear();
    panel->sendEvent(NSEvent::mouseEventWithType(NSRightMouseDown, {100, 60}, 0, panel.get(), 1));
    EXPECT_THAT(application.told, IsEmpty()) << "another button does not";
}

TEST_F(LTHUDWindowTest, APressOnItsBackgroundActivatesTwiceAndMakesItKey) {
    panel = makePanel();
    panel->orderFront(nullptr);
    application.told.clear();
    panel->sendEvent(press(*panel));
    EXPECT_THAT(application.told, ElementsAre("activate", "activate"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return panel->isKeyWindow(); }));
}

TEST(LTHUDWindowInAPlainProgram, NeedsNoApplicationOfTheKits) {
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    int count = 1;
    const QApplication application(count, arguments);
    LTHUDWindow panel(panelFrame, 0, NSBackingStoreBuffered, false);
    panel.orderFront(nullptr);
    panel.sendEvent(press(panel));
    NSWindow parent(panelFrame, NSTitledWindowMask, NSBackingStoreBuffered, false);
    panel.runHUDSheetForWindow(parent);
    EXPECT_FALSE(panel.isSheet()) << "there is nothing to run it";
}

TEST(LTHUDWindowAtTwoPixelsAPoint, PaintsFourTimesThePixels) {
    qputenv("QT_SCALE_FACTOR", "2");
    {
        ShellApplication application;
        LTHUDWindow panel(panelFrame, 0, NSBackingStoreBuffered, false);
        const QImage look = panel.backgroundColor().patternImage()->imageForScale(2);
        EXPECT_EQ(look.size(), QSize(400, 240));
        EXPECT_THAT(look.pixel(200, 239 - 2 * 36), LooksLike(over(0.05, 0.8, 0)));
        EXPECT_THAT(look.pixel(200, 239 - 2 * 36 + 1), LooksLike(over(0.05, 0.8, over(0.05, 0.8, 0))));
        EXPECT_EQ(qAlpha(look.pixel(0, 0)), 0);
    }
    qunsetenv("QT_SCALE_FACTOR");
}

TEST_F(LTHUDWindowTest, ASlotIsAThinRoundedStrip) {
    _LTSheetWindowSlot slot(NSMakeRect(100, 100, 60, 5), NSTitledWindowMask, NSBackingStoreBuffered, true);
    EXPECT_EQ(slot.styleMask(), 0U);
    EXPECT_FALSE(slot.isOpaque());
    EXPECT_FALSE(slot.hasShadow());
    EXPECT_THAT(pixelAt(slot, 30, 2), LooksLike(over(0.65, 0.35, 0)));
    EXPECT_LT(qAlpha(pixelAt(slot, 0, 0)), 40);
    slot.setFrame(NSMakeRect(100, 100, 80, 5), false);
    EXPECT_EQ(slot.backgroundColor().patternImage()->size(), (NSSize{80, 5}));
    slot.setFrame(NSMakeRect(100, 100, -26, 5), false);
    EXPECT_TRUE(slot.backgroundColor().patternImage());
}

// SPDX-License-Identifier: MIT
#include "ShellHost.h"

#include <VXKit/app/LTWindow.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QLineEdit>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

#include <array>
#include <cmath>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr NSRect itemRect{{300, 700}, {30, 22}};

/// Red, green, blue and alpha of a premultiplied pixel, in the words of a failure.
std::string told(QRgb pixel) {
    return QString::asprintf("%d %d %d %d", qRed(pixel), qGreen(pixel), qBlue(pixel), qAlpha(pixel)).toStdString();
}

class LTWindowTest : public ShellHost {
protected:
    static std::unique_ptr<LTWindow> makeWindow(const NSSize& size = {200, 120}) {
        return std::make_unique<LTWindow>(NSRect{NSZeroPoint, size}, NSTitledWindowMask, NSBackingStoreBuffered, true);
    }

    /// The pixel of the background at a point of the window, y up.
    static QRgb pixelAt(const LTWindow& window, double x, double y) {
        const QImage look = window.backgroundColor().patternImage()->imageForScale(qGuiApp->devicePixelRatio());
        const double ratio = look.devicePixelRatio();
        const int row = static_cast<int>(std::floor((window.frame().size.height - y) * ratio));
        return look.pixel(static_cast<int>(std::floor(x * ratio)), row);
    }

    static QRgb grey(int level, int alpha = 255) { return qPremultiply(qRgba(level, level, level, alpha)); }
};

} // namespace

TEST_F(LTWindowTest, HangsUnderTheMiddleOfTheStatusItem) {
    placeItem({{300.25, 700.5}, {31, 22}});
    const auto window = makeWindow({200, 120});
    EXPECT_EQ(window->frame(), NSMakeRect(300.25 - (100 - 15.5), 700.5 - 120, 200, 120));
}

TEST_F(LTWindowTest, KeepsTwentyPointsFromTheRightEdgeWhereItWouldStickOut) {
    const double screenWidth = NSScreen::mainScreen().frame().size.width;
    PlacedItemView& item = placeItem({{screenWidth - 100 - 15, 700}, {30, 22}});
    const auto window = makeWindow();
    EXPECT_EQ(window->frame().origin.x, screenWidth - 200) << "its edge is the screen's";
    item.itemFrame.origin.x += 0.5;
    EXPECT_EQ(window->frame().origin.x, screenWidth - 200 - 20);
}

TEST_F(LTWindowTest, MovesItsArrowToStayUnderAnItemAtTheRightEdge) {
    const double screenWidth = NSScreen::mainScreen().frame().size.width;
    placeItem({{screenWidth - 60, 700}, {30, 22}});
    const auto window = makeWindow();
    window->updateBackground();
    const double tip = screenWidth - 45 - window->frame().origin.x;
    EXPECT_EQ(tip, 175);
    EXPECT_EQ(told(pixelAt(*window, tip - 0.5, 120 - 8)), told(grey(13)));
    EXPECT_EQ(qAlpha(pixelAt(*window, 100, 120 - 8)), 0) << "there is no arrow in the middle";
}

TEST_F(LTWindowTest, DoesNotClampItsLeftEdge) {
    placeItem({{10, 700}, {30, 22}});
    EXPECT_EQ(makeWindow()->frame().origin.x, 10 - (100 - 15));
}

TEST_F(LTWindowTest, TakesNoAccountOfWhereTheScreenBegins) {
    // On a screen to the left of the main one and on one below it.
    PlacedItemView& item = placeItem({{-500, 700}, {30, 22}});
    const auto window = makeWindow();
    EXPECT_EQ(window->frame(), NSMakeRect(-585, 580, 200, 120));
    item.itemFrame = NSMakeRect(300, -300, 30, 22);
    EXPECT_EQ(window->frame(), NSMakeRect(215, -420, 200, 120));
}

TEST_F(LTWindowTest, StaysWhereItWasPutWithoutAStatusItem) {
    const auto window = makeWindow();
    window->setFrame(NSMakeRect(11, 22, 200, 120), false);
    EXPECT_EQ(window->frame(), NSMakeRect(11, 22, 200, 120));
    application.hasController = false;
    EXPECT_EQ(window->frame(), NSMakeRect(11, 22, 200, 120));
}

TEST_F(LTWindowTest, AwakesInItsPlace) {
    placeItem(itemRect);
    const auto window = makeWindow();
    window->awakeFromNib();
    EXPECT_EQ(window->NSWindow::frame(), NSMakeRect(215, 580, 200, 120));
    EXPECT_TRUE(window->backgroundColor().patternImage());
}

TEST_F(LTWindowTest, IsPlacedAnewWheneverItIsOrderedIn) {
    PlacedItemView& item = placeItem(itemRect);
    const auto window = makeWindow();
    window->awakeFromNib();
    item.itemFrame.origin.x = 250;
    window->makeKeyAndOrderFront(nullptr);
    EXPECT_EQ(window->NSWindow::frame(), NSMakeRect(165, 580, 200, 120));
}

TEST_F(LTWindowTest, FollowsItsItemWhileItIsShown) {
    PlacedItemView& item = placeItem(itemRect);
    const auto window = makeWindow();
    window->orderFront(nullptr);
    item.itemFrame.origin.x += 40;
    const auto itemHasMoved = [&] {
        NSNotificationCenter::defaultCenter().postNotificationName(NSWindowDidMoveNotification, item.window());
    };
    itemHasMoved();
    EXPECT_EQ(window->NSWindow::frame().origin.x, 340 - (100 - 15));
    window->orderOut(nullptr);
    item.itemFrame.origin.x += 40;
    itemHasMoved();
    EXPECT_EQ(window->NSWindow::frame().origin.x, 340 - (100 - 15)) << "it is placed when it is shown again";
}

TEST_F(LTWindowTest, StaysWhereItIsWhenAnotherWindowMoves) {
    PlacedItemView& item = placeItem(itemRect);
    const auto window = makeWindow();
    window->orderFront(nullptr);
    item.itemFrame.origin.x += 40;
    NSWindow other(NSMakeRect(0, 0, 50, 50), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    NSNotificationCenter::defaultCenter().postNotificationName(NSWindowDidMoveNotification, &other);
    EXPECT_EQ(window->NSWindow::frame().origin.x, 300 - (100 - 15));
}

TEST_F(LTWindowTest, StandsOnAnItemAlongTheBottomOfTheScreen) {
    placeItem({{300, 4}, {30, 22}});
    const auto window = makeWindow();
    EXPECT_EQ(window->frame().origin.y, 4 - 120) << "where it belongs stays where it belongs";
    window->makeKeyAndOrderFront(nullptr);
    EXPECT_EQ(window->NSWindow::frame(), NSMakeRect(215, 26, 200, 120));
}

TEST_F(LTWindowTest, HangsFromAnItemAtTheTopEvenWhereTheScreenIsTooLow) {
    const double screenHeight = NSScreen::mainScreen().frame().size.height;
    placeItem({{300, screenHeight - 22}, {30, 22}});
    const auto window = makeWindow({200, screenHeight + 100});
    window->makeKeyAndOrderFront(nullptr);
    EXPECT_EQ(NSMaxY(window->NSWindow::frame()), screenHeight - 22);
}

TEST_F(LTWindowTest, IsABorderlessFloatingWindowOnEveryDesktopWhateverIsAsked) {
    const auto window = makeWindow();
    EXPECT_EQ(window->styleMask(), NSBorderlessWindowMask);
    EXPECT_EQ(window->level(), 8);
    EXPECT_EQ(window->collectionBehavior(), 1U);
    EXPECT_FALSE(window->isOpaque());
    EXPECT_TRUE(window->canBecomeKeyWindow());
    EXPECT_EQ(window->management(), NSWindowManagement::Bypassing);
}

TEST_F(LTWindowTest, PaintsBodyArrowSeparatorAndOutlineOfAnOpaqueWindow) {
    placeItem(itemRect);
    const auto window = makeWindow();
    window->updateBackground();
    EXPECT_EQ(told(pixelAt(*window, 50, 50)), told(grey(13))) << "white 0.05";
    EXPECT_EQ(told(pixelAt(*window, 99.5, 120 - 10)), told(grey(13))) << "within the arrow";
    EXPECT_EQ(qAlpha(pixelAt(*window, 70, 120 - 10)), 0) << "beside the arrow";
    EXPECT_EQ(qAlpha(pixelAt(*window, 0.5, 0.5)), 0) << "outside the corner";
    // A line one point wide on the border of two rows covers half of each, over the body.
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 47.5)), (13 + 36) / 2.0, 2);
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 48.5)), (13 + 36) / 2.0, 2);
    EXPECT_EQ(told(pixelAt(*window, 50, 120 - 46.5)), told(grey(13)));
    // The outline is two points wide and centred 0.75 inside the body's edge.
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 0.5)), 204, 2);
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 1.5)), 13 + (204 - 13) * 0.75, 3);
    EXPECT_EQ(told(pixelAt(*window, 50, 2.5)), told(grey(13)));
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 14 - 0.5)), 204, 2);
    EXPECT_GT(qAlpha(pixelAt(*window, 50, 120 - 14 + 0.2)), 0) << "half the outline's outer quarter shows above";
}

TEST_F(LTWindowTest, PutsTheTipOfTheArrowOnTheMiddleOfTheItem) {
    placeItem(itemRect);
    application.opacity = 0.5F; // a thin dark outline, which leaves the body of the arrow to be seen
    const auto window = makeWindow();
    window->updateBackground();
    EXPECT_GT(qAlpha(pixelAt(*window, 99.5, 119.5)), 0);
    EXPECT_EQ(qAlpha(pixelAt(*window, 97.5, 119.5)), 0);
    EXPECT_EQ(qAlpha(pixelAt(*window, 102.5, 119.5)), 0);
    // The outline's arrow begins at the outline's own corner, 0.75 further in both directions.
    std::array<NSPoint, 3> points;
    const NSRect body = NSInsetRect(NSMakeRect(0, 0, 200, 106), 0.75, 0.75);
    window->bezierPathWithRoundRectAndTriangle(body).elementAtIndex(6, &points);
    EXPECT_EQ(points[0], NSMakePoint(100.75, 106 - 0.75 + 14));
}

TEST_F(LTWindowTest, IsDrawnOpaqueWithTheLookOfATranslucentOneWhereItClosesOnDeactivation) {
    placeItem(itemRect);
    application.closesOnDeactivate = true;
    application.opacity = 0.5F;
    application.setActive(true);
    const auto window = makeWindow();
    window->updateBackground();
    EXPECT_EQ(told(pixelAt(*window, 50, 50)), told(grey(13))) << "opacity 1 in spite of the hook";
    // Two bands: black at 0.8, then white at 0.14.
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 46.5)), 13 * 0.2, 1);
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 47.5)), 13 * 0.86 + 255 * 0.14, 1);
    // The outline is one point wide in white 0.2, from 0.25 to 1.25 inside.
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 1.5)), 13 * 0.75 + 51 * 0.25, 2);
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 0.5)), 13 * 0.25 + 51 * 0.75, 2);
}

TEST_F(LTWindowTest, DimsWhileInactiveWhereItStaysOpen) {
    placeItem(itemRect);
    application.closesOnDeactivate = false;
    application.opacity = 0.9F;
    application.setActive(true);
    const auto window = makeWindow();
    window->updateBackground();
    EXPECT_EQ(qAlpha(pixelAt(*window, 50, 50)), qRound(0.9 * 255));
    application.setActive(false);
    window->updateBackground();
    EXPECT_EQ(qAlpha(pixelAt(*window, 50, 50)), qRound(0.65 * 255));
    // Bands black at 0.6 and white at 0.25; outline white 0.4.
    const QRgb body = pixelAt(*window, 50, 50);
    EXPECT_NEAR(qAlpha(pixelAt(*window, 50, 120 - 46.5)), qAlpha(body) * 0.4 + 255 * 0.6, 1);
    EXPECT_NEAR(qRed(pixelAt(*window, 50, 120 - 47.5)), qRed(qPremultiply(body)) * 0.75 + 255 * 0.25, 3);
}

TEST_F(LTWindowTest, KeepsItsBackgroundWithoutWidthOrHeight) {
    placeItem(itemRect);
    const auto window = makeWindow();
    window->updateBackground();
    const auto before = window->backgroundColor().patternImage();
    window->setFrame(NSMakeRect(0, 0, 0, 120), true);
    EXPECT_EQ(window->backgroundColor().patternImage(), before);
    window->setFrame(NSMakeRect(0, 0, 200, 0), true);
    EXPECT_EQ(window->backgroundColor().patternImage(), before);
}

TEST_F(LTWindowTest, RedrawsOnMoveResizeAndDisplay) {
    placeItem(itemRect);
    const auto window = makeWindow();
    window->updateBackground();
    auto before = window->backgroundColor().patternImage();
    const auto isRedrawn = [&] { return std::exchange(before, window->backgroundColor().patternImage()) != before; };
    window->setFrame(NSMakeRect(1, 2, 200, 120), false);
    EXPECT_TRUE(isRedrawn());
    window->setFrame(NSMakeRect(1, 2, 210, 120), false);
    EXPECT_TRUE(isRedrawn());
    EXPECT_EQ(before->size().width, 210);
    window->display();
    EXPECT_TRUE(isRedrawn());
    window->setFrame(NSMakeRect(1, 2, 210, 120), false);
    EXPECT_FALSE(isRedrawn());
}

TEST_F(LTWindowTest, FollowsActivationOnlyWhereItStaysOpenAsDecidedAtItsMaking) {
    placeItem(itemRect);
    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    application.closesOnDeactivate = true;
    const auto closing = makeWindow();
    application.closesOnDeactivate = false;
    const auto staying = makeWindow();
    application.closesOnDeactivate = true;
    for (const char* name : {NSApplicationDidResignActiveNotification, NSApplicationDidBecomeActiveNotification}) {
        closing->updateBackground();
        staying->updateBackground();
        const auto closingBefore = closing->backgroundColor().patternImage();
        const auto stayingBefore = staying->backgroundColor().patternImage();
        centre.postNotificationName(name, nullptr);
        EXPECT_EQ(closing->backgroundColor().patternImage(), closingBefore) << name;
        EXPECT_NE(staying->backgroundColor().patternImage(), stayingBefore) << name;
    }
}

TEST_F(LTWindowTest, OutlinesBodyAndArrowInTheGivenOrder) {
    placeItem(itemRect);
    const auto window = makeWindow();
    const NSBezierPath path = window->bezierPathWithRoundRectAndTriangle(NSMakeRect(2, 3, 100, 60));
    const double d = static_cast<double>(10.0F * 0.5522848F);
    struct Element {
        NSBezierPathElement type;
        std::vector<NSPoint> points;
    };
    const double a = 102; // the middle of the window, moved by the rectangle's x
    const std::vector<Element> expected{
        {NSMoveToBezierPathElement, {{12, 3}}},
        {NSLineToBezierPathElement, {{92, 3}}},
        {NSCurveToBezierPathElement, {{92 + d, 3}, {102, 13 - d}, {102, 13}}},
        {NSLineToBezierPathElement, {{102, 53}}},
        {NSCurveToBezierPathElement, {{102, 53 + d}, {92 + d, 63}, {92, 63}}},
        {NSLineToBezierPathElement, {{a + 14, 63}}},
        {NSLineToBezierPathElement, {{a, 77}}},
        {NSLineToBezierPathElement, {{a - 14, 63}}},
        {NSLineToBezierPathElement, {{12, 63}}},
        {NSCurveToBezierPathElement, {{12 - d, 63}, {2, 53 + d}, {2, 53}}},
        {NSLineToBezierPathElement, {{2, 13}}},
        {NSCurveToBezierPathElement, {{2, 13 - d}, {12 - d, 3}, {12, 3}}},
        {NSClosePathBezierPathElement, {}},
    };
    ASSERT_EQ(path.elementCount(), static_cast<int>(expected.size()));
    for (int index = 0; index < path.elementCount(); ++index) {
        std::array<NSPoint, 3> points;
        const Element& element = expected[static_cast<std::size_t>(index)];
        EXPECT_EQ(path.elementAtIndex(index, &points), element.type) << index;
        for (std::size_t point = 0; point < element.points.size(); ++point) {
            EXPECT_EQ(points.at(point), element.points[point]) << index << " point " << point;
        }
    }
}

TEST_F(LTWindowTest, HalvesTheCornersOfALowRectangle) {
    placeItem(itemRect);
    const auto window = makeWindow();
    const NSBezierPath path = window->bezierPathWithRoundRectAndTriangle(NSMakeRect(0, 0, 100, 12));
    std::array<NSPoint, 3> points;
    path.elementAtIndex(0, &points);
    EXPECT_EQ(points[0], NSMakePoint(10, 0)) << "the other direction keeps 10";
    path.elementAtIndex(2, &points);
    EXPECT_EQ(points[2], NSMakePoint(100, 6));
    EXPECT_EQ(points[1], NSMakePoint(100, 6 - static_cast<double>(6.0F * 0.5522848F)));
}

TEST_F(LTWindowTest, TakesTheFirstClickWhileInactiveForActivationAlone) {
    placeItem(itemRect);
    const auto window = makeWindow();
    auto* field = new QLineEdit(window->contentView());
    field->setGeometry(20, 60, 100, 20);
    window->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    window->makeFirstResponder(nullptr);
    application.setActive(false);
    application.told.clear();

    const QPoint inField = field->geometry().center();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, inField);
    EXPECT_THAT(application.told, ElementsAre("activate"));
    EXPECT_FALSE(field->hasFocus());
    EXPECT_TRUE(application.isActive());

    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, inField);
    EXPECT_THAT(application.told, ElementsAre("activate"));
    EXPECT_TRUE(field->hasFocus());
}

TEST_F(LTWindowTest, PassesOtherEventsOnWhileInactive) {
    placeItem(itemRect);
    const auto window = makeWindow();
    auto* field = new QLineEdit(window->contentView());
    window->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    window->makeFirstResponder(field);
    application.setActive(false);
    application.told.clear();
    QTest::keyClick(window->windowHandle(), 'a');
    QTest::keyClick(window->windowHandle(), 'b');
    QTest::mouseClick(window->windowHandle(), Qt::MiddleButton, {}, QPoint(50, 50));
    EXPECT_EQ(field->text(), QStringLiteral("ab"));
    EXPECT_THAT(application.told, IsEmpty());
}

TEST_F(LTWindowTest, EndsEditingOnAClickBesideTheField) {
    placeItem(itemRect);
    const auto window = makeWindow();
    auto* field = new QLineEdit(window->contentView());
    field->setGeometry(20, 60, 100, 20);
    window->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    application.setActive(true);
    window->makeFirstResponder(field);
    ASSERT_TRUE(field->hasFocus());
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, QPoint(180, 100));
    EXPECT_FALSE(field->hasFocus());
    EXPECT_EQ(window->firstResponder(), window.get());
}

TEST_F(LTWindowTest, SetsUpItsShadowWhenItIsShownWithTheKeyboard) {
    placeItem(itemRect);
    WindowEffects::setSharedEffects(std::make_unique<RecordedEffects>(shadows));
    {
        const auto window = makeWindow();
        window->orderFront(nullptr);
        EXPECT_THAT(shadows, IsEmpty());
        window->makeKeyAndOrderFront(nullptr);
        ASSERT_EQ(shadows.size(), 1U);
        EXPECT_EQ(shadows[0].first, window.get());
        EXPECT_EQ(shadows[0].second,
                  (WindowShadow{.standardDeviation = 72, .density = 0.75, .offsetX = 0, .offsetY = 28}));
    }
    WindowEffects::setSharedEffects(nullptr);
}

namespace {

/// A main window with the keyboard, and the application's turns written down.
class PressElsewhere : public LTWindowTest {
protected:
    void SetUp() override {
        placeItem(itemRect);
        window = makeWindow();
        window->makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QCoreApplication::processEvents();
        turns.clear();
    }

    std::unique_ptr<LTWindow> window;
    std::vector<std::string> turns;
    NSNotificationObservation observation = NSNotificationCenter::defaultCenter().addObserverForName(
        "", &application, [this](const NSNotification& notification) { turns.emplace_back(notification.name); });
};

} // namespace

TEST_F(PressElsewhere, DeactivatesAtOnceAnApplicationThatClosesItsWindow) {
    Q_EMIT WindowEffects::sharedEffects().pressedElsewhere();
    EXPECT_THAT(turns,
                ElementsAre(NSApplicationWillResignActiveNotification, NSApplicationDidResignActiveNotification));
    // The keyboard is still here, so that activating is a turn again.
    turns.clear();
    application.activateIgnoringOtherApps(true);
    EXPECT_THAT(turns,
                ElementsAre(NSApplicationWillBecomeActiveNotification, NSApplicationDidBecomeActiveNotification));
}

TEST_F(PressElsewhere, LeavesAnApplicationAloneThatKeepsItsWindowOpen) {
    application.closesOnDeactivate = false;
    Q_EMIT WindowEffects::sharedEffects().pressedElsewhere();
    EXPECT_THAT(turns, IsEmpty());
}

TEST(LTWindowAtTwoPixelsAPoint, PaintsTheSameLookInFourTimesThePixels) {
    qputenv("QT_SCALE_FACTOR", "2");
    ShellApplication application;
    auto view = std::make_unique<PlacedItemView>(NSMakeRect(300, 300, 30, 22));
    application.item = NSStatusBar::systemStatusBar().statusItemWithLength(30);
    application.item->setView(std::move(view));
    LTWindow window({NSZeroPoint, {200, 120}}, 0, NSBackingStoreBuffered, false);
    window.updateBackground();
    const QImage look = window.backgroundColor().patternImage()->imageForScale(2);
    ASSERT_EQ(look.size(), QSize(400, 240));
    EXPECT_EQ(told(look.pixel(100, 120)), told(qRgba(13, 13, 13, 255)));
    // Each half point of the separator is a whole pixel now.
    EXPECT_EQ(told(look.pixel(100, 95)), told(qRgba(36, 36, 36, 255)));
    EXPECT_EQ(told(look.pixel(100, 96)), told(qRgba(36, 36, 36, 255)));
    EXPECT_EQ(told(look.pixel(100, 94)), told(qRgba(13, 13, 13, 255)));
    EXPECT_EQ(told(look.pixel(100, 97)), told(qRgba(13, 13, 13, 255)));
    EXPECT_EQ(told(look.pixel(100, 239)), told(qRgba(204, 204, 204, 255)));
    EXPECT_EQ(told(look.pixel(100, 237)), told(qRgba(204, 204, 204, 255)));
    EXPECT_EQ(told(look.pixel(100, 235)), told(qRgba(13, 13, 13, 255)));
    application.item.reset();
}

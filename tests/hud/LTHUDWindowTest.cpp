// SPDX-License-Identifier: MIT
#include "../ModalRun.h"
#include "../app/ShellHost.h"

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>

#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gmock/gmock.h>

#include <cmath>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr NSRect panelFrame{{100, 100}, {200, 120}};

/// A colour of white with alpha over another, premultiplied, as source-over makes it.
QRgb over(double white, double alpha, QRgb below) {
    const auto channel = [&](double source, int under) {
        return static_cast<int>(std::lround(source * alpha * 255 + under * (1 - alpha)));
    };
    return qRgba(channel(white, qRed(below)), channel(white, qGreen(below)), channel(white, qBlue(below)),
                 channel(1, qAlpha(below)));
}

bool isNear(QRgb pixel, QRgb wanted, int tolerance = 2) {
    return std::abs(qRed(pixel) - qRed(wanted)) <= tolerance && std::abs(qGreen(pixel) - qGreen(wanted)) <= tolerance &&
           std::abs(qBlue(pixel) - qBlue(wanted)) <= tolerance && std::abs(qAlpha(pixel) - qAlpha(wanted)) <= tolerance;
}

MATCHER_P(LooksLike, wanted, "") {
    *result_listener << QString::asprintf("%08x instead of %08x", arg, wanted).toStdString();
    return isNear(arg, wanted);
}

class LTHUDWindowTest : public ShellHost {
protected:
    ~LTHUDWindowTest() override {
        panel.reset();
        WindowEffects::setSharedEffects(nullptr);
    }

    static std::unique_ptr<LTHUDWindow> makePanel(const NSRect& frame = panelFrame) {
        return std::make_unique<LTHUDWindow>(frame, NSTitledWindowMask, NSBackingStoreBuffered, true);
    }

    RecordedEffects& recordEffects() {
        auto recorded = std::make_unique<RecordedEffects>(shadows);
        RecordedEffects& effects = *recorded;
        WindowEffects::setSharedEffects(std::move(recorded));
        return effects;
    }

    static QImage lookOf(const NSWindow& window) {
        return window.backgroundColor().patternImage()->imageForScale(qGuiApp->devicePixelRatio());
    }

    /// The pixel of the background right above and to the right of a point of the window, y up.
    static QRgb pixelAt(const NSWindow& window, double x, double y) {
        const QImage look = lookOf(window);
        const double ratio = look.devicePixelRatio();
        return look.pixel(static_cast<int>(x * ratio), static_cast<int>((window.frame().size.height - y) * ratio) - 1);
    }

    /// What the title bar's image is at `opacity`, at the same points of a panel.
    static QRgb titleBarPixel(const NSSize& size, double x, double y, double opacity) {
        const auto image = NSImage::initWithSize(size);
        image->lockFocus();
        VXKitImage(QStringLiteral("HUDWindowTitleBar"))
            ->drawInRect(NSMakeRect(0, size.height - 19, size.width, 19), NSZeroRect, NSCompositeSourceOver, opacity);
        image->unlockFocus();
        const QImage pixels = image->imageForScale(qGuiApp->devicePixelRatio());
        const double ratio = pixels.devicePixelRatio();
        return pixels.pixel(static_cast<int>(x * ratio), static_cast<int>((size.height - y) * ratio) - 1);
    }

    static NSRect visibleFrame() { return NSScreen::mainScreen().visibleFrame(); }

    std::unique_ptr<LTHUDWindow> panel;
};

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

namespace {

/// A window to run sheets over, and what happened, in order.
class HUDSheet : public LTHUDWindowTest {
protected:
    void SetUp() override {
        parent = std::make_unique<NSWindow>(parentFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false);
        parent->orderFront(nullptr);
        panel = makePanel(NSMakeRect(0, 0, 422, 128));
    }
    ~HUDSheet() override {
        panel.reset();
        parent.reset();
    }

    /// Runs the sheet; `inside` happens in the middle of the run.
    void run(const std::function<void()>& inside) {
        bool wasInside = false;
        whenNextModalRunHasBegun(application, [&] {
            wasInside = true;
            inside();
        });
        panel->runHUDSheetForWindow(*parent);
        EXPECT_TRUE(wasInside);
    }

    static constexpr NSRect parentFrame{{200, 100}, {600, 400}};

    const AnimationDurationsForTesting none{0};
    std::unique_ptr<NSWindow> parent;
};

} // namespace

TEST_F(HUDSheet, ComesOutOfASlotAndAnInvisibleAnchorNearTheParentsTop) {
    run([this] {
        const std::vector<NSWindow*> children = parent->childWindows();
        ASSERT_EQ(children.size(), 2U);
        EXPECT_TRUE(dynamic_cast<_LTSheetWindowSlot*>(children[0]));
        EXPECT_EQ(children[0]->frame(), NSMakeRect(228, 454, 544, 5));
        EXPECT_TRUE(children[0]->isVisible());
        EXPECT_FALSE(children[0]->hasShadow());
        EXPECT_EQ(children[1]->frame(), NSMakeRect(253, 452, 494, 5));
        EXPECT_EQ(children[1]->alphaValue(), 0);
        EXPECT_EQ(children[1]->styleMask(), 0U);
        EXPECT_EQ(panel->frame(), NSMakeRect(289, 457 - 128, 422, 128));
        EXPECT_TRUE(panel->isVisible());
        EXPECT_EQ(application.modalWindow(), panel.get());
        application.stopModal();
    });
    EXPECT_FALSE(panel->isVisible());
    EXPECT_THAT(parent->childWindows(), IsEmpty());
    EXPECT_TRUE(parent->isVisible());
}

TEST_F(HUDSheet, LooksLikeASheetFromThenOn) {
    run([this] {
        EXPECT_TRUE(panel->isSheet());
        const QRgb body = over(0.2, 0.8, 0);
        EXPECT_THAT(pixelAt(*panel, 200, 60), LooksLike(body));
        EXPECT_THAT(pixelAt(*panel, 200, 120), LooksLike(body)) << "no title bar, right below the shading";
        EXPECT_THAT(pixelAt(*panel, 200, 36), LooksLike(body));
        EXPECT_THAT(pixelAt(*panel, 200, 35), LooksLike(over(0.15, 0.8, body)));
        EXPECT_EQ(qAlpha(pixelAt(*panel, 0, 0)), 0) << "round at the bottom";
        EXPECT_EQ(qAlpha(pixelAt(*panel, 421, 0)), 0);
        EXPECT_GT(qAlpha(pixelAt(*panel, 0, 127)), 200) << "square at the top";
        EXPECT_GT(qAlpha(pixelAt(*panel, 421, 127)), 200);
        application.stopModal();
    });
    EXPECT_TRUE(panel->isSheet());
}

TEST_F(HUDSheet, IsShadedFromItsSlotDownwards) {
    run([this] {
        const QRgb body = over(0.2, 0.8, 0);
        // In the middle of a pixel, the gradient has come so far of the 7 points.
        for (int row = 0; row < 7; ++row) {
            const double progress = (row + 0.5) / 7;
            const QRgb pixel = pixelAt(*panel, 200, 121 + row);
            EXPECT_TRUE(isNear(pixel, over(0.278 * progress, progress, body), 4)) << row;
        }
        application.stopModal();
    });
}

TEST_F(HUDSheet, MovesWithItsParentThroughTheAnchor) {
    run([this] {
        parent->setFrameOrigin({230, 90});
        EXPECT_EQ(panel->frame().origin, (NSPoint{319, 457 - 128 - 10}));
        EXPECT_EQ(parent->childWindows()[0]->frame().origin, (NSPoint{258, 444}));
        application.stopModal();
    });
}

TEST_F(HUDSheet, BlocksItsParentAndEveryOtherWindow) {
    NSWindow other(NSMakeRect(0, 0, 50, 50), 0, NSBackingStoreBuffered, false);
    other.orderFront(nullptr);
    run([&] {
        int presses = 0;
        for (NSWindow* window : {parent.get(), &other}) {
            class Counted : public NSView {
            public:
                explicit Counted(int& count) : m_count(count) {}
                void mouseDown(const NSEvent& /*event*/) override { ++m_count; }

            private:
                int& m_count;
            };
            auto view = std::make_unique<Counted>(presses);
            view->setFrame(NSMakeRect(0, 0, 50, 50));
            ViewCore::of(window->contentView())->addSubview(view.release());
            QTest::mouseClick(window->windowHandle(), Qt::LeftButton, {}, QPoint(10, window->height() - 10));
        }
        EXPECT_EQ(presses, 0);
        application.stopModal();
    });
    EXPECT_EQ(panel->windowModality(), Qt::NonModal) << "as it was";
}

TEST_F(HUDSheet, GivesTheKeyboardBackToItsParent) {
    class KeyWindow : public NSWindow {
    public:
        using NSWindow::NSWindow;
        bool canBecomeKeyWindow() const override { return true; }
    };
    parent = std::make_unique<KeyWindow>(parentFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    parent->makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(parent.get()));
    run([this] {
        EXPECT_TRUE(QTest::qWaitFor([this] { return panel->isKeyWindow(); }));
        application.stopModal();
    });
    EXPECT_TRUE(QTest::qWaitFor([this] { return parent->isKeyWindow(); }));
}

TEST_F(HUDSheet, EndsWhenItsParentIsDestroyed) {
    run([this] { parent.reset(); });
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(application.modalWindow(), nullptr);
}

TEST_F(HUDSheet, EndsWhenItsParentIsClosed) {
    run([this] { parent->close(); });
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(HUDSheet, EndsWhenItIsDestroyedItself) {
    run([this] { panel.reset(); });
    EXPECT_THAT(parent->childWindows(), IsEmpty());
    EXPECT_EQ(application.modalWindow(), nullptr);
}

TEST_F(HUDSheet, AParentThatDiesUnderARunWithinItsRunEndsOnlyTheSheet) {
    NSWindow inner(NSMakeRect(0, 0, 50, 50), 0, NSBackingStoreBuffered, false);
    run([&] {
        whenNextModalRunHasBegun(application, [&] {
            parent.reset();
            EXPECT_EQ(application.modalWindow(), &inner) << "which is not its business";
            application.stopModal();
        });
        EXPECT_EQ(application.runModalForWindow(inner), NSRunStoppedResponse);
    });
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(HUDSheet, AParentNarrowerThanTheAnchorsMarginsIsNoTrouble) {
    parent->setFrame(NSMakeRect(200, 100, 80, 200), false);
    run([this] {
        EXPECT_EQ(parent->childWindows()[0]->frame().size.width, 24);
        EXPECT_EQ(parent->childWindows()[1]->frame().size.width, -26);
        EXPECT_EQ(panel->frame().origin.x, 240 - 211) << "in its middle all the same";
        application.stopModal();
    });
}

TEST_F(HUDSheet, RunsASecondTime) {
    for (int round = 0; round < 2; ++round) {
        run([this] {
            EXPECT_TRUE(panel->isVisible());
            EXPECT_EQ(panel->frame(), NSMakeRect(289, 457 - 128, 422, 128));
            application.stopModal();
        });
    }
}

TEST_F(HUDSheet, BypassesTheWindowManagerWhereItsParentDoes) {
    parent->orderOut(nullptr);
    parent->setManagement(NSWindowManagement::Bypassing);
    parent->orderFront(nullptr);
    run([this] {
        EXPECT_EQ(panel->management(), NSWindowManagement::Bypassing);
        application.stopModal();
    });
}

TEST_F(HUDSheet, RisesToTheLevelOfItsParent) {
    parent->setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
    run([this] {
        EXPECT_EQ(panel->level(), parent->level());
        const std::vector<NSWindow*> backToFront = NSWindow::windows();
        EXPECT_GT(std::find(backToFront.begin(), backToFront.end(), panel.get()),
                  std::find(backToFront.begin(), backToFront.end(), parent.get()));
        application.stopModal();
    });
}

TEST_F(HUDSheet, BlursItsParentItselfWhereTheDesktopDoesNot) {
    // Stripes as wide as the blur, which nothing is left of.
    const auto stripes = NSImage::initWithSize({2, 1});
    stripes->lockFocus();
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, 1, 1));
    NSColor::blackColor().set();
    NSRectFill(NSMakeRect(1, 0, 1, 1));
    stripes->unlockFocus();
    parent->setBackgroundColor(NSColor::colorWithPatternImage(stripes));
    const auto pixelOfSheet = [this](double x, double y) {
        const QImage pixels = snapshotOfWindow(*panel)->imageForScale(1);
        return pixels.pixel(static_cast<int>(x), pixels.height() - 1 - static_cast<int>(y));
    };
    run([&] {
        const QRgb grey = qRgba(127, 127, 127, 255);
        EXPECT_TRUE(isNear(pixelOfSheet(200, 60), over(0.2, 0.8, grey), 3));
        EXPECT_TRUE(isNear(pixelOfSheet(201, 60), over(0.2, 0.8, grey), 3));
        EXPECT_EQ(qAlpha(pixelOfSheet(0, 0)), 0) << "beside its corner there is nothing of it";
        application.stopModal();
    });
    EXPECT_TRUE(isNear(pixelOfSheet(200, 60), over(0.2, 0.8, 0), 2)) << "not when it is not over it any more";
}

TEST_F(HUDSheet, SlidesOutOfItsSlot) {
    const AnimationDurationsForTesting quick(0.2);
    std::vector<double> tops;
    const NSNotificationObservation moves = NSNotificationCenter::defaultCenter().addObserverForName(
        NSWindowDidMoveNotification, nullptr, [&](const NSNotification& notification) {
            for (const NSWindow* window : NSWindow::windows()) {
                if (window == notification.object && window != panel.get()) {
                    tops.push_back(window->frame().origin.y);
                }
            }
        });
    run([&] {
        ASSERT_FALSE(tops.empty());
        EXPECT_TRUE(std::is_sorted(tops.rbegin(), tops.rend())) << "downwards";
        EXPECT_EQ(tops.back(), 457 - 128);
        EXPECT_TRUE(panel->isVisible());
        application.stopModal();
    });
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

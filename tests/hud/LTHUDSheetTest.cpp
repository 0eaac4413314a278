// SPDX-License-Identifier: MIT
#include "../ModalRun.h"
#include "HUDWindowHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>

#include <QTest>

using testing::IsEmpty;

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

// SPDX-License-Identifier: MIT
#include "../app/ShellHost.h"

#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSWindow.h>

#include <QTest>

#include <gmock/gmock.h>

using testing::IsEmpty;

namespace {

class NSWindowAdditionsTest : public ShellHost {
protected:
    NSWindowAdditionsTest() {
        auto recorded = std::make_unique<RecordedEffects>(shadows);
        effects = recorded.get();
        WindowEffects::setSharedEffects(std::move(recorded));
        window =
            std::make_unique<NSWindow>(NSMakeRect(10, 10, 100, 80), NSTitledWindowMask, NSBackingStoreBuffered, false);
    }
    ~NSWindowAdditionsTest() override {
        window.reset();
        WindowEffects::setSharedEffects(nullptr);
    }

    RecordedEffects* effects;
    std::unique_ptr<NSWindow> window;
};

} // namespace

TEST_F(NSWindowAdditionsTest, AWindowThatWasNeverOrderedInGetsNoShadow) {
    setUpWindowShadow(*window);
    EXPECT_THAT(shadows, IsEmpty());
    window->orderFront(nullptr);
    setUpWindowShadow(*window);
    EXPECT_EQ(shadows.size(), 1U);
    window->orderOut(nullptr);
    setUpWindowShadow(*window);
    EXPECT_EQ(shadows.size(), 2U) << "once the server knows it, it does";
}

TEST_F(NSWindowAdditionsTest, EveryWindowsShadowSuitsTheMainWindowsOpacity) {
    window->orderFront(nullptr);
    application.opacity = 1.0F;
    setUpWindowShadow(*window);
    application.opacity = 0.9F;
    setUpWindowShadow(*window);
    ASSERT_EQ(shadows.size(), 2U);
    EXPECT_EQ(shadows[0].second, (WindowShadow{.standardDeviation = 72, .density = 0.75, .offsetX = 0, .offsetY = 28}));
    EXPECT_EQ(shadows[1].second, (WindowShadow{.standardDeviation = 24, .density = 0.75, .offsetX = 0, .offsetY = 25}));
}

TEST_F(NSWindowAdditionsTest, BlursByThreePoints) {
    enableBlurForWindow(*window);
    EXPECT_EQ(effects->blurRadius, 3.0);
}

TEST_F(NSWindowAdditionsTest, InvertsWhatTheWindowPaints) {
    window->setBackgroundColor(NSColor::colorWithCalibratedRed(1, 0.2, 0, 1));
    enableColorInversionForWindow(*window);
    window->orderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    const QImage picture = window->grab().toImage();
    EXPECT_EQ(picture.pixel(50, 40), qRgba(0, 204, 255, 255));
}

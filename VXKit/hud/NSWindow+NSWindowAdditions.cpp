// SPDX-License-Identifier: MIT
#include <VXKit/hud/NSWindow+NSWindowAdditions.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/desktop/WindowEffects.h>

namespace {

constexpr int numberBeforeOrderedIn = -1;

constexpr double opaqueDeviation = 72; // points
constexpr double translucentDeviation = 24;
constexpr double density = 0.75;
constexpr int offsetX = 0; // points, y downwards
constexpr int opaqueOffsetY = 28;
constexpr int translucentOffsetY = 25;

constexpr float blurRadius = 3; // points

} // namespace

void setUpWindowShadow(NSWindow& window) {
    if (window.windowNumber() == numberBeforeOrderedIn) {
        return;
    }
    const bool isOpaque = VXApplicationHooks().mainWindowOpacity() == 1.0F;
    WindowEffects::sharedEffects().setShadow(
        window, WindowShadow{.standardDeviation = isOpaque ? opaqueDeviation : translucentDeviation,
                             .density = density,
                             .offsetX = offsetX,
                             .offsetY = isOpaque ? opaqueOffsetY : translucentOffsetY});
}

void enableBlurForWindow(NSWindow& window) {
    window.setBackgroundBlurRadius(static_cast<double>(blurRadius));
}

void enableColorInversionForWindow(NSWindow& window) {
    WindowEffects::sharedEffects().setColorInversion(window, true);
}

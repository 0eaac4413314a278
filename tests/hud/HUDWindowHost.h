// SPDX-License-Identifier: MIT
// What the tests of panels share.
#pragma once

#include "../app/ShellHost.h"

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>

#include <cmath>
#include <memory>

#include <gmock/gmock.h>

inline constexpr NSRect panelFrame{{100, 100}, {200, 120}};

/// A colour of white with alpha over another, premultiplied, as source-over makes it.
inline QRgb over(double white, double alpha, QRgb below) {
    const auto channel = [&](double source, int under) {
        return static_cast<int>(std::lround(source * alpha * 255 + under * (1 - alpha)));
    };
    return qRgba(channel(white, qRed(below)), channel(white, qGreen(below)), channel(white, qBlue(below)),
                 channel(1, qAlpha(below)));
}

inline bool isNear(QRgb pixel, QRgb wanted, int tolerance = 2) {
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

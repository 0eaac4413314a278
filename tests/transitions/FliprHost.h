// SPDX-License-Identifier: MIT
// What the tests of flips share.
#pragma once

#include "../appkit/AppKitHost.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/transitions/FliprPanel.h>
#include <VXKit/transitions/FliprView.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

inline constexpr NSRect initialFrame{{100, 100}, {400, 200}};
inline constexpr NSRect finalFrame{{300, 150}, {460, 260}};

/// The progress at which the eased value is `value`, by the curve itself: x and y are cubic Bézier functions of t.
inline float progressOfValue(double value) {
    const auto bezier = [](double a, double b, double t) {
        return 3 * a * t * (1 - t) * (1 - t) + 3 * b * t * t * (1 - t) + t * t * t;
    };
    double low = 0;
    double high = 1;
    for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        (bezier(0, 1, middle) < value ? low : high) = middle;
    }
    return static_cast<float>(bezier(0.42, 0.58, low));
}

/// A picture whose colour says where in it one is.
inline std::shared_ptr<NSImage> slopes(const NSSize& size, int blue, double ratio) {
    QImage image((NSSizeToQSizeF(size) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixelColor(x, y, QColor(x * 255 / image.width(), y * 255 / image.height(), blue));
        }
    }
    image.setDevicePixelRatio(ratio);
    return NSImage::initWithQImage(image);
}

/// A window that writes down what is done to it, and does at a stage of it what the test says.
class FlippedWindow : public NSWindow {
public:
    FlippedWindow(const char* name, const NSRect& frame, int blue, std::vector<std::string>& log)
        : NSWindow(frame, NSBorderlessWindowMask, NSBackingStoreBuffered, false), m_name(name), m_log(log) {
        auto view = std::make_unique<DrawnView>();
        view->drawing = [this, blue, pixelRatio = devicePixelRatioF()] {
            slopes(NSMakeSize(width(), height()), blue, pixelRatio)
                ->drawAtPoint(NSZeroPoint, NSZeroRect, NSCompositeSourceOver, 1);
            reach("draw");
        };
        setContentView(view.release());
    }

    bool canBecomeKeyWindow() const override { return true; }
    void display() override {
        NSWindow::display();
        tell("display");
    }
    using NSWindow::setFrame;
    void setFrame(const NSRect& frame, bool display) override {
        NSWindow::setFrame(frame, display);
        tell("frame");
    }
    void orderWindow(NSWindowOrderingMode place, int other) override {
        NSWindow::orderWindow(place, other);
        tell(place == NSWindowAbove ? "front" : place == NSWindowBelow ? "back" : "out");
    }
    void makeKeyAndOrderFront(QObject* sender) override {
        NSWindow::makeKeyAndOrderFront(sender);
        tell("key");
    }

    /// Called at each stage; last of all, because it may be the window's end.
    std::function<void(const std::string&)> atStage;

private:
    void tell(const char* what) {
        m_log.push_back(m_name + "." + what);
        reach(what);
    }
    void reach(const char* what) {
        if (const auto work = atStage) {
            work(m_name + "." + what);
        }
    }

    std::string m_name;
    std::vector<std::string>& m_log;
};

/// The panel that flips are seen in; null before the first.
inline FliprPanel* panelOfFlips() {
    for (NSWindow* window : NSWindow::windows()) {
        if (auto* panel = dynamic_cast<FliprPanel*>(window)) {
            return panel;
        }
    }
    return nullptr;
}

/// Two windows, of which the first is shown, to turn over.
class Flipr : public AppKitHost {
protected:
    Flipr() { show(*initial); }
    ~Flipr() override {
        releaseFlippingWindow();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void flip(bool forward = true) {
        log.clear();
        flipToShowWindow(*initial, *final, forward);
    }

    /// Does `what` from the event loop while the animation of the next flip runs.
    void whileTurning(const std::function<void(FliprPanel&)>& what) {
        m_waiting.callOnTimeout(&application, [this, what] {
            FliprPanel* const panel = panelOfFlips();
            if (panel && panel->card().animation() && panel->card().animation()->isAnimating()) {
                m_waiting.stop();
                m_waiting.disconnect();
                ++turns;
                what(*panel);
            }
        });
        m_waiting.start(0);
    }

    /// What the panel shows at `value`, at the pixel ratio of the screen, as if it were one.
    static QImage pictureAt(FliprPanel& panel, double value) {
        panel.card().animation()->setCurrentProgress(progressOfValue(value));
        QImage picture = snapshotOfWindow(panel)->imageForScale(panel.devicePixelRatioF());
        picture.setDevicePixelRatio(1);
        return picture;
    }

    void expectEnded() const {
        EXPECT_FALSE(FliprView::isInAnimation());
        if (const FliprPanel* panel = panelOfFlips()) {
            EXPECT_FALSE(panel->isVisible());
            EXPECT_EQ(panel->card().animation(), nullptr);
        }
        for (const auto* window : {initial.get(), final.get()}) {
            if (window) {
                EXPECT_EQ(window->alphaValue(), 1);
            }
        }
    }

    std::vector<std::string> log;
    std::unique_ptr<FlippedWindow> initial = std::make_unique<FlippedWindow>("A", initialFrame, 40, log);
    std::unique_ptr<FlippedWindow> final = std::make_unique<FlippedWindow>("B", finalFrame, 200, log);
    int turns = 0;

private:
    const AnimationDurationsForTesting m_quick{0.1};
    QTimer m_waiting;
};

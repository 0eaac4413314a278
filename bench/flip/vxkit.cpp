// SPDX-License-Identifier: MIT
// The kit's side: windows that turn over.
//
//     bench_flip_vxkit
#include "Measured.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/transitions/FliprPanel.h>
#include <VXKit/transitions/FliprView.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <memory>
#include <utility>

namespace {

class Side : public NSWindow {
public:
    explicit Side(const QColor& ground)
        : NSWindow(NSScreenRectFromGlobal(QRectF(windowLeft, windowTop, windowWidth, windowHeight)),
                   NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
        setManagement(NSWindowManagement::Bypassing);
        setContentView(std::make_unique<Content>(ground).release());
    }
    bool canBecomeKeyWindow() const override { return true; }
};

/// Draws frames all over a flip while it turns.
void tellFrame(NSWindow& from, NSWindow& to) {
    QTimer turning;
    bool isDone = false;
    turning.callOnTimeout(qApp, [&] {
        auto* const panel = dynamic_cast<FliprPanel*>(flippingWindow());
        if (isDone || !panel || !panel->card().animation() || !panel->card().animation()->isAnimating()) {
            return;
        }
        isDone = true;
        QElapsedTimer clock;
        clock.start();
        for (int frame = 0; frame < measuredFrames; ++frame) {
            panel->card().animation()->setCurrentProgress(0.02F + 0.96F * static_cast<float>(frame) / measuredFrames);
        }
        tellFigure("frame", milliseconds(clock) / measuredFrames);
    });
    turning.start(0);
    flipToShowWindow(from, to, true);
}

} // namespace

int main(int argc, char** argv) {
    const LTApplication application(argc, argv);
    Side first(QColor(40, 60, 120));
    Side second(QColor(120, 50, 40));
    first.makeKeyAndOrderFront(nullptr);
    waitUntilShown(first);
    NSWindow* from = &first;
    NSWindow* to = &second;
    for (int flip = 0; flip < measuredFlips; ++flip) {
        const Frames frames([](const QObject* widget) { return dynamic_cast<const FliprView*>(widget) != nullptr; });
        flipToShowWindow(*from, *to, true);
        frames.tell();
        std::swap(from, to);
    }
    tellFrame(*from, *to);
    releaseFlippingWindow();
    return 0;
}

// SPDX-License-Identifier: MIT
// The kit's side: alerts and a panel of controls.
//
//     bench_hud_vxkit            how long alerts take to open, without animation, and panels to be painted anew
//     bench_hud_vxkit --pop      the frames of pops and their ends, with animation
//     bench_hud_vxkit --stand    an alert that stands until the program is killed
#include "Measured.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTHUDFlatButton.h>
#include <VXKit/controls/LTHUDRadioButton.h>
#include <VXKit/controls/LTHUDSecureTextField.h>
#include <VXKit/controls/LTHUDTextField.h>
#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/appkit/NSTextField.h>
#include <VXKit/platform/appkit/SnapshotWindow.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <memory>
#include <vector>

namespace {

constexpr int measuredPops = 8;

std::shared_ptr<LTHUDAlert> makeAlert() {
    return LTHUDAlert::alertWithMessageText(measuredMessage, measuredDefault, measuredAlternate, measuredOther,
                                            measuredText);
}

/// Asks, and answers itself as soon as the question is on the screen: from nothing to there. Does `standing` before it
/// goes.
void open(const std::function<void(LTHUDAlert&)>& standing = {}) {
    QElapsedTimer clock;
    clock.start();
    const auto alert = makeAlert();
    // It is on the screen a little before its run begins.
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, alert.get(), [&] {
        if (NSApplication::sharedApplication()->modalWindow() != &alert->window()) {
            return;
        }
        answer.stop();
        if (standing) {
            standing(*alert);
        }
        alert->buttonAction(alert->alternateButtonControl());
    });
    const FirstPainting painting(alert->defaultButtonControl(), [&] {
        tellFigure("open", milliseconds(clock));
        answer.start(0);
    });
    alert->runModal();
}

template <class Control>
Control& add(LTHUDWindow& panel, int row, int column) {
    auto control = std::make_unique<Control>(NSMakeRect(15 + 205 * column, 250 - 34 * row, 190, 28));
    ViewCore::of(panel.contentView())->addSubview(control.get());
    return *control.release();
}

/// A panel of 420 x 300 with each control of the kit.
void tellRepaintOfPanel() {
    LTHUDWindow panel(NSMakeRect(100, 100, 420, 300), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    add<LTHUDButton>(panel, 0, 0).setTitle(measuredDefault);
    auto& disabled = add<LTHUDButton>(panel, 0, 1);
    disabled.setTitle(measuredAlternate);
    disabled.setEnabled(false);
    add<LTHUDFlatButton>(panel, 1, 0).setTitle(measuredOther);
    add<LTHUDCheckBox>(panel, 2, 0).setTitle(measuredMessage);
    add<LTHUDRadioButton>(panel, 3, 0).setTitle(measuredDefault);
    add<LTHUDRadioButton>(panel, 3, 1).setTitle(measuredAlternate);
    add<LTHUDTextField>(panel, 4, 0).setStringValue(measuredMessage);
    add<LTHUDSecureTextField>(panel, 4, 1).setStringValue(measuredDefault);
    auto& text = add<NSTextField>(panel, 5, 0);
    text.setTextColor(NSColor::whiteColor());
    text.setStringValue(measuredText);
    panel.makeKeyAndOrderFront(nullptr);
    waitUntilShown(panel);
    tellRepaint("repaint_panel", panel);
}

/// The times at which the moving picture of a window was painted. Where it rests, the window itself takes its place
/// unseen.
class Frames : public QObject {
public:
    Frames() {
        m_clock.start();
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* const window = qobject_cast<NoodleZoomWindow*>(watched);
        if (window && event->type() == QEvent::Paint && window->windowHandle() && window->windowHandle()->isExposed()) {
            m_times.push_back(milliseconds(m_clock));
        }
        return false;
    }

    void tell() const { tellFrames(m_times); }

private:
    QElapsedTimer m_clock;
    std::vector<double> m_times;
};

void tellPops() {
    for (int time = 0; time < measuredPops; ++time) {
        const auto alert = makeAlert();
        alert->size();
        {
            const Frames frames;
            pop(alert->window());
            frames.tell();
        }
        const Frames frames;
        popAway(alert->window());
        frames.tell();
    }
}

} // namespace

int main(int argc, char** argv) {
    const LTApplication application(argc, argv);
    if (isAskedFor("--pop")) {
        tellPops();
        return 0;
    }
    if (isAskedFor("--stand")) {
        makeAlert()->runModal();
        return 0;
    }
    const AnimationDurationsForTesting withoutAnimation(0);
    for (int opening = 0; opening < measuredOpenings; ++opening) {
        open();
    }
    open([](LTHUDAlert& alert) { tellRepaint("repaint", alert.window()); });
    tellRepaintOfPanel();
    return 0;
}

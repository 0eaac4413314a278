// SPDX-License-Identifier: MIT
#include "FliprHost.h"

#include <QElapsedTimer>

#include <ostream>
#include <utility>

#include <gmock/gmock.h>

namespace {

struct Event {
    const char* name;
    void (*happen)(std::unique_ptr<FlippedWindow>& initial, std::unique_ptr<FlippedWindow>& final);
    char dies; // of the windows
};

const Event events[] = {
    {"A dies", [](auto& initial, auto&) { initial.reset(); }, 'A'},
    {"B dies", [](auto&, auto& final) { final.reset(); }, 'B'},
    {"A is closed", [](auto& initial, auto&) { initial->close(); }, 0},
    {"B is closed", [](auto&, auto& final) { final->close(); }, 0},
    {"B is ordered out", [](auto&, auto& final) { final->NSWindow::orderWindow(NSWindowOut, 0); }, 0},
    {"A is ordered in", [](auto& initial, auto&) { initial->NSWindow::orderWindow(NSWindowAbove, 0); }, 0},
    {"the panel is released", [](auto&, auto&) { releaseFlippingWindow(); }, 0},
    {"the panel dies", [](auto&, auto&) { delete panelOfFlips(); }, 'P'},
};

std::ostream& operator<<(std::ostream& stream, const Event& event) {
    return stream << event.name;
}

class InterruptedFlipr : public Flipr, public testing::WithParamInterface<Event> {
protected:
    /// Runs a flip in which the event happens at `stage` of a window, and looks at what is left.
    void flipWith(const std::string& stage) {
        bool happened = false;
        const auto act = [this, stage, &happened](const std::string& reached) {
            if (reached == stage && !std::exchange(happened, true)) {
                initial->atStage = nullptr;
                final->atStage = nullptr;
                GetParam().happen(initial, final);
            }
        };
        initial->atStage = act;
        final->atStage = act;
        flip();
        EXPECT_TRUE(happened);
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        expectEnded();
    }

    /// The same from the event loop, when the flip has come to `value`.
    void flipWithWhileTurning(double value) {
        const AnimationDurationsForTesting endless(1000);
        QElapsedTimer time;
        time.start();
        whileTurning([this, value](FliprPanel& panel) {
            pictureAt(panel, value);
            GetParam().happen(initial, final);
        });
        flip();
        EXPECT_EQ(turns, 1);
        EXPECT_LT(time.elapsed(), 60000) << "it does not run on";
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        expectEnded();
    }
};

std::string nameOf(const testing::TestParamInfo<Event>& info) {
    std::string name = info.param.name;
    std::erase(name, ' ');
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, InterruptedFlipr, testing::ValuesIn(events), nameOf);

TEST_P(InterruptedFlipr, BeforeAnything) {
    flipWith("B.frame");
}

TEST_P(InterruptedFlipr, WhileTheFirstPictureIsTaken) {
    if (GetParam().dies != 'A') { // no view outlives the death of its window in its own drawing
        flipWith("A.draw");
    }
}

TEST_P(InterruptedFlipr, WhenTheOtherWindowHasTheKeyboard) {
    flipWith("B.key");
}

TEST_P(InterruptedFlipr, WhenTheFirstWindowIsOut) {
    flipWith("A.out");
}

TEST_P(InterruptedFlipr, WhileThePanelComesIn) {
    bool happened = false;
    final->atStage = [&](const std::string& stage) {
        if (stage == "B.key") {
            QTimer::singleShot(0, &application, [&] { // when the panel is waited for, or later
                happened = true;
                GetParam().happen(initial, final);
            });
        }
    };
    flip();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(happened);
    expectEnded();
}

TEST_P(InterruptedFlipr, InItsFirstHalf) {
    flipWithWhileTurning(0.2);
}

TEST_P(InterruptedFlipr, InItsSecondHalf) {
    flipWithWhileTurning(0.8);
}

TEST_P(InterruptedFlipr, WhileThePanelMovesFromTheOneToTheOther) {
    if (GetParam().dies == 'P') {
        return; // no window outlives its death in its own notification
    }
    NSNotificationObservation observation;
    bool happened = false;
    whileTurning([&](FliprPanel& panel) {
        observation = NSNotificationCenter::defaultCenter().addObserverForName(
            NSWindowDidMoveNotification, &panel, [&](const NSNotification&) {
                if (!std::exchange(happened, true)) {
                    GetParam().happen(initial, final);
                }
            });
        panel.card().animation()->setCurrentProgress(0.8F);
    });
    flip();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(happened);
    expectEnded();
}

TEST_P(InterruptedFlipr, AtItsEnd) {
    int displays = 0;
    final->atStage = [&](const std::string& stage) {
        if (stage == "B.display" && ++displays == 3) { // after its frame was set, and when it came in
            final->atStage = nullptr;
            GetParam().happen(initial, final);
        }
    };
    flip();
    EXPECT_EQ(displays, 3);
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    expectEnded();
}

TEST_F(Flipr, AWindowOrderedOutInTheMiddleStaysOut) {
    whileTurning([&](FliprPanel&) { final->orderOut(nullptr); });
    flip();
    EXPECT_FALSE(final->isVisible());
    expectEnded();
}

TEST_F(Flipr, TheApplicationEndingInTheMiddleIsNoTrouble) {
    whileTurning([&](FliprPanel&) { QCoreApplication::exit(); });
    flip();
    EXPECT_EQ(turns, 1);
    expectEnded();
}

// SPDX-License-Identifier: MIT
#include "ShellHost.h"

#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <QTest>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The view with its fields open and its drawings counted.
class OpenItemView : public LTStatusItemView {
public:
    OpenItemView() : LTStatusItemView(NSMakeRect(0, 0, 30, 22)) {}

    using LTStatusItemView::curFraction;
    using LTStatusItemView::dir;
    using LTStatusItemView::highlight;
    using LTStatusItemView::timer;

    void display() override {
        ++displays;
        LTStatusItemView::display();
    }
    void drawRect(const NSRect& rect) override {
        ++drawings;
        LTStatusItemView::drawRect(rect);
    }

    int displays = 0;
    int drawings = 0;
};

class LTStatusItemViewTest : public ShellHost {
protected:
    /// A view in a window of its own, shown.
    OpenItemView& makeView() {
        holder = std::make_unique<NSWindow>(NSMakeRect(100, 200, 30, 22), NSBorderlessWindowMask,
                                            NSBackingStoreBuffered, false);
        auto* view = new OpenItemView;
        holder->setContentView(view);
        holder->orderFront(nullptr);
        EXPECT_TRUE(QTest::qWaitForWindowExposed(holder.get()));
        QCoreApplication::processEvents();
        view->displays = 0;
        view->drawings = 0;
        return *view;
    }

    static void post(const char* name) { NSNotificationCenter::defaultCenter().postNotificationName(name, nullptr); }

    /// Draws the view as it is into a picture on grey, y down; the pulse takes a step, as it does for every drawing.
    static QImage pictureOf(OpenItemView& view, double ratio = 1) {
        const std::shared_ptr<NSImage> image = NSImage::initWithSize({30, 22});
        image->lockFocus(ratio);
        view.LTStatusItemView::drawRect(view.bounds());
        image->unlockFocus();
        return image->imageForScale(ratio);
    }

    std::unique_ptr<NSWindow> holder;
};

} // namespace

TEST_F(LTStatusItemViewTest, PulsesInTwelveStepsOfSinglePrecision) {
    const NSTimer::IntervalsForTesting never([](double) { return 1000.0; });
    OpenItemView& view = makeView();
    post(LTSyncManagerHasBegunSyncing);
    std::vector<float> fractions;
    for (int step = 0; step < 13; ++step) {
        view.display();
        fractions.push_back(view.curFraction);
    }
    const std::vector<float> expected{0.9F, 0.8F, 0.7F, 0.6F, 0.5F, 0.4F, 0.5F, 0.6F, 0.7F, 0.8F, 0.9F, 1.0F, 0.9F};
    ASSERT_EQ(fractions.size(), expected.size());
    float exact = 1.0F;
    bool fadesOut = true;
    for (std::size_t step = 0; step < expected.size(); ++step) {
        EXPECT_NEAR(static_cast<double>(fractions[step]), static_cast<double>(expected[step]), 1e-6) << step;
        exact = static_cast<float>(fadesOut ? static_cast<double>(exact) - 0.1 : static_cast<double>(exact) + 0.1);
        EXPECT_EQ(fractions[step], exact) << step;
        if (static_cast<double>(exact) <= 0.4 || static_cast<double>(exact) >= 1.0) {
            fadesOut = !fadesOut;
        }
    }
    EXPECT_EQ(fractions[5], 0.39999992F);
}

TEST_F(LTStatusItemViewTest, StepsThePulseOnEveryRedrawWhateverCausedIt) {
    const NSTimer::IntervalsForTesting never([](double) { return 1000.0; });
    OpenItemView& view = makeView();
    view.startAnimation({});
    QTest::mouseClick(holder->windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCoreApplication::processEvents();
    EXPECT_EQ(view.curFraction, 0.9F);
    view.toggleHighlight();
    EXPECT_NEAR(static_cast<double>(view.curFraction), 0.8, 1e-6);
}

TEST_F(LTStatusItemViewTest, NeverChangesTheOpacityWhileItDoesNotPulse) {
    OpenItemView& view = makeView();
    view.curFraction = 0.25F;
    view.display();
    view.display();
    EXPECT_EQ(view.drawings, 2);
    EXPECT_EQ(view.curFraction, 0.25F);
    EXPECT_EQ(qAlpha(pictureOf(view).pixel(15, 11)), 255) << "and is drawn at full opacity";
}

TEST_F(LTStatusItemViewTest, DrawsAtTheOpacityOfThePulse) {
    const NSTimer::IntervalsForTesting never([](double) { return 1000.0; });
    OpenItemView& view = makeView();
    view.startAnimation({});
    EXPECT_NEAR(qAlpha(pictureOf(view).pixel(15, 11)), 0.9 * 255, 1);
    EXPECT_NEAR(qAlpha(pictureOf(view).pixel(15, 11)), 0.8 * 255, 1);
}

TEST_F(LTStatusItemViewTest, PulsesByATimerTenTimesASecond) {
    std::vector<double> asked;
    const NSTimer::IntervalsForTesting fast([&](double seconds) {
        asked.push_back(seconds);
        return 0.001;
    });
    OpenItemView& view = makeView();
    view.startAnimation({});
    EXPECT_THAT(asked, ElementsAre(0.1));
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.drawings >= 3; }));
    view.endAnimation({});
    EXPECT_EQ(view.timer, nullptr);
    const int drawings = view.drawings;
    const auto waiting = NSTimer::scheduledTimerWithTimeInterval(0.01, NSTimerRepeats::No, [](NSTimer&) {});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !waiting->isValid(); }));
    EXPECT_EQ(view.drawings, drawings);
}

TEST_F(LTStatusItemViewTest, ShowsFullOpacityAtOnceWhenTheSyncHasEnded) {
    const NSTimer::IntervalsForTesting never([](double) { return 1000.0; });
    OpenItemView& view = makeView();
    post(LTSyncManagerHasBegunSyncing);
    view.display();
    post(LTSyncManagerHasEndedSyncing);
    EXPECT_EQ(view.displays, 2);
    EXPECT_EQ(view.drawings, 2);
    EXPECT_EQ(qAlpha(pictureOf(view).pixel(15, 11)), 255);
}

TEST_F(LTStatusItemViewTest, EndsWhatWasNeverBegunWithARedrawAlone) {
    OpenItemView& view = makeView();
    post(LTSyncManagerHasEndedSyncing);
    EXPECT_EQ(view.displays, 1);
    EXPECT_EQ(view.timer, nullptr);
}

TEST_F(LTStatusItemViewTest, LeavesTheFirstTimerRunningWhenASyncBeginsTwice) {
    const NSTimer::IntervalsForTesting fast([](double) { return 0.001; });
    OpenItemView& view = makeView();
    post(LTSyncManagerHasBegunSyncing);
    const std::weak_ptr<NSTimer> first = view.timer;
    view.curFraction = 0.7F;
    view.dir = false;
    post(LTSyncManagerHasBegunSyncing);
    EXPECT_EQ(view.curFraction, 1.0F) << "from the beginning again";
    EXPECT_TRUE(view.dir);
    post(LTSyncManagerHasEndedSyncing);
    ASSERT_FALSE(first.expired());
    EXPECT_TRUE(first.lock()->isValid());
    const int displays = view.displays;
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.displays > displays + 2; })) << "it still redraws";
    first.lock()->invalidate();
}

TEST_F(LTStatusItemViewTest, TimersOutliveTheirViewWithoutHarm) {
    const NSTimer::IntervalsForTesting fast([](double) { return 0.001; });
    makeView().startAnimation({});
    holder.reset();
    const auto waiting = NSTimer::scheduledTimerWithTimeInterval(0.01, NSTimerRepeats::No, [](NSTimer&) {});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !waiting->isValid(); }));
}

TEST_F(LTStatusItemViewTest, ActivatesTheApplicationBeforeItTogglesTheWindow) {
    OpenItemView& view = makeView();
    QTest::mouseClick(holder->windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_THAT(application.told, ElementsAre("activate", "toggle while active"));
    EXPECT_TRUE(view.highlight);
    EXPECT_EQ(view.displays, 0) << "the click redraws when the event loop comes to it";
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.drawings == 1; }));
    QTest::mouseClick(holder->windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_FALSE(view.highlight);
}

TEST_F(LTStatusItemViewTest, ClosesTheWindowAndLosesItsHighlightWhenTheApplicationIsLeft) {
    OpenItemView& view = makeView();
    view.setHighlighted(true);
    view.displays = 0;
    post(NSApplicationDidResignActiveNotification);
    EXPECT_THAT(application.told, ElementsAre("close"));
    EXPECT_FALSE(view.highlight);
    EXPECT_EQ(view.displays, 1);
}

TEST_F(LTStatusItemViewTest, NeverClosesTheWindowWhereThePolicyWasAgainstItAtItsMaking) {
    application.closesOnDeactivate = false;
    OpenItemView& view = makeView();
    view.setHighlighted(true);
    application.closesOnDeactivate = true;
    post(NSApplicationDidResignActiveNotification);
    EXPECT_THAT(application.told, IsEmpty());
    EXPECT_TRUE(view.highlight);
}

TEST_F(LTStatusItemViewTest, RedrawsAtOnceWhenItsHighlightIsSet) {
    OpenItemView& view = makeView();
    view.toggleHighlight();
    EXPECT_TRUE(view.highlight);
    view.setHighlighted(true);
    EXPECT_TRUE(view.highlight);
    view.setHighlighted(false);
    EXPECT_FALSE(view.highlight);
    EXPECT_EQ(view.drawings, 3);
}

TEST_F(LTStatusItemViewTest, CentresTheIconOnWholePoints) {
    OpenItemView& view = makeView();
    // 16 x 12 in 30 x 22: from (7, 5).
    const QImage icon = pictureOf(view);
    EXPECT_EQ(icon.pixel(7, 22 - 5 - 1), qRgba(255, 0, 0, 255));
    EXPECT_EQ(icon.pixel(22, 5), qRgba(255, 0, 0, 255));
    EXPECT_EQ(qAlpha(icon.pixel(6, 11)), 0);
    EXPECT_EQ(qAlpha(icon.pixel(23, 11)), 0);
    EXPECT_EQ(qAlpha(icon.pixel(15, 4)), 0);
    EXPECT_EQ(qAlpha(icon.pixel(15, 17)), 0);
}

TEST_F(LTStatusItemViewTest, LeansToTheBottomLeftWhereTheIconDoesNotDivideTheSpace) {
    OpenItemView& view = makeView();
    view.highlight = true;
    application.hasController = false; // no background, so that the icon alone shows
    // 15 x 11 in 30 x 22: (7.5, 5.5) is cut to (7, 5).
    for (const double ratio : {1.0, 2.0}) {
        const QImage icon = pictureOf(view, ratio);
        const int scale = static_cast<int>(ratio);
        EXPECT_EQ(icon.pixel(7 * scale, (22 - 5) * scale - 1), qRgba(0, 0, 255, 255)) << ratio;
        EXPECT_EQ(qAlpha(icon.pixel(7 * scale - 1, 11 * scale)), 0) << ratio;
        EXPECT_EQ(icon.pixel(22 * scale - 1, 6 * scale), qRgba(0, 0, 255, 255)) << ratio;
        EXPECT_EQ(qAlpha(icon.pixel(22 * scale, 11 * scale)), 0) << ratio;
    }
}

TEST_F(LTStatusItemViewTest, HasTheStatusBarDrawTheSelectionBehindAHighlightedIcon) {
    placeItem({{300, 700}, {30, 22}});
    OpenItemView& view = makeView();
    EXPECT_EQ(qAlpha(pictureOf(view).pixel(3, 11)), 0);
    view.highlight = true;
    EXPECT_GT(qAlpha(pictureOf(view).pixel(3, 11)), 0);
    EXPECT_EQ(pictureOf(view).pixel(15, 11), qRgba(0, 0, 255, 255)) << "the icon lies on it";
}

TEST_F(LTStatusItemViewTest, TellsTheFrameOfTheWindowThatHoldsIt) {
    OpenItemView& view = makeView();
    EXPECT_EQ(view.frameOfStatusItem(), NSMakeRect(100, 200, 30, 22));
    const OpenItemView loose;
    EXPECT_EQ(loose.frameOfStatusItem(), NSZeroRect);
}

TEST_F(LTStatusItemViewTest, WorksWithoutAController) {
    application.hasController = false;
    OpenItemView& view = makeView();
    QTest::mouseClick(holder->windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    post(NSApplicationDidResignActiveNotification);
    EXPECT_FALSE(view.highlight);
    EXPECT_TRUE(application.isActive());
}

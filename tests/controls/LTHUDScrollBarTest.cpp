// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTHUDScrollBar.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QScrollArea>

namespace {

/// The application as active as a test says.
class ActivityHost : public testing::Test {
protected:
    class Application : public NSApplication {
    public:
        using NSApplication::NSApplication;
        bool isActive() const override { return isActiveNow; }
        bool isActiveNow = true;
    };

    static LTHUDScrollBar& add(NSWindow& window, const NSRect& frame, int maximum = 100) {
        auto scroller = std::make_unique<LTHUDScrollBar>(frame);
        scroller->awakeFromNib();
        scroller->setRange(0, maximum);
        scroller->setPageStep(100);
        ViewCore::of(window.contentView())->addSubview(scroller.get());
        return *scroller.release();
    }

    /// The slot and the knob as they are to lie for the knob's rectangle, on the background of a plain window.
    static QImage expected(const LTHUDScrollBar& scroller, double ratio, double knobWhite) {
        const NSRect k = scroller.rectForPart(NSScrollerKnob);
        const NSSize size = scroller.bounds().size;
        return drawn(
            size, ratio,
            [&] {
                const auto rounded = [](const NSRect& rect, double radius) {
                    return NSBezierPath::bezierPathWithRoundedRect(rect, radius, radius);
                };
                const bool isHorizontal = k.size.width > k.size.height;
                NSColor::colorWithCalibratedWhite(0.157, 1).set();
                rounded(isHorizontal ? NSMakeRect(3.5, 0.5, size.width - 6, 7)
                                     : NSMakeRect(k.origin.x + 2.5, 2.5, 7, size.height - 5),
                        3)
                    .stroke();
                NSColor::colorWithCalibratedWhite(knobWhite, 1).set();
                isHorizontal ? rounded(NSMakeRect(k.origin.x + 1, k.origin.y + 1, k.size.width - 1, 6), 3).fill()
                             : rounded(NSMakeRect(k.origin.x + 3, k.origin.y - 0.5, 6, k.size.height + 1), 3.5).fill();
            },
            Flipped::Yes, panelColor);
    }

    static int argc;
    static inline char s_name[] = "scroller";
    static inline char* argv[] = {s_name, nullptr};
    Application application{argc, argv};
    NSWindow window{NSMakeRect(100, 100, 300, 200), NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

int ActivityHost::argc = 1;

class LTHUDScrollBarTest : public ActivityHost {
protected:
    LTHUDScrollBarTest() {
        window.setBackgroundColor(NSColor::colorWithCalibratedRed(
            double(panelColor.redF()), double(panelColor.greenF()), double(panelColor.blueF()), 1));
    }
};

} // namespace

TEST_F(LTHUDScrollBarTest, LosesItsArrowsWhenItAwakes) {
    LTHUDScrollBar scroller(NSMakeRect(0, 0, 15, 100));
    scroller.setRange(0, 100);
    scroller.setPageStep(100);
    EXPECT_EQ(scroller.arrowsPosition(), NSScrollerArrowsDefaultSetting);
    EXPECT_NE(scroller.rectForPart(NSScrollerDecrementLine), NSZeroRect);
    scroller.awakeFromNib();
    EXPECT_EQ(scroller.arrowsPosition(), NSScrollerArrowsNone);
    EXPECT_EQ(scroller.rectForPart(NSScrollerDecrementLine), NSZeroRect);
    EXPECT_EQ(scroller.rectForPart(NSScrollerIncrementLine), NSZeroRect);
}

TEST_F(LTHUDScrollBarTest, DrawsAKnobInASlotInBothDirections) {
    for (const NSRect& frame : {NSMakeRect(10, 10, 200, 15), NSMakeRect(10, 10, 15, 150)}) {
        LTHUDScrollBar& scroller = add(window, frame);
        for (const int value : {0, 37, 100}) {
            scroller.setValue(value);
            for (const double ratio : {1.0, 2.0}) {
                EXPECT_EQ(difference(pictureOf(scroller, ratio), expected(scroller, ratio, 0.5)), 0)
                    << value << " at " << ratio;
            }
        }
    }
}

TEST_F(LTHUDScrollBarTest, HasItsColoursAndEdgesOnWholePixels) {
    LTHUDScrollBar& upright = add(window, NSMakeRect(10, 10, 15, 150));
    QImage picture = pictureOf(upright, 1);
    const QColor slot(40, 40, 40);
    const QColor knob(128, 128, 128);
    EXPECT_EQ(picture.pixelColor(1, 75), panelColor);
    EXPECT_EQ(picture.pixelColor(2, 120), slot);
    EXPECT_EQ(picture.pixelColor(3, 120), panelColor) << "a slot is a line around nothing";
    EXPECT_EQ(picture.pixelColor(9, 120), slot);
    EXPECT_EQ(picture.pixelColor(10, 120), panelColor);
    EXPECT_EQ(picture.pixelColor(3, 40), knob);
    EXPECT_EQ(picture.pixelColor(8, 40), knob);
    EXPECT_NEAR(picture.pixelColor(6, 2).red(), slot.red(), 16) << "the slot's end, which is round";
    EXPECT_NEAR(picture.pixelColor(6, 3).red(), knob.red(), 4) << "the knob fills the slot to its end";

    LTHUDScrollBar& lying = add(window, NSMakeRect(40, 10, 200, 15));
    picture = pictureOf(lying, 1);
    EXPECT_EQ(picture.pixelColor(150, 0), slot);
    EXPECT_EQ(picture.pixelColor(150, 1), panelColor);
    EXPECT_EQ(picture.pixelColor(150, 7), slot);
    EXPECT_EQ(picture.pixelColor(150, 8), panelColor);
    EXPECT_EQ(picture.pixelColor(50, 1), knob);
    EXPECT_EQ(picture.pixelColor(50, 6), knob);
}

TEST_F(LTHUDScrollBarTest, PlacesAnUprightSlotByItsKnob) {
    class Shifted : public LTHUDScrollBar {
    public:
        using LTHUDScrollBar::LTHUDScrollBar;
        NSRect rectForPart(NSScrollerPart part) const override {
            return part == NSScrollerKnob ? NSMakeRect(4, 20, 11, 40) : LTHUDScrollBar::rectForPart(part);
        }
    };
    auto scroller = std::make_unique<Shifted>(NSMakeRect(10, 10, 20, 150));
    ViewCore::of(window.contentView())->addSubview(scroller.get());
    EXPECT_EQ(difference(pictureOf(*scroller, 1), expected(*scroller, 1, 0.5)), 0);
    EXPECT_EQ(pictureOf(*scroller, 1).pixelColor(6, 100), QColor(40, 40, 40));
}

TEST_F(LTHUDScrollBarTest, IsUprightWhereItsKnobIsASquare) {
    class Square : public LTHUDScrollBar {
    public:
        using LTHUDScrollBar::LTHUDScrollBar;
        NSRect rectForPart(NSScrollerPart /*part*/) const override { return NSMakeRect(0, 20, 15, 15); }
    };
    auto scroller = std::make_unique<Square>(NSMakeRect(10, 10, 15, 100));
    ViewCore::of(window.contentView())->addSubview(scroller.get());
    EXPECT_EQ(difference(pictureOf(*scroller, 1), expected(*scroller, 1, 0.5)), 0);
    EXPECT_EQ(pictureOf(*scroller, 1).pixelColor(2, 80), QColor(40, 40, 40));
}

TEST_F(LTHUDScrollBarTest, ShowsOnlyTheWindowWhereAllCanBeSeen) {
    for (const NSRect& frame : {NSMakeRect(10, 10, 200, 15), NSMakeRect(10, 10, 15, 150)}) {
        LTHUDScrollBar& scroller = add(window, frame, 0);
        for (const double ratio : {1.0, 2.0}) {
            const QImage picture = pictureOf(scroller, ratio);
            EXPECT_EQ(difference(picture, plain(picture.size(), {}, panelColor, panelColor)), 0);
        }
    }
}

TEST_F(LTHUDScrollBarTest, HasADarkerKnobWhileTheApplicationIsInactive) {
    LTHUDScrollBar& scroller = add(window, NSMakeRect(10, 10, 15, 150));
    application.isActiveNow = false;
    for (const double ratio : {1.0, 2.0}) {
        EXPECT_EQ(difference(pictureOf(scroller, ratio), expected(scroller, ratio, 0.322)), 0);
    }
    EXPECT_EQ(pictureOf(scroller, 1).pixelColor(6, 40), QColor(82, 82, 82));
}

TEST_F(LTHUDScrollBarTest, IsDrawnAnewWhenTheApplicationIsActivatedOrResigns) {
    LTHUDScrollBar& scroller = add(window, NSMakeRect(10, 10, 15, 150));
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    class Paints : public QObject {
    public:
        bool eventFilter(QObject* /*watched*/, QEvent* event) override {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
        int count = 0;
    } paints;
    scroller.installEventFilter(&paints);
    for (const char* name : {NSApplicationDidResignActiveNotification, NSApplicationDidBecomeActiveNotification}) {
        paints.count = 0;
        NSNotificationCenter::defaultCenter().postNotificationName(name, &application);
        EXPECT_TRUE(QTest::qWaitFor([&] { return paints.count > 0; })) << name;
    }
}

TEST_F(LTHUDScrollBarTest, GoesOnWithThePatternOfAHUDWindow) {
    LTHUDWindow panel(NSMakeRect(100, 100, 300, 200), NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    for (const double ratio : {1.0, 2.0}) {
        const auto look = [&] {
            QImage image(panel.size() * ratio, QImage::Format_ARGB32_Premultiplied);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::transparent);
            panel.render(&image, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
            return image;
        };
        const QImage without = look();
        // Over the title bar, the body and the button lane.
        LTHUDScrollBar& scroller = add(panel, NSMakeRect(100, 0, 15, 200), 0);
        EXPECT_EQ(difference(look(), without), 0) << "as translucent as the window, without a seam, at " << ratio;
        delete &scroller;
    }
}

TEST_F(LTHUDScrollBarTest, IsAsThickAsAScrollerWithoutArrowsInAScrollArea) {
    QScrollArea area;
    auto* const scroller = new LTHUDScrollBar(Qt::Vertical);
    scroller->awakeFromNib();
    area.setVerticalScrollBar(scroller);
    auto* const content = new QWidget;
    content->resize(100, 2000);
    area.setWidget(content);
    area.resize(200, 200);
    area.show();
    EXPECT_EQ(scroller->width(), 15);
    EXPECT_EQ(scroller->maximum(), 2000 - area.viewport()->height());
    EXPECT_NE(scroller->rectForPart(NSScrollerKnob), NSZeroRect);
}

TEST_F(LTHUDScrollBarTest, OutlastsFramesWithoutRoom) {
    for (const NSSize& size : {NSSize{0, 0}, NSSize{-4, 8}, NSSize{15, 6}, NSSize{6, 3}, NSSize{15, 20}}) {
        LTHUDScrollBar& scroller = add(window, {NSZeroPoint, size});
        QImage surface(30, 30, QImage::Format_ARGB32_Premultiplied);
        scroller.render(&surface);
        EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSZeroRect);
    }
}

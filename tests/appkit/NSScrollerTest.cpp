// SPDX-License-Identifier: MIT
#include "AppKitHost.h"

#include <VXKit/platform/appkit/NSScroller.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleValueInterface>
#include <QPainter>
#include <QWheelEvent>

#include <limits>

namespace {

class NSScrollerTest : public AppKitHost {
protected:
    NSScroller& add(const NSRect& frame, int maximum = 100, int page = 100) {
        auto scroller = std::make_unique<NSScroller>(frame);
        scroller->setArrowsPosition(NSScrollerArrowsNone);
        scroller->setRange(0, maximum);
        scroller->setPageStep(page);
        scroller->setSingleStep(5);
        window.content().addSubview(scroller.get());
        return *scroller.release();
    }

    /// A point of the scroller in the window, as Qt has it.
    QPoint inWindow(const NSScroller& scroller, double x, double y) {
        return scroller.mapTo(&window, QPoint(static_cast<int>(x), static_cast<int>(y)));
    }

    HostWindow window{NSMakeRect(100, 100, 300, 200)};
};

/// Draws the window's background over something else.
class Hole : public NSView {
public:
    void drawRect(const NSRect& /*dirtyRect*/) override {
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        NSRectFill(bounds());
        NSDrawWindowBackground(hole);
    }
    bool isFlipped() const override { return isUpsideDown; }

    NSRect hole;
    bool isUpsideDown = false;
};

} // namespace

TEST_F(NSScrollerTest, HasTheDirectionOfItsFrame) {
    EXPECT_EQ(NSScroller(NSMakeRect(0, 0, 100, 15)).orientation(), Qt::Horizontal);
    EXPECT_EQ(NSScroller(NSMakeRect(0, 0, 15, 100)).orientation(), Qt::Vertical);
    EXPECT_EQ(NSScroller(NSMakeRect(0, 0, 15, 15)).orientation(), Qt::Vertical);
}

TEST_F(NSScrollerTest, HasItsLeastValueAtTheTopAndAtTheLeft) {
    NSScroller& upright = add(NSMakeRect(0, 0, 15, 150));
    EXPECT_TRUE(upright.isFlipped());
    EXPECT_EQ(upright.rectForPart(NSScrollerKnob), NSMakeRect(0, 3.5, 15, 71));
    upright.setValue(100);
    EXPECT_EQ(upright.rectForPart(NSScrollerKnob), NSMakeRect(0, 3.5 + 72, 15, 71));
    EXPECT_EQ(upright.rectForPart(NSScrollerKnobSlot), NSMakeRect(0, 3.5, 15, 143));

    NSScroller& lying = add(NSMakeRect(20, 0, 206, 15));
    EXPECT_EQ(lying.rectForPart(NSScrollerKnob), NSMakeRect(3, 0, 100, 15));
    lying.setValue(100);
    EXPECT_EQ(lying.rectForPart(NSScrollerKnob), NSMakeRect(103, 0, 100, 15));
    EXPECT_EQ(lying.rectForPart(NSScrollerKnobSlot), NSMakeRect(3, 0, 200, 15));
}

TEST_F(NSScrollerTest, HasPagesBesideItsKnob) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 206, 15));
    scroller.setValue(50);
    EXPECT_EQ(scroller.rectForPart(NSScrollerDecrementPage), NSMakeRect(3, 0, 50, 15));
    EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSMakeRect(53, 0, 100, 15));
    EXPECT_EQ(scroller.rectForPart(NSScrollerIncrementPage), NSMakeRect(153, 0, 50, 15));
    EXPECT_EQ(scroller.testPart({10, 5}), NSScrollerDecrementPage);
    EXPECT_EQ(scroller.testPart({60, 5}), NSScrollerKnob);
    EXPECT_EQ(scroller.testPart({160, 5}), NSScrollerIncrementPage);
    EXPECT_EQ(scroller.testPart({1, 5}), NSScrollerNoPart);
    EXPECT_EQ(scroller.rectForPart(NSScrollerNoPart), NSZeroRect);
}

TEST_F(NSScrollerTest, HasItsFirstValueAtTheRightWhereOneReadsFromThere) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 206, 15));
    scroller.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSMakeRect(103, 0, 100, 15));
}

TEST_F(NSScrollerTest, HasNoKnobWhereAllCanBeSeenOrItIsDisabledOrHasNoRoom) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 150), 0);
    EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSZeroRect);
    EXPECT_EQ(scroller.rectForPart(NSScrollerIncrementPage), NSZeroRect);
    EXPECT_NE(scroller.rectForPart(NSScrollerKnobSlot), NSZeroRect);
    EXPECT_EQ(scroller.knobProportion(), 1);
    scroller.setMaximum(100);
    EXPECT_NE(scroller.rectForPart(NSScrollerKnob), NSZeroRect);
    scroller.setEnabled(false);
    EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSZeroRect);
    EXPECT_EQ(add(NSMakeRect(0, 0, 15, 26)).rectForPart(NSScrollerKnob), NSZeroRect) << "a slot of 19 points";
    EXPECT_NE(add(NSMakeRect(0, 0, 15, 27)).rectForPart(NSScrollerKnob), NSZeroRect);
}

TEST_F(NSScrollerTest, HasAKnobLongerThanItIsThickWhateverTheRange) {
    constexpr int most = std::numeric_limits<int>::max();
    for (const NSRect& frame : {NSMakeRect(0, 0, 15, 100), NSMakeRect(0, 0, 100, 15), NSMakeRect(0, 0, 200, 40)}) {
        NSScroller& scroller = add(frame, most, 1);
        for (const int value : {0, most / 2, most}) {
            scroller.setValue(value);
            const NSRect knob = scroller.rectForPart(NSScrollerKnob);
            const bool isHorizontal = scroller.orientation() == Qt::Horizontal;
            EXPECT_EQ(isHorizontal, knob.size.width > knob.size.height);
            EXPECT_TRUE(NSContainsRect(scroller.rectForPart(NSScrollerKnobSlot), knob)) << value;
        }
        scroller.setRange(std::numeric_limits<int>::min(), most);
        EXPECT_TRUE(NSContainsRect(scroller.rectForPart(NSScrollerKnobSlot), scroller.rectForPart(NSScrollerKnob)));
        scroller.setPageStep(-5);
        EXPECT_TRUE(NSContainsRect(scroller.rectForPart(NSScrollerKnobSlot), scroller.rectForPart(NSScrollerKnob)));
    }
}

TEST_F(NSScrollerTest, TellsItsValueAndWhatIsSeenAsShares) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 150), 300, 100);
    EXPECT_DOUBLE_EQ(scroller.knobProportion(), 0.25);
    scroller.setValue(75);
    EXPECT_DOUBLE_EQ(scroller.doubleValue(), 0.25);
    scroller.setRange(0, 0);
    EXPECT_EQ(scroller.doubleValue(), 0);
}

TEST_F(NSScrollerTest, WithArrowsIsWhatTheStyleMakesOfIt) {
    NSScroller scroller(NSMakeRect(0, 0, 15, 150));
    scroller.setRange(0, 100);
    const NSRect up = scroller.rectForPart(NSScrollerDecrementLine);
    const NSRect down = scroller.rectForPart(NSScrollerIncrementLine);
    EXPECT_FALSE(NSIsEmptyRect(up));
    EXPECT_LT(NSMaxY(up), NSMinY(scroller.rectForPart(NSScrollerKnob)) + 1);
    EXPECT_EQ(NSMaxY(down), 150);
    QScrollBar plain(Qt::Vertical);
    EXPECT_EQ(scroller.sizeHint(), plain.sizeHint());
    scroller.setRange(0, 0);
    EXPECT_EQ(scroller.rectForPart(NSScrollerKnob), NSZeroRect);
}

TEST_F(NSScrollerTest, IsFifteenPointsThickOrElevenWhenSmall) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 150));
    EXPECT_EQ(scroller.sizeHint().width(), 15);
    scroller.setControlSize(NSSmallControlSize);
    EXPECT_EQ(scroller.sizeHint().width(), 11);
    EXPECT_EQ(NSScroller::scrollerWidth(), 15);
    EXPECT_EQ(NSScroller::scrollerWidthForControlSize(NSMiniControlSize), 11);
}

TEST_F(NSScrollerTest, FollowsADragOfItsKnob) {
    for (const bool isHorizontal : {false, true}) {
        NSScroller& scroller = add(isHorizontal ? NSMakeRect(20, 20, 206, 15) : NSMakeRect(0, 0, 15, 157));
        show(window);
        const auto along = [&](double way) {
            return isHorizontal ? inWindow(scroller, way, 7) : inWindow(scroller, 7, way);
        };
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, along(10));
        EXPECT_TRUE(scroller.isSliderDown());
        QTest::mouseMove(window.windowHandle(), along(35));
        const double before = isHorizontal ? 3 : 3.5;
        const NSPoint origin = scroller.rectForPart(NSScrollerKnob).origin;
        EXPECT_NEAR((isHorizontal ? origin.x : origin.y) - before, 25, 1.01) << "the knob keeps to the pointer";
        QTest::mouseMove(window.windowHandle(), along(isHorizontal ? 250 : 190));
        EXPECT_EQ(scroller.value(), 100) << "and stops at the end";
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, along(isHorizontal ? 250 : 190));
        EXPECT_FALSE(scroller.isSliderDown());
    }
}

TEST_F(NSScrollerTest, GoesAPageOnWhereItsSlotIsClicked) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 157), 1000, 100);
    show(window);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, inWindow(scroller, 7, 140));
    EXPECT_EQ(scroller.value(), 100);
    scroller.setValue(1000);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, inWindow(scroller, 7, 10));
    EXPECT_EQ(scroller.value(), 900);
    QTest::mouseClick(window.windowHandle(), Qt::MiddleButton, Qt::NoModifier, inWindow(scroller, 7, 80));
    EXPECT_NEAR(scroller.value(), 500, 20) << "the middle button brings the knob to the pointer";
}

TEST_F(NSScrollerTest, FollowsTheWheelAndTheKeyboard) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 157), 1000, 100);
    scroller.setFocusPolicy(Qt::StrongFocus);
    show(window);
    const QPoint middle = inWindow(scroller, 7, 80);
    QWheelEvent wheel(middle, window.mapToGlobal(middle), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(window.windowHandle(), &wheel);
    const int wheeled = scroller.value();
    EXPECT_GT(wheeled, 0);
    scroller.setFocus();
    QTest::keyClick(window.windowHandle(), Qt::Key_Down);
    EXPECT_EQ(scroller.value(), wheeled + 5);
    QTest::keyClick(window.windowHandle(), Qt::Key_End);
    EXPECT_EQ(scroller.value(), 1000);
    QTest::keyClick(window.windowHandle(), Qt::Key_PageUp);
    EXPECT_EQ(scroller.value(), 900);
    QTest::keyClick(window.windowHandle(), Qt::Key_Home);
    EXPECT_EQ(scroller.value(), 0);
}

TEST_F(NSScrollerTest, IsAScrollBarForAScreenReader) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 157), 1000, 100);
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&scroller);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::ScrollBar);
    scroller.setValue(70);
    EXPECT_EQ(accessible->valueInterface()->currentValue().toInt(), 70);
    EXPECT_EQ(accessible->valueInterface()->maximumValue().toInt(), 1000);
    accessible->valueInterface()->setCurrentValue(90);
    EXPECT_EQ(scroller.value(), 90);
}

TEST_F(NSScrollerTest, DrawsItsKnobWhereItIs) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 157), 100, 100);
    const auto look = [&] { return scroller.grab().toImage(); };
    const QImage atTop = look();
    scroller.setValue(100);
    EXPECT_GT(difference(look(), atTop), 10);
}

TEST_F(NSScrollerTest, DrawsItsSlotAloneWhereItHasNoKnob) {
    NSScroller& scroller = add(NSMakeRect(0, 0, 15, 157), 100, 100);
    const auto look = [&] { return scroller.grab().toImage(); };
    const auto topOf = [](const QImage& image) { return image.copy(0, 0, image.width(), image.height() * 2 / 5); };
    const auto bottomOf = [](const QImage& image) {
        return image.copy(0, image.height() * 3 / 5, image.width(), image.height() * 2 / 5);
    };
    const QImage atTop = look();
    scroller.setValue(100);
    const QImage atBottom = look();
    scroller.setMaximum(0);
    EXPECT_EQ(topOf(look()), topOf(atBottom));
    EXPECT_EQ(bottomOf(look()), bottomOf(atTop));
}

TEST_F(NSScrollerTest, DrawsTheBackgroundOfItsWindowInPlaceOfWhatIsThere) {
    auto pattern = NSImage::initWithSize(NSMakeSize(8, 8));
    pattern->lockFocus(1);
    NSColor::colorWithCalibratedRed(0, 1, 0, 0.5).set();
    NSRectFill(NSMakeRect(0, 0, 4, 4));
    NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
    NSRectFill(NSMakeRect(4, 0, 4, 8));
    pattern->unlockFocus();
    window.setOpaque(false);
    window.setBackgroundColor(NSColor::colorWithPatternImage(pattern));
    const auto look = [&] {
        QImage image(window.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        window.render(&image, QPoint(), QRegion(), QWidget::DrawWindowBackground | QWidget::DrawChildren);
        return image;
    };
    const QImage background = look();
    for (const bool isUpsideDown : {false, true}) {
        auto view = std::make_unique<Hole>();
        view->isUpsideDown = isUpsideDown;
        view->setFrame(NSMakeRect(13, 21, 50, 40));
        view->hole = NSMakeRect(5, 6, 30, 20);
        window.content().addSubview(view.get());
        QImage expected = background;
        QPainter painter(&expected);
        painter.fillRect(QRect(13, 200 - 61, 50, 40), Qt::red);
        const QRect hole(18, isUpsideDown ? 200 - 61 + 6 : 200 - 61 + 40 - 26, 30, 20);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(hole, background, hole);
        painter.end();
        EXPECT_EQ(difference(look(), expected), 0) << (isUpsideDown ? "flipped" : "not flipped");
    }
}

TEST_F(NSScrollerTest, DrawsNoBackgroundWhereNoViewDraws) {
    QImage image = drawn({10, 10}, [] { NSDrawWindowBackground(NSMakeRect(0, 0, 10, 10)); });
    EXPECT_TRUE(inkOf(image).isNull());
    NSDrawWindowBackground(NSMakeRect(0, 0, 10, 10));
    EXPECT_EQ(ViewCore::focusView(), nullptr);
}

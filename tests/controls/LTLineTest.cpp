// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTLine.h>
#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGradient.h>

namespace {

class LTLineTest : public AppKitHost {
protected:
    /// A line in `window`, which is not shown.
    static LTLine& add(NSWindow& window, const NSRect& frame) {
        auto line = std::make_unique<LTLine>(frame);
        ViewCore::of(window.contentView())->addSubview(line.get());
        return *line.release();
    }

    /// What `drawing` draws in a view of the line's size, which is not flipped.
    static QImage expected(const LTLine& line, double ratio, const std::function<void()>& drawing) {
        return drawn({double(line.width()), double(line.height())}, ratio, drawing, Flipped::No, panelColor);
    }

    static void fill(const NSRect& rect, double white, double alpha) {
        NSColor::colorWithCalibratedWhite(white, alpha).set();
        NSBezierPath::fillRect(rect);
    }

    static void expectPlainLine(LTLine& line) {
        for (const double ratio : {1.0, 2.0}) {
            const QImage picture = expected(line, ratio, [&] {
                const NSGradient gradient(NSColor::colorWithCalibratedWhite(0.2, 0),
                                          NSColor::colorWithCalibratedWhite(0.2, 1));
                const double width = NSWidth(line.bounds());
                const double y = NSHeight(line.bounds()) / 2 - 0.5;
                gradient.drawInRect(NSMakeRect(0, y, width / 2, 1), 0);
                gradient.drawInRect(NSMakeRect(width / 2, y, width / 2, 1), 180);
            });
            EXPECT_EQ(difference(pictureOf(line, ratio), picture), 0) << ratio;
        }
    }

    static constexpr NSRect windowFrame{{100, 100}, {300, 200}};
    NSWindow window{windowFrame, NSTitledWindowMask, NSBackingStoreBuffered, false};
    LTHUDWindow panel{windowFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false};
};

} // namespace

TEST_F(LTLineTest, IsLightBelowAndDarkAboveInAHUDWindow) {
    LTLine& line = add(panel, NSMakeRect(10, 50, 100, 2));
    for (const double ratio : {1.0, 2.0}) {
        const QImage picture = expected(line, ratio, [] {
            fill(NSMakeRect(0, 0, 100, 1), 1.0, 0.25);
            fill(NSMakeRect(0, 1, 100, 1), 0.0, 0.7);
        });
        EXPECT_EQ(difference(pictureOf(line, ratio), picture), 0) << ratio;
    }
    const QImage picture = pictureOf(line, 1);
    EXPECT_EQ(picture.pixelColor(50, 1), QColor(131, 131, 131)) << "white over 90 at 0.25";
    EXPECT_EQ(picture.pixelColor(50, 0), QColor(27, 27, 27)) << "black over 90 at 0.7";
}

TEST_F(LTLineTest, LiesAtTheBottomOfItsFrameInAHUDWindow) {
    LTLine& line = add(panel, NSMakeRect(10, 50, 100, 4));
    const QImage picture = pictureOf(line, 1);
    EXPECT_EQ(picture.pixelColor(50, 0), panelColor);
    EXPECT_EQ(picture.pixelColor(50, 1), panelColor);
    EXPECT_EQ(picture.pixelColor(50, 2), QColor(27, 27, 27));
    EXPECT_EQ(picture.pixelColor(50, 3), QColor(131, 131, 131));
}

TEST_F(LTLineTest, KnowsAHUDWindowOfASubclass) {
    class Panel : public LTHUDWindow {
    public:
        using LTHUDWindow::LTHUDWindow;
    };
    Panel subclass(windowFrame, NSBorderlessWindowMask, NSBackingStoreBuffered, false);
    const QImage own = pictureOf(add(subclass, NSMakeRect(10, 50, 100, 2)), 1);
    EXPECT_EQ(difference(own, pictureOf(add(panel, NSMakeRect(10, 50, 100, 2)), 1)), 0);
}

TEST_F(LTLineTest, IsDarkInTheMiddleAndFadesToBothEndsInAnyOtherWindow) {
    LTLine& line = add(window, NSMakeRect(10, 50, 100, 1));
    expectPlainLine(line);
    const QImage picture = pictureOf(line, 1);
    const auto white = [&](int x) { return picture.pixelColor(x, 0).red(); };
    EXPECT_NEAR(white(0), 90, 1);
    EXPECT_NEAR(white(25), 90 + (51 - 90) / 2.0, 1);
    EXPECT_NEAR(white(49), 51, 1);
    EXPECT_NEAR(white(50), 51, 1);
    EXPECT_NEAR(white(99), 90, 1);
    for (int x = 1; x < 50; ++x) {
        EXPECT_LE(white(x), white(x - 1)) << x;
        EXPECT_NEAR(white(x), white(99 - x), 1) << x;
    }
}

TEST_F(LTLineTest, LiesInTheMiddleOfItsHeightInAnyOtherWindow) {
    LTLine& line = add(window, NSMakeRect(10, 50, 100, 3));
    expectPlainLine(line);
    const QImage picture = pictureOf(line, 1);
    EXPECT_EQ(picture.pixelColor(50, 0), panelColor);
    EXPECT_NE(picture.pixelColor(50, 1), panelColor);
    EXPECT_EQ(picture.pixelColor(50, 2), panelColor);
}

TEST_F(LTLineTest, IsALineAtFivePointsAndAPanelAbove) {
    LTLine& line = add(window, NSMakeRect(10, 50, 100, 5));
    expectPlainLine(line);
    LTLine& slightlyMore = add(window, NSMakeRect(10, 60, 100, 5.001));
    EXPECT_NE(pictureOf(slightlyMore, 1).pixelColor(0, 0), panelColor);
    LTLine& inPanel = add(panel, NSMakeRect(10, 50, 100, 5));
    EXPECT_EQ(pictureOf(inPanel, 1).pixelColor(50, 0), panelColor);
}

TEST_F(LTLineTest, FillsItsFrameWhenItIsAPanel) {
    for (NSWindow* each : {&window, static_cast<NSWindow*>(&panel)}) {
        LTLine& line = add(*each, NSMakeRect(10, 50, 100, 40));
        for (const double ratio : {1.0, 2.0}) {
            const QImage picture = pictureOf(line, ratio);
            // 0.1 over 90 at 0.95.
            EXPECT_LE(difference(picture, plain(picture.size(), picture.rect(), QColor(29, 29, 29))), 1) << ratio;
        }
    }
}

TEST_F(LTLineTest, IsDrawnAsInAnyOtherWindowWhereItIsInNone) {
    LTLine line(NSMakeRect(0, 0, 100, 1));
    expectPlainLine(line);
}

TEST_F(LTLineTest, OutlastsFramesWithoutRoom) {
    for (const NSSize& size : {NSSize{0, 0}, NSSize{-3, -3}, NSSize{1, 0}, NSSize{0, 40}}) {
        LTLine line({NSZeroPoint, size});
        QImage surface(20, 60, QImage::Format_ARGB32_Premultiplied);
        line.render(&surface);
        EXPECT_EQ(line.frame().size, size);
    }
}

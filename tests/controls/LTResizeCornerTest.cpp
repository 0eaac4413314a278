// SPDX-License-Identifier: MIT
#include "HUDButtonTestSupport.h"

#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>

#include <QMouseEvent>
#include <QTest>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Equal to the last bit, or both no number.
bool isSame(double left, double right) {
    return left == right || (std::isnan(left) && std::isnan(right));
}

bool isSame(const NSRect& left, const NSRect& right) {
    return isSame(left.origin.x, right.origin.x) && isSame(left.origin.y, right.origin.y) &&
           isSame(left.size.width, right.size.width) && isSame(left.size.height, right.size.height);
}

/// A window that is only numbers, so that they need not be any that a screen has.
class NumbersWindow : public HostWindow {
public:
    explicit NumbersWindow(const NSRect& frame) : HostWindow(NSMakeRect(0, 0, 100, 100)), numbers(frame) {}

    NSRect frame() const override { return numbers; }
    using NSWindow::setFrame;
    void setFrame(const NSRect& frame, bool display) override {
        numbers = frame;
        ++framesSet;
        displays = displays && display;
    }

    NSRect numbers;
    int framesSet = 0;
    bool displays = true;
};

/// What a corner is to do to a window, worked out along one axis at a time: a length that grows by what the pointer
/// travels, and the travel that was beyond its least value.
class AxisModel {
public:
    enum class AtLargest { Ignores, Pins };

    void begin() {
        m_heldBits = 0;
        m_wasPinned = false;
    }

    /// Answers whether the length has changed with the pointer.
    bool travel(double& length, double by, double least, AtLargest atLargest) {
        const bool isFree = held() == 0 || (atLargest == AtLargest::Pins && m_wasPinned);
        const double longer = length + by;
        if (isFree && longer >= least) {
            length = longer;
            if (m_wasPinned) {
                hold(held() + by);
            }
            return true;
        }
        const double sum = held() + by;
        const bool isBelow = held() < 0;
        const bool isAbove = held() > 0;
        if (isAbove ? sum < 0 : isBelow && sum > 0) {
            hold(0);
        } else {
            hold(sum);
        }
        return false;
    }

    void pin() { m_wasPinned = true; }

private:
    [[nodiscard]] double held() const { return static_cast<double>(std::bit_cast<float>(m_heldBits)); }
    void hold(double value) { m_heldBits = std::bit_cast<std::uint32_t>(static_cast<float>(value)); }

    std::uint32_t m_heldBits = 0; // of a number of single precision
    bool m_wasPinned = false;
};

/// Edges in place of origin and size.
struct ModelWindow {
    double left;
    double bottom;
    double width;
    double height;

    explicit ModelWindow(const NSRect& rect)
        : left(rect.origin.x), bottom(rect.origin.y), width(rect.size.width), height(rect.size.height) {}

    [[nodiscard]] NSRect rect() const { return NSMakeRect(left, bottom, width, height); }
};

class CornerModel {
public:
    void begin() {
        m_across.begin();
        m_down.begin();
    }
    void dragRight(ModelWindow& window, double dX, double dY, const NSSize& least, const NSSize& largest) {
        if (m_down.travel(window.height, dY, least.height, AxisModel::AtLargest::Ignores)) {
            window.bottom -= dY;
        }
        m_across.travel(window.width, dX, least.width, AxisModel::AtLargest::Pins);
        if (!(window.width < largest.width) && !std::isnan(window.width) && !std::isnan(largest.width)) {
            m_across.pin();
            window.width = largest.width;
        }
        if (window.height > largest.height) {
            window.bottom += window.height - largest.height;
            window.height = largest.height;
        }
    }
    void dragLeft(ModelWindow& window, double dX, double dY, const NSSize& least) {
        if (m_down.travel(window.height, dY, least.height, AxisModel::AtLargest::Ignores)) {
            window.bottom -= dY;
        }
        m_across.travel(window.width, -dX, least.width, AxisModel::AtLargest::Ignores);
    }

private:
    AxisModel m_across;
    AxisModel m_down;
};

/// Presses at the origin of the screen and moves to (dX, dY): a drag event with just these deltas.
template <class Corner>
void drag(Corner& corner, NSWindow& window, double dX, double dY) {
    QMouseEvent press(QEvent::MouseButtonPress, {}, {}, QPointF(0, 0), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    const NSEvent origin(press, &window);
    QMouseEvent move(QEvent::MouseMove, {}, {}, QPointF(dX, dY), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    const NSEvent dragged(move, &window);
    ASSERT_TRUE(isSame(dragged.deltaX(), dX) && isSame(dragged.deltaY(), dY));
    corner.mouseDragged(dragged);
}

template <class Corner>
void begin(Corner& corner, NSWindow& window) {
    corner.mouseDown(NSEvent::mouseEventWithType(NSLeftMouseDown, NSZeroPoint, 0, &window, 1));
}

template <class Corner>
Corner& addCorner(HostWindow& window, const NSRect& frame = NSMakeRect(0, 0, 20, 20)) {
    auto corner = std::make_unique<Corner>(frame);
    window.content().addSubview(corner.get());
    return *corner.release();
}

class ResizeCorners : public AppKitHost {
protected:
    ResizeCorners() {
        window.setMinSize({100, 100});
        window.setMaxSize({400, 300});
    }

    NumbersWindow window{NSMakeRect(50, 70, 200, 110)};
    LTResizeCorner& corner = addCorner<LTResizeCorner>(window);
    LTLeftResizeCorner& leftCorner = addCorner<LTLeftResizeCorner>(window);
};

/// The same, with the window on the screen and events that come to it as a device's do.
class ShownCorners : public AppKitHost {
protected:
    void press(const QPoint& place) { QTest::mousePress(window.windowHandle(), Qt::LeftButton, {}, place); }
    void move(const QPoint& place) { QTest::mouseMove(window.windowHandle(), place); }
    void release(const QPoint& place) { QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, {}, place); }

    HostWindow window{NSMakeRect(200, 200, 300, 200)};
};

} // namespace

TEST_F(ResizeCorners, GrowDownwardsWithTheTopEdgeFixed) {
    begin(corner, window);
    drag(corner, window, 0, 12.5);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 57.5, 200, 122.5));
    begin(leftCorner, window);
    drag(leftCorner, window, 0, -2.5);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 60, 200, 120));
}

TEST_F(ResizeCorners, HoldBackTravelBelowTheLeastHeight) {
    const auto expectHeights = [this](auto& dragged) {
        window.numbers = NSMakeRect(50, 70, 200, 110);
        begin(dragged, window);
        drag(dragged, window, 0, -15);
        EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 200, 110)) << "15 beyond, none of it done";
        drag(dragged, window, 0, -5);
        EXPECT_EQ(window.frame().size.height, 110) << "20 beyond";
        drag(dragged, window, 0, 25);
        EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 200, 110)) << "back, and the rest is dropped";
        drag(dragged, window, 0, 5);
        EXPECT_EQ(window.frame(), NSMakeRect(50, 65, 200, 115));
    };
    expectHeights(corner);
    expectHeights(leftCorner);
}

TEST_F(ResizeCorners, AreFreeAgainWhereTravelComesBackToTheLimitItself) {
    begin(corner, window);
    drag(corner, window, 0, -15);
    drag(corner, window, 0, 15);
    EXPECT_EQ(window.frame().size.height, 110);
    drag(corner, window, 0, -10);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 80, 200, 100)) << "the least height itself is no overflow";
}

TEST_F(ResizeCorners, TheRightOneHoldsBackTravelBelowTheLeastWidth) {
    begin(corner, window);
    drag(corner, window, -100, 0);
    EXPECT_EQ(window.frame().size.width, 100);
    drag(corner, window, -30, 0);
    drag(corner, window, -10, 0);
    EXPECT_EQ(window.frame().size.width, 100);
    drag(corner, window, 39, 0);
    EXPECT_EQ(window.frame().size.width, 100) << "still 1 beyond";
    drag(corner, window, 8, 0);
    EXPECT_EQ(window.frame().size.width, 100) << "the event that comes back is swallowed";
    drag(corner, window, 8, 0);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 108, 110));
}

TEST_F(ResizeCorners, TheRightOneIsPinnedAtTheLargestWidthAndComesBackAtOnce) {
    begin(corner, window);
    drag(corner, window, 250, 0);
    EXPECT_EQ(window.frame().size.width, 400);
    drag(corner, window, 60, 0);
    EXPECT_EQ(window.frame().size.width, 400);
    drag(corner, window, -7, 0);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 393, 110));
}

TEST_F(ResizeCorners, TheRightOneResizesWhateverIsHeldBackOnceItWasTooLarge) {
    begin(corner, window);
    drag(corner, window, 200, 0); // the largest width itself counts
    drag(corner, window, -290, 0);
    EXPECT_EQ(window.frame().size.width, 110);
    drag(corner, window, -20, 0);
    EXPECT_EQ(window.frame().size.width, 110);
    drag(corner, window, 5, 0);
    EXPECT_EQ(window.frame().size.width, 115) << "though the pointer is still beyond the limit";
    begin(corner, window);
    drag(corner, window, -20, 0);
    drag(corner, window, 5, 0);
    EXPECT_EQ(window.frame().size.width, 115) << "the next drag has not been too large";
}

TEST_F(ResizeCorners, TheRightOneKeepsTheTopEdgeAtTheLargestHeight) {
    begin(corner, window);
    drag(corner, window, 0, 200);
    EXPECT_EQ(window.frame(), NSMakeRect(50, -120, 200, 300));
    drag(corner, window, 0, 40);
    EXPECT_EQ(window.frame(), NSMakeRect(50, -120, 200, 300));
    drag(corner, window, 0, -10);
    EXPECT_EQ(window.frame(), NSMakeRect(50, -110, 200, 290)) << "nothing is held back above";
}

TEST_F(ResizeCorners, TheLeftOneMakesTheWindowWiderAndLeavesItsOrigin) {
    begin(leftCorner, window);
    drag(leftCorner, window, -10, 0);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 210, 110));
    drag(leftCorner, window, 4, 0);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 206, 110));
}

TEST_F(ResizeCorners, TheLeftOneKnowsNoLargestSize) {
    begin(leftCorner, window);
    drag(leftCorner, window, -1000, 900);
    EXPECT_EQ(window.frame(), NSMakeRect(50, -830, 1200, 1010));
}

TEST_F(ResizeCorners, TheLeftOneHoldsBackTravelBelowTheLeastWidth) {
    begin(leftCorner, window);
    drag(leftCorner, window, 120, 0);
    EXPECT_EQ(window.frame().size.width, 200);
    drag(leftCorner, window, -119, 0);
    EXPECT_EQ(window.frame().size.width, 200);
    drag(leftCorner, window, -5, 0);
    EXPECT_EQ(window.frame().size.width, 200);
    drag(leftCorner, window, -5, 0);
    EXPECT_EQ(window.frame().size.width, 205);
}

TEST_F(ResizeCorners, HoldBackInSinglePrecision) {
    begin(corner, window);
    // In single precision there is nothing between 2^24 and its neighbours at a distance of 1 and 2.
    drag(corner, window, 0, -16777216);
    drag(corner, window, 0, -1);
    drag(corner, window, 0, 16777216);
    drag(corner, window, 0, -5);
    EXPECT_EQ(window.frame(), NSMakeRect(50, 75, 200, 105)) << "exactly back at the limit";
}

TEST_F(ResizeCorners, TakeNoNumberForTravelBeyondTheLimit) {
    const auto expectStuck = [this](auto& dragged) {
        window.numbers = NSMakeRect(50, 70, 200, 110);
        begin(dragged, window);
        drag(dragged, window, notANumber, notANumber);
        drag(dragged, window, 20, 20);
        drag(dragged, window, -40, -40);
        EXPECT_EQ(window.frame(), NSMakeRect(50, 70, 200, 110));
        begin(dragged, window);
        drag(dragged, window, 0, 20);
        EXPECT_EQ(window.frame(), NSMakeRect(50, 50, 200, 130)) << "until the next drag";
    };
    expectStuck(corner);
    expectStuck(leftCorner);
}

TEST_F(ResizeCorners, AreNotLimitedByLimitsThatAreNoNumbers) {
    window.setMaxSize({notANumber, notANumber});
    begin(corner, window);
    drag(corner, window, 5000, 5000);
    EXPECT_EQ(window.frame(), NSMakeRect(50, -4930, 5200, 5110));
}

TEST_F(ResizeCorners, SetTheFrameOnceForEveryEventAlsoWhereNothingChanges) {
    begin(corner, window);
    EXPECT_EQ(window.framesSet, 0);
    drag(corner, window, 0, 0);
    drag(corner, window, -5000, -5000);
    drag(corner, window, 3, 3);
    EXPECT_EQ(window.framesSet, 3);
    drag(leftCorner, window, 0, 0);
    EXPECT_EQ(window.framesSet, 4);
    EXPECT_TRUE(window.displays);
}

TEST_F(ResizeCorners, FollowTheModelThroughAnyDrag) {
    std::mt19937 random(20261122); // the same drags every time
    const auto pick = [&](const std::vector<double>& values) {
        return values[std::uniform_int_distribution<std::size_t>(0, values.size() - 1)(random)];
    };
    const auto length = [&](double least, double largest) {
        // Also in quarters, so that limits are met exactly.
        const double value = std::uniform_real_distribution<double>(least, largest)(random);
        return random() % 2 == 0 ? value : std::round(value * 4) / 4;
    };
    const std::vector<double> odd{notANumber, infinity, -infinity, 0, -0.0, 16777217, -3e38, 1e-45};
    const auto oftenPlain = [&](double plain, unsigned rarity) { return random() % rarity == 0 ? pick(odd) : plain; };
    int strange = 0;
    for (int round = 0; round < 3000; ++round) {
        const bool isRight = round % 2 == 0;
        window.setMinSize({oftenPlain(length(0, 200), 20), oftenPlain(length(0, 200), 20)});
        window.setMaxSize({oftenPlain(length(150, 600), 20), oftenPlain(length(150, 600), 20)});
        window.numbers = NSMakeRect(length(-500, 500), length(-500, 500), length(0, 700), length(0, 700));
        ModelWindow expected(window.numbers);
        CornerModel model;
        for (int step = 0; step < 40; ++step) {
            if (step % 17 == 0) {
                model.begin();
                isRight ? begin(corner, window) : begin(leftCorner, window);
            }
            const double dX = oftenPlain(length(-120, 120), 150);
            const double dY = oftenPlain(length(-120, 120), 150);
            if (isRight) {
                drag(corner, window, dX, dY);
                model.dragRight(expected, dX, dY, window.minSize(), window.maxSize());
            } else {
                drag(leftCorner, window, dX, dY);
                model.dragLeft(expected, dX, dY, window.minSize());
            }
            ASSERT_TRUE(isSame(window.numbers, expected.rect()))
                << "round " << round << " step " << step << " by " << dX << " " << dY << ": " << window.numbers
                << " in place of " << expected.rect();
            strange += std::isfinite(window.numbers.size.width) ? 0 : 1;
        }
    }
    EXPECT_GT(strange, 50) << "what is no number came by as well";
}

TEST_F(ShownCorners, DragTheWindowByTheMotionOnTheScreen) {
    auto& corner = addCorner<LTResizeCorner>(window, NSMakeRect(280, 0, 20, 20));
    corner.setAutoresizingMask(NSViewMinXMargin | NSViewMaxYMargin);
    show(window);
    press({290, 190});
    move({301, 197});
    EXPECT_EQ(window.frame(), NSMakeRect(200, 193, 311, 207));
    EXPECT_EQ(corner.frame(), NSMakeRect(291, 0, 20, 20)) << "it goes with the window's corner";
    move({295, 199});
    EXPECT_EQ(window.frame(), NSMakeRect(200, 191, 305, 209));
    release({295, 199});
    move({250, 100});
    EXPECT_EQ(window.frame(), NSMakeRect(200, 191, 305, 209)) << "until the button is released";
    EXPECT_THAT(window.unused, ElementsAre("mouseDown", "mouseUp")) << "these go on to the window";
}

TEST_F(ShownCorners, OnlyTheRightOneTakesTheClickThatMakesItsWindowKey) {
    HostWindow other(NSMakeRect(600, 100, 100, 100));
    window.setManagement(NSWindowManagement::Bypassing); // a managed one has the keyboard before it sees the click
    addCorner<LTResizeCorner>(window, NSMakeRect(280, 0, 20, 20));
    addCorner<LTLeftResizeCorner>(window);
    show(window);
    show(other);
    ASSERT_FALSE(window.isKeyWindow());
    press({10, 190});
    move({4, 195});
    release({4, 195});
    EXPECT_EQ(window.frame(), NSMakeRect(200, 200, 300, 200));
    EXPECT_THAT(window.unused, ElementsAre("mouseDown", "mouseDragged", "mouseUp"));
    show(other);
    ASSERT_FALSE(window.isKeyWindow());
    press({290, 190});
    move({295, 195});
    release({295, 195});
    EXPECT_EQ(window.frame(), NSMakeRect(200, 195, 305, 205));
}

TEST_F(ShownCorners, TellByThePointerWhatTheyDo) {
    EXPECT_EQ(addCorner<LTResizeCorner>(window).cursor().shape(), Qt::SizeFDiagCursor);
    EXPECT_EQ(addCorner<LTLeftResizeCorner>(window).cursor().shape(), Qt::SizeBDiagCursor);
}

TEST_F(ShownCorners, DoNothingInAWindowThatIsNotTheKits) {
    QWidget plain;
    LTResizeCorner corner(&plain);
    LTLeftResizeCorner leftCorner(&plain);
    const QRect before = plain.geometry();
    drag(corner, window, 10, 10);
    drag(leftCorner, window, 10, 10);
    EXPECT_EQ(plain.geometry(), before);
}

TEST_F(ShownCorners, ShowTheirGripsAtTheWindowsCorner) {
    LTResizeCorner corner(NSMakeRect(0, 0, 24, 18));
    LTLeftResizeCorner leftCorner(NSMakeRect(0, 0, 24, 18));
    for (const double ratio : {1.0, 2.0}) {
        EXPECT_EQ(pictureOf(corner, ratio),
                  pictureOfImage(corner, ratio, QStringLiteral("ResizeCorner"), QPointF(14, 8)));
        EXPECT_EQ(pictureOf(leftCorner, ratio),
                  pictureOfImage(leftCorner, ratio, QStringLiteral("LeftResizeCorner"), QPointF(0, 8)));
        EXPECT_NE(pictureOf(corner, ratio), emptyPanel(corner, ratio)) << "something is seen on a dark ground";
        EXPECT_EQ(kitPixels(QStringLiteral("ResizeCorner"), ratio).size(), QSize(10, 10) * ratio);
    }
}

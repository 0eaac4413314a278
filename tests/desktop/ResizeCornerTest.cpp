// SPDX-License-Identifier: MIT
// A window's corners, dragged with a mouse on a real X server.
#include "../ServerFocus.h"
#include "../appkit/AppKitHost.h"
#include "Desktop.h"

#include <VXKit/controls/LTLeftResizeCorner.h>
#include <VXKit/controls/LTResizeCorner.h>
#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/desktop/WindowEffects.h>

#include <QElapsedTimer>
#include <QProcess>

#include <cmath>
#include <memory>

namespace {

constexpr double cornerLength = 16;
constexpr NSRect firstFrame{{160, 180}, {200, 150}};

template <class Corner>
class Counted : public Corner {
public:
    using Corner::Corner;
    void mouseDragged(const NSEvent& event) override {
        Corner::mouseDragged(event);
        ++drags;
    }
    int drags = 0;
};

class CornersOnDesktop : public AppKitHost, public testing::WithParamInterface<NSWindowManagement> {
protected:
    CornersOnDesktop() {
        window.setManagement(GetParam());
        window.setBackgroundColor(NSColor::colorWithCalibratedWhite(0.3, 1));
        window.setMinSize({140, 90});
        window.setMaxSize({260, 200});
        right = add(std::make_unique<Counted<LTResizeCorner>>(
                        NSMakeRect(firstFrame.size.width - cornerLength, 0, cornerLength, cornerLength)),
                    NSViewMinXMargin | NSViewMaxYMargin);
        left = add(std::make_unique<Counted<LTLeftResizeCorner>>(NSMakeRect(0, 0, cornerLength, cornerLength)),
                   NSViewMaxXMargin | NSViewMaxYMargin);
        show(window);
        // A window manager places a window as it likes at first.
        window.setFrame(firstFrame, true);
        EXPECT_TRUE(waitFor([this] { return serverFrame() == pixels(firstFrame); }));
    }

    [[nodiscard]] double ratio() const { return window.devicePixelRatioF(); }
    [[nodiscard]] QRect pixels(const NSRect& rect) const {
        const QRectF global = NSScreenRectToGlobal(rect);
        return QRectF(global.topLeft() * ratio(), global.size() * ratio()).toRect();
    }
    /// By the word of the X server; in whole points at that.
    [[nodiscard]] QRect serverFrame() const {
        const QRect points = WindowEffects::sharedEffects().serverFrame(window).value_or(QRect());
        return {points.topLeft() * ratio(), points.size() * ratio()};
    }
    /// How far the edges of the window that the corners move are from where they should be.
    void expectFrame(const NSRect& expected) {
        EXPECT_TRUE(waitFor([&] { return window.frame() == expected; }))
            << window.frame().origin.y << " " << window.frame().size.width << " " << window.frame().size.height;
        const QRect wanted = pixels(expected);
        const auto isNear = [this](int one, int other) { return std::abs(one - other) <= static_cast<int>(ratio()); };
        EXPECT_TRUE(waitFor([&] {
            const QRect shown = serverFrame();
            return isNear(shown.left(), wanted.left()) && isNear(shown.top(), wanted.top()) &&
                   isNear(shown.right(), wanted.right()) && isNear(shown.bottom(), wanted.bottom());
        })) << "of the server";
    }

    void takeCorner(const QWidget& corner) {
        pointer = (QPointF(corner.mapToGlobal(QPoint(7, 7))) * ratio()).toPoint();
        xdotool({QStringLiteral("mousemove"), QString::number(pointer.x()), QString::number(pointer.y()),
                 QStringLiteral("mousedown"), QStringLiteral("1")});
        settle();
    }
    template <class Corner>
    void moveBy(Corner& corner, int dX, int dY) {
        const int before = corner.drags;
        pointer += QPoint(dX, dY);
        xdotool({QStringLiteral("mousemove"), QString::number(pointer.x()), QString::number(pointer.y())});
        ASSERT_TRUE(waitFor([&] { return corner.drags > before; }));
    }
    template <class Corner>
    void moveInSteps(Corner& corner, int dX, int dY, int steps) {
        for (int step = 0; step < steps; ++step) {
            moveBy(corner, dX, dY);
        }
    }
    /// As fast as it comes, while the application goes on.
    void moveFast(int dX, int dY, int steps) {
        QStringList arguments;
        for (int step = 0; step < steps; ++step) {
            pointer += QPoint(dX, dY);
            arguments << QStringLiteral("mousemove") << QString::number(pointer.x()) << QString::number(pointer.y());
            if (step % 3 == 0) {
                arguments << QStringLiteral("sleep") << QStringLiteral("0.004");
            }
        }
        QProcess process;
        process.start(QStringLiteral("xdotool"), arguments);
        ASSERT_TRUE(waitFor([&] { return process.state() == QProcess::NotRunning; }));
        ASSERT_EQ(process.exitCode(), 0);
    }
    static void letGo() { xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}); }

    /// Whether the pointer is at the place of `corner` where it took it.
    [[nodiscard]] bool isOver(const QWidget& corner) const {
        const QPointF place = corner.mapFromGlobal(QPointF(pointer) / ratio());
        return std::abs(place.x() - 7) <= 1 && std::abs(place.y() - 7) <= 1;
    }

    HostWindow window{firstFrame};
    Counted<LTResizeCorner>* right;
    Counted<LTLeftResizeCorner>* left;
    QPoint pointer; // in pixels

private:
    template <class Corner>
    Corner* add(std::unique_ptr<Corner> corner, unsigned mask) {
        corner->setAutoresizingMask(mask);
        window.content().addSubview(corner.get());
        return corner.release();
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(OfAWindow, CornersOnDesktop,
                         testing::Values(NSWindowManagement::Bypassing, NSWindowManagement::Managed),
                         [](const testing::TestParamInfo<NSWindowManagement>& tested) {
                             return tested.param == NSWindowManagement::Managed ? "Managed" : "Bypassing";
                         });

TEST_P(CornersOnDesktop, TheRightOneStaysUnderThePointer) {
    takeCorner(*right);
    const double points = 1 / ratio();
    for (int step = 1; step <= 10; ++step) {
        moveBy(*right, 3, 1);
        EXPECT_TRUE(isOver(*right)) << "step " << step;
    }
    expectFrame(NSMakeRect(160, 180 - 10 * points, 200 + 30 * points, 150 + 10 * points));
    moveInSteps(*right, -7, -5, 5);
    letGo();
    expectFrame(NSMakeRect(160, 180 + 15 * points, 200 - 5 * points, 150 - 15 * points));
    EXPECT_TRUE(isOver(*right));
    keepPicture("corners");
}

TEST_P(CornersOnDesktop, TheRightOneStaysUnderAPointerThatIsFasterThanTheWindow) {
    takeCorner(*right);
    const double points = 1 / ratio();
    for (int round = 0; round < 4; ++round) {
        moveFast(1, 1, 40);
        moveFast(-1, -1, 40);
    }
    moveFast(1, 0, 31);
    letGo();
    expectFrame(NSMakeRect(160, 180, 200 + 31 * points, 150));
    EXPECT_TRUE(isOver(*right));
}

TEST_P(CornersOnDesktop, TheRightOneWaitsForThePointerBelowTheLeastSize) {
    takeCorner(*right);
    const int step = static_cast<int>(10 * ratio());
    moveInSteps(*right, -step, -step, 9);
    expectFrame(NSMakeRect(160, 240, 140, 90));
    EXPECT_FALSE(isOver(*right));
    moveInSteps(*right, step, step, 3);
    expectFrame(NSMakeRect(160, 240, 140, 90));
    EXPECT_TRUE(isOver(*right)) << "and so it is under the pointer again";
    moveInSteps(*right, step, step, 4);
    expectFrame(NSMakeRect(160, 200, 180, 130));
    EXPECT_TRUE(isOver(*right));
    letGo();
}

TEST_P(CornersOnDesktop, TheRightOneIsPinnedAtTheLargestSizeAndComesBackAtOnce) {
    takeCorner(*right);
    const int step = static_cast<int>(10 * ratio());
    moveInSteps(*right, step, step, 5);
    expectFrame(NSMakeRect(160, 130, 250, 200));
    EXPECT_TRUE(isOver(*right));
    moveInSteps(*right, step, step, 4);
    expectFrame(NSMakeRect(160, 130, 260, 200));
    moveInSteps(*right, -step, -step, 2);
    expectFrame(NSMakeRect(160, 150, 240, 180));
    letGo();
}

TEST_P(CornersOnDesktop, TheLeftOneMakesTheWindowWiderWhereItStands) {
    window.makeKeyAndOrderFront(nullptr);
    ASSERT_TRUE(waitFor([this] { return window.isKeyWindow() && hasServerFocus(window); }));
    takeCorner(*left);
    const int step = static_cast<int>(10 * ratio());
    moveInSteps(*left, -step, step, 8);
    letGo();
    expectFrame(NSMakeRect(160, 100, 280, 230)); // beyond the largest size
}

TEST_P(CornersOnDesktop, TheRightOneResizesAWindowThatDoesNotHaveTheKeyboard) {
    HostWindow other(NSMakeRect(440, 250, 100, 80));
    other.setManagement(GetParam());
    show(other);
    ASSERT_TRUE(waitFor([&] { return other.isKeyWindow() && hasServerFocus(other); }));
    ASSERT_FALSE(window.isKeyWindow());
    takeCorner(*right);
    moveInSteps(*right, static_cast<int>(4 * ratio()), 0, 5);
    letGo();
    expectFrame(NSMakeRect(160, 180, 220, 150));
    EXPECT_TRUE(waitFor([this] { return window.isKeyWindow() && hasServerFocus(window); })) << "which it has then";
}

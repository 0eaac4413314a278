// SPDX-License-Identifier: MIT
// A window that turns over, filmed on a real X server by another program's eyes.
#include "../ServerFocus.h"
#include "../app/ShellHost.h"
#include "Desktop.h"

#include <VXKit/platform/appkit/BlockingAnimation.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace {

constexpr NSRect frontFrame{{420, 260}, {460, 300}};
constexpr NSRect backFrame{{420, 260}, {460, 300}};
constexpr QRect filmed(340, 180, 640, 440); // both windows and the near edges, from the top left

/// A side of the card.
class Side : public NSWindow {
public:
    Side(const NSRect& frame, const NSColor& color)
        : NSWindow(frame, NSBorderlessWindowMask, NSBackingStoreBuffered, false) {
        setBackgroundColor(color);
    }
    bool canBecomeKeyWindow() const override { return true; }
};

/// How much of a picture each side of the card covers, in pixels.
struct Shot {
    int red = 0;
    int blue = 0;
    int black = 0;
    // Of both sides together.
    int left = filmed.width();
    int right = 0;

    [[nodiscard]] int seen() const { return red + blue; }
};

/// Takes pictures of the screen, one after another, by a connection of its own, while the application is busy.
class Camera {
public:
    Camera() : m_connection(xcb_connect(nullptr, nullptr)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        m_thread = std::thread([this] {
            while (!m_stops) {
                take();
                QThread::usleep(2000);
            }
        });
    }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
    ~Camera() {
        stop();
        xcb_disconnect(m_connection);
    }

    void stop() {
        m_stops = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    std::vector<QImage> pictures; // to be looked at when it has stopped

private:
    void take() {
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(
                m_connection,
                xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<std::int16_t>(filmed.x()),
                              static_cast<std::int16_t>(filmed.y()), static_cast<std::uint16_t>(filmed.width()),
                              static_cast<std::uint16_t>(filmed.height()), ~0U),
                nullptr),
            &std::free);
        if (reply) {
            const QImage picture(xcb_get_image_data(reply.get()), filmed.width(), filmed.height(),
                                 QImage::Format_RGB32);
            if (pictures.empty() || picture != pictures.back()) {
                pictures.push_back(picture.copy());
            }
        }
    }

    xcb_connection_t* m_connection;
    xcb_window_t m_root = 0;
    std::atomic<bool> m_stops = false;
    std::thread m_thread;
};

Shot lookAt(const QImage& picture) {
    Shot shot;
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const QColor color(row[x]);
            if (color.red() > 180 && color.green() < 90 && color.blue() < 90) {
                ++shot.red;
                shot.left = std::min(shot.left, x);
                shot.right = std::max(shot.right, x);
            } else if (color.blue() > 180 && color.green() < 90 && color.red() < 90) {
                ++shot.blue;
                shot.left = std::min(shot.left, x);
                shot.right = std::max(shot.right, x);
            } else if (color.red() < 4 && color.green() < 4 && color.blue() < 4) {
                ++shot.black;
            }
        }
    }
    return shot;
}

class FlipOnDesktop : public testing::Test {
protected:
    FlipOnDesktop() {
        // The ground, of a colour that is no side's, so that no black is a shadow's.
        ground.setLevel(-1);
        ground.orderFront(nullptr);
        front.setManagement(NSWindowManagement::Bypassing);
        back.setManagement(NSWindowManagement::Bypassing);
    }

    void showFront() {
        front.makeKeyAndOrderFront(nullptr);
        ASSERT_TRUE(waitFor([this] { return front.isKeyWindow() && hasServerFocus(front); }));
        // And the ground, which is black until it has drawn itself.
        ASSERT_TRUE(waitFor([] {
            const Shot shot = lookAt(pictureOfScreen().copy(filmed));
            return shot.red == 460 * 300 && shot.black == 0;
        }));
    }

    ShellApplication application;
    Side ground{NSMakeRect(200, 100, 900, 640), NSColor::colorWithCalibratedRed(0.9, 0.95, 0.9, 1)};
    Side front{frontFrame, NSColor::colorWithCalibratedRed(0.9, 0.1, 0.1, 1)};
    Side back{backFrame, NSColor::colorWithCalibratedRed(0.1, 0.1, 0.9, 1)};
};

} // namespace

TEST_F(FlipOnDesktop, ShowsTheFrontTheEdgeAndTheBackInThisOrder) {
    constexpr int whole = 460 * 300;
    // Without a compositing manager, what a window uncovers stays as it is until the windows below draw.
    const bool isComposited = WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency);
    const int leftOver = isComposited ? 100 : 2000;
    constexpr double middle = 420 + 230 - filmed.x(); // about which the card turns
    for (const bool forward : {true, false}) {
        back.orderOut(nullptr);
        showFront();
        Camera camera;
        flipToShowWindow(front, back, forward);
        EXPECT_TRUE(waitFor([] { return lookAt(pictureOfScreen().copy(filmed)).blue == whole; }));
        camera.stop();
        const QString folder = qEnvironmentVariable("VXKIT_PICTURES");
        std::vector<Shot> shots;
        for (const QImage& picture : camera.pictures) {
            if (!folder.isEmpty()) {
                picture.save(QStringLiteral("%1/flip-%2-%3.png")
                                 .arg(folder, forward ? QStringLiteral("forward") : QStringLiteral("backward"))
                                 .arg(shots.size(), 3, 10, QLatin1Char('0')));
            }
            shots.push_back(lookAt(picture));
        }
        ASSERT_GT(shots.size(), 8U) << "a film";
        EXPECT_GT(shots.front().red, whole - 10);
        EXPECT_EQ(shots.back().blue, whole);
        std::size_t firstBlue = 0;
        while (firstBlue < shots.size() && shots[firstBlue].blue <= 100) {
            ++firstBlue;
        }
        ASSERT_GT(firstBlue, 0U);
        for (std::size_t index = 0; index < shots.size(); ++index) {
            const Shot& shot = shots[index];
            // Without a compositing manager a picture can catch the window while a frame goes into it, a part of which
            // is the frame before: at the change of the sides both are seen then, for that one frame.
            const bool isTorn = !isComposited && index - firstBlue <= 1;
            EXPECT_LE(std::min(shot.red, shot.blue), isTorn ? shots[firstBlue - 1].red : leftOver)
                << "both sides in picture " << index;
            EXPECT_NEAR((shot.left + shot.right) / 2.0, middle, shot.seen() > 100 ? 30 : 1000)
                << "beside its place in picture " << index;
            EXPECT_LE(shot.black, 500) << "a black box in picture " << index;
            if (index >= firstBlue && !isTorn) {
                EXPECT_LE(shot.red, leftOver) << "the front again in picture " << index;
            }
        }
        // The card is narrow at the half alone: nothing is gone where it should be wide.
        for (std::size_t index = 0; index < shots.size(); ++index) {
            const bool isNarrow = shots[index].seen() < whole / 8;
            const std::size_t distance = index > firstBlue ? index - firstBlue : firstBlue - index;
            EXPECT_TRUE(!isNarrow || distance <= 8) << "nothing in picture " << index << " of " << shots.size();
        }
        EXPECT_TRUE(waitFor([this] { return back.isKeyWindow() && hasServerFocus(back); }));
        EXPECT_FALSE(front.isVisible());
    }
}

TEST_F(FlipOnDesktop, GivesTheKeyboardToWindowsOfTheWindowManagerToo) {
    Side managed(NSMakeRect(400, 240, 480, 320), NSColor::colorWithCalibratedRed(0.1, 0.1, 0.9, 1));
    managed.setManagement(NSWindowManagement::Managed);
    showFront();
    flipToShowWindow(front, managed, true);
    EXPECT_TRUE(waitFor([&] { return managed.isKeyWindow() && hasServerFocus(managed); }));
    EXPECT_TRUE(waitFor([] { return lookAt(pictureOfScreen().copy(filmed)).blue == 480 * 320; }));
    flipToShowWindow(managed, front, false);
    EXPECT_TRUE(waitFor([this] { return front.isKeyWindow() && hasServerFocus(front); }));
    EXPECT_TRUE(waitFor([] { return lookAt(pictureOfScreen().copy(filmed)).red == 460 * 300; }));
}

TEST_F(FlipOnDesktop, WithoutMotionTheWindowsChangePlaces) {
    const AnimationDurationsForTesting none(0);
    showFront();
    Camera camera;
    flipToShowWindow(front, back, true);
    EXPECT_TRUE(waitFor([] { return lookAt(pictureOfScreen().copy(filmed)).blue == 460 * 300; }));
    camera.stop();
    for (const QImage& picture : camera.pictures) {
        EXPECT_GE(lookAt(picture).seen(), 460 * 300 - 10);
    }
    EXPECT_TRUE(waitFor([this] { return back.isKeyWindow() && hasServerFocus(back); }));
}

TEST_F(FlipOnDesktop, PressesDuringAFlipDoNotReachThePanel) {
    showFront();
    QTimer press;
    bool pressed = false;
    press.callOnTimeout(&application, [&] {
        if (!std::exchange(pressed, true)) {
            click(QPoint(640, 400));
        }
    });
    press.start(100);
    flipToShowWindow(front, back, true);
    EXPECT_TRUE(pressed);
    EXPECT_TRUE(waitFor([this] { return back.isKeyWindow() && hasServerFocus(back); }));
    EXPECT_FALSE(flippingWindow()->isVisible());
}

// SPDX-License-Identifier: MIT
// The exception reporter on a real X server, as the user sees it while nothing is drawn.
#include "../LoopbackServer.h"
#include "../ModalRun.h"
#include "Desktop.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/support/VXExceptionReporter.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace {

/// What the X server shows in `place`, asked by a connection of its own: the application's thread is blocked.
QImage seenByAnother(const QRect& place) {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    QImage picture;
    {
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(
                connection,
                xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(place.x()),
                              static_cast<std::int16_t>(place.y()), static_cast<std::uint16_t>(place.width()),
                              static_cast<std::uint16_t>(place.height()), ~0U),
                nullptr),
            &std::free);
        if (reply) {
            picture =
                QImage(xcb_get_image_data(reply.get()), place.width(), place.height(), QImage::Format_RGB32).copy();
        }
    }
    xcb_disconnect(connection);
    return picture;
}

bool isOfOneColor(const QImage& picture) {
    const QRgb first = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != first) {
                return false;
            }
        }
    }
    return true;
}

QRect placeOnScreen(const QWidget& widget) {
    return {widget.mapToGlobal(QPoint(0, 0)), widget.size()};
}

} // namespace

TEST(ReporterOnDesktop, SaysOnTheScreenThatItSendsWhileItIsBlocked) {
    int argc = 1;
    char name[5] = "host";
    char* argv[2] = {name, nullptr};
    LTApplication application(argc, argv);
    NSWindow& window = *VXExceptionReporter::reporter().window();
    auto& status = *window.findChild<QLabel*>(QStringLiteral("statusField"));
    auto& button = *window.findChild<QPushButton*>(QStringLiteral("reportButton"));
    auto& email = *window.findChild<QLineEdit*>(QStringLiteral("emailField"));
    QRect place;
    QImage before;
    QImage meanwhile;
    const LoopbackServer server([&](int, const LoopbackRequest&) {
        // The server has until the answer; the window manager and the compositing manager may take theirs.
        for (int tries = 0; tries < 100 && (meanwhile.isNull() || isOfOneColor(meanwhile)); ++tries) {
            QThread::msleep(20);
            meanwhile = seenByAnother(place);
        }
        return LoopbackAnswer::status(200, "thanks");
    });
    VXExceptionReporter::setReportingHost(server.host());
    whenNextModalRunHasBegun(application, [&] {
        ASSERT_TRUE(waitFor([&] { return window.isKeyWindow() && !pictureOfScreen().isNull(); }));
        pressKey("Tab");
        ASSERT_TRUE(waitFor([&] { return email.hasFocus(); }));
        pressKey("m");
        ASSERT_TRUE(waitFor([&] { return email.text() == QStringLiteral("m"); })) << "keys come from the server";
        place = placeOnScreen(status);
        ASSERT_TRUE(waitFor([&] { return isOfOneColor(before = seenByAnother(place)); }));
        keepPicture("reporter");
        click(placeOnScreen(button).center());
    });
    VXExceptionReporter::reporter().reportException(NSException("Test", QStringLiteral("on a desktop")));
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_TRUE(server.requests().front().body.contains("&email=m&"));
    EXPECT_FALSE(isOfOneColor(meanwhile)) << "a text stands there";
    EXPECT_FALSE(window.isVisible());
}

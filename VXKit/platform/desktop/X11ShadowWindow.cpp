// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11ShadowWindow.h>

#include <VXKit/platform/desktop/X11Connection.h>

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <xcb/shape.h>

namespace {

constexpr std::uint8_t depthWithAlpha = 32;

/// The visual with eight bits each of alpha, red, green and blue, laid out as QImage has them; 0 where there is none.
xcb_visualid_t visualWithAlpha(const xcb_screen_t& screen) {
    for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth != depthWithAlpha) {
            continue;
        }
        for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0; xcb_visualtype_next(&visual)) {
            const xcb_visualtype_t& type = *visual.data;
            if (type._class == XCB_VISUAL_CLASS_TRUE_COLOR && type.red_mask == 0xff0000 &&
                type.green_mask == 0x00ff00 && type.blue_mask == 0x0000ff) {
                return type.visual_id;
            }
        }
    }
    return 0;
}

bool hasOwnByteOrder(xcb_connection_t* connection) {
    const auto own = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;
    return xcb_get_setup(connection)->image_byte_order == own;
}

/// Sends the picture to a pixmap, in as many requests as the server's longest one makes necessary.
void fill(const X11Connection& x11, xcb_pixmap_t pixmap, const QImage& picture) {
    xcb_connection_t* connection = x11.connection();
    const xcb_gcontext_t context = xcb_generate_id(connection);
    x11.ignoreErrors(xcb_create_gc_checked(connection, context, pixmap, 0, nullptr));
    const auto longest = static_cast<qsizetype>(xcb_get_maximum_request_length(connection)) * 4 -
                         static_cast<qsizetype>(sizeof(xcb_put_image_request_t)) - 4;
    const int linesAtOnce =
        static_cast<int>(std::clamp<qsizetype>(longest / picture.bytesPerLine(), 1, picture.height()));
    for (int y = 0; y < picture.height(); y += linesAtOnce) {
        const int lines = std::min(linesAtOnce, picture.height() - y);
        x11.ignoreErrors(xcb_put_image_checked(
            connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, static_cast<std::uint16_t>(picture.width()),
            static_cast<std::uint16_t>(lines), 0, static_cast<std::int16_t>(y), 0, depthWithAlpha,
            static_cast<std::uint32_t>(picture.bytesPerLine() * lines), picture.constScanLine(y)));
    }
    x11.ignoreErrors(xcb_free_gc_checked(connection, context));
}

/// Whether the server's 16-bit sizes can hold it.
bool fitsAWindow(QSize size) {
    constexpr int longest = std::numeric_limits<std::int16_t>::max();
    return size.width() > 0 && size.height() > 0 && size.width() <= longest && size.height() <= longest;
}

std::uint32_t word(int number) {
    return static_cast<std::uint32_t>(number);
}

} // namespace

std::unique_ptr<X11ShadowWindow> X11ShadowWindow::make() {
    const X11Connection* x11 = X11Connection::shared();
    const xcb_visualid_t visual = x11 ? visualWithAlpha(x11->screen()) : 0;
    if (visual == 0 || !hasOwnByteOrder(x11->connection())) {
        return nullptr;
    }
    xcb_connection_t* connection = x11->connection();
    const xcb_colormap_t colormap = xcb_generate_id(connection);
    x11->ignoreErrors(xcb_create_colormap_checked(connection, XCB_COLORMAP_ALLOC_NONE, colormap, x11->root(), visual));
    const xcb_window_t window = xcb_generate_id(connection);
    // A border and a colour map of its own must be named where the visual is not the root's.
    const std::uint32_t attributes =
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP;
    const std::array<std::uint32_t, 4> values{0, 0, 1, colormap};
    x11->ignoreErrors(xcb_create_window_checked(connection, depthWithAlpha, window, x11->root(), 0, 0, 1, 1, 0,
                                                XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, attributes, values.data()));
    x11->ignoreErrors(
        xcb_shape_rectangles_checked(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, 0, window, 0, 0, 0, nullptr));
    // Some compositing managers would draw a shadow of the shadow.
    x11->setProperty(window, "_COMPTON_SHADOW", XCB_ATOM_CARDINAL, {0});
    return std::unique_ptr<X11ShadowWindow>(new X11ShadowWindow(window, colormap));
}

X11ShadowWindow::X11ShadowWindow(xcb_window_t window, xcb_colormap_t colormap)
    : m_window(window), m_colormap(colormap) {}

X11ShadowWindow::~X11ShadowWindow() {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    x11->ignoreErrors(xcb_destroy_window_checked(x11->connection(), m_window));
    x11->ignoreErrors(xcb_free_colormap_checked(x11->connection(), m_colormap));
    x11->flush();
}

void X11ShadowWindow::setPicture(const QImage& picture, const QPoint& origin) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11 || !fitsAWindow(picture.size())) {
        hide();
        return;
    }
    xcb_connection_t* connection = x11->connection();
    m_size = picture.size();
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    x11->ignoreErrors(xcb_create_pixmap_checked(connection, depthWithAlpha, pixmap, m_window,
                                                static_cast<std::uint16_t>(m_size.width()),
                                                static_cast<std::uint16_t>(m_size.height())));
    fill(*x11, pixmap, picture);
    // The window keeps the pixmap as its background when its name is freed, and the server paints it.
    x11->ignoreErrors(xcb_change_window_attributes_checked(connection, m_window, XCB_CW_BACK_PIXMAP, &pixmap));
    x11->ignoreErrors(xcb_free_pixmap_checked(connection, pixmap));
    const std::array<std::uint32_t, 4> frame{word(origin.x()), word(origin.y()), word(m_size.width()),
                                             word(m_size.height())};
    x11->ignoreErrors(xcb_configure_window_checked(
        connection, m_window,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, frame.data()));
    x11->ignoreErrors(xcb_clear_area_checked(connection, 0, m_window, 0, 0, 0, 0));
    x11->flush();
}

void X11ShadowWindow::moveTo(const QPoint& origin) {
    if (const X11Connection* x11 = X11Connection::shared()) {
        const std::array<std::uint32_t, 2> place{word(origin.x()), word(origin.y())};
        x11->ignoreErrors(xcb_configure_window_checked(x11->connection(), m_window,
                                                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place.data()));
        x11->flush();
    }
}

void X11ShadowWindow::setOpacity(double opacity) {
    const X11Connection* x11 = X11Connection::shared();
    if (!x11) {
        return;
    }
    if (opacity >= 1) {
        x11->removeProperty(m_window, "_NET_WM_WINDOW_OPACITY");
    } else {
        const double share = std::max(opacity, 0.0) * std::numeric_limits<std::uint32_t>::max();
        x11->setProperty(m_window, "_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, {static_cast<std::uint32_t>(share)});
    }
    x11->flush();
}

void X11ShadowWindow::putBelow(xcb_window_t sibling) {
    if (const X11Connection* x11 = X11Connection::shared()) {
        const std::array<std::uint32_t, 2> order{sibling, XCB_STACK_MODE_BELOW};
        x11->ignoreErrors(xcb_configure_window_checked(
            x11->connection(), m_window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, order.data()));
        x11->flush();
    }
}

void X11ShadowWindow::show() {
    const X11Connection* x11 = X11Connection::shared();
    if (x11 && !m_isShown) {
        m_isShown = true;
        x11->ignoreErrors(xcb_map_window_checked(x11->connection(), m_window));
        x11->flush();
    }
}

void X11ShadowWindow::hide() {
    const X11Connection* x11 = X11Connection::shared();
    if (x11 && m_isShown) {
        m_isShown = false;
        x11->ignoreErrors(xcb_unmap_window_checked(x11->connection(), m_window));
        x11->flush();
    }
}

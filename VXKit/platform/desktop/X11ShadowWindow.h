// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QPoint>
#include <QSize>

#include <memory>

#include <xcb/xcb.h>

/// A window that shows nothing but a picture with translucency and takes part in nothing: no clicks, no keyboard, no
/// window manager.
///
/// It keeps its picture with the X server, so that this program neither holds it nor paints it again, and is no Qt
/// window, which would count among the application's windows. Private to platform/desktop: see WindowEffects.
class X11ShadowWindow {
public:
    /// A window that is not shown yet, or null where the server has no visual for translucency.
    [[nodiscard]] static std::unique_ptr<X11ShadowWindow> make();

    X11ShadowWindow(const X11ShadowWindow&) = delete;
    X11ShadowWindow& operator=(const X11ShadowWindow&) = delete;
    ~X11ShadowWindow();

    [[nodiscard]] xcb_window_t window() const { return m_window; }

    /// Shows `picture` (ARGB32_Premultiplied) from now on, with its top left corner at `origin`; in pixels, like all
    /// that follows.
    void setPicture(const QImage& picture, const QPoint& origin);

    void moveTo(const QPoint& origin);

    /// 0 to 1, on top of the picture's own alpha.
    void setOpacity(double opacity);

    /// Puts it right below `sibling`, a child of the root window.
    void putBelow(xcb_window_t sibling);

    void show();
    void hide();

private:
    X11ShadowWindow(xcb_window_t window, xcb_colormap_t colormap);

    xcb_window_t m_window;
    xcb_colormap_t m_colormap;
    QSize m_size;
    bool m_isShown = false;
};

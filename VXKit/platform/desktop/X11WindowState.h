// SPDX-License-Identifier: MIT
// What the parts of X11WindowEffects share. For them alone.
#pragma once

#include <VXKit/platform/desktop/WindowShadow.h>
#include <VXKit/platform/desktop/X11ShadowWindow.h>
#include <VXKit/platform/desktop/X11WindowEffects.h>

#include <QImage>
#include <QPoint>
#include <QPointer>
#include <QRegion>
#include <QSize>
#include <QWidget>
#include <QWindow>

#include <memory>
#include <optional>

#include <xcb/xcb.h>

namespace X11WindowState {

inline constexpr const char* blurProperty = "_KDE_NET_WM_BLUR_BEHIND_REGION";
inline constexpr const char* desktopProperty = "_NET_WM_DESKTOP";

/// Whether the window manager is not told of the window, as Qt's platform decides it.
[[nodiscard]] bool bypassesWindowManager(const QWidget& widget);

/// The window of the server's that stands for `widget`; XCB_NONE where there is none yet.
[[nodiscard]] xcb_window_t nativeOf(const QWidget& widget);

/// The pixels that `points` take.
[[nodiscard]] int scaled(int points, double pixelRatio);

} // namespace X11WindowState

/// What was asked for one window, and what stands for it at the server.
struct X11WindowEffects::Window {
    explicit Window(QWidget& itsWidget) : widget(itsWidget) {}

    /// What the picture of the shadow was drawn for.
    struct Picture {
        QSize body;
        double pixelRatio = 0;
        WindowShadow shadow;
        qint64 shape = 0;

        friend bool operator==(const Picture&, const Picture&) = default;
    };

    /// Whether the window is on the screen, though perhaps covered.
    [[nodiscard]] bool isSeen() const { return handle && handle->isVisible() && handle->isExposed(); }

    /// Where the picture belongs, in pixels of the root window.
    [[nodiscard]] QPoint shadowOrigin() const;

    QWidget& widget;
    QPointer<QWindow> handle;

    std::optional<WindowShadow> shadow;
    QImage shadowShape;
    std::unique_ptr<X11ShadowWindow> shadowWindow;
    Picture picture;
    bool isShadowOutdated = false;

    double blurRadius = 0;
    QRegion blurRegion;
    bool isOnAllDesktops = false;
    bool isOwedKeyboard = false; ///< asked for before the window was on the screen
    std::optional<QRegion> inputRegion;
};

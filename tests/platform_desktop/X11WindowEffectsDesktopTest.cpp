// SPDX-License-Identifier: MIT
// What the window effects do on a real X server, beside another program. The tests that need a compositing manager
// start it themselves, so that they can end it.
#include "X11DesktopTestSupport.h"

#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/desktop/X11Geometry.h>

#include <QBackingStore>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr std::uint32_t allDesktops = 0xffffffff;

/// The children of the root window, from the bottom up.
std::vector<xcb_window_t> stack() {
    const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x(), xcb_query_tree(x(), root()), nullptr));
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

xcb_window_t frameOf(xcb_window_t window) {
    for (;;) {
        const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(x(), xcb_query_tree(x(), window), nullptr));
        if (!tree || tree->parent == root()) {
            return tree ? window : xcb_window_t{XCB_NONE};
        }
        window = tree->parent;
    }
}

std::ptrdiff_t placeInStack(const QWidget& widget) {
    const std::vector<xcb_window_t> windows = stack();
    return std::find(windows.begin(), windows.end(), frameOf(nativeOf(widget))) - windows.begin();
}

struct Seen {
    xcb_window_t window = XCB_NONE;
    QRect native;
};

/// A window with a picture of its own that lies right below `widget`: its shadow.
std::optional<Seen> shadowOf(const QWidget& widget) {
    const std::vector<xcb_window_t> windows = stack();
    const auto above = std::find(windows.begin(), windows.end(), frameOf(nativeOf(widget)));
    if (above == windows.begin() || above == windows.end()) {
        return std::nullopt;
    }
    const xcb_window_t window = *std::prev(above);
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(x(), xcb_get_window_attributes(x(), window), nullptr));
    const Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(x(), xcb_get_geometry(x(), window), nullptr));
    const xcb_setup_t* setup = xcb_get_setup(x());
    const bool isOwn = (window & ~setup->resource_id_mask) == setup->resource_id_base;
    if (!isOwn || !attributes || !geometry || geometry->depth != 32 || !attributes->override_redirect ||
        attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
        return std::nullopt;
    }
    return Seen{window, QRect(geometry->x, geometry->y, geometry->width, geometry->height)};
}

double pixelRatio() {
    return qApp->devicePixelRatio();
}

QRect scaled(const QRect& rect) {
    const double ratio = pixelRatio();
    return QRectF(rect.x() * ratio, rect.y() * ratio, rect.width() * ratio, rect.height() * ratio).toRect();
}

/// Runs xdotool to its end, the event loop meanwhile.
void xdotool(const QStringList& arguments) {
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    ASSERT_TRUE(waitFor([&] { return process.state() == QProcess::NotRunning; }));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
}

/// Clicks with `button` on a place of the screen, in points.
void click(int pointX, int pointY, int button = 1) {
    const QPoint place = nativeFromPoints(QPointF(pointX, pointY), x11Screens());
    xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
             QStringLiteral("click"), QString::number(button)});
}

/// A compositing manager of the test's own.
class CompositingManager {
public:
    CompositingManager() {
        m_process.start(QStringLiteral("picom"), {QStringLiteral("--config"), QStringLiteral("/dev/null"),
                                                  QStringLiteral("--backend"), QStringLiteral("xrender")});
        EXPECT_TRUE(waitFor([] { return isThere(); }));
    }
    ~CompositingManager() { end(); }

    void end() {
        m_process.kill();
        EXPECT_TRUE(waitFor([this] { return m_process.state() == QProcess::NotRunning; }));
        EXPECT_TRUE(waitFor([] { return !isThere(); }));
    }

    static bool isThere() { return WindowEffects::sharedEffects().isAvailable(WindowEffects::Effect::Translucency); }

private:
    QProcess m_process;
};

constexpr WindowShadow usualShadow{.standardDeviation = 24, .density = 0.75, .offsetX = 0, .offsetY = 25};

} // namespace

TEST(X11WindowEffects, TellsWhatTheDesktopOffers) {
    using Effect = WindowEffects::Effect;
    const WindowEffects& effects = WindowEffects::sharedEffects();
    EXPECT_FALSE(effects.isAvailable(Effect::Shadow));
    EXPECT_FALSE(effects.isAvailable(Effect::Translucency));
    EXPECT_FALSE(effects.isAvailable(Effect::Blur));
    EXPECT_TRUE(effects.isAvailable(Effect::AllDesktops));
    EXPECT_TRUE(effects.isAvailable(Effect::InputRegion));
    EXPECT_TRUE(effects.isAvailable(Effect::PressesElsewhere));
    const CompositingManager manager;
    EXPECT_TRUE(effects.isAvailable(Effect::Shadow));
}

TEST(X11WindowEffects, ShowsAShadowOnlyWhileThereIsACompositingManager) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    QSignalSpy changed(&effects, &WindowEffects::compositingChanged);
    QWidget window;
    effects.setShadow(window, usualShadow);
    show(window, QRect(200, 150, 180, 120), bypassing);
    EXPECT_FALSE(shadowOf(window));
    for (int time = 0; time < 2; ++time) {
        CompositingManager manager;
        EXPECT_TRUE(waitFor([&] { return shadowOf(window).has_value(); }));
        manager.end();
        EXPECT_TRUE(waitFor([&] { return !shadowOf(window); }));
    }
    EXPECT_EQ(changed.size(), 4);
}

TEST(X11WindowEffects, LetsTheShadowFollowItsWindow) {
    const CompositingManager manager;
    WindowEffects& effects = WindowEffects::sharedEffects();
    for (const Qt::WindowFlags flags : {bypassing, Qt::WindowFlags(Qt::Dialog | Qt::FramelessWindowHint)}) {
        auto window = std::make_unique<QWidget>();
        effects.setShadow(*window, usualShadow);
        show(*window, QRect(200, 150, 180, 120), flags);
        const auto liesAround = [&](const QRect& frame) {
            const auto shadow = shadowOf(*window);
            return shadow && shadow->native == scaled(frame.translated(0, 25).adjusted(-72, -72, 72, 72));
        };
        EXPECT_TRUE(waitFor([&] { return liesAround(QRect(200, 150, 180, 120)); }));
        window->move(210, 170);
        EXPECT_TRUE(waitFor([&] { return liesAround(QRect(210, 170, 180, 120)); }));
        window->resize(150, 100);
        EXPECT_TRUE(waitFor([&] { return liesAround(QRect(210, 170, 150, 100)); }));
        effects.setShadow(*window, WindowShadow{.standardDeviation = 8, .density = 0.75, .offsetX = 3});
        EXPECT_TRUE(waitFor([&] {
            const auto shadow = shadowOf(*window);
            return shadow && shadow->native == scaled(QRect(210 + 3 - 24, 170 - 24, 150 + 48, 100 + 48));
        }));
        window->setWindowOpacity(0.5);
        const auto opacity = property(shadowOf(*window)->window, "_NET_WM_WINDOW_OPACITY");
        ASSERT_TRUE(opacity);
        EXPECT_NEAR(opacity->front() / static_cast<double>(allDesktops), 0.5, 0.01);
        const xcb_window_t shadow = shadowOf(*window)->window;
        window->hide();
        EXPECT_TRUE(waitFor([&] {
            const std::vector<xcb_window_t> windows = stack();
            return std::find(windows.begin(), windows.end(), shadow) == windows.end();
        }));
        window->show();
        EXPECT_TRUE(waitFor([&] { return shadowOf(*window).has_value(); }));
        const xcb_window_t last = shadowOf(*window)->window;
        window.reset();
        const std::vector<xcb_window_t> windows = stack();
        EXPECT_EQ(std::find(windows.begin(), windows.end(), last), windows.end());
    }
}

TEST(X11WindowEffects, KeepsTheShadowRightBelowItsWindowWhenOthersRise) {
    const CompositingManager manager;
    WindowEffects& effects = WindowEffects::sharedEffects();
    QWidget lower;
    QWidget upper;
    effects.setShadow(lower, usualShadow);
    effects.setShadow(upper, usualShadow);
    show(lower, QRect(200, 150, 180, 120), Qt::Window);
    show(upper, QRect(230, 180, 180, 120), Qt::Window | Qt::WindowStaysOnTopHint);
    ASSERT_TRUE(waitFor([&] { return shadowOf(lower) && shadowOf(upper); }));
    const Client client(QRect(300, 200, 100, 80));
    EXPECT_TRUE(waitFor([&] { return shadowOf(lower) && shadowOf(upper); }));
    lower.raise();
    lower.activateWindow();
    EXPECT_TRUE(waitFor([&] { return lower.isActiveWindow() && shadowOf(lower) && shadowOf(upper); }));
    EXPECT_LT(placeInStack(lower), placeInStack(upper));
}

TEST(X11WindowEffects, LetsClicksThroughTheShadowAndGivesItNoKeyboard) {
    const CompositingManager manager;
    Client client(QRect(100, 100, 400, 300));
    QWidget window;
    WindowEffects::sharedEffects().setShadow(window, usualShadow);
    show(window, QRect(200, 150, 100, 100), bypassing);
    ASSERT_TRUE(waitFor([&] { return shadowOf(window).has_value(); }));
    click(320, 200);
    EXPECT_TRUE(waitFor([&] { return client.hasTold("pressed"); }));
    EXPECT_TRUE(client.isActive());
}

TEST(X11WindowEffects, DrawsTheShadowBesideTheWindowAndNotUnderIt) {
    const CompositingManager manager;
    const Client client(QRect(0, 0, 600, 400));
    QWidget window;
    window.setAttribute(Qt::WA_TranslucentBackground);
    WindowEffects::sharedEffects().setShadow(window, usualShadow);
    show(window, QRect(200, 100, 200, 100), bypassing);
    const auto shownAt = [](int pointX, int pointY) {
        const QImage image = QGuiApplication::primaryScreen()->grabWindow(0, pointX, pointY, 1, 1).toImage();
        return qGray(image.pixel(0, 0));
    };
    // The other program's window is nearly white, and so is what shines through this one.
    EXPECT_TRUE(waitFor([&] { return shownAt(30, 350) > 230; }));
    EXPECT_TRUE(waitFor([&] { return shownAt(300, 150) > 230; }));
    EXPECT_TRUE(waitFor([&] { return shownAt(300, 203) < 120; }));
}

TEST(X11WindowEffects, AsksForBlurWhereTheDesktopAnnouncesIt) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    const std::string name = "_KDE_NET_WM_BLUR_BEHIND_REGION";
    QWidget window;
    effects.setBlur(window, 3, QRegion(5, 6, 70, 80).united(QRect(10, 86, 60, 4)));
    show(window, QRect(200, 150, 180, 120), bypassing);
    EXPECT_FALSE(property(nativeOf(window), name));
    const CompositingManager manager;
    EXPECT_FALSE(effects.isAvailable(WindowEffects::Effect::Blur));
    const std::uint32_t announcement = 0;
    xcb_change_property(x(), XCB_PROP_MODE_REPLACE, root(), atom(name), atom(name), 32, 1, &announcement);
    xcb_flush(x());
    EXPECT_TRUE(waitFor([&] { return property(nativeOf(window), name).has_value(); }));
    std::vector<std::uint32_t> expected{5, 6, 70, 80, 10, 86, 60, 4};
    for (std::uint32_t& number : expected) {
        number = static_cast<std::uint32_t>(std::lround(number * pixelRatio()));
    }
    EXPECT_EQ(property(nativeOf(window), name), expected);
    effects.setBlur(window, 0, QRegion());
    EXPECT_FALSE(property(nativeOf(window), name));
    effects.setBlur(window, 3, QRegion());
    EXPECT_EQ(property(nativeOf(window), name), std::vector<std::uint32_t>());
    xcb_delete_property(x(), root(), atom(name));
    xcb_flush(x());
    EXPECT_TRUE(waitFor([&] { return !property(nativeOf(window), name); }));
}

TEST(X11WindowEffects, KeepsAWindowOnAllDesktopsAfterHidingAndShowing) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    QWidget window;
    effects.setOnAllDesktops(window, true);
    show(window, QRect(200, 150, 180, 120), Qt::Dialog | Qt::FramelessWindowHint);
    const auto isOn = [&](std::uint32_t desktop) {
        return waitFor([&, desktop] {
            return property(nativeOf(window), "_NET_WM_DESKTOP") == std::vector<std::uint32_t>{desktop};
        });
    };
    EXPECT_TRUE(isOn(allDesktops));
    window.hide();
    ASSERT_TRUE(waitFor([&] { return !property(nativeOf(window), "_NET_WM_STATE") || !window.isVisible(); }));
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_TRUE(isOn(allDesktops));
    effects.setOnAllDesktops(window, false);
    EXPECT_TRUE(isOn(property(root(), "_NET_CURRENT_DESKTOP")->front()));
    effects.setOnAllDesktops(window, true);
    EXPECT_TRUE(isOn(allDesktops));
}

TEST(X11WindowEffects, LetsClicksThroughOutsideTheInputRegion) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    Client client(QRect(100, 100, 400, 300));
    QWidget window;
    effects.setInputRegion(window, QRegion(0, 0, 50, 50));
    show(window, QRect(200, 150, 100, 100), bypassing);
    click(210, 160);
    click(280, 230);
    EXPECT_TRUE(waitFor([&] { return client.hasTold("pressed"); }));
    effects.setInputRegion(window, std::nullopt);
    Client second(QRect(120, 120, 300, 200));
    window.raise();
    click(280, 230);
    click(140, 200);
    EXPECT_TRUE(waitFor([&] { return second.hasTold("pressed"); }));
}

TEST(X11WindowEffects, OrdersWindowsAmongEachOther) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    using Place = WindowEffects::Place;
    for (const bool isFirstManaged : {false, true}) {
        for (const bool isSecondManaged : {false, true}) {
            QWidget first;
            QWidget second;
            show(first, QRect(200, 150, 100, 100), isFirstManaged ? Qt::WindowFlags(Qt::Window) : bypassing);
            show(second, QRect(220, 170, 100, 100), isSecondManaged ? Qt::WindowFlags(Qt::Window) : bypassing);
            effects.order(first, Place::Above, &second);
            EXPECT_TRUE(waitFor([&] { return placeInStack(first) > placeInStack(second); }));
            effects.order(first, Place::Below, &second);
            EXPECT_TRUE(waitFor([&] { return placeInStack(first) < placeInStack(second); }));
            effects.order(first, Place::Above, &second);
            EXPECT_TRUE(waitFor([&] { return placeInStack(first) > placeInStack(second); }));
        }
    }
}

TEST(X11WindowEffects, TellsTheFrameThatTheServerHas) {
    const WindowEffects& effects = WindowEffects::sharedEffects();
    QWidget window;
    EXPECT_EQ(effects.serverFrame(window), std::nullopt);
    show(window, QRect(200, 150, 181, 121), bypassing);
    EXPECT_EQ(effects.serverFrame(window), QRect(200, 150, 181, 121));
    const std::array<std::uint32_t, 1> moved{static_cast<std::uint32_t>(std::lround(240 * pixelRatio()))};
    xcb_configure_window(x(), nativeOf(window), XCB_CONFIG_WINDOW_X, moved.data());
    EXPECT_EQ(effects.serverFrame(window), QRect(240, 150, 181, 121));
}

TEST(X11WindowEffects, TakesTheKeyboardWhateverTheOtherProgramsDidMeanwhile) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    const Client client(QRect(100, 100, 100, 80));
    for (const Qt::WindowFlags flags : {bypassing, Qt::WindowFlags(Qt::Window)}) {
        QWidget window;
        window.setAttribute(Qt::WA_ShowWithoutActivating);
        effects.takeKeyboard(window);
        show(window, QRect(300, 100, 100, 80), flags);
        for (int time = 0; time < 10; ++time) {
            EXPECT_TRUE(waitFor([&] { return window.isActiveWindow() && !client.isActive(); }));
            SetFrontProcess({0, client.process()});
            ASSERT_TRUE(waitFor([&] { return !window.isActiveWindow() && client.isActive(); }));
            effects.takeKeyboard(window);
        }
    }
}

TEST(X11WindowEffects, TellsPressesElsewhere) {
    WindowEffects& effects = WindowEffects::sharedEffects();
    QSignalSpy elsewhere(&effects, &WindowEffects::pressedElsewhere);
    Client client(QRect(100, 100, 100, 100));
    QWidget bypassingWindow;
    QWidget managedWindow;
    show(bypassingWindow, QRect(300, 100, 100, 100), bypassing);
    show(managedWindow, QRect(300, 300, 100, 100), Qt::Window);
    ASSERT_TRUE(waitFor([&] { return managedWindow.isActiveWindow(); }));
    click(150, 150);
    ASSERT_TRUE(waitFor([&] { return client.hasTold("pressed"); }));
    EXPECT_EQ(elsewhere.size(), 0);

    effects.setWatchesPresses(bypassingWindow, true);
    click(150, 150);
    EXPECT_TRUE(waitFor([&] { return elsewhere.size() == 1; })) << "on another program's window";
    click(550, 350);
    EXPECT_TRUE(waitFor([&] { return elsewhere.size() == 2; })) << "on the bare desktop";

    // What comes after them shows that these told nothing.
    click(350, 150);
    click(350, 350);
    click(350, 290);
    click(550, 350, 4);
    click(550, 350, 3);
    EXPECT_TRUE(waitFor([&] { return elsewhere.size() >= 3; }));
    EXPECT_EQ(elsewhere.size(), 3);
    effects.setWatchesPresses(bypassingWindow, false);
}

TEST(X11WindowEffects, InvertsTranslucentWindows) {
    const CompositingManager manager;
    class Translucent : public QWidget {
        void paintEvent(QPaintEvent* /*event*/) override {
            QPainter painter(this);
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.fillRect(rect(), QColor::fromRgba(qUnpremultiply(0x80402010)));
        }
    };
    Translucent window;
    window.setAttribute(Qt::WA_TranslucentBackground);
    WindowEffects::sharedEffects().setColorInversion(window, true);
    show(window, QRect(200, 150, 40, 30), bypassing);
    const auto* image = static_cast<QImage*>(window.backingStore()->paintDevice());
    EXPECT_TRUE(waitFor([&] { return reinterpret_cast<const QRgb*>(image->constScanLine(5))[5] == 0x80406070; }));
}

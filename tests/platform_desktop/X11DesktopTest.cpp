// SPDX-License-Identifier: MIT
// What the workspace and the window effects do on a real X server, beside another program. Runs in a session without a
// compositing manager; the tests that need one start it themselves, so that they can end it. And without a tray, whose
// window would come in the midst of a test and change who is active.
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/desktop/WindowEffects.h>
#include <VXKit/platform/desktop/X11Geometry.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QApplication>
#include <QBackingStore>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

constexpr int patience = 20000; ///< milliseconds
constexpr std::uint32_t allDesktops = 0xffffffff;

/// The application object, one for all tests of the process.
class Application : public testing::Environment {
public:
    void SetUp() override { m_application.emplace(m_argc, m_argv); }
    void TearDown() override { m_application.reset(); }

private:
    int m_argc = 1;
    std::array<char, 8> m_name{"desktop"};
    std::array<char*, 2> m_arguments{m_name.data(), nullptr};
    char** m_argv = m_arguments.data();
    std::optional<QApplication> m_application;
};
[[maybe_unused]] const testing::Environment* const theApplication =
    testing::AddGlobalTestEnvironment(std::make_unique<Application>().release());

bool waitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, patience);
}

struct ReplyDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Reply = std::unique_ptr<T, ReplyDeleter>;

xcb_connection_t* x() {
    return qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

xcb_window_t root() {
    return xcb_setup_roots_iterator(xcb_get_setup(x())).data->root;
}

xcb_atom_t atom(const std::string& name) {
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        x(), xcb_intern_atom(x(), 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
    return reply->atom;
}

std::optional<std::vector<std::uint32_t>> property(xcb_window_t window, const std::string& name) {
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(x(), xcb_get_property(x(), 0, window, atom(name), XCB_ATOM_ANY, 0, 1000), nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) {
        return std::nullopt;
    }
    const auto* words = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return std::vector<std::uint32_t>(words, words + reply->value_len);
}

xcb_window_t nativeOf(const QWidget& widget) {
    return static_cast<xcb_window_t>(widget.internalWinId());
}

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

std::string nameOf(const std::optional<NSDictionary>& application) {
    const auto* name = application ? application->objectOfType<std::string>(NSApplicationNameKey) : nullptr;
    return name ? *name : std::string();
}

/// The entry of a process among the launched applications.
std::optional<NSDictionary> launched(std::uint32_t process) {
    for (const NSDictionary& application : NSWorkspace::sharedWorkspace().launchedApplications()) {
        if (application.objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue() == process) {
            return application;
        }
    }
    return std::nullopt;
}

/// Another program with a window at the given place.
class Client {
public:
    explicit Client(const QRect& frame, const QString& program = QStringLiteral(X11_CLIENT)) {
        m_process.start(program, {QString::number(frame.x()), QString::number(frame.y()),
                                  QString::number(frame.width()), QString::number(frame.height())});
        // The window manager writes its lists of windows after it gave a new one the keyboard.
        EXPECT_TRUE(waitFor([&] { return isActive() && launched(process()) && isStacked(); }));
    }
    ~Client() {
        m_process.closeWriteChannel();
        if (!waitFor([&] { return m_process.state() == QProcess::NotRunning; })) {
            m_process.kill();
        }
    }

    [[nodiscard]] std::uint32_t process() const { return static_cast<std::uint32_t>(m_process.processId()); }

    [[nodiscard]] bool isActive() const {
        const auto active = NSWorkspace::sharedWorkspace().activeApplication();
        const NSPropertyList* low = active ? active->objectForKey(NSApplicationProcessSerialNumberLowKey) : nullptr;
        return low && low->integerValue() == m_process.processId();
    }

    [[nodiscard]] static bool isStacked() {
        const auto inOrderOfAge = property(root(), "_NET_CLIENT_LIST");
        const auto inOrderOfStack = property(root(), "_NET_CLIENT_LIST_STACKING");
        return inOrderOfAge && inOrderOfStack && inOrderOfAge->size() == inOrderOfStack->size();
    }

    bool hasTold(const QByteArray& line) {
        m_told += m_process.readAllStandardOutput();
        return m_told.contains(line + '\n');
    }

private:
    QProcess m_process;
    QByteArray m_told;
};

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

constexpr Qt::WindowFlags bypassing = Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint;
constexpr WindowShadow usualShadow{.standardDeviation = 24, .density = 0.75, .offsetX = 0, .offsetY = 25};

void show(QWidget& window, const QRect& frame, Qt::WindowFlags flags) {
    window.setWindowFlags(flags);
    window.setGeometry(frame);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
}

/// How many processes of the other program have a window.
std::ptrdiff_t numberOfClients() {
    const std::vector<NSDictionary> applications = NSWorkspace::sharedWorkspace().launchedApplications();
    return std::count_if(applications.begin(), applications.end(), [](const NSDictionary& application) {
        const auto* path = application.objectOfType<std::string>(NSApplicationPathKey);
        return path && *path == X11_CLIENT;
    });
}

} // namespace

TEST(X11Workspace, TellsTheActiveApplicationAndTheOthers) {
    const NSWorkspace& workspace = NSWorkspace::sharedWorkspace();
    ASSERT_TRUE(workspace.knowsApplications());
    const Client first(QRect(100, 100, 100, 80));
    const Client second(QRect(250, 100, 100, 80));
    const auto active = workspace.activeApplication();
    ASSERT_TRUE(active);
    EXPECT_EQ(*active->objectOfType<std::string>(NSApplicationPathKey), X11_CLIENT);
    EXPECT_EQ(nameOf(active), QFileInfo(QStringLiteral(X11_CLIENT)).fileName().toStdString());
    EXPECT_EQ(active->objectForKey(NSApplicationProcessSerialNumberHighKey)->integerValue(), 0);
    EXPECT_EQ(active->objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue(), second.process());

    std::vector<std::int64_t> processes;
    for (const NSDictionary& application : workspace.launchedApplications()) {
        processes.push_back(application.objectForKey(NSApplicationProcessSerialNumberLowKey)->integerValue());
    }
    const auto firstPlace = std::find(processes.begin(), processes.end(), first.process());
    const auto secondPlace = std::find(processes.begin(), processes.end(), second.process());
    ASSERT_NE(secondPlace, processes.end());
    EXPECT_LT(firstPlace, secondPlace);
}

TEST(X11Workspace, BringsAProcessToTheFront) {
    const Client first(QRect(100, 100, 100, 80));
    const Client second(QRect(250, 100, 100, 80));
    ASSERT_TRUE(second.isActive());
    SetFrontProcess({0, first.process()});
    EXPECT_TRUE(waitFor([&] { return first.isActive(); }));
    SetFrontProcess({0, second.process()});
    EXPECT_TRUE(waitFor([&] { return second.isActive(); }));
}

TEST(X11Workspace, BringsTheRunningProgramForwardInsteadOfStartingIt) {
    const Client client(QRect(100, 100, 100, 80));
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    WindowEffects::sharedEffects().takeKeyboard(own);
    ASSERT_TRUE(waitFor([&] { return own.isActiveWindow() && !client.isActive(); }));
    EXPECT_TRUE(NSWorkspace::sharedWorkspace().launchApplication(QStringLiteral(X11_CLIENT)));
    EXPECT_TRUE(waitFor([&] { return client.isActive(); }));
    EXPECT_EQ(numberOfClients(), 1);
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QString()));
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().launchApplication(QStringLiteral("/nowhere/program")));
}

TEST(X11Workspace, IsItselfActiveInAWindowThatBypassesTheWindowManager) {
    const Client client(QRect(100, 100, 100, 80));
    ASSERT_TRUE(client.isActive());
    QWidget own;
    show(own, QRect(300, 300, 100, 80), bypassing);
    WindowEffects::sharedEffects().takeKeyboard(own);
    const std::string ownName = NSProcessInfo::processInfo().processName().toStdString();
    EXPECT_TRUE(waitFor([&] { return nameOf(NSWorkspace::sharedWorkspace().activeApplication()) == ownName; }));
    SetFrontProcess({0, client.process()});
    EXPECT_TRUE(waitFor([&] { return client.isActive(); }));
}

TEST(X11Workspace, DoesNotTakeAProcessOfAnotherMachineForOneOfThisOne) {
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    const auto ownProcess = static_cast<std::uint32_t>(getpid());
    ASSERT_TRUE(waitFor([&] { return launched(ownProcess).has_value(); }));
    const std::string elsewhere = "elsewhere.example.org";
    xcb_change_property(x(), XCB_PROP_MODE_REPLACE, nativeOf(own), XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(elsewhere.size()), elsewhere.c_str());
    EXPECT_FALSE(launched(ownProcess));
    xcb_delete_property(x(), nativeOf(own), XCB_ATOM_WM_CLIENT_MACHINE);
    EXPECT_TRUE(launched(ownProcess));
}

TEST(X11Workspace, LeavesOutAProcessThatIsGone) {
    QProcess gone;
    gone.start(QStringLiteral("true"), QStringList());
    ASSERT_TRUE(gone.waitForStarted());
    const auto process = static_cast<std::uint32_t>(gone.processId());
    ASSERT_TRUE(gone.waitForFinished());
    QWidget own;
    show(own, QRect(300, 300, 100, 80), Qt::Window);
    ASSERT_TRUE(waitFor([&] { return launched(static_cast<std::uint32_t>(getpid())).has_value(); }));
    xcb_change_property(x(), XCB_PROP_MODE_REPLACE, nativeOf(own), atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                        &process);
    EXPECT_FALSE(launched(process));
    EXPECT_FALSE(launched(static_cast<std::uint32_t>(getpid())));
}

TEST(X11Workspace, TellsThePathOfAProgramWhoseFileIsGone) {
    const QTemporaryDir folder;
    const QString program = folder.filePath(QStringLiteral("program"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(X11_CLIENT), program));
    const Client client(QRect(100, 100, 100, 80), program);
    ASSERT_TRUE(QFile::remove(program));
    const auto application = launched(client.process());
    ASSERT_TRUE(application);
    EXPECT_EQ(*application->objectOfType<std::string>(NSApplicationPathKey), program.toStdString());
    EXPECT_EQ(nameOf(application), "program");
}

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

// SPDX-License-Identifier: MIT
// The example host on a real X server, used as a person would: its symbol clicked, its window looked at, the keyboard
// followed. The test itself is the other program on the desktop. Runs in a desktop session without a tray, and starts
// the trays and panels that it needs.
#include "../examples/SnippetsHome.h"
#include "Desktop.h"

#include <QApplication>
#include <QClipboard>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <xcb/xcb.h>

#include <csignal>

namespace {

constexpr QSize windowSize(720, 500);
constexpr int itemWidth = 30;
constexpr int sheetWidth = 422;
constexpr int arrowHeight = 14;
constexpr QRgb bodyColor = 0xff0d0d0d;

template <class Reply>
using ReplyOf = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply>
ReplyOf<Reply> owned(Reply* reply) {
    return {reply, &std::free};
}

struct NativeWindow {
    xcb_window_t id = XCB_NONE;
    QRect frame; // in pixels of the root window

    friend bool operator==(const NativeWindow&, const NativeWindow&) = default;
};

/// The windows that are on the screen of the process `pid`, the docked ones among them.
class NativeWindows {
public:
    explicit NativeWindows(qint64 pid) : m_pid(pid) {
        m_connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const char name[] = "_NET_WM_PID";
        m_pidAtom =
            owned(xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, sizeof name - 1, name), nullptr))
                ->atom;
        collect(m_root);
    }

    [[nodiscard]] std::optional<NativeWindow> ofSize(const QSize& least, const QSize& largest) const {
        const auto found = std::find_if(m_found.begin(), m_found.end(), [&](const NativeWindow& window) {
            const QSize size = window.frame.size();
            return size.boundedTo(largest) == size && size.expandedTo(least) == size;
        });
        return found == m_found.end() ? std::nullopt : std::optional(*found);
    }

private:
    void collect(xcb_window_t window) {
        const auto tree = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree) {
            return;
        }
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
            look(children[index]);
            collect(children[index]);
        }
    }

    void look(xcb_window_t window) {
        const auto property = owned(xcb_get_property_reply(
            m_connection, xcb_get_property(m_connection, 0, window, m_pidAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
        if (!property || xcb_get_property_value_length(property.get()) != 4 ||
            *static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())) != m_pid) {
            return;
        }
        const auto attributes = owned(
            xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        const auto geometry =
            owned(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        const auto place = owned(xcb_translate_coordinates_reply(
            m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
        if (attributes && geometry && place && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
            m_found.push_back({window, QRect(place->dst_x, place->dst_y, geometry->width, geometry->height)});
        }
    }

    qint64 m_pid;
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    xcb_atom_t m_pidAtom = XCB_NONE;
    std::vector<NativeWindow> m_found;
};

/// Another program: a tray or a panel, ended with this object.
class Program {
public:
    Program(const QString& program, const QStringList& arguments) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(program, arguments);
        EXPECT_TRUE(m_process.waitForStarted(waitingTime)) << program.toStdString();
    }
    ~Program() {
        m_process.kill();
        m_process.waitForFinished(waitingTime);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] bool tells(const QByteArray& line) {
        return waitFor([&] {
            m_told += m_process.readAllStandardOutput();
            return m_told.contains(line);
        });
    }
    [[nodiscard]] const QProcess& process() const { return m_process; }

private:
    QProcess m_process;
    QByteArray m_told;
};

bool isTrayThere() {
    xcb_connection_t* connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const char selection[] = "_NET_SYSTEM_TRAY_S0";
    const auto atom = owned(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof selection - 1, selection), nullptr));
    const auto owner =
        owned(xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

/// A tray along the top edge, `height` pixels high and with room for the window's arrow beside it.
std::unique_ptr<Program> startTray(const char* align, int height = 24) {
    const QString options = QStringLiteral("--edge top --align %1 --margin 60 --widthtype request --height %2");
    auto tray = std::make_unique<Program>(
        QStringLiteral("trayer"),
        options.arg(QString::fromLatin1(align), QString::number(height)).split(QLatin1Char(' ')));
    EXPECT_TRUE(waitFor(isTrayThere));
    return tray;
}

class MainWindowOnDesktop : public testing::Test {
protected:
    /// Another application in front, with the keyboard.
    void SetUp() override {
        other.setWindowTitle(QStringLiteral("Other"));
        auto* layout = new QVBoxLayout(&other);
        layout->addWidget(&otherField);
        other.setGeometry(60, 560, 300, 160);
        other.show();
        other.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other, waitingTime));
        otherField.setFocus();
        ASSERT_TRUE(home.isValid());
        QFile note(home.filePath(QStringLiteral("Note.txt")));
        ASSERT_TRUE(note.open(QIODevice::WriteOnly) && note.write("A note.\n") > 0);
    }

    /// Starts the host, with its window closed, and waits for its item to appear.
    void startHost(const QProcessEnvironment& more = {}) {
        startHostWithoutLooking(more);
        ASSERT_TRUE(waitFor([&] { return item().has_value(); })) << "there is no status item";
    }

    void startHostWithoutLooking(const QProcessEnvironment& more = {}) {
        QProcessEnvironment environment = home.environment();
        environment.insert(more);
        host.setProcessEnvironment(environment);
        host.setProcessChannelMode(QProcess::ForwardedChannels);
        host.start(QStringLiteral(SNIPPETS_PROGRAM),
                   {QStringLiteral("--background"), home.filePath(QStringLiteral("Note.txt"))});
        ASSERT_TRUE(host.waitForStarted(waitingTime));
    }

    ~MainWindowOnDesktop() override {
        if (host.state() != QProcess::NotRunning) {
            host.terminate();
            EXPECT_TRUE(host.waitForFinished(waitingTime));
            EXPECT_EQ(host.exitCode(), 0);
        }
    }

    /// The host's windows on the screen, as the X server has them at this moment.
    [[nodiscard]] std::optional<NativeWindow> item() const {
        const QSize size = QSize(itemWidth, 16) * scale;
        return NativeWindows(host.processId()).ofSize(size, QSize(itemWidth + 8, 40) * scale);
    }
    [[nodiscard]] std::optional<NativeWindow> mainWindow() const {
        return NativeWindows(host.processId()).ofSize(windowSize * scale, windowSize * scale);
    }

    /// The question that the host asks.
    [[nodiscard]] std::optional<NativeWindow> sheet() const {
        return NativeWindows(host.processId()).ofSize(QSize(sheetWidth, 100) * scale, QSize(sheetWidth, 300) * scale);
    }

    /// Once it stands still: a tray moves its items about while it takes one in.
    void clickItem() const {
        std::optional<NativeWindow> before;
        ASSERT_TRUE(waitFor([&] {
            QTest::qWait(100);
            const std::optional<NativeWindow> now = item();
            return now && std::exchange(before, now) == now;
        }));
        click(before->frame.center());
    }

    void open() {
        clickItem();
        ASSERT_TRUE(waitFor([&] { return mainWindow().has_value(); })) << "a click does not open the window";
        ASSERT_TRUE(waitFor([&] { return !other.isActiveWindow(); })) << "the window does not get the keyboard";
    }
    [[nodiscard]] bool isClosed() const {
        return waitFor([&] { return !mainWindow(); });
    }
    [[nodiscard]] bool otherHasKeyboard() const {
        return waitFor([&] { return other.isActiveWindow(); });
    }

    /// The window hangs from the item: edge on edge, the tip of its arrow on the item's middle.
    void expectHangsFrom(const QRect& itemFrame) {
        const auto hangs = [&] {
            const std::optional<NativeWindow> window = mainWindow();
            return window && window->frame.top() == itemFrame.bottom() + 1;
        };
        EXPECT_TRUE(waitFor(hangs)) << "its top is at " << mainWindow()->frame.top() << ", the item's bottom at "
                                    << itemFrame.bottom() + 1;
        const QRect frame = mainWindow()->frame;
        const int middle = itemFrame.left() + itemFrame.width() / 2;
        int first = 0;
        int last = 0;
        // Half way down the arrow, where its body is wide enough to be seen between its outlines.
        const int row = frame.top() + arrowHeight * scale * 3 / 4;
        const auto isDrawn = [&] {
            const QImage screen = pictureOfScreen();
            std::vector<int> columns;
            for (int x = std::max(0, frame.left()); x <= std::min(frame.right(), screen.width() - 1); ++x) {
                if (screen.pixel(x, row) == bodyColor) {
                    columns.push_back(x);
                }
            }
            first = columns.empty() ? 0 : columns.front();
            last = columns.empty() ? 0 : columns.back();
            return !columns.empty() && std::abs((first + last + 1) / 2 - middle) <= scale;
        };
        EXPECT_TRUE(waitFor(isDrawn)) << "the arrow is drawn from " << first << " to " << last << ", the middle is "
                                      << middle;
    }

    /// Ends the host, which saves then, and tells the titles in its file.
    [[nodiscard]] std::optional<std::vector<std::string>> savedTitles() {
        host.terminate();
        host.waitForFinished(waitingTime);
        return home.savedTitles();
    }

    int argc = 1;
    char name[6] = "other";
    char* argv[2] = {name, nullptr};
    QApplication application{argc, argv};
    QWidget other;
    QLineEdit otherField;
    SnippetsHome home;
    QProcess host;
    int scale = 1;
};

class MainWindowUnderTray : public MainWindowOnDesktop, public testing::WithParamInterface<const char*> {};

TEST_P(MainWindowUnderTray, HangsUnderItsItem) {
    const auto tray = startTray(GetParam());
    startHost();
    open();
    expectHangsFrom(item()->frame);
    keepPicture((std::string("tray-") + GetParam()).c_str());
}

INSTANTIATE_TEST_SUITE_P(At, MainWindowUnderTray, testing::Values("left", "center", "right"));

TEST_F(MainWindowOnDesktop, IsToggledByClicksAndGivesTheKeyboardBack) {
    const auto tray = startTray("right");
    startHost();
    open();
    clickItem();
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(otherHasKeyboard());
    open();
    pressKey("Escape");
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(otherHasKeyboard());
    xdotool({QStringLiteral("type"), QStringLiteral("back")});
    EXPECT_TRUE(waitFor([&] { return otherField.text() == QStringLiteral("back"); }));
}

TEST_F(MainWindowOnDesktop, ClosesOnAClickInAnotherWindow) {
    const auto tray = startTray("right");
    startHost();
    open();
    click(other.mapToGlobal(other.rect().center()));
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(otherHasKeyboard());
    open();
}

TEST_F(MainWindowOnDesktop, ClosesOnAClickOnTheBareDesktop) {
    const auto tray = startTray("right");
    startHost();
    open();
    click(QPoint(30, 300));
    EXPECT_TRUE(isClosed());
    open();
}

TEST_F(MainWindowOnDesktop, TakesTheFirstClickForActivationAloneWhereItStaysOpen) {
    const QString defaults = home.filePath(QStringLiteral("config/snippets/snippets.plist"));
    ASSERT_TRUE(QDir().mkpath(QFileInfo(defaults).path()));
    QFile file(defaults);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<plist version=\"1.0\"><dict><key>VXCloseMainWindowOnDeactivate</key><false/></dict></plist>");
    file.close();
    const auto tray = startTray("right");
    startHost();
    open();
    click(other.mapToGlobal(other.rect().center()));
    ASSERT_TRUE(otherHasKeyboard());
    ASSERT_TRUE(mainWindow()) << "it stays open";
    // On the button that removes the snippet.
    const QRect frame = mainWindow()->frame;
    const QPoint removeButton(frame.right() - 140, frame.bottom() - 24);
    click(removeButton);
    EXPECT_TRUE(waitFor([&] { return !other.isActiveWindow(); })) << "the click does not activate";
    pressKey("ctrl+c");
    EXPECT_TRUE(waitFor([&] { return QGuiApplication::clipboard()->text() == QStringLiteral("A note.\n"); }))
        << "the click reached the button and removed the snippet";
    keepPicture("stays-open");
    // The next click is one for the button, which asks.
    click(removeButton);
    ASSERT_TRUE(waitFor([&] { return sheet().has_value(); })) << "the button does not get the second click";
    keepPicture("asks");
    pressKey("Return");
    ASSERT_TRUE(waitFor([&] { return !sheet(); }));
    EXPECT_EQ(savedTitles(), std::vector<std::string>());
}

TEST_F(MainWindowOnDesktop, ComesBackWhenTheTrayIsStartedAnew) {
    auto tray = startTray("left");
    startHost();
    ASSERT_TRUE(waitFor([&] { return item() && item()->frame.left() < 200; }));
    tray.reset();
    EXPECT_TRUE(waitFor([&] { return item() && item()->frame.left() > 200; })) << "it does not move to a corner";
    open();
    expectHangsFrom(item()->frame);
    keepPicture("tray-gone");
    pressKey("Escape");
    EXPECT_TRUE(isClosed());
    tray = startTray("left");
    EXPECT_TRUE(waitFor([&] { return item() && item()->frame.left() < 200; })) << "it does not come back";
    open();
    expectHangsFrom(item()->frame);
}

TEST_F(MainWindowOnDesktop, HangsFromACornerWhereThereIsNoTray) {
    startHost();
    open();
    expectHangsFrom(item()->frame);
    keepPicture("no-tray");
    clickItem();
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(otherHasKeyboard());
}

TEST_F(MainWindowOnDesktop, HangsFromAPanelThatIsToldOfItsItem) {
    const QRect cell(600, 0, 40, 30);
    Program panel(QStringLiteral(STATUS_NOTIFIER_PANEL),
                  {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--left"),
                   QString::number(cell.left()), QStringLiteral("--height"), QString::number(cell.height())});
    ASSERT_TRUE(panel.tells("ready"));
    startHostWithoutLooking();
    ASSERT_TRUE(panel.tells("icon "));
    const auto toggle = [&] { click(cell.center()); };
    for (int round = 0; round < 2; ++round) {
        toggle();
        ASSERT_TRUE(waitFor([&] { return mainWindow().has_value(); })) << round;
        ASSERT_TRUE(waitFor([&] { return !other.isActiveWindow(); })) << round;
        // The item is where it was clicked, at the panel's edge.
        expectHangsFrom(QRect(cell.center().x() - itemWidth / 2, 0, itemWidth, cell.height()));
        keepPicture("panel");
        // A press beside the window closes it, and one on the item is not to open it again.
        toggle();
        EXPECT_TRUE(isClosed()) << round;
        EXPECT_TRUE(otherHasKeyboard()) << round;
        EXPECT_FALSE(mainWindow()) << round;
    }
}

TEST_F(MainWindowOnDesktop, HangsFromItsItemAtTwoPixelsAPoint) {
    scale = 2;
    const auto tray = startTray("right", 24 * scale);
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("2"));
    // Half the screen is not wide enough for the window: it hangs over the left edge, which is not clamped.
    startHost(environment);
    open();
    expectHangsFrom(item()->frame);
    keepPicture("two-pixels");
}

} // namespace

// SPDX-License-Identifier: MIT
// The example host called by a key that the desktop has bound to `snippets --toggle`, and started again, on a real X
// server. The test itself is the desktop's keys, and the other program that has the keyboard meanwhile.
#include "../examples/SnippetsHome.h"
#include "Desktop.h"

#include <QApplication>
#include <QColor>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QPalette>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QVBoxLayout>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include <gmock/gmock.h>
#include <xcb/xcb.h>

namespace {

constexpr QSize windowSize(720, 500);
constexpr std::uint8_t codeOfPause = 127; // of the key that no program wants
constexpr const char* nameOfPause = "Pause";

/// Keys of the desktop: one is taken from all programs, as a window manager takes those that it starts programs by.
class DesktopKeys {
public:
    DesktopKeys() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
        const xcb_void_cookie_t cookie = xcb_grab_key_checked(m_connection.get(), 1, root, XCB_MOD_MASK_ANY,
                                                              codeOfPause, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        EXPECT_EQ(xcb_request_check(m_connection.get(), cookie), nullptr);
    }

    /// Whether the key went down since the last question.
    [[nodiscard]] bool wasPressed() {
        bool pressed = false;
        while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection.get())) {
            pressed = pressed || (event->response_type & 0x7f) == XCB_KEY_PRESS;
            std::free(event);
        }
        return pressed;
    }

private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
};

class SnippetsByKey : public testing::Test {
protected:
    /// Another application in front, with the keyboard; white, and all over the screen.
    void SetUp() override {
        QPalette palette = other.palette();
        palette.setColor(QPalette::Window, Qt::white);
        other.setPalette(palette);
        auto* layout = new QVBoxLayout(&other);
        layout->addWidget(&otherField, 0, Qt::AlignBottom);
        other.showMaximized();
        other.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other, waitingTime));
        otherField.setFocus();
        ASSERT_TRUE(home.isValid());
    }

    ~SnippetsByKey() override {
        if (host && host->state() != QProcess::NotRunning) {
            host->terminate();
            EXPECT_TRUE(host->waitForFinished(waitingTime));
            EXPECT_EQ(host->exitCode(), 0);
        }
    }

    [[nodiscard]] std::unique_ptr<QProcess> start(const QStringList& arguments) const {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(home.environment());
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        process->start(QStringLiteral(SNIPPETS_PROGRAM), arguments);
        EXPECT_TRUE(process->waitForStarted(waitingTime));
        return process;
    }

    /// The one that stays. Ready when the desktop knows its symbol.
    void startHost() {
        host = start({QStringLiteral("--background")});
        ASSERT_TRUE(waitFor([this] { return !windowsOf(*host).isEmpty(); }));
    }

    /// Starts it once more; it has something to say to the one that runs, and ends.
    void startAgain(const QStringList& arguments) {
        const std::unique_ptr<QProcess> again = start(arguments);
        ASSERT_TRUE(waitFor([&] { return again->state() == QProcess::NotRunning; }));
        EXPECT_EQ(again->exitCode(), 0);
    }

    /// What is on the screen of a process.
    static QStringList windowsOf(const QProcess& process) {
        QProcess search;
        search.start(QStringLiteral("xdotool"),
                     {QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("--onlyvisible"),
                      QStringLiteral("--pid"), QString::number(process.processId()), QStringLiteral("--name"),
                      QStringLiteral("")});
        search.waitForFinished(waitingTime);
        return QString::fromLatin1(search.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    /// The host's main window.
    [[nodiscard]] std::optional<QRect> mainWindow() const {
        static const QRegularExpression numbers(
            QStringLiteral("X=(-?\\d+)\\nY=(-?\\d+)\\nWIDTH=(\\d+)\\nHEIGHT=(\\d+)"));
        for (const QString& window : windowsOf(*host)) {
            QProcess question;
            question.start(QStringLiteral("xdotool"),
                           {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), window});
            question.waitForFinished(waitingTime);
            const QRegularExpressionMatch match = numbers.match(QString::fromLatin1(question.readAllStandardOutput()));
            const QRect frame(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt(),
                              match.captured(4).toInt());
            if (frame.size() == windowSize) {
                return frame;
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] bool isShown() const {
        return waitFor([this] { return mainWindow().has_value(); });
    }
    [[nodiscard]] bool isHidden() const {
        return waitFor([this] { return !mainWindow(); });
    }
    [[nodiscard]] bool hasKeyboard() const {
        return waitFor([this] { return !other.isActiveWindow(); });
    }
    [[nodiscard]] bool otherHasKeyboard() const {
        return waitFor([this] { return other.isActiveWindow(); });
    }

    int argc = 1;
    char name[6] = "other";
    char* argv[2] = {name, nullptr};
    QApplication application{argc, argv};
    QWidget other;
    QLineEdit otherField;
    SnippetsHome home;
    std::unique_ptr<QProcess> host;
};

} // namespace

TEST_F(SnippetsByKey, OneKeyShowsAndHidesTheWindow) {
    DesktopKeys keys;
    startHost();
    const auto press = [&] {
        pressKey(nameOfPause);
        ASSERT_TRUE(waitFor([&] { return keys.wasPressed(); }));
        startAgain({QStringLiteral("--toggle")});
    };
    for (int round = 0; round < 3; ++round) {
        QElapsedTimer clock;
        clock.start();
        press();
        ASSERT_TRUE(isShown()) << round;
        std::printf("shown %lld ms after the key\n", static_cast<long long>(clock.elapsed()));
        ASSERT_TRUE(hasKeyboard()) << round;
        press();
        ASSERT_TRUE(isHidden()) << round;
        ASSERT_TRUE(otherHasKeyboard()) << round;
    }
    xdotool({QStringLiteral("type"), QStringLiteral("back")});
    EXPECT_TRUE(waitFor([this] { return otherField.text() == QStringLiteral("back"); }));
}

TEST_F(SnippetsByKey, TheKeyStartsItWhereItDoesNotRun) {
    host = start({QStringLiteral("--toggle")});
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(hasKeyboard());
    startAgain({QStringLiteral("--toggle")});
    EXPECT_TRUE(isHidden());
}

TEST_F(SnippetsByKey, AFurtherStartBringsTheWindowForwardAndInTheBackgroundNothing) {
    startHost();
    startAgain({QStringLiteral("--background")});
    EXPECT_FALSE(mainWindow());
    EXPECT_TRUE(other.isActiveWindow());
    startAgain({});
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(hasKeyboard());
    startAgain({});
    EXPECT_TRUE(isShown()) << "it is shown, not toggled";
    keepPicture("started-again");
}

TEST_F(SnippetsByKey, FilesOfAFurtherStartAreThereInTheWindow) {
    startHost();
    QFile note(home.filePath(QStringLiteral("Shopping list.txt")));
    ASSERT_TRUE(note.open(QIODevice::WriteOnly) && note.write("Bread and butter.\n") > 0);
    note.close();
    startAgain({note.fileName()});
    ASSERT_TRUE(isShown());
    // The first of the list is what Return copies.
    ASSERT_TRUE(hasKeyboard());
    QFile saved(home.databasePath());
    EXPECT_TRUE(waitFor([&] {
        const bool isThere = saved.open(QIODevice::ReadOnly) && saved.readAll().contains("Bread and butter.");
        saved.close();
        return isThere;
    }));
}

TEST_F(SnippetsByKey, AWindowThatStaysOpenIsSeenThroughAsFarAsWished) {
    ASSERT_TRUE(QDir().mkpath(home.filePath(QStringLiteral("config/snippets"))));
    QFile defaults(home.filePath(QStringLiteral("config/snippets/snippets.plist")));
    ASSERT_TRUE(defaults.open(QIODevice::WriteOnly));
    defaults.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                   "<key>VXCloseMainWindowOnDeactivate</key><false/>"
                   "<key>SnippetsWindowOpacity</key><real>0.6</real></dict></plist>");
    defaults.close();
    host = start({});
    ASSERT_TRUE(isShown());
    ASSERT_TRUE(hasKeyboard());
    const bool isComposited = qEnvironmentVariable("DESKTOP_COMPOSITOR") != QStringLiteral("no");
    // White of 0.05 on white, at this opacity; without compositing the white behind it is not there.
    const int expected = isComposited ? qRound(0.6 * 0.05 * 255 + 0.4 * 255) : qRound(0.05 * 255);
    int red = 0;
    EXPECT_TRUE(waitFor([&] {
        // Left of the search, below the arrow.
        const QPoint place = mainWindow()->topLeft() + QPoint(6, 30);
        red = qRed(pictureOfScreen().pixel(place));
        return std::abs(red - expected) <= 3;
    })) << "it is "
        << red << ", not " << expected;
    keepPicture("opacity");
    // It stays when it is left, and fades.
    other.activateWindow();
    ASSERT_TRUE(otherHasKeyboard());
    if (isComposited) {
        const int faded = qRound(0.35 * 0.05 * 255 + 0.65 * 255);
        EXPECT_TRUE(waitFor([&] {
            red = qRed(pictureOfScreen().pixel(mainWindow()->topLeft() + QPoint(6, 30)));
            return std::abs(red - faded) <= 3;
        })) << red;
    }
    EXPECT_TRUE(mainWindow());
}

// SPDX-License-Identifier: MIT
// The smallest application on a real X server, as a person uses it.
#include "../desktop/Desktop.h"

#include <gtest/gtest.h>

namespace {

class HelloOnDesktop : public testing::Test {
protected:
    void SetUp() override {
        hello.start(QStringLiteral(HELLO_PROGRAM), QStringList());
        ASSERT_TRUE(hello.waitForStarted());
        ASSERT_TRUE(isShownSoon(true)) << qPrintable(QString::fromUtf8(hello.readAllStandardError()));
        // A tray comes to have the item when it likes, and the window hangs under it then.
        ASSERT_TRUE(
            waitFor([] { return frame("^hello$").width() >= 20 && frame().top() == frame("^hello$").bottom() + 1; }));
    }
    ~HelloOnDesktop() override {
        hello.kill();
        hello.waitForFinished();
    }

    static QStringList windowsNamed(const char* name) {
        QProcess search;
        search.start(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                 QStringLiteral("--name"), QString::fromLatin1(name)});
        search.waitForFinished();
        return QString::fromLatin1(search.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    static bool isShownSoon(bool isShown) {
        return waitFor([=] { return windowsNamed("^Greeting$").isEmpty() != isShown; });
    }
    static bool hasKeyboard(const char* title) {
        QProcess focus;
        focus.start(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus"), QStringLiteral("getwindowname")});
        focus.waitForFinished();
        return QString::fromUtf8(focus.readAllStandardOutput()).trimmed() == QLatin1String(title);
    }
    /// Of the first window of that name, on the screen.
    static QRect frame(const char* name = "^Greeting$") {
        QProcess geometry;
        geometry.start(QStringLiteral("xdotool"),
                       {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), windowsNamed(name).value(0)});
        geometry.waitForFinished();
        QMap<QString, int> values;
        for (const QString& line : QString::fromLatin1(geometry.readAllStandardOutput()).split(QLatin1Char('\n'))) {
            values[line.section(QLatin1Char('='), 0, 0)] = line.section(QLatin1Char('='), 1).toInt();
        }
        return {values[QStringLiteral("X")], values[QStringLiteral("Y")], values[QStringLiteral("WIDTH")],
                values[QStringLiteral("HEIGHT")]};
    }

    char name[6] = "tests";
    char* argv[2] = {name, nullptr};
    int argc = 1;
    QGuiApplication application{argc, argv};
    QProcess hello;
};

} // namespace

TEST_F(HelloOnDesktop, ClosesOnEscapeAndComesBackOnAClickOnItsItem) {
    ASSERT_EQ(frame().size(), QSize(300, 180));
    const QPoint item = frame("^hello$").center();
    keepPicture("hello");
    pressKey("Escape");
    ASSERT_TRUE(isShownSoon(false));
    click(item);
    EXPECT_TRUE(isShownSoon(true));
}

TEST_F(HelloOnDesktop, AsksAndQuits) {
    const QPoint ask(frame().left() + 218, frame().bottom() - 24);
    click(ask);
    ASSERT_TRUE(waitFor([] { return hasKeyboard("How do you do?"); }));
    keepPicture("hello-asks");
    // Its default button.
    pressKey("Return");
    ASSERT_TRUE(waitFor([] { return windowsNamed("How do you do").isEmpty() && hasKeyboard("Greeting"); }));
    pressKey("alt+q");
    EXPECT_TRUE(waitFor([&] { return hello.state() == QProcess::NotRunning; }));
    EXPECT_EQ(hello.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(hello.exitCode(), 0);
}

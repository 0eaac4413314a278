// SPDX-License-Identifier: MIT
#include <preferences/LoginItem.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class LoginItemTest : public testing::Test {
protected:
    LoginItemTest() {
        qputenv("XDG_CONFIG_HOME", user().toUtf8());
        qputenv("XDG_CONFIG_DIRS", (system() + QStringLiteral(":/nonexistent")).toUtf8());
    }

    [[nodiscard]] QString user() const { return folder.filePath(QStringLiteral("user")); }
    [[nodiscard]] QString system() const { return folder.filePath(QStringLiteral("system")); }

    static void write(const QString& config, const char* content) {
        ASSERT_TRUE(QDir().mkpath(config + QStringLiteral("/autostart")));
        QFile file(config + QStringLiteral("/autostart/org.example.Program.desktop"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) >= 0);
    }

    static QStringList linesOf(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll()).split(u'\n');
    }

    QTemporaryDir folder;
    const LoginItem item{QStringLiteral("org.example.Program"),
                         QStringLiteral("Program"),
                         {QStringLiteral("/opt/my program"), QStringLiteral("--background")}};
};

} // namespace

TEST_F(LoginItemTest, IsOffAtFirstAndSetByAFileOfTheUsers) {
    EXPECT_FALSE(item.isOn());
    ASSERT_TRUE(item.setOn(true));
    EXPECT_TRUE(item.isOn());
    EXPECT_EQ(item.path(), user() + QStringLiteral("/autostart/org.example.Program.desktop"));
    const QStringList lines = linesOf(item.path());
    EXPECT_EQ(lines.first(), QStringLiteral("[Desktop Entry]"));
    EXPECT_TRUE(lines.contains(QStringLiteral("Exec=\"/opt/my program\" --background")));
    ASSERT_TRUE(item.setOn(false));
    EXPECT_FALSE(item.isOn());
    EXPECT_FALSE(QFile::exists(item.path()));
    EXPECT_TRUE(item.setOn(false));
}

TEST_F(LoginItemTest, IsInTheStandardFolderWhereNoneIsNamedByAWholePath) {
    const QString standard = QDir::homePath() + QStringLiteral("/.config/autostart/org.example.Program.desktop");
    for (const char* value : {"", "relative"}) {
        qputenv("XDG_CONFIG_HOME", value);
        EXPECT_EQ(item.path(), standard);
    }
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(item.path(), standard);
}

TEST_F(LoginItemTest, TellsTheTruthAboutWhatOthersMadeOfTheFile) {
    for (const char* off : {"[Desktop Entry]\nExec=program\nHidden=true\n",
                            "[Desktop Entry]\nExec=program\nX-GNOME-Autostart-enabled=false\n",
                            "[Desktop Entry]\r\nExec=program\r\nHidden = true\r\n", "[Desktop Entry]\nName=Program\n",
                            "[Desktop Action a]\nExec=program\n", "", "\xff\xfe"}) {
        write(user(), off);
        EXPECT_FALSE(item.isOn()) << off;
        ASSERT_TRUE(item.setOn(true));
        EXPECT_TRUE(item.isOn()) << off;
    }
    for (const char* on : {"[Desktop Entry]\nExec=program\nHidden=false\nX-GNOME-Autostart-enabled=true\n",
                           "# a comment\n[Desktop Entry]\nExec=program\n[Desktop Action a]\nHidden=true\n"}) {
        write(user(), on);
        EXPECT_TRUE(item.isOn()) << on;
    }
    ASSERT_TRUE(QFile::remove(item.path()));
    EXPECT_FALSE(item.isOn());
}

TEST_F(LoginItemTest, CoversTheFileOfTheSystem) {
    write(system(), "[Desktop Entry]\nExec=program\n");
    EXPECT_TRUE(item.isOn());
    ASSERT_TRUE(item.setOn(false));
    EXPECT_FALSE(item.isOn());
    EXPECT_TRUE(linesOf(item.path()).contains(QStringLiteral("Hidden=true")));
    ASSERT_TRUE(item.setOn(true));
    EXPECT_TRUE(item.isOn());
}

TEST_F(LoginItemTest, SaysWhereItCannotBeWritten) {
    QFile inTheWay(user());
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_FALSE(item.setOn(true));
    EXPECT_FALSE(item.isOn());
    ASSERT_TRUE(inTheWay.remove() && QDir().mkpath(item.path()));
    EXPECT_FALSE(item.setOn(true));
    EXPECT_FALSE(item.isOn());
    EXPECT_FALSE(item.setOn(false));
}

TEST_F(LoginItemTest, QuotesWhatAShellWouldTakeForSomethingElse) {
    const auto exec = [](const char* argument) { return LoginItem::execValue({QString::fromUtf8(argument)}); };
    EXPECT_EQ(exec("/usr/bin/program"), QStringLiteral("/usr/bin/program"));
    EXPECT_EQ(exec("a b"), QStringLiteral("\"a b\""));
    EXPECT_EQ(exec("a\"$`\\b"), QStringLiteral("\"a\\\"\\$\\`\\\\b\""));
    EXPECT_EQ(exec("50%"), QStringLiteral("50%%"));
    EXPECT_EQ(exec("it's"), QStringLiteral("\"it's\""));
    EXPECT_EQ(exec(""), QStringLiteral("\"\""));
    EXPECT_EQ(LoginItem::execValue({QStringLiteral("a"), QStringLiteral("b")}), QStringLiteral("a b"));
}

TEST_F(LoginItemTest, WritesEntriesThatDesktopsTake) {
    if (QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate")).isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    const LoginItem odd(QStringLiteral("org.example.Program"), QStringLiteral("A \\ B\nC"),
                        {QStringLiteral("/opt/a \"b\" $c `d` \\e 5%"), QStringLiteral("--background")});
    for (const LoginItem* each : {&item, &odd}) {
        ASSERT_TRUE(each->setOn(true));
        QProcess validator;
        validator.start(QStringLiteral("desktop-file-validate"), {each->path()});
        ASSERT_TRUE(validator.waitForFinished());
        EXPECT_EQ(validator.exitCode(), 0) << validator.readAllStandardOutput().constData();
    }
}

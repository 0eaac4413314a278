// SPDX-License-Identifier: MIT
// The program itself, in a process of its own.
#include "SnippetsHome.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>

#include <csignal>

namespace {

constexpr int hostWaitingTime = 30000; // milliseconds

class SnippetsProgram : public testing::Test {
protected:
    QString write(const char* name, const QByteArray& bytes) const {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }

    std::unique_ptr<QProcess> start(const QStringList& arguments, const char* platform = "offscreen") const {
        QProcessEnvironment environment = home.environmentWithoutDisplay(platform);
        // Nobody is reached by way of the person's session bus.
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=/nonexistent/bus"));
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment);
        process->setWorkingDirectory(folder.path());
        process->start(QStringLiteral(SNIPPETS_PROGRAM), arguments);
        EXPECT_TRUE(process->waitForStarted(hostWaitingTime));
        return process;
    }

    std::vector<std::string> savedTitles() const { return home.savedTitles().value_or(std::vector<std::string>()); }

    bool waitForSavedTitles() const {
        return QTest::qWaitFor([&] { return !savedTitles().empty(); }, hostWaitingTime);
    }

    static bool endsNormally(QProcess& process) {
        return process.waitForFinished(hostWaitingTime) && process.exitStatus() == QProcess::NormalExit;
    }

    int argc = 1;
    char testName[5] = "test";
    char* argv[2] = {testName, nullptr};
    QCoreApplication application{argc, argv};
    SnippetsHome home;
    QTemporaryDir folder;
};

TEST_F(SnippetsProgram, ImportsFilesTellsRefusalsAndEndsInOrderWhenAsked) {
    const std::unique_ptr<QProcess> program =
        start({write("one.txt", "one"), write("bad.bin", QByteArray("\0", 1)), write("two.txt", "two")});
    ASSERT_TRUE(waitForSavedTitles());

    ASSERT_EQ(::kill(static_cast<pid_t>(program->processId()), SIGTERM), 0);
    ASSERT_TRUE(endsNormally(*program));

    EXPECT_EQ(program->exitCode(), 0);
    EXPECT_THAT(savedTitles(), testing::ElementsAre("one.txt", "two.txt"));
    const QByteArray refusal =
        "snippets: " + folder.filePath(QStringLiteral("bad.bin")).toUtf8() + ": is not text: NUL byte at offset 0\n";
    EXPECT_THAT(program->readAllStandardError().toStdString(), testing::HasSubstr(refusal.toStdString()));
    EXPECT_FALSE(QFile::exists(home.databasePath() + QStringLiteral(".lock")));
}

TEST_F(SnippetsProgram, ShowsTheSnippetsOfTheLaunchBefore) {
    for (const char* file : {"one.txt", "two.txt"}) {
        const std::size_t before = savedTitles().size();
        const std::unique_ptr<QProcess> program = start({write(file, "text")});
        ASSERT_TRUE(QTest::qWaitFor([&] { return savedTitles().size() > before; }, hostWaitingTime));
        ::kill(static_cast<pid_t>(program->processId()), SIGTERM);
        ASSERT_TRUE(endsNormally(*program));
    }
    EXPECT_THAT(savedTitles(), testing::ElementsAre("one.txt", "two.txt"));
}

TEST_F(SnippetsProgram, RefusesToRunTwiceOnOneFile) {
    const std::unique_ptr<QProcess> first = start({write("one.txt", "one")});
    ASSERT_TRUE(waitForSavedTitles());

    const std::unique_ptr<QProcess> second = start({write("two.txt", "two")});
    ASSERT_TRUE(endsNormally(*second));
    EXPECT_EQ(second->exitCode(), 1);
    const QByteArray reason = "snippets: is already running (process " + QByteArray::number(first->processId()) + ")\n";
    EXPECT_THAT(second->readAllStandardError().toStdString(), testing::HasSubstr(reason.toStdString()));

    ::kill(static_cast<pid_t>(first->processId()), SIGTERM);
    ASSERT_TRUE(endsNormally(*first));
    EXPECT_THAT(savedTitles(), testing::ElementsAre("one.txt"));
}

TEST_F(SnippetsProgram, TourTakesItsPicturesAndTellsTheFile) {
    const std::unique_ptr<QProcess> program = start({QStringLiteral("--tour"), folder.filePath(QStringLiteral("tour")),
                                                     write("one.txt", "one"), write("two.txt", "two")});
    ASSERT_TRUE(endsNormally(*program));

    EXPECT_EQ(program->exitCode(), 0) << program->readAllStandardError().constData();
    QByteArray expected;
    for (const char* picture : {"01-list", "02-search", "03-selected", "04-importing", "05-stopped", "06-added",
                                "07-renaming", "08-editing", "09-copied", "10-removing", "11-removed", "12-dragging",
                                "13-exporting", "14-preferences", "15-sync", "16-database", "17-about", "18-help"}) {
        const QString path = folder.filePath(QStringLiteral("tour/%1.png").arg(QString::fromLatin1(picture)));
        EXPECT_FALSE(QImage(path).isNull()) << picture;
        expected += path.toUtf8() + '\n';
    }
    expected += home.databasePath().toUtf8() + ": 2 records\n";
    EXPECT_EQ(program->readAllStandardOutput().toStdString(), expected.toStdString());
    EXPECT_THAT(savedTitles(), testing::ElementsAre("one.txt", "two.txt"));
}

TEST_F(SnippetsProgram, TourFailsWithoutSnippets) {
    const std::unique_ptr<QProcess> program =
        start({QStringLiteral("--tour"), folder.filePath(QStringLiteral("tour"))});
    ASSERT_TRUE(endsNormally(*program));
    EXPECT_EQ(program->exitCode(), 1);
    EXPECT_THAT(program->readAllStandardError().toStdString(), testing::HasSubstr("there are no snippets to show"));
}

TEST_F(SnippetsProgram, TellsItsVersionAndUsageWithoutADisplay) {
    for (const char* question : {"--version", "--help"}) {
        const std::unique_ptr<QProcess> program = start({QString::fromLatin1(question)}, "xcb");
        ASSERT_TRUE(endsNormally(*program));
        EXPECT_EQ(program->exitCode(), 0);
        EXPECT_THAT(program->readAllStandardOutput().toStdString(), testing::HasSubstr("snippets"));
    }
}

TEST_F(SnippetsProgram, RefusesAnOptionItDoesNotKnow) {
    const std::unique_ptr<QProcess> program = start({QStringLiteral("--unknown")});
    ASSERT_TRUE(endsNormally(*program));
    EXPECT_EQ(program->exitCode(), 1);
    EXPECT_THAT(program->readAllStandardError().toStdString(), testing::HasSubstr("unknown"));
    EXPECT_TRUE(savedTitles().empty());
}

} // namespace

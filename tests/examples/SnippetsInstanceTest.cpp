// SPDX-License-Identifier: MIT
// What further starts of the program do, in processes of their own on one session bus.
#include "../SessionBus.h"
#include "SnippetsHome.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>

#include <csignal>

namespace {

constexpr int longestWait = 40000; // milliseconds

const QString service = QStringLiteral("org.vxkit.Snippets");

class SnippetsInstance : public testing::Test {
protected:
    void SetUp() override {
        if (!SessionBus::canBeHad()) {
            GTEST_SKIP() << "dbus-daemon is not installed";
        }
        bus = std::make_unique<SessionBus>();
        connection =
            std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(bus->address(), QStringLiteral("test")));
    }

    std::unique_ptr<QProcess> start(const QStringList& arguments) const {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(home.environmentWithoutDisplay());
        process->setWorkingDirectory(folder.path());
        process->start(QStringLiteral(SNIPPETS_PROGRAM), arguments);
        EXPECT_TRUE(process->waitForStarted(longestWait));
        return process;
    }

    QString write(const char* name, const QByteArray& bytes) const {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }

    /// The process that has the name on the bus, which one that was killed has for a moment longer; 0 where none has.
    [[nodiscard]] qint64 processOnBus() const {
        QDBusMessage question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
        question << service;
        return connection->call(question).arguments().value(0).toLongLong();
    }

    /// The one that the others are to find.
    std::unique_ptr<QProcess> startFirst(const QStringList& arguments = {QStringLiteral("--background")}) const {
        auto first = start(arguments);
        EXPECT_TRUE(QTest::qWaitFor([&] { return processOnBus() == first->processId(); }, longestWait));
        return first;
    }

    [[nodiscard]] QDBusMessage call(const char* method, const QVariantList& arguments) const {
        QDBusMessage message =
            QDBusMessage::createMethodCall(service, QStringLiteral("/org/vxkit/Snippets"),
                                           QStringLiteral("org.freedesktop.Application"), QString::fromLatin1(method));
        message.setArguments(arguments);
        return connection->call(message);
    }

    static bool hasEnded(QProcess& process) {
        return process.waitForFinished(longestWait) && process.exitStatus() == QProcess::NormalExit;
    }

    /// Ends it in order, and tells what it has saved.
    std::vector<std::string> titlesAtTheEndOf(QProcess& process) const {
        EXPECT_EQ(call("ActivateAction", {QStringLiteral("quit"), QVariantList(), QVariantMap()}).type(),
                  QDBusMessage::ReplyMessage);
        EXPECT_TRUE(hasEnded(process));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        return savedTitles();
    }

    [[nodiscard]] std::vector<std::string> savedTitles() const {
        return home.savedTitles().value_or(std::vector<std::string>());
    }

    int argc = 1;
    char testName[5] = "test";
    char* argv[2] = {testName, nullptr};
    QCoreApplication application{argc, argv};
    SnippetsHome home;
    QTemporaryDir folder;
    std::unique_ptr<SessionBus> bus;
    std::unique_ptr<QDBusConnection> connection;
};

} // namespace

TEST_F(SnippetsInstance, FurtherStartsHandTheirFilesOverByWholePaths) {
    const auto first = startFirst();
    write("one.txt", "one");
    write("two #2.txt", "two");
    for (const QStringList& arguments : {QStringList{QStringLiteral("one.txt")},
                                         QStringList{QStringLiteral("--background"), QStringLiteral("two #2.txt")}}) {
        const auto second = start(arguments);
        ASSERT_TRUE(hasEnded(*second));
        EXPECT_EQ(second->exitCode(), 0) << second->readAllStandardError().constData();
    }
    ASSERT_TRUE(QTest::qWaitFor([this] { return savedTitles().size() == 2; }, longestWait));
    EXPECT_THAT(titlesAtTheEndOf(*first), testing::ElementsAre("one.txt", "two #2.txt"));
}

TEST_F(SnippetsInstance, KeepsFilesThatAreHandedOverWhileItStarts) {
    // Asked for while it starts: nothing of that is lost.
    const auto first = startFirst({QStringLiteral("--background"), write("one.txt", "one")});
    const QString url = QUrl::fromLocalFile(write("two.txt", "two")).toString(QUrl::FullyEncoded);
    EXPECT_EQ(call("Open", {QStringList{url}, QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(QTest::qWaitFor([this] { return savedTitles().size() == 2; }, longestWait));
    EXPECT_THAT(titlesAtTheEndOf(*first), testing::UnorderedElementsAre("one.txt", "two.txt"));
}

TEST_F(SnippetsInstance, RefusesWhatIsNoFileOfThisComputer) {
    const auto first = startFirst();
    EXPECT_EQ(call("Open", {QStringList{QStringLiteral("https://example.org/a.txt")}, QVariantMap()}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("ActivateAction",
                   {QStringLiteral("import"), QVariantList{7, QStringList{QStringLiteral("b.txt")}}, QVariantMap()})
                  .type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(titlesAtTheEndOf(*first).empty());
    const std::string told = first->readAllStandardError().toStdString();
    EXPECT_THAT(told, testing::HasSubstr("https://example.org/a.txt: is no file of this computer"));
    EXPECT_THAT(told, testing::HasSubstr("b.txt: is no file of this computer"));
}

TEST_F(SnippetsInstance, OneOfManyStartedAtOnceRuns) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int number = 0; number < 4; ++number) {
        processes.push_back(start({}));
    }
    const auto running = [&] {
        return std::count_if(processes.begin(), processes.end(), [](const std::unique_ptr<QProcess>& process) {
            return process->state() != QProcess::NotRunning;
        });
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return running() == 1; }, longestWait));
    EXPECT_EQ(running(), 1);
    for (const std::unique_ptr<QProcess>& process : processes) {
        if (process->state() == QProcess::NotRunning) {
            EXPECT_EQ(process->exitCode(), 0) << process->readAllStandardError().constData();
        } else {
            titlesAtTheEndOf(*process);
        }
    }
}

TEST_F(SnippetsInstance, IsStartedAgainAtOnceAfterItWasKilled) {
    const auto first = startFirst();
    first->kill();
    ASSERT_TRUE(first->waitForFinished(longestWait));
    const auto second = startFirst();
    EXPECT_EQ(second->state(), QProcess::Running);
    titlesAtTheEndOf(*second);
}

TEST_F(SnippetsInstance, OneThatHangsIsToldOfAndNotWaitedForInVain) {
    const auto first = startFirst();
    ASSERT_EQ(::kill(static_cast<pid_t>(first->processId()), SIGSTOP), 0);
    const auto second = start({QStringLiteral("--toggle")});
    EXPECT_TRUE(hasEnded(*second));
    EXPECT_EQ(second->exitCode(), 1);
    const std::string reason = "snippets: is already running (process " + std::to_string(first->processId()) +
                               "), but did not answer within 10 seconds\n";
    EXPECT_EQ(second->readAllStandardError().toStdString(), reason);
    ::kill(static_cast<pid_t>(first->processId()), SIGCONT);
    titlesAtTheEndOf(*first);
}

TEST_F(SnippetsInstance, DoesNotTakeAStrangerForItself) {
    ASSERT_TRUE(connection->registerService(service));
    const auto process = start({QStringLiteral("--toggle")});
    // Whoever is on the bus answers from an event loop.
    ASSERT_TRUE(QTest::qWaitFor([&] { return process->state() == QProcess::NotRunning; }, longestWait));
    EXPECT_EQ(process->exitCode(), 1);
    EXPECT_THAT(process->readAllStandardError().toStdString(),
                testing::HasSubstr("snippets: org.vxkit.Snippets on the session bus belongs to another program"));
}

TEST_F(SnippetsInstance, RefusesToToggleAndDoSomethingElse) {
    for (const QStringList& more : {QStringList{QStringLiteral("--background")}, QStringList{write("a.txt", "a")},
                                    QStringList{QStringLiteral("--tour"), folder.path()}}) {
        const auto process = start(QStringList{QStringLiteral("--toggle")} + more);
        ASSERT_TRUE(hasEnded(*process));
        EXPECT_EQ(process->exitCode(), 1);
        EXPECT_THAT(process->readAllStandardError().toStdString(), testing::HasSubstr("goes with no other argument"));
    }
    EXPECT_EQ(processOnBus(), 0);
}

TEST_F(SnippetsInstance, TheTourLeavesTheOneOnTheBusAlone) {
    const auto first = startFirst();
    const auto tour = start({QStringLiteral("--tour"), folder.path()});
    ASSERT_TRUE(hasEnded(*tour));
    // It wants the same database.
    EXPECT_EQ(tour->exitCode(), 1);
    EXPECT_THAT(tour->readAllStandardError().toStdString(), testing::HasSubstr("is already running (process "));
    titlesAtTheEndOf(*first);
}

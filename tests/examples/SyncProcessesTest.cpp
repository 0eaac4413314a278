// SPDX-License-Identifier: MIT
// Two host processes, two databases, one server.
#include "DavServer.h"
#include "FaultyProxy.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <random>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

/// One process with a home folder of its own, and what it has told.
class HostProcess {
public:
    HostProcess() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home.path());
        for (const char* folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
            environment.insert(QString::fromLatin1(folder), home.filePath(QString::fromLatin1(folder)));
        }
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        process.setProcessEnvironment(environment);
        process.setStandardErrorFile(QProcess::nullDevice());
        QObject::connect(&process, &QProcess::readyReadStandardOutput, &process, [this] { read(); });
    }

    ~HostProcess() { kill(); }

    bool start() {
        isReady = false;
        received.clear();
        process.start(QStringLiteral(SYNCING_HOST), {});
        return QTest::qWaitFor([this] { return isReady; }, DavServer::longestSync);
    }

    /// What was written since it last saved may be gone, as with any program that is killed.
    void kill() {
        process.kill();
        process.waitForFinished(DavServer::longestSync);
        read();
        unsaved.clear();
    }

    void order(const QString& text) { process.write((text + QLatin1Char('\n')).toUtf8()); }

    /// A sync from its beginning to its end; its problem.
    std::string sync() {
        const std::size_t before = ends.size();
        order(QStringLiteral("sync"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return ends.size() > before; }, DavServer::longestSync));
        return ends.empty() ? "it never ended" : ends.back();
    }

    std::multiset<std::string> texts() {
        told.clear();
        isAll = false;
        order(QStringLiteral("texts"));
        EXPECT_TRUE(QTest::qWaitFor([&] { return isAll; }, DavServer::longestSync));
        return told;
    }

    QTemporaryDir home;
    QProcess process;
    std::vector<std::string> ends;
    std::set<std::string> written;
    std::set<std::string> givenUp;

private:
    void read() {
        received += process.readAllStandardOutput();
        for (qsizetype end = received.indexOf('\n'); end >= 0; end = received.indexOf('\n')) {
            const std::string line = received.first(end).toStdString();
            received = received.mid(end + 1);
            const std::string word = line.substr(0, line.find(' '));
            const std::string rest = line.size() > word.size() ? line.substr(word.size() + 1) : std::string();
            if (word == "ready") {
                isReady = true;
            } else if (word == "wrote") {
                unsaved.insert(rest);
            } else if (word == "gaveup") {
                givenUp.insert(rest);
            } else if (word == "saved") {
                written.merge(unsaved);
                unsaved.clear();
            } else if (word == "ended") {
                ends.push_back(rest);
            } else if (word == "text") {
                told.insert(rest);
            } else if (word == "that") {
                isAll = true;
            }
        }
    }

    QByteArray received;
    std::set<std::string> unsaved;
    std::multiset<std::string> told;
    bool isReady = false;
    bool isAll = false;
};

} // namespace

TEST(SyncProcesses, ConvergeAfterRandomChangesThroughDeathsOfTheServerAndTheirOwn) {
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto chance = [&](unsigned oneIn) { return random() % oneIn == 0; };

    DavServer server;
    ASSERT_TRUE(server.start());
    FaultyProxy proxy(server.port());
    bool isFaulty = true;
    proxy.setPolicy([&](const ProxiedRequest& request) {
        if (!isFaulty || !chance(12)) {
            return ProxyFault();
        }
        switch (random() % 7) {
        case 0:
            return ProxyFault::status(500);
        case 1:
            return ProxyFault::status(409);
        case 2:
            return ProxyFault::status(401, {}, "WWW-Authenticate: Basic realm=\"x\"\r\n");
        case 3:
            return ProxyFault::status(request.method == "PROPFIND" ? 207 : 200, "garbage");
        case 4:
            return ProxyFault::of(ProxyFault::Kind::LoseAnswer);
        case 5:
            return ProxyFault::of(ProxyFault::Kind::HalfAnswer);
        default:
            return ProxyFault{.kind = ProxyFault::Kind::None, .answer = {}, .delay = 300};
        }
    });
    HostProcess one;
    HostProcess two;
    for (HostProcess* host : {&one, &two}) {
        ASSERT_TRUE(host->start());
        host->order(QStringLiteral("address ") + proxy.addressFor(server.address()).toString());
    }
    constexpr int rounds = 6;
    for (int round = 0; round < rounds; ++round) {
        for (HostProcess* host : {&one, &two}) {
            host->order(QStringLiteral("change %1 4").arg(random()));
            host->order(QStringLiteral("save"));
            host->order(QStringLiteral("sync"));
            host->order(QStringLiteral("change %1 2").arg(random()));
        }
        QTest::qWait(static_cast<int>(random() % 300));
        if (chance(3)) {
            server.kill();
            QTest::qWait(static_cast<int>(random() % 200));
            ASSERT_TRUE(server.start());
        }
        if (chance(3)) {
            HostProcess& unlucky = chance(2) ? one : two;
            unlucky.kill();
            ASSERT_TRUE(unlucky.start());
        }
        server.ageFiles();
    }
    isFaulty = false;
    std::string problem = "none yet";
    for (int round = 0; round < 4 || (!problem.empty() && round < 20); ++round) {
        server.ageFiles();
        problem = one.sync();
        problem += two.sync();
    }
    EXPECT_EQ(problem, "");
    const std::multiset<std::string> texts = one.texts();
    EXPECT_EQ(texts, two.texts());
    EXPECT_FALSE(texts.empty());
    for (const HostProcess* host : {&one, &two}) {
        for (const std::string& text : host->written) {
            if (!one.givenUp.contains(text) && !two.givenUp.contains(text)) {
                EXPECT_THAT(texts, testing::Contains(text));
            }
        }
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/RunningInstance.h>

#include <tests/SessionBus.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <memory>

namespace {

using Answer = RunningInstance::Answer;
using Claim = RunningInstance::Claim;
using Request = RunningInstance::Request;

const QString instanceName = QStringLiteral("org.example.Test-Program");
const QString instancePath = QStringLiteral("/org/example/Test_Program");
const QString instanceInterface = QStringLiteral("org.freedesktop.Application");

struct Outcome {
    Answer answer;
    QString problem;
};

class RunningInstanceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!SessionBus::canBeHad()) {
            GTEST_SKIP() << "dbus-daemon is not installed";
        }
        bus = std::make_unique<SessionBus>();
        for (const char* variable : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"}) {
            qunsetenv(variable);
        }
    }

    /// Asks as another process would: while this one's event loop runs.
    static Outcome ask(const Request& request) {
        std::future<Outcome> asking = std::async(std::launch::async, [&] {
            Outcome outcome{};
            outcome.answer = RunningInstance::ask(instanceName, request, &outcome.problem);
            return outcome;
        });
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return asking.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20000));
        return asking.get();
    }

    /// The reply to a call that no honest program makes.
    QDBusMessage call(const char* method, const QVariantList& arguments) const {
        QDBusConnection connection = QDBusConnection::connectToBus(bus->address(), QStringLiteral("caller"));
        QDBusMessage message =
            QDBusMessage::createMethodCall(instanceName, instancePath, instanceInterface, QString::fromLatin1(method));
        message.setArguments(arguments);
        // With a loop, because the one who is called is in this process too.
        QDBusMessage reply = connection.call(message, QDBus::BlockWithGui);
        QDBusConnection::disconnectFromBus(QStringLiteral("caller"));
        return reply;
    }

    int argc = 1;
    char programName[5] = "test";
    char* argv[2] = {programName, nullptr};
    QCoreApplication application{argc, argv};
    std::unique_ptr<SessionBus> bus;
};

} // namespace

// Outside of it, since the rest of what Qt's meta object system makes of the class comes from another file.
/// Has the name, and is gone as soon as it is asked for anything.
class EndingProgram final : public QDBusVirtualObject {
    Q_OBJECT

public:
    explicit EndingProgram(const QString& address)
        : m_bus(QDBusConnection::connectToBus(address, QStringLiteral("ending"))) {
        m_bus.registerVirtualObject(instancePath, this);
        m_bus.registerService(instanceName);
    }
    ~EndingProgram() override { QDBusConnection::disconnectFromBus(QStringLiteral("ending")); }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        message.setDelayedReply(true);
        QMetaObject::invokeMethod(
            this, [] { QDBusConnection::disconnectFromBus(QStringLiteral("ending")); }, Qt::QueuedConnection);
        wasAsked = true;
        m_bus = QDBusConnection(QString());
        return true;
    }

    bool wasAsked = false;

private:
    QDBusConnection m_bus;
};

TEST_F(RunningInstanceTest, IsClaimedByOneAtATimeAndGivenBackWithTheObject) {
    auto first = std::make_unique<RunningInstance>(instanceName, QStringList());
    RunningInstance second(instanceName, {});
    EXPECT_EQ(first->claim(), Claim::Claimed);
    EXPECT_EQ(first->claim(), Claim::Claimed);
    EXPECT_EQ(second.claim(), Claim::Taken);
    EXPECT_EQ(ask(Request::look()).answer, Answer::Done);
    first.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return second.claim() == Claim::Claimed; }));
}

TEST_F(RunningInstanceTest, IsNotThereBeforeAnyoneClaimsIt) {
    EXPECT_EQ(ask(Request::activate()).answer, Answer::NobodyThere);
    EXPECT_EQ(ask(Request::look()).answer, Answer::NobodyThere);
}

TEST_F(RunningInstanceTest, ActivationBringsTheTokensOfTheLauncher) {
    RunningInstance instance(instanceName, {});
    QSignalSpy activated(&instance, &RunningInstance::activated);
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    instance.beginToDeliver();
    qputenv("DESKTOP_STARTUP_ID", "launcher-1_TIME42");
    qputenv("XDG_ACTIVATION_TOKEN", "token");
    EXPECT_EQ(ask(Request::activate()).answer, Answer::Done);
    ASSERT_TRUE(activated.count() == 1 || activated.wait());
    const QVariantMap data = activated.at(0).at(0).toMap();
    EXPECT_EQ(data.value(QStringLiteral("desktop-startup-id")), QStringLiteral("launcher-1_TIME42"));
    EXPECT_EQ(data.value(QStringLiteral("activation-token")), QStringLiteral("token"));

    qunsetenv("DESKTOP_STARTUP_ID");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    EXPECT_EQ(ask(Request::activate()).answer, Answer::Done);
    ASSERT_TRUE(activated.count() == 2 || activated.wait());
    EXPECT_TRUE(activated.at(1).at(0).toMap().isEmpty());
}

TEST_F(RunningInstanceTest, KeepsWhatIsAskedUntilItDeliversAndItsOrder) {
    RunningInstance instance(instanceName, {QStringLiteral("go")});
    QStringList told;
    QObject::connect(&instance, &RunningInstance::activated, [&] { told += QStringLiteral("activated"); });
    QObject::connect(&instance, &RunningInstance::opened,
                     [&](const QList<QUrl>& urls) { told += urls.constFirst().toString(); });
    QObject::connect(&instance, &RunningInstance::actionActivated, [&](const QString& action) { told += action; });
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    EXPECT_EQ(ask(Request::open({QUrl(QStringLiteral("file:///a%20b"))})).answer, Answer::Done);
    EXPECT_EQ(ask(Request::activate()).answer, Answer::Done);
    QCoreApplication::processEvents();
    EXPECT_TRUE(told.isEmpty());
    instance.beginToDeliver();
    EXPECT_TRUE(told.isEmpty());
    EXPECT_EQ(ask(Request::action(QStringLiteral("go"))).answer, Answer::Done);
    EXPECT_TRUE(QTest::qWaitFor([&] { return told.size() == 3; }));
    EXPECT_EQ(told.join(u' '), QStringLiteral("file:///a b activated go"));
}

TEST_F(RunningInstanceTest, HandsParametersOfActionsOn) {
    RunningInstance instance(instanceName, {QStringLiteral("go")});
    QSignalSpy acted(&instance, &RunningInstance::actionActivated);
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    instance.beginToDeliver();
    const QStringList words{QStringLiteral("one"), QStringLiteral("two")};
    EXPECT_EQ(ask(Request::action(QStringLiteral("go"), {words, 3})).answer, Answer::Done);
    ASSERT_TRUE(acted.count() == 1 || acted.wait());
    const QVariantList parameters = acted.at(0).at(1).toList();
    ASSERT_EQ(parameters.size(), 2);
    EXPECT_EQ(parameters.at(0).toStringList(), words);
    EXPECT_EQ(parameters.at(1).toInt(), 3);
}

TEST_F(RunningInstanceTest, OpensManyFilesAtOnce) {
    RunningInstance instance(instanceName, {});
    QSignalSpy opened(&instance, &RunningInstance::opened);
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    instance.beginToDeliver();
    QList<QUrl> urls;
    for (int number = 0; number < 20000; ++number) {
        urls.push_back(QUrl::fromLocalFile(QStringLiteral("/folder/ü #%1?.txt").arg(number)));
    }
    // What is none is left out.
    EXPECT_EQ(ask(Request::open(QList<QUrl>{QUrl(), QUrl(QStringLiteral("relative"))} + urls)).answer, Answer::Done);
    ASSERT_TRUE(opened.count() == 1 || opened.wait());
    EXPECT_EQ(opened.at(0).at(0).value<QList<QUrl>>(), urls);
}

TEST_F(RunningInstanceTest, RefusesAnActionThatTheProgramDoesNotKnow) {
    RunningInstance instance(instanceName, {QStringLiteral("go")});
    QSignalSpy acted(&instance, &RunningInstance::actionActivated);
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    instance.beginToDeliver();
    const Outcome outcome = ask(Request::action(QStringLiteral("explode")));
    EXPECT_EQ(outcome.answer, Answer::Failed);
    EXPECT_THAT(outcome.problem.toStdString(), testing::HasSubstr("refuses: There is no action “explode”"));
    EXPECT_FALSE(acted.wait(100));
}

TEST_F(RunningInstanceTest, RefusesArgumentsThatMakeNoSense) {
    RunningInstance instance(instanceName, {QStringLiteral("go")});
    QSignalSpy opened(&instance, &RunningInstance::opened);
    QSignalSpy acted(&instance, &RunningInstance::actionActivated);
    QSignalSpy activated(&instance, &RunningInstance::activated);
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    instance.beginToDeliver();
    for (const char* uri : {"", "no URI", "relative/path", "file:///%zz", "http://[::"}) {
        const QDBusMessage reply = call("Open", {QStringList{QString::fromLatin1(uri)}, QVariantMap()});
        EXPECT_EQ(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs")) << uri;
    }
    EXPECT_EQ(call("Open", {QStringList(), QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    for (const auto& [method, arguments] :
         {std::pair("Activate", QVariantList{7}), std::pair("Open", QVariantList{QStringLiteral("file:///a")}),
          std::pair("ActivateAction", QVariantList{QStringLiteral("go")}), std::pair("deleteLater", QVariantList()),
          std::pair("Explode", QVariantList())}) {
        EXPECT_EQ(call(method, arguments).type(), QDBusMessage::ErrorMessage) << method;
    }
    EXPECT_FALSE(opened.wait(100));
    EXPECT_TRUE(acted.isEmpty());
    EXPECT_TRUE(activated.isEmpty());
}

TEST_F(RunningInstanceTest, AnswersBeforeTheProgramDoesAnything) {
    RunningInstance instance(instanceName, {});
    int depth = 0;
    int deepest = 0;
    QObject::connect(&instance, &RunningInstance::activated, [&] {
        deepest = std::max(deepest, ++depth);
        // A question to the person, which nobody answers for a while.
        if (depth == 1) {
            EXPECT_EQ(ask(Request::activate()).answer, Answer::Done);
            EXPECT_TRUE(QTest::qWaitFor([&] { return deepest == 2; }));
        }
        --depth;
    });
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    EXPECT_EQ(ask(Request::activate()).answer, Answer::Done);
    EXPECT_EQ(deepest, 0);
    instance.beginToDeliver();
    EXPECT_TRUE(QTest::qWaitFor([&] { return deepest == 2 && depth == 0; }));
}

TEST_F(RunningInstanceTest, OneThatHangsIsWaitedForNoLongerThanSaid) {
    RunningInstance instance(instanceName, {});
    ASSERT_EQ(instance.claim(), Claim::Claimed);
    QString problem;
    QElapsedTimer clock;
    clock.start();
    // By the same thread, so that no event loop runs meanwhile.
    EXPECT_EQ(RunningInstance::ask(instanceName, Request::activate(), &problem, 300), Answer::Failed);
    // Qt waits by a coarse timer, which may end a twentieth early.
    EXPECT_GE(clock.elapsed(), 300 - 300 / 20 - 1);
    EXPECT_LT(clock.elapsed(), 5000);
    const std::string process = "process " + std::to_string(QCoreApplication::applicationPid());
    EXPECT_THAT(problem.toStdString(), testing::HasSubstr(process));
    EXPECT_THAT(problem.toStdString(), testing::HasSubstr("did not answer within 1 seconds"));
}

TEST_F(RunningInstanceTest, AnotherProgramWithTheNameIsNotTakenForIt) {
    QDBusConnection stranger = QDBusConnection::connectToBus(bus->address(), QStringLiteral("stranger"));
    ASSERT_TRUE(stranger.registerService(instanceName));
    const Outcome outcome = ask(Request::activate());
    EXPECT_EQ(outcome.answer, Answer::Failed);
    EXPECT_THAT(outcome.problem.toStdString(), testing::HasSubstr("belongs to another program (process "));
    RunningInstance instance(instanceName, {});
    EXPECT_EQ(instance.claim(), Claim::Taken);
    QDBusConnection::disconnectFromBus(QStringLiteral("stranger"));
}

TEST_F(RunningInstanceTest, OneThatEndsWhileItIsAskedCountsAsGone) {
    EndingProgram ending(bus->address());
    EXPECT_EQ(ask(Request::activate()).answer, Answer::NobodyThere);
    EXPECT_TRUE(ending.wasAsked);
}

TEST(RunningInstanceWithoutABus, IsNobodysAndNobodyIsThere) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    int argc = 1;
    char programName[5] = "test";
    char* argv[2] = {programName, nullptr};
    const QCoreApplication application(argc, argv);
    RunningInstance instance(instanceName, {});
    EXPECT_EQ(instance.claim(), Claim::NoBus);
    EXPECT_EQ(RunningInstance::ask(instanceName, Request::activate()), Answer::NobodyThere);
}

#include "RunningInstanceTest.moc"

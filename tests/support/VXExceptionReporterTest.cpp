// SPDX-License-Identifier: MIT
#include <VXKit/support/VXExceptionReporter.h>

#include "../LoopbackServer.h"
#include "../ModalRun.h"
#include "ChildProgram.h"

#include <VXKit/platform/appkit/NSScreen.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/foundation/NSThread.h>
#include <VXKit/support/VXCrashRecord.h>
#include <VXKit/support/VXCrashRecording.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <mutex>
#include <stdexcept>
#include <sys/utsname.h>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int enoughFrames = 5; // of the test and what calls it

/// Beeps are counted.
class ReporterHost : public NSApplication {
public:
    using NSApplication::NSApplication;
    void soundBell() override { ++beeps; }
    int beeps = 0;
};

class ExceptionReporter : public testing::Test {
protected:
    ExceptionReporter() {
        QCoreApplication::setApplicationName(QStringLiteral("Host"));
        QCoreApplication::setApplicationVersion(QStringLiteral("42"));
    }
    ~ExceptionReporter() override {
        VXExceptionReporter::setReportingHost({});
        NSSetUncaughtExceptionHandler({});
    }

    template <class Widget>
    static Widget& field(const char* name) {
        auto* widget = VXExceptionReporter::reporter().window()->findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(widget, nullptr) << name;
        return *widget;
    }
    static void type(QWindow& window, const char* text) {
        for (; *text != '\0'; ++text) {
            QTest::keyClick(&window, *text);
        }
    }
    static void click(const char* button) { field<QPushButton>(button).click(); }

    /// Reports `problem`, and does `inside` once its window is shown.
    void report(const NSException& problem, const std::function<void()>& inside) {
        whenNextModalRunHasBegun(application, inside);
        VXExceptionReporter::reporter().reportException(problem);
    }
    void reportAndIgnore(const NSException& problem) {
        report(problem, [] { click("ignoreButton"); });
    }

    /// What the server gets of a report to which the user gave these words and this address.
    QByteArray sentBody(const NSException& problem, const QString& details, const QString& email) {
        const LoopbackServer server([](int, const LoopbackRequest&) { return LoopbackAnswer::status(200, "thanks"); });
        VXExceptionReporter::setReportingHost(server.host());
        report(problem, [&] {
            field<QPlainTextEdit>("detailsView").setPlainText(details);
            field<QLineEdit>("emailField").setText(email);
            click("reportButton");
        });
        EXPECT_EQ(server.requests().size(), 1U);
        return server.requests().empty() ? QByteArray() : server.requests().front().body;
    }

    int argc = 1;
    char name[5] = "host";
    char* argv[2] = {name, nullptr};
    ReporterHost application{argc, argv};
    const NSException exception{"TestException", QStringLiteral("It failed & burned")};
};

/// Reports from a function that the stack must tell of, and answers how many frames its own stack had.
[[gnu::noinline]] std::size_t reportFromAStaticFunction(const NSException& exception) {
    VXExceptionReporter::reporter().reportException(exception);
    const std::size_t count = NSThread::callStackReturnAddresses().size();
    EXPECT_GT(count, 0U); // after which this frame is still there
    return count;
}

[[gnu::noinline]] void throwFromAStaticFunction() {
    throw NSException("Thrown", QStringLiteral("on purpose"));
}

QByteArray versionOfKernel() {
    utsname system{};
    return ::uname(&system) == 0 ? QByteArray(system.version) : QByteArray();
}

} // namespace

TEST_F(ExceptionReporter, StandsOnTheGroundThatTheTextIsFor) {
    const QColor dark(0x20, 0x22, 0x24);
    QPalette palette(dark);
    palette.setColor(QPalette::WindowText, Qt::white);
    QApplication::setPalette(palette);
    QColor ground;
    report(exception, [&] {
        NSWindow& window = *VXExceptionReporter::reporter().window();
        ground = window.grab().toImage().pixelColor(2, window.height() - 3);
        click("ignoreButton");
    });
    EXPECT_EQ(ground, dark);
}

TEST_F(ExceptionReporter, IsOneForTheProcess) {
    EXPECT_EQ(&VXExceptionReporter::reporter(), &VXExceptionReporter::reporter());
    EXPECT_FALSE(VXExceptionReporter::reporter().window()->isVisible());
    EXPECT_TRUE(VXExceptionReporter::reporter().stackTrace().isNull());
    EXPECT_EQ(VXExceptionReporter::reporter().exception(), std::nullopt);
}

TEST_F(ExceptionReporter, PutsTheNameOfTheProcessWhereverItsTextsAskForIt) {
    const QString message = field<QLabel>("messageField").text();
    EXPECT_EQ(message.count(QStringLiteral("Host")), 1) << qPrintable(message);
    const QString information = field<QLabel>("informationField").text();
    EXPECT_EQ(information.count(QStringLiteral("Host")), 2) << qPrintable(information);
    EXPECT_FALSE((message + information).contains(QStringLiteral("%@")));
}

TEST_F(ExceptionReporter, ShowsItsWindowModallyInTheMiddleUntilItIsIgnored) {
    bool wasShown = false;
    report(exception, [&] {
        const NSWindow& window = *VXExceptionReporter::reporter().window();
        wasShown = window.isVisible() && application.modalWindow() == &window;
        const NSRect screen = NSScreen::mainScreen().visibleFrame();
        EXPECT_NEAR(NSMidX(window.frame()), NSMidX(screen), 1);
        click("ignoreButton");
    });
    EXPECT_TRUE(wasShown);
    EXPECT_EQ(application.modalWindow(), nullptr);
    EXPECT_FALSE(VXExceptionReporter::reporter().window()->isVisible());
}

TEST_F(ExceptionReporter, ExpectedFailuresShowNothingAndLeaveTheLastReportAsItWas) {
    reportAndIgnore(exception);
    const QString trace = VXExceptionReporter::reporter().stackTrace();
    ASSERT_FALSE(trace.isEmpty());
    for (const char* expected : {"RSSDownloadFailed", "RSSParseFailed", "NSAccessibilityException"}) {
        // Returns, with nobody there to end a modal run.
        VXExceptionReporter::reporter().reportException(NSException(expected, QStringLiteral("expected")));
        EXPECT_EQ(VXExceptionReporter::reporter().stackTrace(), trace);
        EXPECT_EQ(VXExceptionReporter::reporter().exception()->name(), QStringLiteral("TestException"));
    }
}

TEST_F(ExceptionReporter, TheStackIsThatOfTheCallerWithALineForEachReturnAddress) {
    whenNextModalRunHasBegun(application, [] { click("ignoreButton"); });
    const std::size_t frames = reportFromAStaticFunction(exception);
    const QString trace = VXExceptionReporter::reporter().stackTrace();
    ASSERT_GT(frames, std::size_t{enoughFrames});
    EXPECT_TRUE(trace.startsWith(QLatin1Char('\n')));
    const QStringList lines = trace.mid(1).split(QLatin1Char('\n'));
    EXPECT_EQ(static_cast<std::size_t>(lines.size()), frames + 1) << "those of the caller and its own";
    EXPECT_THAT(lines.value(0).toStdString(), HasSubstr("VXExceptionReporter::reportException"));
    EXPECT_THAT(lines.value(1).toStdString(), HasSubstr("reportFromAStaticFunction"));
    EXPECT_FALSE(lines.contains(QString()));
}

TEST_F(ExceptionReporter, ShowsTheExactExceptionTextAndStackBeforeItIsSent) {
    NSDictionary userInfo;
    userInfo.setObject("a value", "key");
    QString shown;
    report(NSException("TestException", QStringLiteral("It failed"), userInfo), [&] {
        shown = field<QPlainTextEdit>("reportView").toPlainText();
        click("ignoreButton");
    });
    EXPECT_THAT(shown.toStdString(), HasSubstr("Name: TestException\nReason: It failed\nFurther info: {\n"
                                               "    key = \"a value\";\n}"));
    EXPECT_THAT(shown.toStdString(), HasSubstr(VXExceptionReporter::reporter().stackTrace().toStdString()));
    EXPECT_THAT(shown.toStdString(), HasSubstr("Host 42"));
    EXPECT_THAT(shown.toStdString(), HasSubstr(versionOfKernel().toStdString()));
}

TEST_F(ExceptionReporter, SendsExactlyThisBody) {
    const QByteArray body = sentBody(exception, QStringLiteral("a b&c"), QStringLiteral("me at home@example.org"));
    EXPECT_EQ(body, "description=a%20b&c"
                    "&exception=Name:%20TestException%0AReason:%20It%20failed%20&%20burned%0A"
                    "Further%20info:%20(null)"
                    "&version=42&stack=" +
                        VXExceptionReporter::reporter().stackTrace().toUtf8() +
                        "&email=me at home@example.org&AppName=Host&OSVersion=" + versionOfKernel());
}

TEST_F(ExceptionReporter, SendsNothingAsNothingAndWhatIsMissingAsNil) {
    QCoreApplication::setApplicationVersion({});
    const QByteArray body = sentBody(NSException("Ä", {}), {}, {});
    EXPECT_TRUE(body.startsWith("description=&exception=Name:%20%C3%84%0AReason:%20(null)%0A")) << body.constData();
    EXPECT_TRUE(body.contains("&version=(null)&stack=\n")) << body.constData();
    EXPECT_TRUE(body.contains("&email=&AppName=Host&")) << body.constData();
}

TEST_F(ExceptionReporter, PostsTheFormToItsPathPastEveryCache) {
    const LoopbackServer server([](int, const LoopbackRequest&) { return LoopbackAnswer::status(200, "thanks"); });
    VXExceptionReporter::setReportingHost(server.host());
    report(exception, [] { click("reportButton"); });
    ASSERT_EQ(server.requests().size(), 1U);
    const LoopbackRequest request = server.requests().front();
    EXPECT_EQ(request.firstLine(), "POST /_report.php HTTP/1.1");
    EXPECT_TRUE(request.head.toLower().contains("\r\ncache-control: no-cache\r\n"));
}

TEST_F(ExceptionReporter, SendsAgainUntilSomethingComesBack) {
    const VXExceptionReporter::TimeoutForTesting soon(0.2);
    const std::vector<LoopbackAnswer> answers{
        LoopbackAnswer::status(200, {}),
        {.bytes = {}, .end = LoopbackAnswer::End::Reset},
        {.bytes = {}, .end = LoopbackAnswer::End::Close},
        {.bytes = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf", .end = LoopbackAnswer::End::Close},
        LoopbackAnswer::status(500, {}),
        {.bytes = {}, .end = LoopbackAnswer::End::Silence},
        LoopbackAnswer::status(500, "it is full, but it is here"),
    };
    // A server that answers too late, when the next try is on its way, is one too many.
    const LoopbackServer server([&](int number, const LoopbackRequest&) {
        return answers[std::min(static_cast<std::size_t>(number), answers.size()) - 1];
    });
    VXExceptionReporter::setReportingHost(server.host());
    report(exception, [] { click("reportButton"); });
    const std::vector<LoopbackRequest> requests = server.requests();
    EXPECT_EQ(requests.size(), answers.size());
    for (const LoopbackRequest& request : requests) {
        EXPECT_EQ(request.body, requests.front().body);
        EXPECT_FALSE(request.body.isEmpty());
    }
    EXPECT_FALSE(VXExceptionReporter::reporter().window()->isVisible());
}

TEST_F(ExceptionReporter, SaysThatItSendsAndThenBlocks) {
    std::mutex mutex;
    std::vector<std::string> happened;
    const auto note = [&](const char* what) {
        const std::lock_guard lock(mutex);
        happened.emplace_back(what);
    };
    class PaintSpy : public QObject {
    public:
        std::function<void()> painted;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint) {
                painted();
            }
            return false;
        }
    } spy;
    QTimer timer;
    const LoopbackServer server([&](int number, const LoopbackRequest&) {
        note("request");
        QThread::msleep(number == 1 ? 50 : 1);
        return LoopbackAnswer::status(200, number == 1 ? "" : "thanks");
    });
    VXExceptionReporter::setReportingHost(server.host());
    report(exception, [&] {
        auto& status = field<QLabel>("statusField");
        EXPECT_TRUE(status.text().isEmpty());
        spy.painted = [&] {
            if (!status.text().isEmpty()) {
                note("says that it sends");
            }
        };
        status.installEventFilter(&spy);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(VXExceptionReporter::reporter().window()));
        timer.callOnTimeout(&application, [&] { note("timer"); });
        timer.start(1);
        click("reportButton");
        timer.stop();
        EXPECT_TRUE(status.text().isEmpty()) << "for the next report";
    });
    EXPECT_THAT(happened, ElementsAre("says that it sends", "request", "request"));
}

TEST_F(ExceptionReporter, QuitEndsTheRunAndThenTheApplication) {
    std::vector<std::string> happened;
    NSNotificationCenter::defaultCenter().addObserver(
        &application,
        [&](const NSNotification&) { happened.emplace_back(application.modalWindow() ? "in the run" : "terminates"); },
        NSApplicationWillTerminateNotification, nullptr);
    QTimer::singleShot(0, &application, [&] {
        report(exception, [] { click("quitButton"); });
        happened.emplace_back("returned");
    });
    EXPECT_EQ(application.run(), 0);
    EXPECT_THAT(happened, ElementsAre("in the run", "returned")) << "which ends when control is back in it";
}

TEST_F(ExceptionReporter, WithoutAHostItOffersToCopyTheReport) {
    report(exception, [&] {
        EXPECT_FALSE(field<QPushButton>("reportButton").isEnabled());
        EXPECT_FALSE(field<QLabel>("statusField").text().isEmpty());
        VXExceptionReporter::reporter().report(nullptr);
        EXPECT_EQ(application.beeps, 1);
        EXPECT_TRUE(VXExceptionReporter::reporter().window()->isVisible());
        click("copyButton");
        click("ignoreButton");
    });
    EXPECT_EQ(QGuiApplication::clipboard()->text(), field<QPlainTextEdit>("reportView").toPlainText());
}

TEST_F(ExceptionReporter, TakesNoHostThatIsNone) {
    for (const char* wrong : {"a b", "http://example.org", "example.org/path", "example.org:port", ":80"}) {
        VXExceptionReporter::setReportingHost(QString::fromLatin1(wrong));
        EXPECT_TRUE(VXExceptionReporter::reportingHost().isNull()) << wrong;
    }
    for (const char* right : {"example.org", "example.org:8080", "127.0.0.1", "[::1]:80"}) {
        VXExceptionReporter::setReportingHost(QString::fromLatin1(right));
        EXPECT_EQ(VXExceptionReporter::reportingHost(), QString::fromLatin1(right));
    }
}

TEST_F(ExceptionReporter, ClosingItsWindowIsTheSameAsIgnoring) {
    report(exception, [] { VXExceptionReporter::reporter().window()->close(); });
    EXPECT_EQ(application.modalWindow(), nullptr);
}

TEST_F(ExceptionReporter, AProblemWhileOneIsShownIsNotShown) {
    report(exception, [] {
        VXExceptionReporter::reporter().reportException(NSException("Another", QStringLiteral("inside")));
        click("ignoreButton");
    });
    EXPECT_EQ(VXExceptionReporter::reporter().exception()->name(), QStringLiteral("TestException"));
    EXPECT_EQ(application.modalWindow(), nullptr);
}

TEST_F(ExceptionReporter, TheUsersWordsAreOfOneReportAndTheAddressOfAll) {
    report(exception, [] {
        field<QPlainTextEdit>("detailsView").setPlainText(QStringLiteral("words"));
        field<QLineEdit>("emailField").setText(QStringLiteral("me@example.org"));
        click("ignoreButton");
    });
    report(exception, [] {
        EXPECT_TRUE(field<QPlainTextEdit>("detailsView").toPlainText().isEmpty());
        EXPECT_EQ(field<QLineEdit>("emailField").text(), QStringLiteral("me@example.org"));
        click("ignoreButton");
    });
}

TEST_F(ExceptionReporter, IsUsedByKeyboardAlone) {
    const LoopbackServer server([](int, const LoopbackRequest&) { return LoopbackAnswer::status(200, "thanks"); });
    VXExceptionReporter::setReportingHost(server.host());
    report(exception, [&] {
        QWindow* const window = VXExceptionReporter::reporter().window()->windowHandle();
        ASSERT_TRUE(QTest::qWaitFor([&] { return field<QPlainTextEdit>("detailsView").hasFocus(); }));
        type(*window, "typed");
        QTest::keyClick(window, Qt::Key_Tab);
        EXPECT_TRUE(field<QLineEdit>("emailField").hasFocus());
        type(*window, "me@home");
        QTest::keyClick(window, Qt::Key_Tab);
        EXPECT_TRUE(field<QPlainTextEdit>("reportView").hasFocus());
        for (const char* button : {"reportButton", "ignoreButton", "copyButton", "quitButton"}) {
            QTest::keyClick(window, Qt::Key_Tab);
            EXPECT_TRUE(field<QPushButton>(button).hasFocus()) << button;
        }
        QTest::keyClick(window, Qt::Key_E, Qt::AltModifier);
        EXPECT_TRUE(field<QLineEdit>("emailField").hasFocus());
        QTest::keyClick(window, Qt::Key_Return);
    });
    ASSERT_EQ(server.requests().size(), 1U) << "sent by Return";
    EXPECT_TRUE(server.requests().front().body.startsWith("description=typed&"));
    EXPECT_TRUE(server.requests().front().body.contains("&email=me@home&"));

    report(exception,
           [] { QTest::keyClick(VXExceptionReporter::reporter().window()->windowHandle(), Qt::Key_Escape); });
    EXPECT_EQ(server.requests().size(), 1U) << "not sent by Escape";
}

TEST_F(ExceptionReporter, NamesItsFieldsForScreenReaders) {
    for (const char* text : {"detailsView", "reportView"}) {
        EXPECT_FALSE(field<QPlainTextEdit>(text).accessibleName().isEmpty());
    }
    EXPECT_FALSE(field<QLineEdit>("emailField").accessibleName().isEmpty());
}

TEST_F(ExceptionReporter, ShowsWhatLeavesTheHandlingOfAnEventWithTheStackThatThrewIt) {
    VXReportUncaughtExceptions();
    whenNextModalRunHasBegun(application, [] { click("ignoreButton"); });
    bool goesOn = false;
    QTimer::singleShot(0, &application, [] { throwFromAStaticFunction(); });
    QTimer::singleShot(0, &application, [&] { goesOn = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return VXExceptionReporter::reporter().exception() && goesOn; }));
    const NSException reported = *VXExceptionReporter::reporter().exception();
    EXPECT_EQ(reported.name(), QStringLiteral("Thrown"));
    ASSERT_TRUE(reported.userInfo());
    const NSPropertyList* stack = reported.userInfo()->objectForKey(NSStackTraceKey);
    ASSERT_NE(stack, nullptr);
    bool isNamed = false;
    for (const NSPropertyList& line : *stack->as<NSArray>()) {
        isNamed |= line.as<std::string>()->find("throwFromAStaticFunction") != std::string::npos;
    }
    EXPECT_TRUE(isNamed);
}

TEST_F(ExceptionReporter, ShowsExceptionsOfEveryClass) {
    VXReportUncaughtExceptions();
    const auto reportedOf = [&](const std::function<void()>& thrower) {
        whenNextModalRunHasBegun(application, [] { click("ignoreButton"); });
        bool isOver = false;
        QTimer::singleShot(0, &application, thrower);
        QTimer::singleShot(1, &application, [&] { isOver = true; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return isOver && !application.modalWindow(); }));
        return *VXExceptionReporter::reporter().exception();
    };
    const NSException standard = reportedOf([] { throw std::out_of_range("too far"); });
    EXPECT_EQ(standard.name(), QStringLiteral("std::out_of_range"));
    EXPECT_EQ(standard.reason(), QStringLiteral("too far"));
    EXPECT_EQ(reportedOf([] { throw 42; }).name(), QStringLiteral("int"));
}

TEST_F(ExceptionReporter, ShowsWhatAnotherThreadsEventLoopThrewOnTheMainThread) {
    VXReportUncaughtExceptions();
    bool isMainThread = false;
    whenNextModalRunHasBegun(application, [&] {
        isMainThread = NSThread::isMainThread();
        click("ignoreButton");
    });
    QThread thread;
    QObject inThread;
    inThread.moveToThread(&thread);
    thread.start();
    QMetaObject::invokeMethod(&inThread, [] { throw std::runtime_error("in a thread"); });
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return VXExceptionReporter::reporter().exception() && !application.modalWindow(); }));
    EXPECT_TRUE(isMainThread);
    thread.quit();
    thread.wait();
}

TEST_F(ExceptionReporter, OffersTheCrashOfAnEarlierRunOnceWithItsStack) {
    const QTemporaryDir folder;
    ASSERT_EQ(ChildProgram({CRASHING_PROGRAM, "null", folder.path().toStdString()}).end(), -SIGSEGV);
    QString shown;
    whenNextModalRunHasBegun(application, [&] {
        shown = field<QPlainTextEdit>("reportView").toPlainText();
        EXPECT_THAT(field<QLabel>("messageField").text().toStdString(), HasSubstr("Host ended unexpectedly"));
        click("ignoreButton");
    });
    VXReportCrashes(folder.path());
    EXPECT_TRUE(shown.isEmpty()) << "not before the application handles events";
    ASSERT_TRUE(QTest::qWaitFor([&] { return !shown.isEmpty() && !application.modalWindow(); }));
    EXPECT_THAT(shown.toStdString(), HasSubstr("Name: SIGSEGV\nReason: Segmentation fault\n"));
    EXPECT_THAT(VXExceptionReporter::reporter().stackTrace().toStdString(),
                testing::StartsWith("\n(anonymous namespace)::staticCrash()\n(anonymous namespace)::readNull()\n"));
    EXPECT_TRUE(VXTakeCrashRecords(folder.path()).empty());

    reportAndIgnore(exception);
    EXPECT_THAT(field<QLabel>("messageField").text().toStdString(), HasSubstr("Host has met")) << "the texts are back";
    VXStopRecordingCrashes();
}

TEST_F(ExceptionReporter, TellsTheExceptionThatEndedAnEarlierRun) {
    const QTemporaryDir folder;
    ASSERT_EQ(ChildProgram({CRASHING_PROGRAM, "exception", folder.path().toStdString()}).end(), -SIGABRT);
    const std::vector<VXCrashRecord> records = VXTakeCrashRecords(folder.path());
    ASSERT_EQ(records.size(), 1U);
    whenNextModalRunHasBegun(application, [] { click("ignoreButton"); });
    VXExceptionReporter::reporter().reportCrash(records.front());
    const NSException reported = *VXExceptionReporter::reporter().exception();
    EXPECT_EQ(reported.name(), records.front().exceptionType());
    EXPECT_EQ(reported.reason(), records.front().exceptionReason());
    EXPECT_FALSE(reported.name().isEmpty());
}

TEST_F(ExceptionReporter, WithoutAHandlerNothingIsCaught) {
    QObject receiver;
    class Thrower : public QObject {
        bool event(QEvent*) override { throw std::runtime_error("out of an event"); }
    } thrower;
    QEvent event(QEvent::User);
    EXPECT_THROW(QCoreApplication::sendEvent(&thrower, &event), std::runtime_error);
}

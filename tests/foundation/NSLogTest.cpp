// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QDateTime>
#include <QRegularExpression>

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/socket.h>
#include <syslog.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

struct SystemLogLine {
    int priority;
    std::string message;
};

std::mutex systemLogMutex;
std::vector<SystemLogLine> systemLog;

void recordSystemLog(int priority, const char* format, std::va_list arguments) {
    char buffer[1024];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
#pragma GCC diagnostic pop
    const std::lock_guard lock(systemLogMutex);
    systemLog.push_back({priority, buffer});
}

/// Standard error as a socket that keeps every write apart, while it lives.
class StandardErrorMessages {
public:
    StandardErrorMessages() : m_standardError(::dup(STDERR_FILENO)) {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, m_ends), 0);
        ::dup2(m_ends[1], STDERR_FILENO);
    }
    StandardErrorMessages(const StandardErrorMessages&) = delete;
    StandardErrorMessages& operator=(const StandardErrorMessages&) = delete;
    ~StandardErrorMessages() {
        ::dup2(m_standardError, STDERR_FILENO);
        ::close(m_standardError);
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }

    /// What the next write wrote.
    [[nodiscard]] QString next() const {
        char buffer[4096];
        const ssize_t length = ::recv(m_ends[0], buffer, sizeof buffer, 0);
        return QString::fromUtf8(buffer, length);
    }

    [[nodiscard]] bool isEmpty() const {
        char buffer[1];
        return ::recv(m_ends[0], buffer, sizeof buffer, MSG_DONTWAIT | MSG_PEEK) < 0;
    }

private:
    int m_standardError;
    int m_ends[2] = {-1, -1};
};

} // namespace

// These stand in for the C library's, so that a test sees what would go to the system log.
__attribute__((visibility("default"))) void recordedSyslog(int priority, const char* format, ...) __asm__("syslog");
__attribute__((visibility("default"))) void recordedCheckedSyslog(int priority, int flag, const char* format,
                                                                  ...) __asm__("__syslog_chk");

void recordedSyslog(int priority, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    recordSystemLog(priority, format, arguments);
    va_end(arguments);
}

void recordedCheckedSyslog(int priority, int /*flag*/, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    recordSystemLog(priority, format, arguments);
    va_end(arguments);
}

TEST(NSLog, WritesTimeProcessAndThreadBeforeTheMessage) {
    NSProcessInfo::processInfo().setProcessName(QStringLiteral("Notes"));
    const StandardErrorMessages messages;
    const QDateTime before = QDateTime::currentDateTime();
    NSLog("%d notes, %@", 3, nullptr);
    const QDateTime after = QDateTime::currentDateTime();
    const QString line = messages.next();

    const QRegularExpression pattern(
        QStringLiteral(R"(\A(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}) Notes\[%1:%2\] 3 notes, \(null\)\n\z)")
            .arg(::getpid())
            .arg(::gettid()));
    const QRegularExpressionMatch match = pattern.match(line);
    ASSERT_TRUE(match.hasMatch()) << line.toStdString();
    const QDateTime stamp = QDateTime::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    EXPECT_LE(before, stamp);
    EXPECT_LE(stamp, after);
}

TEST(NSLog, TellsTheThreadThatLogs) {
    const StandardErrorMessages messages;
    pid_t thread = 0;
    std::thread([&] {
        thread = ::gettid();
        NSLog("from a thread");
    }).join();
    EXPECT_NE(thread, ::getpid());
    EXPECT_TRUE(messages.next().contains(QStringLiteral(":%1] from a thread\n").arg(thread)));
}

TEST(NSLog, WritesALineInOneGoAndKeepsItsNewlines) {
    const StandardErrorMessages messages;
    NSLog("first\nsecond\n%s", "third");
    EXPECT_TRUE(messages.next().endsWith(QStringLiteral("] first\nsecond\nthird\n")));
    EXPECT_TRUE(messages.isEmpty());
}

TEST(NSLog, SendsTheMessageToTheSystemLogAsANotice) {
    const StandardErrorMessages messages;
    NSLog("%@ of it", "100%s");
    const std::lock_guard lock(systemLogMutex);
    ASSERT_EQ(systemLog.size(), 1U);
    EXPECT_EQ(systemLog[0].priority, LOG_NOTICE | LOG_USER);
    EXPECT_EQ(systemLog[0].message, "100%s of it");
}

TEST(NSLog, PrintsUncheckedArguments) {
    const StandardErrorMessages messages;
    NSLogv("%@ and %@", NSMakeFormatArguments("one"));
    EXPECT_TRUE(messages.next().endsWith(QStringLiteral("] one and (null)\n")));
}

TEST(NSLog, KeepsLinesOfSeveralThreadsApart) {
    constexpr int threadCount = 4;
    constexpr int lineCount = 50;
    const StandardErrorMessages messages;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < lineCount; ++line) {
                NSLog("<%d.%d>", thread, line);
            }
        });
    }
    const QRegularExpression pattern(QStringLiteral(R"(\A[^<\n]*\] <(\d+\.\d+)>\n\z)"));
    std::set<QString> seen;
    for (int line = 0; line < threadCount * lineCount; ++line) {
        const QRegularExpressionMatch match = pattern.match(messages.next());
        EXPECT_TRUE(match.hasMatch());
        seen.insert(match.captured(1));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(seen.size(), std::size_t{threadCount} * lineCount);
}

TEST(NSLog, FinishesALineThatThePipeTakesInPieces) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, 0), 0);
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    const int standardError = ::dup(STDERR_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    ::close(ends[1]);
    const std::string message(1'000'000, 'x');
    std::thread logger([&] {
        NSLog("%s", message);
        ::dup2(standardError, STDERR_FILENO);
    });
    std::string received;
    char buffer[4096];
    for (ssize_t length = 0; (length = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
        received.append(buffer, static_cast<std::size_t>(length));
    }
    logger.join();
    ::close(ends[0]);
    ::close(standardError);
    EXPECT_GT(received.size(), message.size());
    EXPECT_TRUE(received.ends_with(message + "\n"));
}

TEST(NSLog, LosesALineThatCannotBeWrittenAndKeepsErrno) {
    const int standardError = ::dup(STDERR_FILENO);
    ::close(STDERR_FILENO);
    errno = ENOTTY;
    NSLog("nobody reads this");
    EXPECT_EQ(errno, ENOTTY);
    ::dup2(standardError, STDERR_FILENO);
    ::close(standardError);
}

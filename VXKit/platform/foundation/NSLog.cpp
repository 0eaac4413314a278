// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSLog.h>

#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QByteArray>
#include <QDateTime>

#include <cerrno>
#include <mutex>
#include <poll.h>
#include <syslog.h>
#include <unistd.h>

namespace {

std::mutex lineMutex;

/// Writes all of `line` to standard error, in one go unless the kernel takes it in pieces. A pipe that is full for now
/// is waited for, as a pipe that blocks would be.
void writeToStandardError(const QByteArray& line) {
    const char* position = line.constData();
    const char* const end = position + line.size();
    while (position != end) {
        const ssize_t written = ::write(STDERR_FILENO, position, static_cast<std::size_t>(end - position));
        if (written > 0) {
            position += written;
        } else if (written < 0 && errno == EAGAIN) {
            pollfd waiting{STDERR_FILENO, POLLOUT, 0};
            ::poll(&waiting, 1, -1);
        } else if (written == 0 || errno != EINTR) {
            return;
        }
    }
}

} // namespace

void NSLogv(std::string_view format, const NSFormatArguments& arguments) {
    const int savedErrno = errno;
    const QByteArray message = NSStringWithFormatArguments(format, arguments).toUtf8();
    const NSProcessInfo& process = NSProcessInfo::processInfo();
    const QString name = process.processName();
    {
        // From the time to the line, so that lines stand in the order of their times.
        const std::lock_guard lock(lineMutex);
        const QString time = QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH:mm:ss.zzz");
        const QString prefix = NSStringWithFormat("%@ %@[%d:%d] ", time, name, process.processIdentifier(), ::gettid());
        writeToStandardError(prefix.toUtf8() + message + '\n');
    }
    ::syslog(LOG_NOTICE | LOG_USER, "%s", message.constData());
    errno = savedErrno;
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSProcessInfo.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <ctime>
#include <unistd.h>

namespace {

QString executableName() {
    const QString path = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    return path.isEmpty() ? QFile::decodeName(program_invocation_short_name) : QFileInfo(path).fileName();
}

} // namespace

NSProcessInfo::NSProcessInfo() : m_executableName(executableName()) {}

NSProcessInfo& NSProcessInfo::processInfo() {
    // Never destroyed: the destructors of other static objects still log.
    static NSProcessInfo* const instance = new NSProcessInfo;
    return *instance;
}

QString NSProcessInfo::processName() const {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_name.isEmpty()) {
            return m_name;
        }
    }
    const QString applicationName = QCoreApplication::applicationName();
    return applicationName.isEmpty() ? m_executableName : applicationName;
}

void NSProcessInfo::setProcessName(const QString& name) {
    const std::lock_guard lock(m_mutex);
    m_name = name;
}

int NSProcessInfo::processIdentifier() const {
    return ::getpid();
}

double NSProcessInfo::systemUptime() const {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

#include <mutex>

/// The process the kit runs in. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSProcessInfo {
public:
    NSProcessInfo(const NSProcessInfo&) = delete;
    NSProcessInfo& operator=(const NSProcessInfo&) = delete;

    /// The one object of the process. AppKit: `+processInfo`.
    [[nodiscard]] static NSProcessInfo& processInfo();

    /// The name set with setProcessName, else the Qt application's name, else (no application object and no name given
    /// to Qt) the file name of the executable. Never empty. May be called from any thread. AppKit: `-processName`.
    [[nodiscard]] QString processName() const;

    /// Names the process in log lines and in texts shown to the user; an empty name gives the choice back to
    /// processName. May be called from any thread. AppKit: `-setProcessName:`.
    void setProcessName(const QString& name);

    /// The process's number for the kernel. AppKit: `-processIdentifier`.
    [[nodiscard]] int processIdentifier() const;

    /// Seconds since the machine was started, without the time it slept. AppKit: `-systemUptime`.
    [[nodiscard]] double systemUptime() const;

private:
    NSProcessInfo();
    ~NSProcessInfo() = default;

    const QString m_executableName;
    mutable std::mutex m_mutex;
    QString m_name; ///< the one that was set; guarded by m_mutex
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryFile>

/// A session bus for one test, in place of the person's, which starts no programs. To be made before anything asks for
/// the session bus.
class SessionBus {
public:
    SessionBus() {
        if (m_configuration.open()) {
            m_configuration.write(R"xml(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default"><allow send_destination="*"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>
)xml");
            m_configuration.close();
        }
        m_daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + m_configuration.fileName(),
                                                       QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (m_daemon.waitForReadyRead()) {
            m_address = m_daemon.readLine().trimmed();
            qputenv("DBUS_SESSION_BUS_ADDRESS", m_address);
        }
    }
    ~SessionBus() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    [[nodiscard]] static bool canBeHad() {
        return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty();
    }
    [[nodiscard]] QString address() const { return QString::fromLatin1(m_address); }

private:
    QTemporaryFile m_configuration;
    QProcess m_daemon;
    QByteArray m_address;
};

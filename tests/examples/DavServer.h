// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

/// A WebDAV server of its own for one test: Apache on loopback, as an ordinary user, with its files in a folder that is
/// gone with it.
class DavServer {
public:
    /// How long a sync with it may take before a test gives up, in milliseconds.
    static constexpr int longestSync = 60'000;

    /// With a `name` the server wants it and the password of every request.
    explicit DavServer(QString name = {}, QString password = {});
    ~DavServer();
    DavServer(const DavServer&) = delete;
    DavServer& operator=(const DavServer&) = delete;

    /// False where it does not answer in time; its log goes to standard error.
    [[nodiscard]] bool start();
    /// Kills it with all its processes, in the middle of whatever it does. It can be started again, on the same port
    /// and files.
    void kill();

    /// Makes the files look ten seconds older where they are new, so that the server vouches for their versions at
    /// once; it does not for one that was written within the second.
    void ageFiles() const;

    [[nodiscard]] quint16 port() const { return m_port; }
    /// Of the folder that the tests use, which is not there at first.
    [[nodiscard]] QUrl address() const;
    /// That folder on the disk.
    [[nodiscard]] QDir files() const { return QDir(m_folder.filePath(QStringLiteral("root/snippets"))); }

private:
    [[nodiscard]] bool writeConfiguration() const;
    [[nodiscard]] bool answers() const;

    QTemporaryDir m_folder;
    QString m_name;
    QString m_password;
    quint16 m_port = 0;
    QProcess m_process;
};

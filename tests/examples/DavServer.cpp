// SPDX-License-Identifier: MIT
#include "DavServer.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTextStream>
#include <QThread>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int serverWaitingTime = 20'000; // milliseconds
constexpr uid_t ordinaryUser = 65534;     // nobody, where the test itself is run by root
constexpr int pauseBetweenQuestions = 20; // milliseconds

bool writeFile(const QString& path, const QString& text) {
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

quint16 freePort() {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

DavServer::DavServer(QString name, QString password) : m_name(std::move(name)), m_password(std::move(password)) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setChildProcessModifier([] { ::setpgid(0, 0); });
    for (const char* folder : {"root", "run"}) {
        QDir(m_folder.path()).mkdir(QString::fromLatin1(folder));
    }
    if (::geteuid() == 0) {
        for (const QString& path :
             {m_folder.path(), m_folder.filePath(QStringLiteral("root")), m_folder.filePath(QStringLiteral("run"))}) {
            [[maybe_unused]] const int result =
                ::chown(QFile::encodeName(path).constData(), ordinaryUser, ordinaryUser);
        }
    }
}

DavServer::~DavServer() {
    kill();
}

QUrl DavServer::address() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1/snippets").arg(m_port));
}

bool DavServer::writeConfiguration() const {
    QString text;
    QTextStream out(&text);
    const QString run = m_folder.filePath(QStringLiteral("run"));
    const QString root = m_folder.filePath(QStringLiteral("root"));
    out << "ServerRoot " << run
        << "\nPidFile pid\nErrorLog error.log\nServerName 127.0.0.1\nListen 127.0.0.1:" << m_port << '\n';
    for (const char* module :
         {"mpm_event", "authn_core", "authn_file", "authz_core", "authz_user", "auth_basic", "dav", "dav_fs"}) {
        out << "LoadModule " << module << "_module /usr/lib/apache2/modules/mod_" << module << ".so\n";
    }
    out << "DocumentRoot " << root << "\nDavLockDB lock\nKeepAliveTimeout 2\nStartServers 1\n<Directory " << root
        << ">\nDav On\n";
    if (m_name.isEmpty()) {
        out << "Require all granted\n";
    } else {
        out << "AuthType Basic\nAuthName snippets\nAuthUserFile " << run << "/users\nRequire valid-user\n";
    }
    out << "</Directory>\n";
    const QByteArray hash = QCryptographicHash::hash(m_password.toUtf8(), QCryptographicHash::Sha1).toBase64();
    return writeFile(run + QStringLiteral("/configuration"), text) &&
           writeFile(run + QStringLiteral("/users"), m_name + QStringLiteral(":{SHA}") + QString::fromLatin1(hash));
}

bool DavServer::answers() const {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_port);
    return socket.waitForConnected(serverWaitingTime);
}

bool DavServer::start() {
    if (m_port == 0) {
        m_port = freePort();
    }
    QStringList arguments{QStringLiteral("--pdeathsig"), QStringLiteral("KILL")};
    if (::geteuid() == 0) {
        const QString user = QString::number(ordinaryUser);
        arguments +=
            {QStringLiteral("--reuid"), user, QStringLiteral("--regid"), user, QStringLiteral("--clear-groups")};
    }
    arguments += {QStringLiteral("/usr/sbin/apache2"), QStringLiteral("-f"),
                  m_folder.filePath(QStringLiteral("run/configuration")), QStringLiteral("-DFOREGROUND")};
    if (!writeConfiguration()) {
        return false;
    }
    m_process.start(QStringLiteral("setpriv"), arguments);
    QElapsedTimer clock;
    clock.start();
    while (!answers()) {
        if (clock.hasExpired(serverWaitingTime) || m_process.waitForFinished(0)) {
            QFile log(m_folder.filePath(QStringLiteral("run/error.log")));
            if (log.open(QIODevice::ReadOnly)) {
                QTextStream(stderr) << log.readAll();
            }
            return false;
        }
        QThread::msleep(pauseBetweenQuestions);
    }
    return true;
}

void DavServer::ageFiles() const {
    constexpr qint64 age = 10; // seconds
    const QDateTime now = QDateTime::currentDateTime();
    for (const QFileInfo& info : files().entryInfoList(QDir::Files)) {
        struct stat status {};
        const QByteArray path = QFile::encodeName(info.filePath());
        if (info.lastModified().secsTo(now) < age && ::stat(path.constData(), &status) == 0) {
            const std::array<timespec, 2> times{
                status.st_atim, timespec{.tv_sec = status.st_mtim.tv_sec - age, .tv_nsec = status.st_mtim.tv_nsec}};
            ::utimensat(AT_FDCWD, path.constData(), times.data(), 0);
        }
    }
}

void DavServer::kill() {
    if (m_process.state() != QProcess::NotRunning) {
        ::kill(-static_cast<pid_t>(m_process.processId()), SIGKILL);
        m_process.waitForFinished(serverWaitingTime);
        QFile::remove(m_folder.filePath(QStringLiteral("run/pid")));
    }
}

// SPDX-License-Identifier: MIT
#include "FaultyProxy.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>
#include <optional>

namespace {

constexpr QByteArrayView endOfHead("\r\n\r\n");

/// The bytes of one whole request at the beginning of `bytes`, or nothing where more are to come.
std::optional<qsizetype> lengthOfRequest(const QByteArray& bytes) {
    const qsizetype headLength = bytes.indexOf(endOfHead);
    if (headLength < 0) {
        return std::nullopt;
    }
    qsizetype bodyLength = 0;
    for (const QByteArray& line : bytes.first(headLength).split('\n')) {
        if (line.toLower().startsWith("content-length:")) {
            bodyLength = line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
        }
    }
    const qsizetype length = headLength + endOfHead.size() + bodyLength;
    return bytes.size() < length ? std::nullopt : std::optional(length);
}

/// The request with the wish that the server closes the connection after its answer, which so ends.
QByteArray withClosing(const QByteArray& request) {
    QByteArray result;
    const qsizetype headLength = request.indexOf(endOfHead);
    for (const QByteArray& line : request.first(headLength).split('\n')) {
        if (!line.toLower().startsWith("connection:")) {
            result += line.trimmed() + "\r\n";
        }
    }
    return result + "Connection: close\r\n\r\n" + request.mid(headLength + endOfHead.size());
}

} // namespace

ProxyFault ProxyFault::status(int status, const QByteArray& body, const QByteArray& headers) {
    return {.kind = Kind::Answer,
            .answer = "HTTP/1.1 " + QByteArray::number(status) + " Fault\r\nConnection: close\r\nContent-Length: " +
                      QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body,
            .delay = 0};
}

FaultyProxy::FaultyProxy(quint16 serverPort) : m_serverPort(serverPort) {
    connect(this, &QTcpServer::newConnection, this, &FaultyProxy::accept);
    listen(QHostAddress::LocalHost);
}

QUrl FaultyProxy::addressFor(QUrl address) const {
    address.setPort(QTcpServer::serverPort());
    return address;
}

void FaultyProxy::accept() {
    while (QTcpSocket* const client = nextPendingConnection()) {
        connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        auto received = std::make_shared<QByteArray>();
        connect(client, &QTcpSocket::readyRead, this, [this, client, received] {
            *received += client->readAll();
            if (const std::optional<qsizetype> length = lengthOfRequest(*received)) {
                const QByteArray request = received->first(*length);
                *received = received->mid(*length);
                handle(client, request);
            }
        });
    }
}

void FaultyProxy::handle(QTcpSocket* client, const QByteArray& request) {
    const QList<QByteArray> words = request.first(request.indexOf('\r')).split(' ');
    const ProxyFault fault =
        m_policy ? m_policy({.method = words.value(0), .path = words.value(1), .number = ++m_count}) : ProxyFault();
    QTimer::singleShot(fault.delay, client, [this, client, request, fault] {
        switch (fault.kind) {
        case ProxyFault::Kind::Answer:
            client->write(fault.answer);
            client->disconnectFromHost();
            break;
        case ProxyFault::Kind::CloseAtOnce:
            client->abort();
            break;
        case ProxyFault::Kind::NeverAnswer:
            break;
        default:
            pass(client, request, fault.kind);
        }
    });
}

void FaultyProxy::pass(QTcpSocket* client, const QByteArray& request, ProxyFault::Kind kind) {
    auto* server = new QTcpSocket(this);
    const QPointer<QTcpSocket> waiting(client);
    connect(server, &QTcpSocket::connected, server, [server, request] { server->write(withClosing(request)); });
    const auto end = [this, server, waiting, kind] {
        const QByteArray received = server->readAll();
        server->deleteLater();
        if (!waiting) {
            return;
        }
        const QByteArray answer = m_filter ? m_filter(received) : received;
        if (kind == ProxyFault::Kind::LoseAnswer || answer.isEmpty()) {
            waiting->abort();
            return;
        }
        waiting->write(kind == ProxyFault::Kind::HalfAnswer ? answer.first(answer.size() / 2) : answer);
        waiting->disconnectFromHost();
    };
    connect(server, &QTcpSocket::disconnected, this, end);
    connect(server, &QTcpSocket::errorOccurred, this, [server, end](QAbstractSocket::SocketError error) {
        if (error != QAbstractSocket::RemoteHostClosedError && server->state() != QAbstractSocket::ConnectedState) {
            end();
        }
    });
    server->connectToHost(QHostAddress::LocalHost, m_serverPort);
}

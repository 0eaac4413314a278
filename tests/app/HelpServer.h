// SPDX-License-Identifier: MIT
// A web server on the loopback interface whose answers are the test's.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <gtest/gtest.h>

/// Answers each path with what was put there, 404 where there is nothing, and counts the requests.
class HelpServer : public QTcpServer {
public:
    HelpServer() {
        EXPECT_TRUE(listen(QHostAddress::LocalHost));
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { read(*socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    [[nodiscard]] QUrl url(const QString& path = QStringLiteral("/help")) const {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }

    /// A page or whatever else, which may be shown for an hour without asking again.
    void put(const QByteArray& path, const QByteArray& body, const QByteArray& type = "text/html; charset=utf-8") {
        putAnswer(path, answerOf(body, type));
    }
    /// What the connections wait for that are still open.
    void answerLate(const QByteArray& type, const QByteArray& body) {
        for (QTcpSocket* socket : findChildren<QTcpSocket*>()) {
            socket->write(answerOf(body, type));
            socket->disconnectFromHost();
        }
    }
    /// All that comes over the wire. Nothing at all: the connection stays open without an answer.
    void putAnswer(const QByteArray& path, const QByteArray& answer) { m_answers.insert(path, answer); }
    void putStatus(const QByteArray& path, const QByteArray& status, const QByteArray& headers = {}) {
        putAnswer(path, "HTTP/1.1 " + status + "\r\nContent-Length: 0\r\nConnection: close\r\n" + headers + "\r\n");
    }

    /// Ends the connection without an answer.
    void hangUpOn(const QByteArray& path) { m_hangingUpOn.insert(path); }

    [[nodiscard]] qsizetype requestsFor(const QByteArray& path) const { return m_requests.count(path); }

private:
    static QByteArray answerOf(const QByteArray& body, const QByteArray& type) {
        return "HTTP/1.1 200 OK\r\nContent-Type: " + type +
               "\r\nCache-Control: max-age=3600\r\nContent-Length: " + QByteArray::number(body.size()) +
               "\r\nConnection: close\r\n\r\n" + body;
    }

    void read(QTcpSocket& socket) {
        QByteArray request = socket.property("request").toByteArray() + socket.readAll();
        socket.setProperty("request", request);
        if (!request.contains("\r\n\r\n")) {
            return;
        }
        socket.setProperty("request", QByteArray());
        const QByteArray path = request.split(' ').value(1);
        m_requests.append(path);
        if (m_hangingUpOn.contains(path)) {
            socket.disconnectFromHost();
            return;
        }
        const QByteArray answer =
            m_answers.value(path, "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        if (!answer.isEmpty()) {
            socket.write(answer);
            socket.disconnectFromHost();
        }
    }

    QHash<QByteArray, QByteArray> m_answers;
    QSet<QByteArray> m_hangingUpOn;
    QList<QByteArray> m_requests;
};

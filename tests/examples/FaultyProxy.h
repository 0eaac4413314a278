// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QUrl>

#include <functional>

class QTcpSocket;

/// One request on its way to the server.
struct ProxiedRequest {
    QByteArray method;
    QByteArray path;
    int number = 0; ///< counted from 1
};

/// What becomes of a request.
struct ProxyFault {
    enum class Kind {
        None,
        Answer,      ///< `answer` instead of the server's, which never hears of the request
        CloseAtOnce, ///< the connection ends, and the server never hears of the request
        LoseAnswer,  ///< the server does what it is asked, and the connection ends
        HalfAnswer,  ///< the same, after half of the answer
        NeverAnswer, ///< silence
    };

    Kind kind = Kind::None;
    QByteArray answer;
    int delay = 0; ///< milliseconds before anything is done

    /// One that needs no more than its kind.
    [[nodiscard]] static ProxyFault of(Kind kind) { return {.kind = kind, .answer = {}, .delay = 0}; }
    /// An answer with this status and body.
    [[nodiscard]] static ProxyFault status(int status, const QByteArray& body = {}, const QByteArray& headers = {});
};

/// Stands between a program and its server and lets things go wrong.
class FaultyProxy : public QTcpServer {
    Q_OBJECT

public:
    using Policy = std::function<ProxyFault(const ProxiedRequest&)>;
    using AnswerFilter = std::function<QByteArray(const QByteArray&)>;

    explicit FaultyProxy(quint16 serverPort);

    /// The same address by way of the proxy.
    [[nodiscard]] QUrl addressFor(QUrl address) const;

    /// Asked about each request before anything else; may do things of its own meanwhile.
    void setPolicy(Policy policy) { m_policy = std::move(policy); }
    /// Changes every answer of the server on its way back.
    void setAnswerFilter(AnswerFilter filter) { m_filter = std::move(filter); }
    [[nodiscard]] int requestCount() const { return m_count; }

private:
    void accept();
    void handle(QTcpSocket* client, const QByteArray& request);
    void pass(QTcpSocket* client, const QByteArray& request, ProxyFault::Kind kind);

    quint16 m_serverPort;
    Policy m_policy;
    AnswerFilter m_filter;
    int m_count = 0;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <arpa/inet.h>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

/// What a LoopbackServer does with a request.
struct LoopbackAnswer {
    enum class End { Close, Reset, Silence };

    QByteArray bytes; ///< as they go onto the wire
    End end = End::Close;

    [[nodiscard]] static LoopbackAnswer status(int status, const QByteArray& body, const QByteArray& headers = {}) {
        return {.bytes = "HTTP/1.1 " + QByteArray::number(status) + " Status\r\nConnection: close\r\nContent-Length: " +
                         QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body};
    }
};

/// A request as it came over the wire.
struct LoopbackRequest {
    QByteArray head; ///< the lines up to the empty one
    QByteArray body;

    [[nodiscard]] QByteArray firstLine() const { return head.left(head.indexOf("\r\n")); }
    [[nodiscard]] QByteArray path() const { return firstLine().split(' ').value(1); }
};

/// An HTTP server on loopback that answers from a thread of its own, so that the one under test may block.
class LoopbackServer {
public:
    /// Asked, in that thread, for each request; `number` counts from 1.
    using Policy = std::function<LoopbackAnswer(int number, const LoopbackRequest& request)>;

    explicit LoopbackServer(Policy policy) : m_policy(std::move(policy)) {
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(m_listener, 64) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
            ::pipe2(m_stop, O_CLOEXEC) != 0) {
            qFatal("no server on loopback");
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() {
        ::close(m_stop[1]);
        m_thread.join();
        for (const int socket : m_silent) {
            ::close(socket);
        }
        ::close(m_stop[0]);
        ::close(m_listener);
    }

    [[nodiscard]] QString host() const { return QStringLiteral("127.0.0.1:%1").arg(m_port); }
    [[nodiscard]] std::vector<LoopbackRequest> requests() const {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    /// Whether `socket` has something to read; false when the server is to end.
    [[nodiscard]] bool waitFor(int socket) const {
        pollfd descriptors[] = {{socket, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
        return ::poll(descriptors, 2, -1) > 0 && descriptors[1].revents == 0;
    }

    void serve() {
        while (waitFor(m_listener)) {
            const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            LoopbackRequest request;
            if (socket < 0 || !read(socket, request)) {
                ::close(socket);
                continue;
            }
            int number = 0;
            {
                const std::lock_guard lock(m_mutex);
                m_requests.push_back(request);
                number = static_cast<int>(m_requests.size());
            }
            answer(socket, m_policy(number, request));
        }
    }

    [[nodiscard]] bool read(int socket, LoopbackRequest& request) const {
        QByteArray bytes;
        for (;;) {
            const qsizetype end = bytes.indexOf("\r\n\r\n");
            if (end >= 0) {
                request.head = bytes.left(end + 2);
                request.body = bytes.mid(end + 4);
                const qsizetype field = request.head.toLower().indexOf("\r\ncontent-length:");
                const qsizetype length =
                    field < 0 ? 0
                              : request.head.mid(field + 17, request.head.indexOf("\r\n", field + 2) - field - 17)
                                    .trimmed()
                                    .toLongLong();
                if (request.body.size() >= length) {
                    return true;
                }
            }
            char buffer[4096];
            if (!waitFor(socket)) {
                return false;
            }
            const ssize_t count = ::recv(socket, buffer, sizeof buffer, 0);
            if (count <= 0) {
                return false;
            }
            bytes.append(buffer, count);
        }
    }

    void answer(int socket, const LoopbackAnswer& answer) {
        ::send(socket, answer.bytes.constData(), static_cast<std::size_t>(answer.bytes.size()), MSG_NOSIGNAL);
        if (answer.end == LoopbackAnswer::End::Silence) {
            m_silent.push_back(socket);
            return;
        }
        if (answer.end == LoopbackAnswer::End::Reset) {
            const linger atOnce{1, 0};
            ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        }
        ::close(socket);
    }

    Policy m_policy;
    int m_listener = -1;
    int m_stop[2] = {-1, -1};
    std::uint16_t m_port = 0;
    mutable std::mutex m_mutex;
    std::vector<LoopbackRequest> m_requests; // guarded by m_mutex
    std::vector<int> m_silent;
    std::thread m_thread;
};

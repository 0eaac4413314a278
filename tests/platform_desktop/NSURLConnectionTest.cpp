// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/NSURLConnection.h>

#include "../LoopbackServer.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

NSURLRequest requestTo(const LoopbackServer& server, const QString& path = QStringLiteral("/")) {
    NSURLRequest request;
    request.url = QUrl(QStringLiteral("http://%1%2").arg(server.host(), path));
    return request;
}

class NSURLConnectionTest : public testing::Test {
    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};

/// What a server that answers like this gives.
std::optional<QByteArray> answerOf(const LoopbackAnswer& answer, NSError* error = nullptr) {
    const LoopbackServer server([&](int, const LoopbackRequest&) { return answer; });
    NSURLRequest request = requestTo(server);
    request.timeoutInterval = 0.2;
    return NSURLConnection::sendSynchronousRequest(request, error);
}

} // namespace

TEST_F(NSURLConnectionTest, AnswersTheBody) {
    const LoopbackServer server(
        [](int, const LoopbackRequest& request) { return LoopbackAnswer::status(200, request.path()); });
    EXPECT_EQ(NSURLConnection::sendSynchronousRequest(requestTo(server, QStringLiteral("/a?b"))), "/a?b");
    EXPECT_EQ(server.requests().at(0).firstLine(), "GET /a?b HTTP/1.1");
}

TEST_F(NSURLConnectionTest, PostsTheBodyAsItIsAsAForm) {
    const LoopbackServer server([](int, const LoopbackRequest&) { return LoopbackAnswer::status(200, "thanks"); });
    NSURLRequest request = requestTo(server, QStringLiteral("/form"));
    request.cachePolicy = NSURLRequestCachePolicy::ReloadIgnoringLocalCacheData;
    request.httpMethod = "POST";
    request.httpBody = "a=b&c=\nd e\xC3\xA4";
    request.httpBody.append('\0');
    EXPECT_EQ(NSURLConnection::sendSynchronousRequest(request), "thanks");
    const LoopbackRequest sent = server.requests().at(0);
    EXPECT_EQ(sent.firstLine(), "POST /form HTTP/1.1");
    EXPECT_EQ(sent.body, request.httpBody);
    EXPECT_TRUE(sent.head.toLower().contains("\r\ncontent-type: application/x-www-form-urlencoded\r\n"));
    EXPECT_TRUE(sent.head.toLower().contains("\r\ncache-control: no-cache\r\n"));
}

TEST_F(NSURLConnectionTest, AFailureOfTheServerIsAnAnswer) {
    for (const int status : {400, 401, 403, 404, 405, 410, 418, 500, 501, 503, 507}) {
        EXPECT_EQ(answerOf(LoopbackAnswer::status(status, "body")), "body") << status;
    }
}

TEST_F(NSURLConnectionTest, AnEmptyAnswerIsOne) {
    EXPECT_EQ(answerOf(LoopbackAnswer::status(200, {})), QByteArray());
}

TEST_F(NSURLConnectionTest, WhatIsNoWholeAnswerIsNone) {
    const QByteArray half = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
    for (const LoopbackAnswer& answer :
         {LoopbackAnswer{}, LoopbackAnswer{.bytes = {}, .end = LoopbackAnswer::End::Reset},
          LoopbackAnswer{.bytes = half, .end = LoopbackAnswer::End::Close}, LoopbackAnswer{.bytes = "garbage\r\n\r\n"},
          LoopbackAnswer{.bytes = {}, .end = LoopbackAnswer::End::Silence},
          LoopbackAnswer{.bytes = half, .end = LoopbackAnswer::End::Silence}}) {
        NSError error;
        EXPECT_EQ(answerOf(answer, &error), std::nullopt) << answer.bytes.toStdString();
        EXPECT_FALSE(error.localizedDescription.isEmpty());
    }
}

TEST_F(NSURLConnectionTest, TellsOfAnAddressThatDoesNotAnswer) {
    QString host;
    {
        const LoopbackServer gone([](int, const LoopbackRequest&) { return LoopbackAnswer{}; });
        host = gone.host();
    }
    NSError error;
    NSURLRequest request;
    request.url = QUrl(QStringLiteral("http://%1/").arg(host));
    EXPECT_EQ(NSURLConnection::sendSynchronousRequest(request, &error), std::nullopt);
    EXPECT_FALSE(error.localizedDescription.isEmpty());
    EXPECT_EQ(NSURLConnection::sendSynchronousRequest({}), std::nullopt) << "no address at all";
}

TEST_F(NSURLConnectionTest, FollowsRedirections) {
    const LoopbackServer server([](int number, const LoopbackRequest& request) {
        return number == 1 ? LoopbackAnswer::status(302, {}, "Location: /there\r\n")
                           : LoopbackAnswer::status(200, request.path());
    });
    EXPECT_EQ(NSURLConnection::sendSynchronousRequest(requestTo(server)), "/there");
}

TEST_F(NSURLConnectionTest, HandlesNoEventMeanwhile) {
    bool isHandled = false;
    QTimer::singleShot(0, QCoreApplication::instance(), [&] { isHandled = true; });
    EXPECT_EQ(answerOf(LoopbackAnswer::status(200, "body")), "body");
    EXPECT_FALSE(isHandled);
    QCoreApplication::processEvents();
    EXPECT_TRUE(isHandled);
}

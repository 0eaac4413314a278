// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/NSURLConnection.h>

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>

#include <cmath>
#include <limits>
#include <memory>

namespace {

constexpr double millisecondsInASecond = 1000;

QNetworkRequest networkRequest(const NSURLRequest& request) {
    QNetworkRequest result(request.url);
    if (request.cachePolicy == NSURLRequestCachePolicy::ReloadIgnoringLocalCacheData) {
        result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
        result.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
        // Caches on the way are asked to stand aside too; Qt asks them in requests that read alone.
        result.setRawHeader("Cache-Control", "no-cache");
    }
    if (!request.httpBody.isEmpty()) {
        result.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/x-www-form-urlencoded"));
    }
    const double milliseconds = std::ceil(request.timeoutInterval * millisecondsInASecond);
    if (milliseconds >= 1 && milliseconds < std::numeric_limits<int>::max()) {
        result.setTransferTimeout(static_cast<int>(milliseconds));
    }
    return result;
}

/// A server that answers with a failure has answered: Qt's numbers from the content's failures on are of that kind, but
/// for what is no HTTP at all.
bool isAnswer(QNetworkReply::NetworkError error) {
    return error == QNetworkReply::NoError ||
           (error >= QNetworkReply::ContentAccessDenied && error != QNetworkReply::ProtocolUnknownError &&
            error != QNetworkReply::ProtocolFailure);
}

} // namespace

std::optional<QByteArray> NSURLConnection::sendSynchronousRequest(const NSURLRequest& request, NSError* error) {
    std::optional<QByteArray> body;
    QString failure;
    // In a thread with an event loop of its own, so that the caller's handles nothing.
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QNetworkAccessManager manager;
        const std::unique_ptr<QNetworkReply> reply(
            manager.sendCustomRequest(networkRequest(request), request.httpMethod, request.httpBody));
        QEventLoop loop;
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        if (!reply->isFinished()) {
            loop.exec();
        }
        if (isAnswer(reply->error())) {
            body = reply->readAll();
        } else {
            failure = reply->errorString();
        }
    }));
    thread->start();
    thread->wait();
    if (!body) {
        NSSetError(error, failure);
    }
    return body;
}

// SPDX-License-Identifier: MIT
#include "WebDavFolder.h"

#include "HttpStatus.h"

#include <QAuthenticator>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QXmlStreamReader>

#include <optional>
#include <utility>

namespace {

constexpr qint64 largestAnswer = qint64{256} * 1024 * 1024; // bytes

constexpr const char* triedProperty = "credentialsTried";
constexpr const char* cancelledProperty = "cancelled";
constexpr const char* tooLargeProperty = "tooLarge";

constexpr QLatin1String davNamespace("DAV:");

constexpr const char* propertiesAsked = R"(<?xml version="1.0" encoding="utf-8"?>
<propfind xmlns="DAV:"><prop><getetag/><resourcetype/></prop></propfind>
)";

QString textOfStatus(int status, const QString& phrase, const QString& movedTo) {
    if (status >= 300 && status < 400) {
        return movedTo.isEmpty() ? QStringLiteral("The folder has moved")
                                 : QStringLiteral("The folder has moved to ") + movedTo;
    }
    switch (status) {
    case HttpStatus::unauthorized:
        return QStringLiteral("The server does not accept the name and password");
    case HttpStatus::forbidden:
        return QStringLiteral("The server forbids it");
    case HttpStatus::notFound:
        return QStringLiteral("It is not there");
    case HttpStatus::methodNotAllowed:
    case HttpStatus::notImplemented:
        return QStringLiteral("The address is not one of a WebDAV folder");
    case HttpStatus::conflict:
        return QStringLiteral("The folder that it belongs into is not there");
    case HttpStatus::preconditionFailed:
        return QStringLiteral("Somebody else has changed it meanwhile");
    case HttpStatus::locked:
        return QStringLiteral("Another program has locked it");
    case HttpStatus::insufficientStorage:
        return QStringLiteral("There is no room left on the server");
    default:
        return status >= 500 ? QStringLiteral("The server is in trouble (%1 %2)").arg(status).arg(phrase)
                             : QStringLiteral("The server answered %1 %2").arg(status).arg(phrase);
    }
}

/// The whole answer, or nothing but the reason where it did not arrive whole.
WebDavAnswer answerOf(QNetworkReply& reply) {
    WebDavAnswer answer;
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QNetworkReply::NetworkError error = reply.error();
    const bool isHTTPError = status >= 300;
    if (reply.property(tooLargeProperty).toBool()) {
        answer.problem = QStringLiteral("The server's answer is too large to be true");
        return answer;
    }
    if (status == 0 || (error != QNetworkReply::NoError && !isHTTPError)) {
        answer.problem = error == QNetworkReply::OperationCanceledError
                             ? QStringLiteral("The server did not answer in time")
                             : QStringLiteral("The server cannot be reached: ") + reply.errorString();
        return answer;
    }
    answer.body = reply.readAll();
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    if (!isHTTPError && length.isValid() && reply.operation() != QNetworkAccessManager::HeadOperation &&
        length.toLongLong() != answer.body.size()) {
        answer.problem = QStringLiteral("The server's answer broke off");
        return answer;
    }
    answer.status = status;
    answer.etag = reply.rawHeader("ETag").trimmed();
    if (isHTTPError) {
        answer.problem = textOfStatus(status, reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString(),
                                      QString::fromUtf8(reply.rawHeader("Location")));
    }
    return answer;
}

/// One response of a listing: what is found there.
struct ListedResource {
    QString path;
    QByteArray etag;
    bool isFolder = false;
};

ListedResource readResponse(QXmlStreamReader& xml) {
    ListedResource resource;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement() && xml.name() == QLatin1String("response") && xml.namespaceUri() == davNamespace) {
            break;
        }
        if (!xml.isStartElement() || xml.namespaceUri() != davNamespace) {
            continue;
        }
        if (xml.name() == QLatin1String("href")) {
            resource.path = QUrl(xml.readElementText().trimmed()).path(QUrl::FullyDecoded);
        } else if (xml.name() == QLatin1String("getetag")) {
            resource.etag = xml.readElementText().trimmed().toUtf8();
        } else if (xml.name() == QLatin1String("collection")) {
            resource.isFolder = true;
        }
    }
    return resource;
}

/// Nothing where the bytes are not a listing of a folder.
std::optional<WebDavFolder::Listing> listingIn(const QByteArray& bytes) {
    QXmlStreamReader xml(bytes);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("multistatus") ||
        xml.namespaceUri() != davNamespace) {
        return std::nullopt;
    }
    WebDavFolder::Listing listing;
    bool hasFolder = false;
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("response") || xml.namespaceUri() != davNamespace) {
            xml.skipCurrentElement();
            continue;
        }
        const ListedResource resource = readResponse(xml);
        hasFolder |= resource.isFolder;
        const QString name = resource.path.section(QLatin1Char('/'), -1);
        if (!resource.isFolder && !name.isEmpty()) {
            listing.insert(name, resource.etag);
        }
    }
    // The folder itself is always in its listing; without it the answer is that of something else.
    return xml.hasError() || !hasFolder ? std::nullopt : std::optional(listing);
}

} // namespace

bool isStrongETag(const QByteArray& etag) {
    return etag.size() >= 2 && etag.startsWith('"') && etag.endsWith('"');
}

WebDavFolder::WebDavFolder(const QUrl& address, Credentials credentials, int timeout)
    : m_address(address.adjusted(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment)),
      m_credentials(std::move(credentials)), m_timeout(timeout) {
    if (!m_address.path().endsWith(QLatin1Char('/'))) {
        m_address.setPath(m_address.path() + QLatin1Char('/'));
    }
    connect(&m_network, &QNetworkAccessManager::authenticationRequired, this,
            [this](QNetworkReply* reply, QAuthenticator* authenticator) {
                // Asked again for the same request, the server did not like the answer.
                if (m_credentials.name.isEmpty() || reply->property(triedProperty).toBool()) {
                    return;
                }
                reply->setProperty(triedProperty, true);
                authenticator->setUser(m_credentials.name);
                authenticator->setPassword(m_credentials.password);
            });
}

WebDavFolder::~WebDavFolder() {
    cancel();
}

void WebDavFolder::list(ListHandler handler) {
    QNetworkRequest asking = request(m_address);
    asking.setRawHeader("Depth", "1");
    asking.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml; charset=utf-8"));
    watch(m_network.sendCustomRequest(asking, "PROPFIND", QByteArray(propertiesAsked)),
          [handler = std::move(handler)](const WebDavAnswer& answer) {
              std::optional<Listing> listing;
              WebDavAnswer judged = answer;
              if (answer.isGood()) {
                  listing = answer.status == HttpStatus::multiStatus ? listingIn(answer.body) : std::nullopt;
                  if (!listing) {
                      judged.problem = QStringLiteral("What answers at this address is not a WebDAV folder");
                  }
              }
              handler(judged, listing.value_or(Listing()));
          });
}

void WebDavFolder::create(Handler handler) {
    watch(m_network.sendCustomRequest(request(m_address), "MKCOL"),
          [handler = std::move(handler)](const WebDavAnswer& answer) {
              WebDavAnswer judged = answer;
              if (answer.status == HttpStatus::methodNotAllowed) {
                  judged.problem.clear();
              }
              handler(judged);
          });
}

void WebDavFolder::read(const QString& name, Handler handler) {
    watch(m_network.get(request(urlOf(name))), std::move(handler));
}

void WebDavFolder::writeNew(const QString& name, const QByteArray& bytes, Handler handler) {
    write(name, "If-None-Match", "*", bytes, std::move(handler));
}

void WebDavFolder::overwrite(const QString& name, const QByteArray& etag, const QByteArray& bytes, Handler handler) {
    write(name, "If-Match", etag, bytes, std::move(handler));
}

void WebDavFolder::write(const QString& name, const char* condition, const QByteArray& value, const QByteArray& bytes,
                         Handler handler) {
    QNetworkRequest writing = request(urlOf(name));
    writing.setRawHeader(condition, value);
    writing.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/x-plist"));
    watch(m_network.put(writing, bytes), std::move(handler));
}

void WebDavFolder::cancel() {
    for (QNetworkReply* reply : m_network.findChildren<QNetworkReply*>()) {
        reply->setProperty(cancelledProperty, true);
        // One that has failed is about to finish by itself.
        if (reply->isRunning() && reply->error() == QNetworkReply::NoError) {
            reply->abort();
        }
    }
}

QUrl WebDavFolder::urlOf(const QString& name) const {
    QUrl url = m_address;
    url.setPath(m_address.path() + name);
    return url;
}

QNetworkRequest WebDavFolder::request(const QUrl& url) const {
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // A compressed answer has an ETag of its own with some servers, and writing asks for that of the file.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setTransferTimeout(m_timeout);
    return request;
}

void WebDavFolder::watch(QNetworkReply* reply, Handler handler) {
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64) {
        if (received > largestAnswer) {
            reply->setProperty(tooLargeProperty, true);
            reply->abort();
        }
    });
    connect(reply, &QNetworkReply::finished, this, [reply, handler = std::move(handler)] {
        reply->deleteLater();
        if (!reply->property(cancelledProperty).toBool()) {
            handler(answerOf(*reply));
        }
    });
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

class QNetworkReply;
class QNetworkRequest;

/// What a server answered, or why there was no answer.
struct WebDavAnswer {
    int status = 0; ///< of HTTP; 0 where no whole answer came
    QByteArray body;
    QByteArray etag; ///< as the server wrote it, its quotes and the "W/" of a weak one included; empty without one
    QString problem; ///< what went wrong, for a person to read; empty where nothing did

    [[nodiscard]] bool isGood() const { return problem.isEmpty(); }
};

/// Whether a version named by this ETag can be asked for: a weak one, which some servers give within the second of a
/// change, matches nothing.
[[nodiscard]] bool isStrongETag(const QByteArray& etag);

/// A folder on a WebDAV server: its files' names, and reading and writing them without overwriting what others wrote.
///
/// Every operation returns at once and calls its handler later, exactly once, unless the folder is destroyed or
/// cancelled before. Redirections are not followed, because they would turn a writing request into a reading one.
/// The name and password go to this folder's server alone, and only when it asks for them.
class WebDavFolder : public QObject {
    Q_OBJECT

public:
    struct Credentials {
        QString name; ///< empty: the server is told none
        QString password;
    };

    /// The files of the folder: names to ETags, which may be empty.
    using Listing = QHash<QString, QByteArray>;
    using ListHandler = std::function<void(const WebDavAnswer&, const Listing&)>;
    using Handler = std::function<void(const WebDavAnswer&)>;

    static constexpr int standardTimeout = 30'000; // milliseconds

    /// `address` is http or https; name and password in it are left out. After `timeout` milliseconds without a byte a
    /// request counts as failed.
    WebDavFolder(const QUrl& address, Credentials credentials, int timeout = standardTimeout);
    ~WebDavFolder() override;

    /// The names of the files in the folder; folders in it are left out.
    void list(ListHandler handler);

    /// Makes the folder. A folder that is there already is no failure.
    void create(Handler handler);

    void read(const QString& name, Handler handler);

    /// Writes a file that is not there yet; the status is 412 where it is.
    void writeNew(const QString& name, const QByteArray& bytes, Handler handler);

    /// Writes over the version of a file that `etag`, a strong one, names; the status is 412 where it is not that.
    void overwrite(const QString& name, const QByteArray& etag, const QByteArray& bytes, Handler handler);

    /// Ends all that is under way, without calling its handlers.
    void cancel();

private:
    [[nodiscard]] QUrl urlOf(const QString& name) const;
    [[nodiscard]] QNetworkRequest request(const QUrl& url) const;
    void write(const QString& name, const char* condition, const QByteArray& value, const QByteArray& bytes,
               Handler handler);
    void watch(QNetworkReply* reply, Handler handler);

    QUrl m_address; // ends with a slash
    Credentials m_credentials;
    int m_timeout;
    QNetworkAccessManager m_network;
};

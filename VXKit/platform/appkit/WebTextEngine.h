// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/WebViewEngine.h>

#include <QByteArray>
#include <QHash>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QVariant>

#include <vector>

class QNetworkReply;

/// Pages as far as Qt's text browser can show them: text, tables, lists, pictures and simple style sheets. No scripts.
///
/// For simple pages where no browser's engine is at hand. Pages, pictures and style sheets have limits in size, so that
/// no server can fill the memory.
class WebTextEngine : public WebViewEngine {
    Q_OBJECT

public:
    explicit WebTextEngine(QWidget& parent);
    ~WebTextEngine() override;

    [[nodiscard]] QWidget* widget() const override;
    void load(const QUrl& url, Caching caching) override;
    void reload() override;
    void stop() override;
    [[nodiscard]] QUrl url() const override { return m_url; }
    [[nodiscard]] bool canGoBack() const override { return m_current > 0; }
    [[nodiscard]] bool canGoForward() const override { return m_current + 1 < static_cast<int>(m_visits.size()); }
    void goBack() override;
    void goForward() override;
    void setZoom(double factor) override;
    void clearCache() override {} // NSURLCache has cleared it: the files are shared
    void readText(std::function<void(const QString& text)> receiver) const override;

private:
    class Page;

    struct Visit {
        QUrl url;
        int scrolled = 0;
    };
    /// What has been asked for and not been shown yet.
    struct Request {
        QUrl url;
        int visit = 0; ///< which place in the history it takes; what is after that goes where it is a new one
        bool isNew = true;
        Caching caching = Caching::Allowed;
    };

    void begin(const Request& request);
    void readLocally();
    void fetch();
    void receive(QNetworkReply& reply);
    void follow(const QUrl& link);
    void visit(int index);
    void scrollTo(const QUrl& url, int visit);
    [[nodiscard]] bool show(const QByteArray& content, const QByteArray& contentType, const QUrl& url);
    void enter(const QUrl& url);
    void render();
    void restoreScroll();
    [[nodiscard]] QVariant resource(int type, const QUrl& url);
    [[nodiscard]] QVariant scaledToPage(const QByteArray& content) const;
    void fetchResources();
    void fetchResource(const QUrl& url);
    void end(const QString& reason);
    void abandon();
    [[nodiscard]] QNetworkReply* get(const QUrl& url);

    QPointer<Page> m_page;
    QNetworkAccessManager m_network;
    double m_zoom = 1;

    Request m_request;
    bool m_isLoading = false;
    bool m_hasFailed = false;
    unsigned m_load = 0; // counts the loads, so that what is late can be told
    QPointer<QNetworkReply> m_reply;

    QUrl m_url; // of the page that is shown
    QString m_html;
    QHash<QUrl, QByteArray> m_resources; // empty where they could not be had
    QSet<QUrl> m_missing;
    QSet<QNetworkReply*> m_fetching;
    qint64 m_resourceBytes = 0;

    std::vector<Visit> m_visits;
    int m_current = -1;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/WebViewEngine.h>

#include <QPointer>
#include <QTimer>

#include <memory>

class QWebEngineDownloadRequest;
class QWebEngineLoadingInfo;
class QWebEngineProfile;

/// Pages as Qt WebEngine shows them.
///
/// Its profile is kept in memory alone. A cache that has been cleared is a new profile: the engine clears one behind
/// the program's back and does not tell when that is done.
class WebPageEngine : public WebViewEngine {
    Q_OBJECT

public:
    explicit WebPageEngine(QWidget& parent);
    ~WebPageEngine() override;

    [[nodiscard]] QWidget* widget() const override;
    void load(const QUrl& url, Caching caching) override;
    void reload() override;
    void stop() override;
    [[nodiscard]] QUrl url() const override;
    [[nodiscard]] bool canGoBack() const override;
    [[nodiscard]] bool canGoForward() const override;
    void goBack() override;
    void goForward() override;
    void setZoom(double factor) override;
    void clearCache() override { m_isCacheStale = true; }
    void readText(std::function<void(const QString& text)> receiver) const override;

private:
    class Page;
    class View;

    void makePage();
    void dismantle();
    void begin(const QUrl& url);
    void end(const QString& reason);
    void loadingHasChanged(const QWebEngineLoadingInfo& info);
    void download(const QWebEngineDownloadRequest& request);

    QPointer<View> m_view; // null after the end of the application
    QPointer<Page> m_page;
    std::unique_ptr<QWebEngineProfile> m_profile;
    QTimer m_settling; // runs after a load was broken off, until it is clear that no other follows
    QUrl m_requested;
    double m_zoom = 1;
    bool m_isCacheStale = false;
    bool m_isLoading = false;
    bool m_awaitsStart = false; // of the load that was asked for last
    bool m_hasPage = false;     // one has been shown
    bool m_hasFailed = false;
};

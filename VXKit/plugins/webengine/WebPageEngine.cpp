// SPDX-License-Identifier: MIT
#include <VXKit/plugins/webengine/WebPageEngine.h>

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMenu>
#include <QQuickRenderControl>
#include <QWebEngineDownloadRequest>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr int settlingTime = 100; // milliseconds
constexpr int brokenOff = -3;     // the engine's numbers of errors
constexpr int fileIsMissing = -6;
constexpr int connectionTimedOut = -7;
constexpr int connectionReset = -101;
constexpr int connectionRefused = -102;
constexpr int nameNotResolved = -105;
constexpr int offline = -106;
constexpr int connectingTimedOut = -118;
constexpr int tooManyRedirects = -310;
constexpr int emptyResponse = -324;
constexpr int invalidResponse = -320;
constexpr int noHttpResponse = -370;

/// Gives a program's own pages a plain look beneath what they say of themselves. Pages of the web are left alone.
constexpr const char* lookOfLocalPages = R"(
if (location.protocol === 'qrc:' || location.protocol === 'file:') {
    const style = document.createElement('style');
    style.textContent = `
        :where(html) { color: #1d1d1f; background: #fff; font: 14px/1.45 Inter, sans-serif; }
        :where(body) { margin: 22px; }
        :where(h1) { font-size: 23px; } :where(h2) { font-size: 17px; margin-top: 24px; } :where(h3) { font-size: 15px; }
        :where(a) { color: #0b5ccc; }
        :where(td, th) { padding: 2px 12px 2px 0; text-align: left; vertical-align: top; }
        :where(img) { max-width: 100%; }
        :where(code, pre) { font-size: 13px; }`;
    (document.head ?? document.documentElement).prepend(style);
})";

bool isOnTheWeb(const QUrl& url) {
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

bool isLocal(const QUrl& url) {
    return url.scheme() == QLatin1String("file") || url.scheme() == QLatin1String("qrc");
}

QString reasonOf(const QWebEngineLoadingInfo& info) {
    if (info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain) {
        return WebPageEngine::tr("The server answered: %1 %2").arg(info.errorCode()).arg(info.errorString()).trimmed();
    }
    switch (info.errorCode()) {
    case fileIsMissing:
        return WebPageEngine::tr("No such file or directory");
    case connectionTimedOut:
    case connectingTimedOut:
        return WebPageEngine::tr("It does not answer.");
    case connectionReset:
    case emptyResponse:
        return WebPageEngine::tr("The server closed the connection.");
    case connectionRefused:
        return WebPageEngine::tr("Connection refused");
    case nameNotResolved:
        return WebPageEngine::tr("There is no server of that name, or no connection to the network.");
    case offline:
        return WebPageEngine::tr("There is no connection to the network.");
    case tooManyRedirects:
        return WebPageEngine::tr("The server sends from one address to the next without an end.");
    case invalidResponse:
    case noHttpResponse:
        return WebPageEngine::tr("The server's answer makes no sense.");
    default:
        break;
    }
    if (info.errorDomain() == QWebEngineLoadingInfo::CertificateErrorDomain) {
        return WebPageEngine::tr("The server cannot prove that it is the one it says.");
    }
    return info.errorString().isEmpty() ? WebPageEngine::tr("It cannot be shown (%1).").arg(info.errorCode())
                                        : info.errorString();
}

/// The engine tells of its graphics at length when it starts. Who asks for that in QT_LOGGING_RULES gets it.
void keepQuietAboutGraphics() {
    static QLoggingCategory::CategoryFilter filterBefore;
    filterBefore = QLoggingCategory::installFilter([](QLoggingCategory* category) {
        // It is called before it is known what was before: with categories that have been through that.
        if (filterBefore) {
            filterBefore(category);
        }
        if (category->categoryName() == std::string_view("qt.webenginecontext") &&
            !qEnvironmentVariable("QT_LOGGING_RULES").contains(QLatin1String("webengine"))) {
            category->setEnabled(QtInfoMsg, false);
            category->setEnabled(QtDebugMsg, false);
        }
    });
}

std::vector<std::function<void()>>& dismantlers() {
    static std::vector<std::function<void()>> all;
    return all;
}

/// Once, before there is anything of the engine.
void prepareProcess() {
    keepQuietAboutGraphics();
    // The engine and what draws for it end with the application object, in routines that are called last come, first
    // served. Whatever is left of an engine of ours by then would bring the process down, so ours has to come after
    // theirs, and they come with the first object of their kind.
    const QQuickRenderControl drawing;
    const QWebEngineProfile engine;
    qAddPostRoutine([] {
        for (const auto& dismantleOne : std::exchange(dismantlers(), {})) {
            dismantleOne();
        }
    });
}

} // namespace

/// A page that asks for nothing, and stays on its own server.
class WebPageEngine::Page : public QWebEnginePage {
public:
    Page(WebPageEngine& engine, QWebEngineProfile& profile) : QWebEnginePage(&profile), m_engine(engine) {}

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override {
        const bool isOfPage =
            type == NavigationTypeLinkClicked || type == NavigationTypeFormSubmitted || type == NavigationTypeOther;
        // The first page is nobody's link.
        if (!isMainFrame || !isOfPage || this->url().isEmpty() || isOwn(url)) {
            return true;
        }
        Q_EMIT m_engine.leavingFor(url);
        return false;
    }
    void javaScriptAlert(const QUrl& /*origin*/, const QString& /*message*/) override {}
    bool javaScriptConfirm(const QUrl& /*origin*/, const QString& /*message*/) override { return false; }
    bool javaScriptPrompt(const QUrl& /*origin*/, const QString& /*message*/, const QString& /*preset*/,
                          QString* /*answer*/) override {
        return false;
    }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel /*level*/, const QString& /*message*/, int /*line*/,
                                  const QString& /*source*/) override {}
    QStringList chooseFiles(FileSelectionMode /*mode*/, const QStringList& /*old*/,
                            const QStringList& /*types*/) override {
        return {};
    }

private:
    [[nodiscard]] bool isOwn(const QUrl& link) const {
        if (isOnTheWeb(link)) {
            return link.host() == url().host();
        }
        return isLocal(link) ? isLocal(url()) : link.scheme() == QLatin1String("about");
    }

    WebPageEngine& m_engine;
};

/// The engine's view with no more in its menu than there is a use for.
class WebPageEngine::View : public QWebEngineView {
public:
    using QWebEngineView::QWebEngineView;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override {
        auto* menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        if (page()->hasSelection()) {
            menu->addAction(page()->action(QWebEnginePage::Copy));
            menu->addSeparator();
        }
        menu->addAction(page()->action(QWebEnginePage::Back));
        menu->addAction(page()->action(QWebEnginePage::Forward));
        menu->addAction(page()->action(QWebEnginePage::Reload));
        menu->popup(event->globalPos());
    }
};

WebPageEngine::WebPageEngine(QWidget& parent) {
    static const bool isPrepared = (prepareProcess(), true);
    static_cast<void>(isPrepared);
    m_view = new View(&parent);
    m_view->setAcceptDrops(false);
    makePage();
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingTime);
    connect(&m_settling, &QTimer::timeout, this, [this] {
        if (m_page && !m_page->isLoading()) {
            end(m_hasPage ? QString() : tr("It was stopped."));
        }
    });
    dismantlers().emplace_back([engine = QPointer<WebPageEngine>(this)] {
        if (engine) {
            engine->dismantle();
        }
    });
}

WebPageEngine::~WebPageEngine() {
    dismantle();
}

void WebPageEngine::dismantle() {
    delete m_view;
    delete m_page;
    m_profile.reset();
}

void WebPageEngine::makePage() {
    const QPointer<Page> pageBefore = m_page;
    const std::unique_ptr<QWebEngineProfile> profileBefore = std::move(m_profile);
    m_isCacheStale = false;
    m_hasPage = false;
    m_profile = std::make_unique<QWebEngineProfile>();
    QWebEngineScript look;
    look.setInjectionPoint(QWebEngineScript::DocumentReady);
    look.setWorldId(QWebEngineScript::ApplicationWorld);
    look.setSourceCode(QString::fromLatin1(lookOfLocalPages));
    m_profile->scripts()->insert(look);
    QWebEngineSettings& settings = *m_profile->settings();
    settings.setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    settings.setAttribute(QWebEngineSettings::NavigateOnDropEnabled, false);
    settings.setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, true);
    settings.setFontFamily(QWebEngineSettings::StandardFont, QStringLiteral("Inter"));
    connect(m_profile.get(), &QWebEngineProfile::downloadRequested, this,
            [this](const QWebEngineDownloadRequest* request) { download(*request); });

    m_page = new Page(*this, *m_profile);
    m_page->setZoomFactor(m_zoom);
    connect(m_page, &QWebEnginePage::loadingChanged, this, &WebPageEngine::loadingHasChanged);
    connect(m_page, &QWebEnginePage::loadProgress, this,
            [this](int percent) { Q_EMIT progressed(static_cast<double>(percent) / 100); });
    connect(m_page, &QWebEnginePage::urlChanged, this, &WebPageEngine::historyChanged);
    connect(m_page, &QWebEnginePage::titleChanged, this, [this](const QString& title) {
        // A page without a title is called by its address.
        const bool isAddress = m_page->url().toString().endsWith(title) || title == m_page->url().toDisplayString();
        Q_EMIT titleChanged(isAddress ? QString() : title);
    });
    connect(m_page, &QWebEnginePage::newWindowRequested, this, [this](const QWebEngineNewWindowRequest& request) {
        if (request.isUserInitiated()) {
            Q_EMIT leavingFor(request.requestedUrl());
        }
    });
    connect(m_page, &QWebEnginePage::renderProcessTerminated, this, [this] {
        if (!m_isLoading) {
            begin(m_page->url());
        }
        end(tr("The process that showed the page has ended."));
    });
    m_view->setPage(m_page);
    delete pageBefore; // before its profile
}

QWidget* WebPageEngine::widget() const {
    return m_view;
}

void WebPageEngine::load(const QUrl& url, Caching caching) {
    if (!m_page) {
        return;
    }
    if (m_isCacheStale || caching == Caching::Bypassed) {
        const bool isFirst = m_page->history()->count() == 0 && m_page->url().isEmpty() && !m_isLoading;
        if (isFirst) {
            m_isCacheStale = false;
        } else {
            makePage();
            Q_EMIT historyChanged();
        }
    }
    begin(url);
    if (!isOnTheWeb(url) && !isLocal(url)) {
        QMetaObject::invokeMethod(
            this,
            [this, url] {
                if (m_isLoading && m_requested == url) {
                    end(url.isEmpty() ? tr("There is no address.")
                                      : tr("“%1” addresses cannot be shown.").arg(url.scheme()));
                }
            },
            Qt::QueuedConnection);
        return;
    }
    m_awaitsStart = true;
    m_page->load(url);
}

void WebPageEngine::begin(const QUrl& url) {
    m_settling.stop();
    m_requested = url;
    m_isLoading = true;
    m_hasFailed = false;
    Q_EMIT loadingStarted();
}

void WebPageEngine::end(const QString& reason) {
    m_settling.stop();
    if (!std::exchange(m_isLoading, false)) {
        return;
    }
    m_hasFailed = !reason.isEmpty();
    Q_EMIT loadingFinished(reason, m_hasFailed ? m_requested : url());
}

void WebPageEngine::loadingHasChanged(const QWebEngineLoadingInfo& info) {
    // What is told before the load that was asked for last has begun is about the one before it.
    if (m_awaitsStart && info.status() != QWebEngineLoadingInfo::LoadStartedStatus) {
        return;
    }
    m_awaitsStart = false;
    switch (info.status()) {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        m_settling.stop();
        if (!m_isLoading) {
            begin(info.url());
        }
        return;
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        if (m_page->zoomFactor() != m_zoom) {
            m_page->setZoomFactor(m_zoom); // each server has its own
        }
        m_hasPage = true;
        end({});
        Q_EMIT historyChanged();
        return;
    case QWebEngineLoadingInfo::LoadFailedStatus:
        if (info.errorCode() != brokenOff || info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain) {
            end(reasonOf(info));
            return;
        }
        [[fallthrough]];
    case QWebEngineLoadingInfo::LoadStoppedStatus:
        // By another load, most often.
        m_settling.start();
        return;
    }
}

/// Files that the engine does not show are the browser's, which can keep them.
void WebPageEngine::download(const QWebEngineDownloadRequest& request) {
    Q_EMIT leavingFor(request.url());
    // It is told of after the load has been broken off, and may have been taken for one that was stopped.
    if (!m_isLoading && m_hasFailed && !m_hasPage) {
        begin(m_requested);
    }
    if (m_isLoading) {
        end(m_hasPage ? QString() : tr("There is no page, but a file of the type “%1”.").arg(request.mimeType()));
    }
}

void WebPageEngine::reload() {
    if (!m_page) {
        return;
    }
    if (m_hasFailed || m_isLoading) {
        load(m_requested, Caching::Allowed);
        return;
    }
    m_page->triggerAction(QWebEnginePage::ReloadAndBypassCache);
}

void WebPageEngine::stop() {
    if (m_page && m_isLoading) {
        m_awaitsStart = false;
        m_page->triggerAction(QWebEnginePage::Stop);
        end(m_hasPage ? QString() : tr("It was stopped."));
        m_hasFailed = true; // so that it is what is loaded again
    }
}

QUrl WebPageEngine::url() const {
    return m_page ? m_page->url() : QUrl();
}

bool WebPageEngine::canGoBack() const {
    return m_page && m_page->history()->canGoBack();
}

bool WebPageEngine::canGoForward() const {
    return m_page && m_page->history()->canGoForward();
}

void WebPageEngine::goBack() {
    if (canGoBack()) {
        m_page->history()->back();
    }
}

void WebPageEngine::goForward() {
    if (canGoForward()) {
        m_page->history()->forward();
    }
}

void WebPageEngine::setZoom(double factor) {
    m_zoom = factor;
    if (m_page) {
        m_page->setZoomFactor(factor);
    }
}

void WebPageEngine::readText(std::function<void(const QString& text)> receiver) const {
    if (m_page) {
        m_page->toPlainText(
            [engine = QPointer<const WebPageEngine>(this), receiver = std::move(receiver)](const QString& text) {
                if (engine) {
                    receiver(text);
                }
            });
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WebView.h>

#include <VXKit/platform/appkit/NSURLCache.h>
#include <VXKit/platform/appkit/WebViewEngine.h>
#include <VXKit/platform/desktop/NSWorkspace.h>

#include <QChildEvent>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr std::array zoomSteps{0.5, 0.67, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};
constexpr int standardZoomStep = 4;
constexpr int lastZoomStep = static_cast<int>(zoomSteps.size()) - 1;

constexpr int timeoutOf(double seconds) {
    constexpr double mostMilliseconds = std::numeric_limits<int>::max();
    return seconds > 0 ? static_cast<int>(std::min(seconds * 1000, mostMilliseconds)) : 0;
}

} // namespace

void WebFrame::loadRequest(const NSURLRequest& request) {
    m_webView.m_timeout.setInterval(timeoutOf(request.timeoutInterval));
    m_webView.m_engine->load(request.url, request.cachePolicy == NSURLRequestCachePolicy::UseProtocolCachePolicy
                                              ? WebViewEngine::Caching::Allowed
                                              : WebViewEngine::Caching::Bypassed);
}

void WebFrame::reload() {
    m_webView.m_engine->reload();
}

void WebFrame::stopLoading() {
    m_webView.m_engine->stop();
}

void WebFrame::readText(std::function<void(const QString& text)> receiver) const {
    m_webView.m_engine->readText(std::move(receiver));
}

WebView::WebView(QWidget* parent) : NSView(parent), m_engine(VXMakeWebViewEngine(*this)), m_zoomStep(standardZoomStep) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_engine->widget());
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(m_engine->widget());
    watch(m_engine->widget());

    m_timeout.setSingleShot(true);
    m_timeout.setInterval(timeoutOf(NSURLRequest().timeoutInterval));
    connect(&m_timeout, &QTimer::timeout, this, [this] {
        m_isTimedOut = true;
        m_engine->stop();
    });
    connect(&NSURLCache::sharedURLCache(), &NSURLCache::removedAllCachedResponses, m_engine.get(),
            &WebViewEngine::clearCache);
    connect(m_engine.get(), &WebViewEngine::loadingStarted, this, [this] {
        m_isLoading = true;
        m_isTimedOut = false;
        m_progress = 0;
        m_timeout.start();
        Q_EMIT loadingStarted();
    });
    connect(m_engine.get(), &WebViewEngine::progressed, this, [this](double progress) {
        if (m_isLoading) {
            m_progress = progress;
            m_timeout.start();
            Q_EMIT estimatedProgressChanged(progress);
        }
    });
    connect(m_engine.get(), &WebViewEngine::loadingFinished, this, &WebView::finish);
    connect(m_engine.get(), &WebViewEngine::titleChanged, this, [this](const QString& title) {
        m_title = title;
        Q_EMIT titleChanged(title);
    });
    connect(m_engine.get(), &WebViewEngine::historyChanged, this, &WebView::historyChanged);
    connect(m_engine.get(), &WebViewEngine::leavingFor, this, &WebView::openElsewhere);
}

WebView::~WebView() = default;

void WebView::finish(const QString& reason, const QUrl& url) {
    m_timeout.stop();
    const bool isTimedOut = std::exchange(m_isTimedOut, false);
    m_isLoading = false;
    Q_EMIT loadingFinished(isTimedOut ? tr("It does not answer.") : reason, url);
}

QUrl WebView::mainFrameURL() const {
    return m_engine->url();
}

bool WebView::canGoBack() const {
    return m_engine->canGoBack();
}

bool WebView::canGoForward() const {
    return m_engine->canGoForward();
}

void WebView::goBack() {
    m_engine->goBack();
}

void WebView::goForward() {
    m_engine->goForward();
}

double WebView::pageSizeMultiplier() const {
    return zoomSteps[static_cast<std::size_t>(m_zoomStep)];
}

bool WebView::canZoomPageIn() const {
    return m_zoomStep < lastZoomStep;
}

bool WebView::canZoomPageOut() const {
    return m_zoomStep > 0;
}

void WebView::zoomPageIn() {
    setZoomStep(m_zoomStep + 1);
}

void WebView::zoomPageOut() {
    setZoomStep(m_zoomStep - 1);
}

void WebView::resetPageZoom() {
    setZoomStep(standardZoomStep);
}

void WebView::setZoomStep(int step) {
    const int possible = std::clamp(step, 0, lastZoomStep);
    if (possible == m_zoomStep) {
        return;
    }
    m_zoomStep = possible;
    m_engine->setZoom(pageSizeMultiplier());
    Q_EMIT pageSizeMultiplierChanged(pageSizeMultiplier());
}

/// Only what a person would open: a page must not be able to start whatever program is registered for some scheme.
void WebView::openElsewhere(const QUrl& url) const {
    if (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https") ||
        url.scheme() == QLatin1String("mailto")) {
        NSWorkspace::sharedWorkspace().openURL(url);
    }
}

/// Engines make the widgets that get the mouse when they like.
void WebView::watch(QObject* object) {
    object->installEventFilter(this);
    for (QObject* child : object->children()) {
        if (child->isWidgetType()) {
            watch(child);
        }
    }
}

bool WebView::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::ChildAdded:
        if (QObject* child = static_cast<QChildEvent*>(event)->child(); child->isWidgetType()) {
            watch(child);
        }
        return false;
    case QEvent::Wheel:
        if (auto* turn = static_cast<QWheelEvent*>(event); (turn->modifiers() & Qt::ControlModifier) != 0) {
            wheel(turn->angleDelta().y());
            return true;
        }
        return false;
    case QEvent::MouseButtonPress:
        switch (static_cast<QMouseEvent*>(event)->button()) {
        case Qt::BackButton:
            goBack();
            return true;
        case Qt::ForwardButton:
            goForward();
            return true;
        default:
            return false;
        }
    default:
        return NSView::eventFilter(watched, event);
    }
}

/// A wheel turns in notches, other devices in small parts of one.
void WebView::wheel(int turned) {
    m_turned += turned;
    const int steps = m_turned / QWheelEvent::DefaultDeltasPerStep;
    m_turned -= steps * QWheelEvent::DefaultDeltasPerStep;
    setZoomStep(m_zoomStep + steps);
}

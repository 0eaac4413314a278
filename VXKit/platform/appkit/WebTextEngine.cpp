// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WebTextEngine.h>

#include <VXKit/platform/appkit/NSURLCache.h>
#include <VXKit/platform/appkit/WebTextContent.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QAbstractNetworkCache>
#include <QColor>
#include <QImage>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPalette>
#include <QScrollBar>
#include <QTextBrowser>

#include <algorithm>
#include <optional>
#include <utility>

using WebTextContent::asQtReadsIt;
using WebTextContent::decoded;
using WebTextContent::isLocal;
using WebTextContent::isOnTheWeb;
using WebTextContent::isTooDeep;
using WebTextContent::readLocalFile;
using WebTextContent::scaleText;
using WebTextContent::tooLarge;

namespace {

constexpr qint64 mostBytesOfPage = qint64{4} * 1024 * 1024;
constexpr qint64 mostBytesOfResource = qint64{8} * 1024 * 1024;
constexpr qint64 mostBytesOfResources = qint64{32} * 1024 * 1024;
constexpr int mostResources = 128;
constexpr int mostRedirects = 10;
constexpr double fontSize = 14;
constexpr double margin = 22; // points around the page
constexpr double progressOfPage = 0.7;

constexpr QColor inkColor(0x1d, 0x1d, 0x1f);
constexpr QColor linkColor(0x0b, 0x5c, 0xcc);
constexpr QColor selectionColor(0xb3, 0xd4, 0xfc);
constexpr QColor frameColor(0xf2, 0xf2, 0xf3);

/// How pages look that do not say so themselves.
constexpr const char* defaultStyleSheet = "h1 { font-size: 23px; } h2 { font-size: 17px; margin-top: 20px; }"
                                          "h3 { font-size: 15px; } p, li, dd, td { line-height: 118%; }"
                                          "td, th { padding: 2px 12px 2px 0; }";

/// Light as the page is, whatever the program's style.
constexpr const char* scrollBarLook =
    "QScrollBar { background: #fafafa; border: none; margin: 0; }"
    "QScrollBar:vertical { width: 12px; } QScrollBar:horizontal { height: 12px; }"
    "QScrollBar::handle { background: #c4c5ca; border-radius: 4px; margin: 2px; }"
    "QScrollBar::handle:hover { background: #a6a7ad; }"
    "QScrollBar::handle:vertical { min-height: 32px; } QScrollBar::handle:horizontal { min-width: 32px; }"
    "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }"
    "QScrollBar::add-page, QScrollBar::sub-page { background: none; }";

} // namespace

/// The browser without its own loading of pages.
class WebTextEngine::Page : public QTextBrowser {
public:
    Page(WebTextEngine& engine, QWidget& parent) : QTextBrowser(&parent), m_engine(engine) {
        setOpenLinks(false);
        setUndoRedoEnabled(false);
        setFrameShape(QFrame::NoFrame);
        setAccessibleName(tr("Page"));
        // Pages are dark text on white by themselves, whatever the colours of the desktop.
        QPalette palette(frameColor);
        palette.setColor(QPalette::Base, Qt::white);
        palette.setColor(QPalette::Text, inkColor);
        palette.setColor(QPalette::WindowText, inkColor);
        palette.setColor(QPalette::Link, linkColor);
        palette.setColor(QPalette::LinkVisited, linkColor);
        palette.setColor(QPalette::Highlight, selectionColor);
        palette.setColor(QPalette::HighlightedText, inkColor);
        setPalette(palette);
        setStyleSheet(QString::fromLatin1(scrollBarLook));
        document()->setDocumentMargin(margin);
        document()->setDefaultFont(NSFont::systemFontOfSize(fontSize).qtFont());
        document()->setDefaultStyleSheet(QString::fromLatin1(defaultStyleSheet));
    }

    QVariant loadResource(int type, const QUrl& name) override { return m_engine.resource(type, name); }

private:
    WebTextEngine& m_engine;
};

WebTextEngine::WebTextEngine(QWidget& parent) : m_page(new Page(*this, parent)) {
    connect(m_page, &QTextBrowser::anchorClicked, this, &WebTextEngine::follow);
    m_network.setCache(NSURLCache::networkCache().release());
}

WebTextEngine::~WebTextEngine() {
    abandon();
    delete m_page;
}

QWidget* WebTextEngine::widget() const {
    return m_page;
}

void WebTextEngine::load(const QUrl& url, Caching caching) {
    begin({url, m_current + 1, true, caching});
}

void WebTextEngine::reload() {
    Request request = m_request;
    if (!m_hasFailed && !m_isLoading) {
        request = {m_url, m_current, false, Caching::Allowed};
    }
    request.caching = Caching::Bypassed;
    begin(request);
}

void WebTextEngine::stop() {
    if (m_isLoading) {
        abandon();
        end(m_url.isEmpty() ? tr("It was stopped.") : QString());
        m_hasFailed = true; // so that it is what is loaded again
    }
}

void WebTextEngine::goBack() {
    if (canGoBack()) {
        visit(m_current - 1);
    }
}

void WebTextEngine::goForward() {
    if (canGoForward()) {
        visit(m_current + 1);
    }
}

void WebTextEngine::visit(int index) {
    const QUrl url = m_visits[static_cast<std::size_t>(index)].url;
    if (url.matches(m_url, QUrl::RemoveFragment)) {
        // Another page that is on its way is not wanted any more; the pictures of this one are.
        const bool isOtherOnItsWay = m_isLoading && m_fetching.isEmpty();
        if (isOtherOnItsWay) {
            abandon();
            m_isLoading = false;
        }
        m_visits[static_cast<std::size_t>(m_current)].scrolled = m_page->verticalScrollBar()->value();
        m_current = index;
        m_url = url;
        m_request.url = url;
        m_request.visit = index;
        m_request.isNew = false;
        restoreScroll();
        Q_EMIT historyChanged();
        if (isOtherOnItsWay) {
            Q_EMIT loadingFinished({}, m_url);
        }
        return;
    }
    begin({url, index, false, Caching::Allowed});
}

void WebTextEngine::setZoom(double factor) {
    if (factor == m_zoom) {
        return;
    }
    m_zoom = factor;
    const double share = m_page->verticalScrollBar()->maximum() > 0
                             ? static_cast<double>(m_page->verticalScrollBar()->value()) /
                                   static_cast<double>(m_page->verticalScrollBar()->maximum())
                             : 0;
    render();
    m_page->verticalScrollBar()->setValue(static_cast<int>(share * m_page->verticalScrollBar()->maximum()));
}

void WebTextEngine::readText(std::function<void(const QString& text)> receiver) const {
    QString text = m_page ? m_page->toPlainText() : QString();
    receiver(text.remove(QChar::ObjectReplacementCharacter)); // pictures
}

void WebTextEngine::begin(const Request& request) {
    abandon();
    m_request = request;
    m_hasFailed = false;
    m_isLoading = true;
    Q_EMIT loadingStarted();
    if (isOnTheWeb(request.url)) {
        fetch();
        return;
    }
    // As a page of the web would be: not before the caller has returned.
    QMetaObject::invokeMethod(
        this,
        [this, load = m_load] {
            if (load == m_load && m_isLoading) {
                readLocally();
            }
        },
        Qt::QueuedConnection);
}

void WebTextEngine::readLocally() {
    const QUrl url = m_request.url;
    if (!isLocal(url)) {
        end(url.isEmpty() ? tr("There is no address.") : tr("“%1” addresses cannot be shown.").arg(url.scheme()));
        return;
    }
    QString reason;
    const std::optional<QByteArray> content = readLocalFile(url, mostBytesOfPage, &reason);
    if (!content) {
        end(reason);
        return;
    }
    const bool isText = url.path().endsWith(QLatin1String(".txt"), Qt::CaseInsensitive);
    if (show(*content, isText ? "text/plain" : "text/html", url)) {
        fetchResources();
    }
}

QNetworkReply* WebTextEngine::get(const QUrl& url) {
    QNetworkRequest request(url);
    request.setMaximumRedirectsAllowed(mostRedirects);
    if (m_request.caching == Caching::Bypassed) {
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    }
    return m_network.get(request);
}

void WebTextEngine::fetch() {
    QNetworkReply* reply = get(m_request.url);
    m_reply = reply;
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        if (m_reply != reply) {
            return;
        }
        if (std::max(received, total) > mostBytesOfPage) {
            abandon();
            end(tooLarge());
            return;
        }
        if (total > 0) {
            Q_EMIT progressed(progressOfPage * static_cast<double>(received) / static_cast<double>(total));
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        if (m_reply == reply) {
            m_reply = nullptr;
            receive(*reply);
        }
    });
}

void WebTextEngine::receive(QNetworkReply& reply) {
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status >= 400) {
        const QString phrase = reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        end(tr("The server answered: %1 %2").arg(status).arg(phrase));
        return;
    }
    if (reply.error() != QNetworkReply::NoError) {
        end(reply.errorString());
        return;
    }
    QUrl url = reply.url();
    if (!url.hasFragment()) {
        url.setFragment(m_request.url.fragment());
    }
    if (show(reply.readAll(), reply.rawHeader("Content-Type"), url)) {
        fetchResources();
    }
}

void WebTextEngine::follow(const QUrl& link) {
    const QUrl url = m_url.resolved(link);
    if (url.matches(m_url, QUrl::RemoveFragment)) {
        scrollTo(url, m_current + 1);
    } else if (isOnTheWeb(url) ? url.host() == m_url.host() : isLocal(url) && isLocal(m_url)) {
        load(url, Caching::Allowed);
    } else {
        Q_EMIT leavingFor(url);
    }
}

void WebTextEngine::scrollTo(const QUrl& url, int visit) {
    m_request = {url, visit, true, Caching::Allowed};
    enter(url);
    restoreScroll();
    Q_EMIT historyChanged();
}

/// Notes that the page at `url` is the one that is shown.
void WebTextEngine::enter(const QUrl& url) {
    if (m_current >= 0) {
        m_visits[static_cast<std::size_t>(m_current)].scrolled = m_page->verticalScrollBar()->value();
    }
    m_url = url;
    const bool isSameAgain = m_current >= 0 && m_visits[static_cast<std::size_t>(m_current)].url == url;
    if (m_request.isNew && !isSameAgain) {
        m_visits.resize(static_cast<std::size_t>(m_current + 1));
        m_visits.push_back({url, -1});
        m_current = static_cast<int>(m_visits.size()) - 1;
    } else if (!m_request.isNew) {
        m_current = m_request.visit;
        m_visits[static_cast<std::size_t>(m_current)].url = url;
    }
    // What has been asked for is where we are now.
    m_request.url = url;
    m_request.isNew = false;
    m_request.visit = m_current;
}

/// False where `content` is nothing that can be shown, which ends the load.
bool WebTextEngine::show(const QByteArray& content, const QByteArray& contentType, const QUrl& url) {
    const QByteArray type = contentType.split(';').first().trimmed().toLower();
    QString html;
    m_resources.clear();
    m_missing.clear();
    m_resourceBytes = 0;
    if (content.size() > mostBytesOfPage) {
        end(tooLarge());
        return false;
    }
    if (type.startsWith("image/")) {
        html = QStringLiteral("<img src=\"%1\">").arg(url.toString(QUrl::FullyEncoded).toHtmlEscaped());
        m_resources.insert(url, content);
    } else if (type.isEmpty() || type == "text/html" || type == "application/xhtml+xml") {
        html = asQtReadsIt(decoded(content, contentType));
        if (isTooDeep(html)) {
            end(tr("The page is too deeply nested."));
            return false;
        }
    } else if (type.startsWith("text/")) {
        html = QStringLiteral("<pre style=\"white-space: pre-wrap\">%1</pre>")
                   .arg(decoded(content, contentType).toHtmlEscaped());
    } else {
        end(tr("There is no page, but a file of the type “%1”.").arg(QString::fromLatin1(type)));
        return false;
    }
    enter(url);
    m_html = html;
    m_page->document()->setBaseUrl(url);
    render();
    restoreScroll();
    Q_EMIT titleChanged(m_page->document()->metaInformation(QTextDocument::DocumentTitle));
    Q_EMIT historyChanged();
    return true;
}

void WebTextEngine::render() {
    m_page->setHtml(m_html);
    scaleText(*m_page->document(), m_zoom);
}

void WebTextEngine::restoreScroll() {
    const int scrolled = m_visits[static_cast<std::size_t>(m_current)].scrolled;
    if (scrolled >= 0) {
        m_page->verticalScrollBar()->setValue(scrolled);
    } else if (m_url.hasFragment()) {
        m_page->scrollToAnchor(m_url.fragment(QUrl::FullyDecoded));
    } else {
        m_page->verticalScrollBar()->setValue(0);
    }
}

/// A picture or style sheet of the page, as far as it is there.
QVariant WebTextEngine::resource(int type, const QUrl& url) {
    if (!m_resources.contains(url)) {
        if (isLocal(url) && isLocal(m_url)) {
            QString reason;
            m_resources.insert(url, readLocalFile(url, mostBytesOfResource, &reason).value_or(QByteArray()));
        } else if (isOnTheWeb(url)) {
            m_missing.insert(url);
        }
    }
    const QByteArray content = m_resources.value(url);
    return type == QTextDocument::ImageResource ? scaledToPage(content) : QVariant(content);
}

/// Pictures that are wider than the page are made to fit; a picture that is not there takes no room.
QVariant WebTextEngine::scaledToPage(const QByteArray& content) const {
    const QImage picture = QImage::fromData(content);
    if (picture.isNull()) {
        QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
        nothing.fill(Qt::transparent);
        return nothing;
    }
    const int room = m_page->viewport()->width() - 2 * static_cast<int>(margin);
    return room > 0 && picture.width() > room ? picture.scaledToWidth(room, Qt::SmoothTransformation) : picture;
}

void WebTextEngine::fetchResources() {
    const QSet<QUrl> missing = std::exchange(m_missing, {});
    for (const QUrl& url : missing) {
        if (!m_resources.contains(url) && m_resources.size() < mostResources) {
            fetchResource(url);
        }
    }
    if (m_fetching.isEmpty()) {
        end({});
    }
}

void WebTextEngine::fetchResource(const QUrl& url) {
    m_resources.insert(url, {});
    QNetworkReply* reply = get(url);
    m_fetching.insert(reply);
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        if (std::max(received, total) > std::min(mostBytesOfResource, mostBytesOfResources - m_resourceBytes)) {
            reply->abort();
        } else if (m_fetching.contains(reply)) {
            const auto wanted = static_cast<double>(m_resources.size() + 1);
            Q_EMIT progressed(1 - (1 - progressOfPage) * static_cast<double>(m_fetching.size()) / wanted);
        }
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, url] {
        reply->deleteLater();
        if (!m_fetching.remove(reply)) {
            return;
        }
        if (reply->error() == QNetworkReply::NoError) {
            const QByteArray content = reply->readAll();
            m_resourceBytes += content.size();
            m_resources.insert(url, content);
        }
        if (m_fetching.isEmpty()) {
            const int scrolled = m_page->verticalScrollBar()->value();
            render();
            m_page->verticalScrollBar()->setValue(scrolled);
            // A style sheet may ask for more.
            fetchResources();
        }
    });
}

void WebTextEngine::end(const QString& reason) {
    m_isLoading = false;
    m_hasFailed = !reason.isEmpty();
    Q_EMIT loadingFinished(reason, m_hasFailed ? m_request.url : m_url);
}

/// What is on its way is not wanted any more.
void WebTextEngine::abandon() {
    ++m_load;
    if (QNetworkReply* reply = std::exchange(m_reply, nullptr)) {
        reply->abort();
    }
    for (QNetworkReply* reply : std::exchange(m_fetching, {})) {
        reply->abort();
    }
}

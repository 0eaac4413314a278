// SPDX-License-Identifier: MIT
#include <VXKit/app/LTHelpLoader.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/foundation/AtomicFile.h>

#include <QCoreApplication>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QShortcut>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <QWidget>

namespace {

constexpr QSize windowSize(640, 520);  // points
constexpr int transferTimeout = 30000; // milliseconds

std::unique_ptr<LTHelpLoader>& shared() {
    static std::unique_ptr<LTHelpLoader> loader;
    return loader;
}

bool isOnTheWeb(const QUrl& url) {
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

} // namespace

/// The plain window around a text browser, and the loading of its pages.
class LTHelpLoader::HelpWindow : public QWidget {
public:
    HelpWindow() {
        setWindowTitle(QStringLiteral("Help"));
        resize(windowSize);
        m_browser->setOpenLinks(false);
        m_browser->setAccessibleName(QStringLiteral("Help page"));
        m_browser->setFrameShape(QFrame::NoFrame);
        m_browser->document()->setDocumentMargin(16);
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins({});
        layout->addWidget(m_browser);
        connect(m_browser, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) { follow(link); });
        connect(new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this, &QWidget::close);
        m_network.setTransferTimeout(transferTimeout);
    }

    void load(const QUrl& url) {
        m_url = url;
        if (m_reply) {
            m_reply->abort();
        }
        if (isOnTheWeb(url)) {
            fetch(url);
            return;
        }
        const bool isResource = url.scheme() == QLatin1String("qrc");
        const QString path = isResource ? QLatin1Char(':') + url.path() : url.toLocalFile();
        NSError error;
        if (isResource) {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly)) {
                showPage(file.readAll());
                return;
            }
            error.localizedDescription = file.errorString();
        } else if (const std::optional<std::string> content = VXReadFile(path, &error)) {
            showPage(QByteArray::fromStdString(*content));
            return;
        }
        showFailure(error.localizedDescription);
    }

    [[nodiscard]] QString text() const { return m_browser->toPlainText(); }

private:
    void fetch(const QUrl& url) {
        QNetworkRequest request(url);
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
        m_browser->setPlainText(QStringLiteral("Loading %1 …").arg(url.toDisplayString()));
        QNetworkReply* reply = m_network.get(request);
        m_reply = reply;
        connect(reply, &QNetworkReply::finished, this, [this, reply] {
            reply->deleteLater();
            if (m_reply != reply) {
                return;
            }
            m_reply = nullptr;
            if (reply->error() != QNetworkReply::NoError) {
                showFailure(reply->errorString());
                return;
            }
            m_url = reply->url();
            showPage(reply->readAll());
        });
    }

    void follow(const QUrl& link) {
        const QUrl url = m_url.resolved(link);
        if (isOnTheWeb(url) && url.host() != m_url.host()) {
            NSWorkspace::sharedWorkspace().openURL(url);
        } else if (url.matches(m_url, QUrl::RemoveFragment)) {
            m_browser->scrollToAnchor(url.fragment());
        } else {
            load(url);
        }
    }

    void showPage(const QByteArray& page) {
        m_browser->document()->setBaseUrl(m_url);
        m_browser->setHtml(QString::fromUtf8(page));
        if (m_url.hasFragment()) {
            m_browser->scrollToAnchor(m_url.fragment());
        }
    }

    void showFailure(const QString& reason) {
        m_browser->setPlainText(
            QStringLiteral("The help page could not be loaded.\n\n%1\n%2").arg(m_url.toDisplayString(), reason));
    }

    QTextBrowser* m_browser = new QTextBrowser(this);
    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
    QUrl m_url;
};

LTHelpLoader::LTHelpLoader() : m_window(std::make_unique<HelpWindow>()) {}

LTHelpLoader::~LTHelpLoader() = default;

LTHelpLoader& LTHelpLoader::loader() {
    if (!shared()) {
        shared().reset(new LTHelpLoader);
        qAddPostRoutine([] { shared().reset(); });
    }
    return *shared();
}

bool LTHelpLoader::exists() {
    return shared() != nullptr;
}

void LTHelpLoader::pop() {
    m_window->load(VXApplicationHooks().helpURL());
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

QWidget& LTHelpLoader::window() const {
    return *m_window;
}

QString LTHelpLoader::text() const {
    return m_window->text();
}

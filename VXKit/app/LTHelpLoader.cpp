// SPDX-License-Identifier: MIT
#include <VXKit/app/LTHelpLoader.h>

#include <VXKit/app/LTApplicationProtocol.h>
#include <VXKit/platform/appkit/NSURLCache.h>
#include <VXKit/platform/desktop/NSWorkspace.h>
#include <VXKit/platform/graphics/QtColor.h>
#include <VXKit/support/VXKitResources.h>
#include <VXKit/transitions/NSWindow+NoodleEffects.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QIcon>
#include <QKeySequence>
#include <QLabel>
#include <QPalette>
#include <QProgressBar>
#include <QShortcut>
#include <QStackedWidget>

#include <functional>
#include <memory>
#include <utility>

namespace {

constexpr NSSize leastSize{420, 300};
constexpr int percent = 100;

std::shared_ptr<LTHelpLoader>& shared() {
    static std::shared_ptr<LTHelpLoader> loader;
    return loader;
}

QString tr(const char* text) {
    return QCoreApplication::translate("LTHelpLoader", text);
}

QIcon kitIcon(const QString& name) {
    return QIcon(QStringLiteral(":/bundles/org.vxkit.VXKit/images/%1.svg").arg(name));
}

/// Whether a browser can show it too; the program's own resources are nowhere but in the program.
bool isForBrowsers(const QUrl& url) {
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https") || url.isLocalFile();
}

} // namespace

LTHelpLoader::LTHelpLoader() = default;

LTHelpLoader::~LTHelpLoader() = default;

LTHelpLoader& LTHelpLoader::loader() {
    if (!shared()) {
        shared() = loaderWithNib<LTHelpLoader>(QStringLiteral("Help"), VXKitBundle());
        qAddPostRoutine([] { shared().reset(); });
        if (shared()->_window) {
            shared()->_window->setLevel(CGWindowLevelForKey(kCGModalPanelWindowLevelKey));
        }
    }
    return *shared();
}

bool LTHelpLoader::exists() {
    return shared() != nullptr;
}

void LTHelpLoader::pop() {
    NSURLCache::sharedURLCache().removeAllCachedResponses();
    // What shows the window runs the event loop, in which the application may end.
    const std::shared_ptr<LTHelpLoader> loader = shared();
    if (!loader) {
        return;
    }
    if (loader->_textView) {
        NSURLRequest request;
        request.url = VXApplicationHooks().helpURL();
        loader->_textView->mainFrame().loadRequest(request);
        loader->showPage();
        loader->update();
    }
    if (NSWindow* window = loader->_window) {
        const bool wasVisible = window->isVisible();
        // The ground that the application's colours of text are for.
        window->setBackgroundColor(NSColorFromQColor(window->palette().color(QPalette::Window)));
        window->center();
        window->makeFirstResponder(loader->_textView);
        window->display();
        ::pop(*window);
        if (wasVisible) {
            window->makeKeyAndOrderFront(nullptr);
        }
    }
}

void LTHelpLoader::openInBrowser(QObject* /*sender*/) {
    NSWorkspace::sharedWorkspace().openURL(VXApplicationHooks().helpURL());
}

void LTHelpLoader::connectNib(NSNibConnections& connections) {
    _LTViewLoader::connectNib(connections);
    connections.outlet(QStringLiteral("_window"), _window);
    connections.outlet(QStringLiteral("_textView"), _textView);
    connections.outlet(QStringLiteral("back"), m_back);
    connections.outlet(QStringLiteral("forward"), m_forward);
    connections.outlet(QStringLiteral("reload"), m_reload);
    connections.outlet(QStringLiteral("zoomOut"), m_zoomOut);
    connections.outlet(QStringLiteral("zoom"), m_zoom);
    connections.outlet(QStringLiteral("zoomIn"), m_zoomIn);
    connections.outlet(QStringLiteral("openInBrowser"), m_openInBrowser);
    connections.outlet(QStringLiteral("retry"), m_retry);
    connections.outlet(QStringLiteral("progress"), m_progress);
    connections.outlet(QStringLiteral("panes"), m_panes);
    connections.outlet(QStringLiteral("errorPane"), m_errorPane);
    connections.outlet(QStringLiteral("errorReason"), m_errorReason);
    connections.outlet(QStringLiteral("errorAddress"), m_errorAddress);
    connections.action(QStringLiteral("openInBrowser:"), [this](QObject* sender) { openInBrowser(sender); });
    connections.action(QStringLiteral("goBack:"), [this](QObject*) { goBack(); });
    connections.action(QStringLiteral("goForward:"), [this](QObject*) { _textView->goForward(); });
    connections.action(QStringLiteral("reload:"), [this](QObject*) { reloadOrStop(); });
    connections.action(QStringLiteral("zoomPageOut:"), [this](QObject*) { _textView->zoomPageOut(); });
    connections.action(QStringLiteral("resetPageZoom:"), [this](QObject*) { _textView->resetPageZoom(); });
    connections.action(QStringLiteral("zoomPageIn:"), [this](QObject*) { _textView->zoomPageIn(); });
}

void LTHelpLoader::awakeFromNib() {
    if (!_window || !_textView) {
        return;
    }
    _window->setMinSize(leastSize);
    connectView();
    addShortcuts();
    update();
}

void LTHelpLoader::connectView() {
    QObject::connect(_textView, &WebView::loadingStarted, &m_life, [this] { update(); });
    QObject::connect(_textView, &WebView::estimatedProgressChanged, &m_life, [this] { update(); });
    QObject::connect(_textView, &WebView::historyChanged, &m_life, [this] { update(); });
    QObject::connect(_textView, &WebView::pageSizeMultiplierChanged, &m_life, [this] { update(); });
    QObject::connect(_textView, &WebView::titleChanged, &m_life,
                     [this](const QString& title) { _window->setWindowTitle(title.isEmpty() ? tr("Help") : title); });
    QObject::connect(_textView, &WebView::loadingFinished, &m_life,
                     [this](const QString& reason, const QUrl& url) { loadingHasFinished(reason, url); });
}

void LTHelpLoader::addShortcuts() {
    const std::pair<QKeySequence, std::function<void()>> shortcuts[] = {
        {Qt::Key_Escape, [this] { _window->close(); }},
        {Qt::CTRL | Qt::Key_W, [this] { _window->close(); }},
        {Qt::ALT | Qt::Key_Left, [this] { goBack(); }},
        {Qt::Key_Back, [this] { goBack(); }},
        {Qt::ALT | Qt::Key_Right, [this] { _textView->goForward(); }},
        {Qt::Key_Forward, [this] { _textView->goForward(); }},
        {Qt::Key_F5, [this] { _textView->mainFrame().reload(); }},
        {Qt::CTRL | Qt::Key_R, [this] { _textView->mainFrame().reload(); }},
        {Qt::CTRL | Qt::Key_Plus, [this] { _textView->zoomPageIn(); }},
        {Qt::CTRL | Qt::Key_Equal, [this] { _textView->zoomPageIn(); }},
        {Qt::CTRL | Qt::Key_Minus, [this] { _textView->zoomPageOut(); }},
        {Qt::CTRL | Qt::Key_0, [this] { _textView->resetPageZoom(); }},
    };
    for (const auto& [keys, action] : shortcuts) {
        auto* shortcut = new QShortcut(keys, _window);
        QObject::connect(shortcut, &QShortcut::activated, &m_life, action);
    }
}

/// From what could not be shown, to the page that is still behind it.
void LTHelpLoader::goBack() {
    if (hasPageBehindFailure()) {
        showPage();
        update();
    } else {
        _textView->goBack();
    }
}

void LTHelpLoader::reloadOrStop() {
    if (_textView->isLoading()) {
        _textView->mainFrame().stopLoading();
    } else {
        _textView->mainFrame().reload();
    }
}

void LTHelpLoader::loadingHasFinished(const QString& reason, const QUrl& url) {
    if (reason.isEmpty()) {
        showPage();
    } else {
        showFailure(reason, url);
    }
    update();
}

bool LTHelpLoader::isFailureShown() const {
    return m_panes && m_errorPane && m_panes->currentWidget() == m_errorPane;
}

bool LTHelpLoader::hasPageBehindFailure() const {
    const QUrl behind = _textView->mainFrameURL();
    return isFailureShown() && !behind.isEmpty() && behind != m_failedURL;
}

void LTHelpLoader::showPage() {
    if (!isFailureShown()) {
        return;
    }
    const bool hadKeyboard = m_errorPane->isAncestorOf(_window->focusWidget());
    m_panes->setCurrentWidget(_textView);
    if (hadKeyboard) {
        _window->makeFirstResponder(_textView);
    }
}

void LTHelpLoader::showFailure(const QString& reason, const QUrl& url) {
    if (!m_panes || !m_errorPane || !m_errorReason || !m_errorAddress || !m_retry) {
        return;
    }
    m_failedURL = url;
    m_errorReason->setText(reason);
    // So that a long address can be broken into lines, which labels do at spaces alone.
    QString address = url.toDisplayString();
    address.replace(QLatin1Char('/'), QStringLiteral("/\u200b"));
    m_errorAddress->setText(address);
    m_errorPane->setAccessibleName(reason);
    m_panes->setCurrentWidget(m_errorPane);
    m_retry->setEnabled(true);
    _window->makeFirstResponder(m_retry);
}

void LTHelpLoader::update() {
    const bool isLoading = _textView->isLoading();
    if (m_back) {
        m_back->setEnabled(_textView->canGoBack() || hasPageBehindFailure());
    }
    if (m_forward) {
        m_forward->setEnabled(_textView->canGoForward());
    }
    if (m_reload) {
        m_reload->setIcon(kitIcon(isLoading ? QStringLiteral("HelpStop") : QStringLiteral("HelpReload")));
        m_reload->setToolTip(isLoading ? tr("Stop") : tr("Reload (F5)"));
        m_reload->setAccessibleName(isLoading ? tr("Stop") : tr("Reload"));
    }
    if (m_retry) {
        m_retry->setEnabled(!isLoading);
    }
    if (m_progress) {
        m_progress->setValue(static_cast<int>(percent * _textView->estimatedProgress()));
    }
    if (m_zoom) {
        m_zoom->setText(QStringLiteral("%1%").arg(qRound(percent * _textView->pageSizeMultiplier())));
    }
    if (m_zoomIn) {
        m_zoomIn->setEnabled(_textView->canZoomPageIn());
    }
    if (m_zoomOut) {
        m_zoomOut->setEnabled(_textView->canZoomPageOut());
    }
    if (m_openInBrowser) {
        m_openInBrowser->setEnabled(isForBrowsers(VXApplicationHooks().helpURL()));
    }
}

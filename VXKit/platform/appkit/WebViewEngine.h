// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QObject>
#include <QString>
#include <QUrl>
#include <QWidget>
#include <QtPlugin>

#include <functional>
#include <memory>

/// What fetches and shows the pages inside a WebView: a browser's engine where one is installed, a text browser
/// elsewhere.
///
/// An engine shows pages and tells what becomes of them; it never asks, warns or opens windows. Loads are asynchronous:
/// each tells loadingStarted, and the last one loadingFinished, once, from the event loop; one whose place another load
/// takes ends without a word. Hosts use WebView.
class VXKIT_EXPORT WebViewEngine : public QObject {
    Q_OBJECT

public:
    /// Where a page may come from.
    enum class Caching {
        Allowed,  ///< from wherever it was kept, or from its server
        Bypassed, ///< from its server, and all that belongs to it
    };

    /// For the engines; hosts get one by VXMakeWebViewEngine.
    WebViewEngine();
    ~WebViewEngine() override;

    /// The widget that shows the pages. It belongs to its parent; null once the engine has ended with the application.
    [[nodiscard]] virtual QWidget* widget() const = 0;

    /// Loads the page at `url`: http, https, file or qrc.
    virtual void load(const QUrl& url, Caching caching) = 0;
    /// Loads the page again, or that which could not be had last, from its server.
    virtual void reload() = 0;
    /// Ends what is loading; where no page is shown that is a failure.
    virtual void stop() = 0;
    /// The address of the page that is shown; empty before the first.
    [[nodiscard]] virtual QUrl url() const = 0;

    /// Whether there is a page before the one that is shown.
    [[nodiscard]] virtual bool canGoBack() const = 0;
    /// Whether there is a page after it.
    [[nodiscard]] virtual bool canGoForward() const = 0;
    /// Loads the page before; nothing where there is none.
    virtual void goBack() = 0;
    /// Loads the page after; nothing where there is none.
    virtual void goForward() = 0;

    /// Shows pages `factor` times as large as they are by themselves.
    virtual void setZoom(double factor) = 0;
    /// Forgets what was fetched before. What is shown stays.
    virtual void clearCache() = 0;
    /// Calls `receiver` with the text of the page, now or soon.
    virtual void readText(std::function<void(const QString& text)> receiver) const = 0;

Q_SIGNALS:
    /// A load has begun.
    void loadingStarted();
    /// How much of the page is there, from 0 to 1.
    void progressed(double progress);
    /// Without a reason the page at `url` is shown; otherwise it is the one before or none.
    void loadingFinished(const QString& reason, const QUrl& url);
    /// The page has another title; empty where it has none.
    void titleChanged(const QString& title);
    /// The address or the way back and forward is another.
    void historyChanged();
    /// A link leads to where this engine does not go.
    void leavingFor(const QUrl& url);
};

/// The root object of a plugin with an engine.
class VXKIT_EXPORT WebViewEnginePlugin {
public:
    WebViewEnginePlugin();
    WebViewEnginePlugin(const WebViewEnginePlugin&) = delete;
    WebViewEnginePlugin& operator=(const WebViewEnginePlugin&) = delete;
    virtual ~WebViewEnginePlugin();

    /// A new engine with its widget in `parent`; null where it cannot run here.
    [[nodiscard]] virtual std::unique_ptr<WebViewEngine> makeEngine(QWidget& parent) = 0;
};
Q_DECLARE_INTERFACE(WebViewEnginePlugin, "org.vxkit.WebViewEnginePlugin/1")

/// A new engine with its widget in `parent`: that of the plugin `VXKitWebEngine`, which is loaded when it is first
/// needed, or a text browser where there is no such plugin or it cannot run here. The plugin is looked for in
///
/// - the folders of the environment variable VXKIT_PLUGIN_PATH, and nowhere else where that is set;
/// - VXKit/plugins beside the library (beside the program, where the kit is linked statically);
/// - VXKit in each folder that Qt looks for plugins in.
///
/// The plugin is left alone where it would end the process: for root, and where the system keeps it from building its
/// sandbox, unless the person has turned that off by QTWEBENGINE_DISABLE_SANDBOX or QTWEBENGINE_CHROMIUM_FLAGS; and in
/// a program that is neither an NSApplication nor has set Qt::AA_ShareOpenGLContexts.
[[nodiscard]] VXKIT_EXPORT std::unique_ptr<WebViewEngine> VXMakeWebViewEngine(QWidget& parent);

/// Whether there is such a plugin, be it fit to run or not. Needs no application object.
[[nodiscard]] VXKIT_EXPORT bool VXHasWebEnginePlugin();

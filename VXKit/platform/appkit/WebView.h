// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/desktop/NSURLConnection.h>

#include <QString>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>

class WebView;
class WebViewEngine;

/// The page in a WebView. Stands for WebKit's class of the same name, as far as the outermost frame goes.
class VXKIT_EXPORT WebFrame {
public:
    WebFrame(const WebFrame&) = delete;
    WebFrame& operator=(const WebFrame&) = delete;

    /// The view that shows the page, which owns this. WebKit: `-webView`.
    [[nodiscard]] WebView& webView() const { return m_webView; }

    /// Loads the page at the request's address (http, https, file or qrc), which replaces what is loading. Its method
    /// and body are not looked at. WebKit: `-loadRequest:`.
    void loadRequest(const NSURLRequest& request);
    /// Loads the page again from where it comes from, or that which could not be shown last. WebKit: `-reload`.
    void reload();
    /// Ends what is loading, which then has failed. WebKit: `-stopLoading`.
    void stopLoading();

    /// Calls `receiver` with the text of the page, now or soon; never where the view goes before.
    void readText(std::function<void(const QString& text)> receiver) const;

private:
    friend class WebView;
    explicit WebFrame(WebView& webView) : m_webView(webView) {}

    WebView& m_webView;
};

/// A view that shows pages of the web, of files and of the program's own resources.
///
/// What shows them is a browser's engine where that is installed and can run, otherwise a text browser
/// (WebViewEngine.h); the first view of the process brings it up. Links to other hosts, and to what is no page, open in
/// the person's browser. Control and the wheel change the size of the text, the mouse's extra buttons go back and
/// forward. Nothing is kept of a visit: no cookies, no history on disk.
///
/// For help and documents, not for programs: nothing that a page asks for (places, cameras, notifications) is given to
/// it. Stands for WebKit's class of the same name.
class VXKIT_EXPORT WebView : public NSView {
    Q_OBJECT

public:
    /// A view without a page and a frame.
    explicit WebView(QWidget* parent = nullptr);
    ~WebView() override;

    /// What loads pages into the view. WebKit: `-mainFrame`.
    [[nodiscard]] WebFrame& mainFrame() { return m_mainFrame; }

    /// Where the page comes from; empty before the first. WebKit: `-mainFrameURL`.
    [[nodiscard]] QUrl mainFrameURL() const;
    /// The title that the page gives itself; may be empty. WebKit: `-mainFrameTitle`.
    [[nodiscard]] QString mainFrameTitle() const { return m_title; }

    /// Whether a page is being loaded. WebKit: `-isLoading`.
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    /// How much of what is loading is there, from 0 to 1; 0 when nothing is. WebKit: `-estimatedProgress`.
    [[nodiscard]] double estimatedProgress() const { return m_isLoading ? m_progress : 0; }

    /// Whether the view has shown a page before this one. WebKit: `-canGoBack`.
    [[nodiscard]] bool canGoBack() const;
    /// Whether the way back has left a page to go forward to. WebKit: `-canGoForward`.
    [[nodiscard]] bool canGoForward() const;
    /// To the page before, of those that this view has shown. Nothing where there is none. WebKit: `-goBack`.
    void goBack();
    /// To the page after, likewise. WebKit: `-goForward`.
    void goForward();

    /// How large pages are shown, as a factor: 1 at first. WebKit: `-pageSizeMultiplier`.
    [[nodiscard]] double pageSizeMultiplier() const;
    /// Whether there is a larger size. WebKit: `-canZoomPageIn`.
    [[nodiscard]] bool canZoomPageIn() const;
    /// Whether there is a smaller size. WebKit: `-canZoomPageOut`.
    [[nodiscard]] bool canZoomPageOut() const;
    /// The next larger of the sizes from 0.5 to 3. WebKit: `-zoomPageIn:`.
    void zoomPageIn();
    /// The next smaller of them. WebKit: `-zoomPageOut:`.
    void zoomPageOut();
    /// The size 1. WebKit: `-resetPageZoom:`.
    void resetPageZoom();

Q_SIGNALS:
    /// A page is being loaded. Each load tells of one start, its progress and one end; one whose place another takes
    /// has no end of its own.
    void loadingStarted();
    /// Another share of the page is there: from 0 to 1.
    void estimatedProgressChanged(double progress);
    /// `reason` is empty where the page at `url` is shown now; otherwise what was there before still is.
    void loadingFinished(const QString& reason, const QUrl& url);
    /// The page has another title; empty where it has none.
    void titleChanged(const QString& title);
    /// The address, or what canGoBack and canGoForward answer, is another.
    void historyChanged();
    /// Pages are shown in another size.
    void pageSizeMultiplierChanged(double multiplier);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class WebFrame;

    void watch(QObject* object);
    void wheel(int turned);
    void setZoomStep(int step);
    void openElsewhere(const QUrl& url) const;
    void finish(const QString& reason, const QUrl& url);

    std::unique_ptr<WebViewEngine> m_engine;
    WebFrame m_mainFrame{*this};
    QTimer m_timeout; // runs while nothing is heard of what is loading
    QString m_title;
    double m_progress = 0;
    bool m_isLoading = false;
    bool m_isTimedOut = false;
    int m_zoomStep;
    int m_turned = 0; // by the wheel, since the last step
};

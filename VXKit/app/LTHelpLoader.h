// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/app/_LTViewLoader.h>
#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/appkit/WebView.h>

#include <QObject>
#include <QPointer>
#include <QUrl>

class QAbstractButton;
class QLabel;
class QProgressBar;
class QStackedWidget;

/// The help window: shows the page at the application's helpURL, fetched afresh each time it is popped.
///
/// One for the process, made on first use and never again: it is hidden and shown. Its page is in a WebView, under a
/// bar with the way back and forward, the size of the text and the way to the person's browser; where a page cannot be
/// had the window says which and why, and offers to try again. Escape closes it. Needs the application object.
class VXKIT_EXPORT LTHelpLoader : public _LTViewLoader {
public:
    LTHelpLoader();
    ~LTHelpLoader() override;

    /// The loader of the process. The first call loads the nib "Help" of the kit and puts its window at the level of
    /// modal panels. AppKit: `+loader`.
    static LTHelpLoader& loader();

    /// Whether loader has been called; asking makes nothing.
    [[nodiscard]] static bool exists();

    /// Forgets all that was fetched before, loads the page at helpURL, puts the window in its place and shows it with a
    /// pop; a window that is shown already comes to the front. Where loader was never called it only forgets.
    /// AppKit: `+pop`.
    static void pop();

    /// Opens the page at helpURL in the person's browser. `sender` is not looked at. AppKit: `-openInBrowser:`.
    void openInBrowser(QObject* sender);

    /// The view with the page; null where the kit's resources are missing.
    [[nodiscard]] WebView* textView() const { return _textView; }

    /// Declares the window, the view with the page and its controls; the nib needs the first two alone.
    void connectNib(NSNibConnections& connections) override;
    /// Connects the controls with the view. Nothing where the nib has no window or no view.
    void awakeFromNib() override;

protected:
    QPointer<NSWindow> _window;  ///< an outlet
    QPointer<WebView> _textView; ///< an outlet

private:
    void connectView();
    void addShortcuts();
    void goBack();
    void reloadOrStop();
    void showPage();
    void showFailure(const QString& reason, const QUrl& url);
    void loadingHasFinished(const QString& reason, const QUrl& url);
    void update();
    [[nodiscard]] bool isFailureShown() const;
    [[nodiscard]] bool hasPageBehindFailure() const;

    QPointer<QAbstractButton> m_back;
    QPointer<QAbstractButton> m_forward;
    QPointer<QAbstractButton> m_reload;
    QPointer<QAbstractButton> m_zoomOut;
    QPointer<QAbstractButton> m_zoom;
    QPointer<QAbstractButton> m_zoomIn;
    QPointer<QAbstractButton> m_openInBrowser;
    QPointer<QAbstractButton> m_retry;
    QPointer<QProgressBar> m_progress;
    QPointer<QStackedWidget> m_panes;
    QPointer<QWidget> m_errorPane;
    QPointer<QLabel> m_errorReason;
    QPointer<QLabel> m_errorAddress;

    QUrl m_failedURL;
    QObject m_life; // ends the connections to the window, which outlives the loader
};

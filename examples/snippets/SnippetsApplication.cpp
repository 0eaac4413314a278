// SPDX-License-Identifier: MIT
#include "SnippetsApplication.h"

#include "../Complaint.h"
#include "AboutWindow.h"
#include "Appearance.h"
#include "SmallText.h"
#include "SnippetPasteboard.h"
#include "SnippetsListModel.h"
#include "SnippetsWindow.h"
#include "TitleText.h"
#include "preferences/WindowOpacity.h"
#include "sync/PasswordSheet.h"

#include <VXKit/hud/NSWindow+NSWindowAdditions.h>
#include <VXKit/platform/appkit/NSNib.h>
#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/appkit/NSStatusBar.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXExceptionReporter.h>
#include <VXKit/support/VXLog.h>
#include <VXKit/transitions/NSWindow+Flipr.h>

#include <QDir>
#include <QMenu>
#include <QMetaObject>
#include <QShortcut>

namespace {

constexpr std::size_t newestCount = 5; // snippets in the menu
constexpr double statusItemWidth = 30; // points
constexpr const char* reportingHostKey = "ReportingHost";
constexpr const char* helpURLKey = "HelpURL"; // of a newer help than the program's own

QString menuTitle(const Snippet& snippet) {
    QString title = shortTitle(snippet.title().isEmpty() ? QStringLiteral("Untitled") : snippet.title());
    return title.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

SnippetsApplication::SnippetsApplication(int& argc, char** argv)
    : LTApplication(argc, argv), m_windowOpacity(keptWindowOpacity()) {
    setDesktopFileName(QString::fromLatin1(busName));
    applyAppearance();
    NSNib::registerClass<SmallText>(QStringLiteral("SmallText"));
    VXExceptionReporter::setReportingHost(NSUserDefaults::standardUserDefaults().stringForKey(reportingHostKey));
    VXReportUncaughtExceptions();
}

SnippetsApplication::~SnippetsApplication() = default;

bool SnippetsApplication::start() {
    if (!lockDatabase()) {
        return false;
    }
    VXReportCrashes();
    // Before the database, which may disable syncing while it is opened, and which is to save after a sync has ended.
    makeSyncManager();
    m_database = SnippetsDatabase::shared();
    makeStatusItem();
    makeMenu();
    openDatabase();

    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    const auto follow = [this](const NSNotification&) {
        // What the window does by itself was settled when it was made.
        if (!shouldCloseMainWindowOnDeactivate()) {
            applyWindowLook();
        }
    };
    m_didBecomeActive = centre.addObserverForName(NSApplicationDidBecomeActiveNotification, nullptr, follow);
    m_didResignActive = centre.addObserverForName(NSApplicationDidResignActiveNotification, nullptr, follow);
    m_willTerminate =
        centre.addObserverForName(NSApplicationWillTerminateNotification, nullptr, [this](const NSNotification&) {
            m_importRun->stop();
            m_window->saveLayout();
        });
    return true;
}

void SnippetsApplication::makeSyncManager() {
    m_syncManager = std::make_unique<SnippetsSyncManager>();
    connect(m_syncManager.get(), &SnippetsSyncManager::ended, this, [this](const SyncReport& report) {
        if (!report.problem.isEmpty()) {
            complain(QStringLiteral("not synced: ") + report.problem);
        }
        m_window->tellSync(report);
    });
    connect(m_syncManager.get(), &SnippetsSyncManager::needsSettings, this,
            [this] { showPreferences(PreferencesWindow::Page::Sync); });
    connect(m_syncManager.get(), &SnippetsSyncManager::needsPassword, this, &SnippetsApplication::askForSyncPassword);
}

/// Shows what m_database holds, in place of what was shown before.
void SnippetsApplication::openDatabase() {
    makeWindow();
    m_importRun = std::make_unique<SnippetImportRun>(m_database);
    connect(m_importRun.get(), &SnippetImportRun::progressed, m_window.get(), &SnippetsWindow::showImportProgress);
    connect(m_importRun.get(), &SnippetImportRun::ended, this, &SnippetsApplication::importHasEnded);
    m_databaseWasModified = NSNotificationCenter::defaultCenter().addObserverForName(
        LTSnippetDBWasModifiedNotification, m_database.get(), [this](const NSNotification&) {
            // Once for all the files of an import.
            if (!std::exchange(m_newestAreStale, true)) {
                QMetaObject::invokeMethod(
                    this, [this] { listNewestSnippets(); }, Qt::QueuedConnection);
            }
        });
    listNewestSnippets();
    m_syncManager->setDatabase(m_database);
    m_syncNow->setEnabled(m_syncManager->isEnabled());
    m_useStandardFile->setVisible(!m_syncManager->isEnabled());
}

void SnippetsApplication::makeWindow() {
    m_about.reset();
    m_window = std::make_unique<SnippetsWindow>(m_database);
    m_window->awakeFromNib();
    connect(m_window.get(), &SnippetsWindow::left, this, [this] {
        m_statusItemView->setHighlighted(false);
        switchBackToApp();
    });
    connect(m_window.get(), &SnippetsWindow::asksWhatItIs, this, &SnippetsApplication::showAbout);
    connect(m_window.get(), &SnippetsWindow::asksToStopImport, this, [this] { m_importRun->stop(); });
    connect(m_window.get(), &SnippetsWindow::asksToImport, this, &SnippetsApplication::importPaths);
    addShortcuts(*m_window);
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), m_window.get()), &QShortcut::activated, m_window.get(),
            &SnippetsWindow::leave);
}

/// Those of the whole program.
void SnippetsApplication::addShortcuts(LTWindow& window) {
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), &window), &QShortcut::activated, this,
            [this] { terminate(nullptr); });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma), &window), &QShortcut::activated, this,
            [this] { showPreferences(PreferencesWindow::Page::General); });
    connect(new QShortcut(QKeySequence(QKeySequence::HelpContents), &window), &QShortcut::activated, this,
            [this] { showHelp(nullptr); });
}

void SnippetsApplication::useStandardFile() {
    if (m_syncManager->isEnabled() || modalWindow()) {
        return;
    }
    // It would go on in the database that is left.
    m_importRun->stop();
    closeMainWindow();
    SnippetsDatabase::reloadFromStandardFile();
    m_database = SnippetsDatabase::shared();
    openDatabase();
    if (m_preferences) {
        m_preferences->showDatabase(m_database->path(), m_syncManager->isEnabled());
    }
    showMainWindow();
}

PreferencesWindow& SnippetsApplication::preferences() {
    if (!m_preferences) {
        m_preferences = std::make_unique<PreferencesWindow>(
            GeneralPage::Actions{.setWindowOpacity =
                                     [this](double opacity) {
                                         m_windowOpacity = opacity;
                                         applyWindowLook();
                                     },
                                 .applyClosing = [this] { applyClosing(); }},
            [this](const SyncSettings& settings, const QString& password) {
                m_syncManager->configure(settings, password);
            },
            [this] { useStandardFile(); });
    }
    return *m_preferences;
}

void SnippetsApplication::showPreferences(PreferencesWindow::Page page) {
    if (modalWindow()) {
        return;
    }
    // It hangs above everything else.
    closeMainWindow();
    activateIgnoringOtherApps(true);
    preferences().showDatabase(m_database->path(), m_syncManager->isEnabled());
    preferences().showPage(page);
}

void SnippetsApplication::askForSyncPassword() {
    if (modalWindow()) {
        return;
    }
    showMainWindow();
    const std::optional<QString> password = ::askForPassword(
        SyncSettings::load().address.host(), QStringLiteral("The server asks for your password."), *m_window);
    if (password) {
        m_syncManager->syncWithPassword(*password);
    }
}

void SnippetsApplication::showAbout() {
    if (modalWindow()) {
        return;
    }
    if (!m_about) {
        m_about = std::make_unique<AboutWindow>(m_window->NSWindow::frame().size);
        m_about->awakeFromNib();
        addShortcuts(*m_about);
        connect(m_about.get(), &AboutWindow::done, this, &SnippetsApplication::leaveAbout);
    }
    if (m_about->isVisible()) {
        m_about->makeKeyAndOrderFront(nullptr);
        return;
    }
    showMainWindow();
    m_about->setFrame(m_window->NSWindow::frame(), false);
    flipToShowWindow(*m_window, *m_about, true);
}

void SnippetsApplication::leaveAbout() {
    if (!modalWindow() && m_about && m_about->isVisible()) {
        m_window->setFrame(m_about->NSWindow::frame(), false);
        flipToShowWindow(*m_about, *m_window, false);
    }
}

void SnippetsApplication::makeStatusItem() {
    NSStatusBar& bar = NSStatusBar::systemStatusBar();
    m_statusItem = bar.statusItemWithLength(statusItemWidth);
    m_statusItem->setTitle(applicationDisplayName());
    m_statusItem->setToolTip(applicationDisplayName());
    makeStatusItemView();
}

void SnippetsApplication::makeStatusItemView() {
    const double thickness = NSStatusBar::systemStatusBar().thickness();
    auto view = std::make_unique<LTStatusItemView>(NSMakeRect(0, 0, statusItemWidth, thickness));
    m_statusItemView = view.get();
    m_statusItem->setView(std::move(view));
}

/// A view of the status item closes the window, or not, as was right when it was made.
void SnippetsApplication::applyClosing() {
    makeStatusItemView();
    m_statusItemView->setHighlighted(isShown());
    if (m_syncManager->isSyncInProgress()) {
        m_statusItemView->startAnimation({.name = LTSyncManagerHasBegunSyncing, .object = {}, .userInfo = {}});
    }
    applyWindowLook();
}

float SnippetsApplication::mainWindowOpacity() const {
    return static_cast<float>(shouldCloseMainWindowOnDeactivate() ? fullWindowOpacity : m_windowOpacity);
}

/// Paints what follows the opacity anew.
void SnippetsApplication::applyWindowLook() {
    for (LTWindow* window : {static_cast<LTWindow*>(m_window.get()), static_cast<LTWindow*>(m_about.get())}) {
        if (!window) {
            continue;
        }
        window->updateBackground();
        if (window->isVisible()) {
            setUpWindowShadow(*window);
        }
    }
}

bool SnippetsApplication::lockDatabase() {
    const QDir folder(QDir::homePath() + QStringLiteral("/Library/Preferences"));
    if (!folder.mkpath(QStringLiteral("."))) {
        complain(folder.path() + QStringLiteral(": cannot create the folder of the snippets"));
        return false;
    }
    m_lock = std::make_unique<QLockFile>(folder.filePath(QStringLiteral("Snippets.plist.lock")));
    // However old: it is another's as long as that process runs.
    m_lock->setStaleLockTime(0);
    if (m_lock->tryLock(0)) {
        return true;
    }
    qint64 process = 0;
    QString host;
    QString name;
    if (m_lock->error() == QLockFile::LockFailedError && m_lock->getLockInfo(&process, &host, &name)) {
        complain(QStringLiteral("is already running (process %1)").arg(process));
    } else {
        complain(folder.path() + QStringLiteral(": cannot be written"));
    }
    return false;
}

QStringList SnippetsApplication::actions() {
    return {QString::fromLatin1(toggleAction), QString::fromLatin1(importAction), QString::fromLatin1(quitAction)};
}

void SnippetsApplication::answer(std::unique_ptr<RunningInstance> instance) {
    m_instance = std::move(instance);
    connect(m_instance.get(), &RunningInstance::activated, this, [this] { comeForward(); });
    connect(m_instance.get(), &RunningInstance::opened, this, [this](const QList<QUrl>& urls) {
        importURLs(urls);
        comeForward();
    });
    connect(m_instance.get(), &RunningInstance::actionActivated, this, &SnippetsApplication::performAction);
    m_instance->beginToDeliver();
}

void SnippetsApplication::performAction(const QString& name, const QVariantList& parameters) {
    if (name == QLatin1String(toggleAction)) {
        toggleMainWindow();
    } else if (name == QLatin1String(importAction)) {
        QList<QUrl> urls;
        for (const QVariant& parameter : parameters) {
            for (const QString& url : parameter.toStringList()) {
                urls.push_back(QUrl(url, QUrl::StrictMode));
            }
        }
        importURLs(urls);
    } else {
        terminate(nullptr);
    }
}

void SnippetsApplication::importURLs(const QList<QUrl>& urls) {
    QStringList paths;
    for (const QUrl& url : urls) {
        if (url.isLocalFile() && QDir::isAbsolutePath(url.toLocalFile())) {
            paths.push_back(url.toLocalFile());
        } else {
            complain(url.toDisplayString() + QStringLiteral(": is no file of this computer"));
        }
    }
    if (!paths.isEmpty()) {
        importPaths(paths);
    }
}

void SnippetsApplication::importPaths(const QStringList& paths) {
    m_importRun->importPaths(paths);
}

void SnippetsApplication::importHasEnded(const SnippetImportResult& result) {
    m_database->saveDB();
    for (const SnippetImportRefusal& refusal : result.refusals) {
        complain(refusal.description());
    }
    VXLog("Imported %lu files, refused %lu", result.importedCount, result.refusals.size());
    m_window->showImportResult(result);
}

void SnippetsApplication::showMainWindow() {
    // First, while the other application is still in front and can be noted.
    activateIgnoringOtherApps(true);
    m_statusItemView->setHighlighted(true);
    if (m_about && m_about->isVisible()) {
        m_about->orderOut(nullptr);
    }
    m_window->makeKeyAndOrderFront(nullptr);
}

void SnippetsApplication::comeForward() {
    if (NSWindow* question = modalWindow()) {
        activateIgnoringOtherApps(true);
        question->makeKeyAndOrderFront(nullptr);
    } else {
        showMainWindow();
    }
}

QUrl SnippetsApplication::helpURL() const {
    const QString elsewhere = NSUserDefaults::standardUserDefaults().stringForKey(helpURLKey);
    return elsewhere.isEmpty() ? QUrl(QStringLiteral("qrc:/help.html")) : QUrl(elsewhere);
}

LTApplicationController* SnippetsApplication::applicationController() const {
    // The hook gives the controller away to be sent commands, and this object is its own.
    return const_cast<SnippetsApplication*>(this);
}

void SnippetsApplication::toggleMainWindow() {
    if (modalWindow()) {
        comeForward();
        m_statusItemView->setHighlighted(isShown());
    } else if (isShown()) {
        closeMainWindow();
        switchBackToApp();
    } else {
        showMainWindow();
    }
}

void SnippetsApplication::closeMainWindow() {
    // A question over the window must not go with it: nothing else takes input until it is answered.
    if (isShown() && !modalWindow()) {
        m_window->orderOut(nullptr);
        if (m_about) {
            m_about->orderOut(nullptr);
        }
        m_statusItemView->setHighlighted(false);
    }
}

/// Whether the main window, or its back, is on the screen.
bool SnippetsApplication::isShown() const {
    return m_window->isVisible() || (m_about && m_about->isVisible());
}

void SnippetsApplication::makeMenu() {
    m_menu = std::make_unique<QMenu>();
    m_menu->addAction(QStringLiteral("Show Snippets"), this, [this] { showMainWindow(); });
    m_menu->addAction(QStringLiteral("Add from Clipboard"), this, [this] { addFromClipboard(); });
    m_menu->addSeparator();
    m_newestEnd = m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("Export…"), this, [this] { exportSnippets(); });
    m_syncNow = m_menu->addAction(QStringLiteral("Sync Now"), this,
                                  [this] { m_syncManager->sync(SnippetsSyncManager::Cause::User); });
    m_useStandardFile = m_menu->addAction(QStringLiteral("Use Standard Database"), this, [this] { useStandardFile(); });
    m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("Preferences…"), this,
                      [this] { showPreferences(PreferencesWindow::Page::General); });
    m_menu->addAction(QStringLiteral("About Snippets"), this, [this] { showAbout(); });
    m_menu->addAction(QStringLiteral("Help"), this, [this] { showHelp(nullptr); });
    m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("Quit"), this, [this] { terminate(nullptr); });
    m_statusItem->setMenu(m_menu.get());
}

void SnippetsApplication::exportSnippets() {
    if (!modalWindow()) {
        showMainWindow();
        m_window->exportSnippets();
    }
}

void SnippetsApplication::listNewestSnippets() {
    m_newestAreStale = false;
    for (QAction* action : std::exchange(m_newest, {})) {
        // Later, because one of them may be what is being triggered.
        m_menu->removeAction(action);
        action->deleteLater();
    }
    for (const std::shared_ptr<Snippet>& snippet : m_window->model().newest(newestCount)) {
        auto* action = new QAction(menuTitle(*snippet), m_menu.get());
        connect(action, &QAction::triggered, this, [this, snippet] {
            if (copySnippetToPasteboard(snippet, *m_database, NSPasteboard::generalPasteboard())) {
                showCopyPopUp();
            }
        });
        m_menu->insertAction(m_newestEnd, action);
        m_newest.push_back(action);
    }
}

void SnippetsApplication::addFromClipboard() {
    if (!m_window->addFromClipboard()) {
        // The window says what is missing.
        showMainWindow();
    }
}

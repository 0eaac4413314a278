// SPDX-License-Identifier: MIT
#include "SnippetsApplication.h"

#include "Appearance.h"
#include "SnippetPasteboard.h"
#include "SnippetsListModel.h"
#include "SnippetsWindow.h"

#include <VXKit/platform/appkit/NSPasteboard.h>
#include <VXKit/platform/foundation/NSLog.h>
#include <VXKit/platform/foundation/NSTimer.h>
#include <VXKit/support/VXLog.h>

#include <QDir>
#include <QMenu>
#include <QMetaObject>
#include <QShortcut>
#include <QSystemTrayIcon>

#include <cstdio>

namespace {

constexpr std::size_t newestCount = 5;     // snippets in the menu
constexpr qsizetype longestMenuTitle = 40; // characters
constexpr double trayInterval = 5.0;       // seconds between two looks for a tray

QString menuTitle(const Snippet& snippet) {
    QString title = snippet.title().isEmpty() ? QStringLiteral("Untitled") : snippet.title();
    if (title.size() > longestMenuTitle) {
        title = title.first(longestMenuTitle - 1).trimmed() + QChar(u'…');
    }
    return title.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

void complain(const QString& line) {
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()), line.toUtf8().constData());
}

} // namespace

SnippetsApplication::SnippetsApplication(int& argc, char** argv) : LTApplication(argc, argv) {
    applyAppearance();
}

SnippetsApplication::~SnippetsApplication() {
    if (m_trayTimer) {
        m_trayTimer->invalidate();
    }
}

bool SnippetsApplication::start() {
    if (!lockDatabase()) {
        return false;
    }
    m_database = SnippetsDatabase::shared();
    m_window = std::make_unique<SnippetsWindow>(m_database);
    connect(m_window.get(), &SnippetsWindow::left, this, [this] { switchBackToApp(); });
    connect(m_window.get(), &SnippetsWindow::closed, this, [this] {
        if (m_tray) {
            switchBackToApp();
        } else {
            terminate(nullptr);
        }
    });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), m_window.get()), &QShortcut::activated, this,
            [this] { terminate(nullptr); });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), m_window.get()), &QShortcut::activated, m_window.get(),
            &QWidget::close);
    connect(new QShortcut(QKeySequence(QKeySequence::HelpContents), m_window.get()), &QShortcut::activated, this,
            [this] { showHelp(nullptr); });
    makeMenu();

    NSNotificationCenter& centre = NSNotificationCenter::defaultCenter();
    m_databaseWasModified =
        centre.addObserverForName(LTSnippetDBWasModifiedNotification, m_database.get(), [this](const NSNotification&) {
            // Once for all the files of an import.
            if (!std::exchange(m_newestAreStale, true)) {
                QMetaObject::invokeMethod(
                    this, [this] { listNewestSnippets(); }, Qt::QueuedConnection);
            }
        });
    m_willTerminate = centre.addObserverForName(NSApplicationWillTerminateNotification, nullptr,
                                                [this](const NSNotification&) { m_window->saveFrame(); });

    followTray();
    if (!m_tray) {
        m_window->setWhenLeft(SnippetsWindow::WhenLeft::Minimises);
        showMainWindow();
    }
    m_trayTimer =
        NSTimer::scheduledTimerWithTimeInterval(trayInterval, NSTimerRepeats::Yes, [this](NSTimer&) { followTray(); });
    return true;
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

SnippetImportResult SnippetsApplication::importPaths(const QStringList& paths) {
    SnippetImportResult result = SnippetImporter(m_database).importPaths(paths);
    m_database->saveDB();
    for (const SnippetImportRefusal& refusal : result.refusals) {
        complain(refusal.description());
    }
    VXLog("Imported %lu files, refused %lu", result.importedCount, result.refusals.size());
    m_window->showImportResult(result);
    return result;
}

void SnippetsApplication::showMainWindow() {
    // First, while the other application is still in front and can be noted.
    activateIgnoringOtherApps(true);
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

QUrl SnippetsApplication::helpURL() const {
    return QUrl(QStringLiteral("qrc:/help.html"));
}

LTApplicationController* SnippetsApplication::applicationController() const {
    // The hook gives the controller away to be sent commands, and this object is its own.
    return const_cast<SnippetsApplication*>(this);
}

void SnippetsApplication::toggleMainWindow() {
    if (m_window->isVisible() && !m_window->isMinimized()) {
        closeMainWindow();
    } else {
        showMainWindow();
    }
}

void SnippetsApplication::closeMainWindow() {
    if (m_window->isVisible()) {
        m_window->saveFrame();
        m_window->hide();
    }
}

void SnippetsApplication::makeMenu() {
    m_menu = std::make_unique<QMenu>();
    m_menu->addAction(QStringLiteral("Show Snippets"), this, [this] { showMainWindow(); });
    m_menu->addAction(QStringLiteral("Add from Clipboard"), this, [this] { addFromClipboard(); });
    m_menu->addSeparator();
    m_newestEnd = m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("Help"), this, [this] { showHelp(nullptr); });
    m_menu->addSeparator();
    m_menu->addAction(QStringLiteral("Quit"), this, [this] { terminate(nullptr); });
    listNewestSnippets();
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
        connect(action, &QAction::triggered, this,
                [this, snippet] { copySnippetToPasteboard(snippet, *m_database, NSPasteboard::generalPasteboard()); });
        m_menu->insertAction(m_newestEnd, action);
        m_newest.push_back(action);
    }
}

void SnippetsApplication::addFromClipboard() {
    const std::shared_ptr<Snippet> added = addSnippetFromPasteboard(*m_database, NSPasteboard::generalPasteboard());
    if (!added && m_tray) {
        m_tray->showMessage(applicationDisplayName(), QStringLiteral("There is no text on the clipboard."));
    }
}

/// Uses a tray that has appeared, and does without one that is gone. Qt does not tell of either.
void SnippetsApplication::followTray() {
    const bool isThere = QSystemTrayIcon::isSystemTrayAvailable();
    if (isThere == (m_tray != nullptr)) {
        return;
    }
    if (!isThere) {
        m_tray.reset();
        m_window->setWhenLeft(SnippetsWindow::WhenLeft::Minimises);
        showMainWindow();
        return;
    }
    m_tray = std::make_unique<QSystemTrayIcon>(QIcon(QStringLiteral(":/images/StatusIcon.svg")));
    m_tray->setToolTip(applicationDisplayName());
    m_tray->setContextMenu(m_menu.get());
    connect(m_tray.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            trayWasClicked();
        }
    });
    m_tray->show();
    m_window->setWhenLeft(SnippetsWindow::WhenLeft::Hides);
}

void SnippetsApplication::trayWasClicked() {
    const bool isBehindOthers = m_window->isVisible() && !m_window->isMinimized() && !m_window->isActiveWindow();
    activateIgnoringOtherApps(true);
    // A window that cannot be seen for others is what the click asks for; activation has brought it to the front.
    if (!isBehindOthers) {
        toggleMainWindow();
    }
}

// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetImporter.h"
#include "SnippetsDatabase.h"

#include <VXKit/app/LTApplication.h>

#include <QLockFile>

#include <memory>

class NSTimer;
class QAction;
class QMenu;
class QSystemTrayIcon;
class SnippetsWindow;

/// The program: a symbol in the tray, with a menu, that shows and hides one window.
///
/// Where the desktop has no tray, the window is shown at once and closing it ends the program, because nothing could
/// bring it back. A tray that appears later is used from then on.
class SnippetsApplication : public LTApplication, public LTApplicationController {
public:
    SnippetsApplication(int& argc, char** argv);
    ~SnippetsApplication() override;

    /// Opens the database and makes the window and the symbol in the tray. To be called once, before run. False, with
    /// the reason on standard error, where another process of this user has the database open: of two that write one
    /// file, the last to save would undo the other.
    [[nodiscard]] bool start();

    /// Imports files and folders and saves at once. What is refused is told on standard error, a line each, and in the
    /// window.
    SnippetImportResult importPaths(const QStringList& paths);

    /// Both exist from start on.
    [[nodiscard]] SnippetsWindow& window() const { return *m_window; }
    [[nodiscard]] SnippetsDatabase& database() const { return *m_database; }

    /// Brings the window to the front with the keyboard.
    void showMainWindow();

    [[nodiscard]] QUrl helpURL() const override;
    [[nodiscard]] LTApplicationController* applicationController() const override;

    [[nodiscard]] NSStatusItem* statusItem() const override { return nullptr; }
    void toggleMainWindow() override;
    void closeMainWindow() override;

private:
    [[nodiscard]] bool lockDatabase();
    void makeMenu();
    void followTray();
    void trayWasClicked();
    void addFromClipboard();
    void listNewestSnippets();

    std::unique_ptr<QLockFile> m_lock;
    std::shared_ptr<SnippetsDatabase> m_database;
    std::unique_ptr<SnippetsWindow> m_window;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_tray;
    std::vector<QAction*> m_newest; // owned by the menu
    QAction* m_newestEnd = nullptr; // the separator below them
    bool m_newestAreStale = false;
    std::shared_ptr<NSTimer> m_trayTimer;
    NSNotificationObservation m_databaseWasModified;
    NSNotificationObservation m_willTerminate;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetImportRun.h"
#include "SnippetsDatabase.h"
#include "preferences/PreferencesWindow.h"
#include "sync/SnippetsSyncManager.h"

#include <VXKit/app/LTApplication.h>
#include <VXKit/app/LTStatusItemView.h>
#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/desktop/RunningInstance.h>

#include <QLockFile>

#include <memory>

class AboutWindow;
class LTWindow;
class QAction;
class QMenu;
class SnippetsWindow;

/// The program: a status item, with a menu for the right button, that shows and hides one window hanging under it.
class SnippetsApplication : public LTApplication, public LTApplicationController {
public:
    SnippetsApplication(int& argc, char** argv);
    ~SnippetsApplication() override;

    /// Opens the database and makes the status item and the window. To be called once, before run. False, with
    /// the reason on standard error, where another process of this user has the database open: of two that write one
    /// file, the last to save would undo the other.
    [[nodiscard]] bool start();

    /// What other starts of the program, launchers and scripts ask of it over the session bus.
    static constexpr const char* busName = "org.vxkit.Snippets"; ///< of the desktop entry as well
    static constexpr const char* toggleAction = "toggle";        ///< shows the window, or hides it
    static constexpr const char* importAction = "import";        ///< of the URLs of files, and shows nothing
    static constexpr const char* quitAction = "quit";
    [[nodiscard]] static QStringList actions();

    /// Does from now on what `instance` is asked for. To be called once, after start.
    void answer(std::unique_ptr<RunningInstance> instance);

    /// Imports files and folders, beside all else that goes on, and saves when that is done. What is refused is told on
    /// standard error, a line each, and in the window. While an import runs, these are imported after it.
    void importPaths(const QStringList& paths);
    /// The import, whether it runs or not; there is another one for another database.
    [[nodiscard]] SnippetImportRun& importRun() const { return *m_importRun; }

    /// Both exist from start on.
    [[nodiscard]] SnippetsWindow& window() const { return *m_window; }
    [[nodiscard]] SnippetsDatabase& database() const { return *m_database; }

    /// Leaves the file of the user's own choice, goes back to the standard one, and syncing may be used again. Nothing
    /// where the standard file is in use.
    void useStandardFile();

    [[nodiscard]] SnippetsSyncManager& syncManager() const { return *m_syncManager; }

    /// Brings the preferences to the front.
    void showPreferences(PreferencesWindow::Page page);
    [[nodiscard]] PreferencesWindow& preferences();

    /// Turns the main window over, to what the program is, and back.
    void showAbout();
    void leaveAbout();
    /// Its back; null until it was turned over for the first time.
    [[nodiscard]] AboutWindow* about() const { return m_about.get(); }

    /// Brings the window to the front with the keyboard.
    void showMainWindow();
    /// The same, or the question that is waiting for an answer.
    void comeForward();

    [[nodiscard]] QUrl helpURL() const override;
    [[nodiscard]] LTApplicationController* applicationController() const override;
    /// As the user has chosen it, where the window stays open when it is left; another one is opaque in every way.
    [[nodiscard]] float mainWindowOpacity() const override;

    [[nodiscard]] LTSyncManagerClass* syncManagerClass() const override { return m_syncManager.get(); }

    [[nodiscard]] NSStatusItem* statusItem() const override { return m_statusItem.get(); }
    void toggleMainWindow() override;
    void closeMainWindow() override;

private:
    [[nodiscard]] bool lockDatabase();
    void makeStatusItem();
    void makeStatusItemView();
    void makeSyncManager();
    void openDatabase();
    void makeWindow();
    void makeMenu();
    void performAction(const QString& name, const QVariantList& parameters);
    void importURLs(const QList<QUrl>& urls);
    void applyWindowLook();
    void applyClosing();
    void importHasEnded(const SnippetImportResult& result);
    void askForSyncPassword();
    void addShortcuts(LTWindow& window);
    [[nodiscard]] bool isShown() const;
    void addFromClipboard();
    void exportSnippets();
    void listNewestSnippets();

    std::unique_ptr<RunningInstance> m_instance; // outlives the lock, so that whoever gets the name gets that too
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<SnippetsSyncManager> m_syncManager;
    std::shared_ptr<SnippetsDatabase> m_database;
    std::unique_ptr<SnippetImportRun> m_importRun;
    std::unique_ptr<SnippetsWindow> m_window;
    std::unique_ptr<AboutWindow> m_about;             // the back of the window
    std::unique_ptr<PreferencesWindow> m_preferences; // made when it is first asked for
    std::unique_ptr<QMenu> m_menu;
    std::shared_ptr<NSStatusItem> m_statusItem;
    LTStatusItemView* m_statusItemView = nullptr; // owned by the item
    QAction* m_syncNow = nullptr;                 // owned by the menu, as the next one
    QAction* m_useStandardFile = nullptr;
    std::vector<QAction*> m_newest; // owned by the menu
    QAction* m_newestEnd = nullptr; // the separator below them
    bool m_newestAreStale = false;
    NSNotificationObservation m_databaseWasModified;
    NSNotificationObservation m_didBecomeActive;
    NSNotificationObservation m_didResignActive;
    NSNotificationObservation m_willTerminate;
    double m_windowOpacity;
};

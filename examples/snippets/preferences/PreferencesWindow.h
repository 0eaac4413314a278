// SPDX-License-Identifier: MIT
#pragma once

#include "GeneralPage.h"
#include "SyncPage.h"

#include <VXKit/hud/LTHUDWindow.h>

#include <functional>

class DatabasePage;
class LTPreferenceTabs;

/// The program's preferences: three pages behind tabs, and a window that takes the size of each as it slides in.
///
///     ╭──────────────────────────╮
///     ├──────────────────────────┤
///     │ [General] Sync  Database │
///     │                          │
///     │ ☑ Ask before …           │
///     ├──────────────────────────┤
///     │                   [Done] │
///     ╰──────────────────────────╯
///
/// Done, Return and Escape close it, and apply what was typed. Where that makes no sense the window stays and says so.
class PreferencesWindow : public LTHUDWindow {
    Q_OBJECT

public:
    enum class Page { General, Sync, Database };

    PreferencesWindow(GeneralPage::Actions actions, SyncPage::Apply applySync,
                      std::function<void()> useStandardDatabase);
    ~PreferencesWindow() override;

    /// Brings the window to the front with the keyboard, in the middle of the screen where it is closed, at `page`.
    void showPage(Page page);

    /// Looks again at what other programs may have changed while the user was there.
    void becomeKeyWindow() override;

    /// What the database page shows.
    void showDatabase(const QString& path, bool isStandard);

private:
    void makeTabs();
    void makeButton();
    void done();

    GeneralPage* m_general; // the tabs keep the pages
    SyncPage* m_sync;
    DatabasePage* m_database;
    LTPreferenceTabs* m_tabs = nullptr;
};

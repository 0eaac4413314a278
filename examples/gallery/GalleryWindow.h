// SPDX-License-Identifier: MIT
#pragma once

#include "GalleryPage.h"

#include <VXKit/hud/LTHUDWindow.h>
#include <VXKit/platform/appkit/NSArrayController.h>

#include <memory>
#include <vector>

class LTHUDTableView;
class NSTextField;

/// The gallery's window: the list of its pages, and the one that is selected in it.
class GalleryWindow : public LTHUDWindow {
    Q_OBJECT

public:
    GalleryWindow();
    ~GalleryWindow() override;

    [[nodiscard]] const std::vector<std::unique_ptr<GalleryPage>>& pages() const { return m_pages; }
    [[nodiscard]] int currentPage() const { return m_current; }
    /// Selects the page in the list and shows it; nothing for one that there is not.
    void showPage(int index);
    /// The same by the page's name; false where there is none.
    bool showPageNamed(const QString& name);

    [[nodiscard]] LTHUDTableView& list() const { return *m_list; }
    [[nodiscard]] Stage& stage() const { return *m_stage; }

Q_SIGNALS:
    void asksToQuit();

private:
    void makeList();
    void makeFrame();
    void addShortcuts();
    void linkKeyViews();
    void buildPage(int index);

    std::vector<std::unique_ptr<GalleryPage>> m_pages;
    NSArrayController m_titles;
    int m_current = -1;
    // Of the content view.
    LTHUDTableView* m_list = nullptr;
    NSTextField* m_title = nullptr;
    NSTextField* m_text = nullptr;
    Stage* m_stage = nullptr;
    SettingsPane* m_settings = nullptr;
};

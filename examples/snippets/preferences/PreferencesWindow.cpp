// SPDX-License-Identifier: MIT
#include "PreferencesWindow.h"

#include "DatabasePage.h"

#include <VXKit/controls/LTHUDButton.h>
#include <VXKit/controls/LTHUDLineEdit.h>
#include <VXKit/platform/appkit/NSApplication.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>

#include <QPointer>
#include <QTimer>

#include <utility>

namespace {

// Points.
constexpr NSSize sizeBefore{380, 290}; // of the first page
constexpr double titleBarHeight = 19;
constexpr double tabsHeight = 26;
constexpr double tabsGap = 6; // below the title bar
constexpr double tabsX = 14;
constexpr double buttonWidth = 96;
constexpr double buttonHeight = 28;
constexpr double buttonY = 2;
constexpr double buttonMargin = 15;

constexpr int timeOfSwitch = 300; // milliseconds, and some

/// Lets the window take the size of each view that is switched to, and the keyboard reach no other.
class SizingView : public LTSwitchableView {
public:
    using LTSwitchableView::LTSwitchableView;

    void setANewView(QWidget* view, int inDirection, bool /*adjustWindow*/) override {
        const QPointer<QWidget> before(currentView());
        view->setEnabled(true);
        if (auto* page = dynamic_cast<PreferencesPage*>(view); page && view != before) {
            page->restoreSize();
        }
        LTSwitchableView::setANewView(view, inDirection, true);
        // Once it is out of sight, where it stays for a while.
        QTimer::singleShot(timeOfSwitch, this, [this, before] {
            if (before && before != currentView()) {
                before->setEnabled(false);
            }
        });
    }
};

} // namespace

PreferencesWindow::PreferencesWindow(GeneralPage::Actions actions, SyncPage::Apply applySync,
                                     std::function<void()> useStandardDatabase)
    : LTHUDWindow({NSZeroPoint, sizeBefore}, NSBorderlessWindowMask, NSBackingStoreBuffered, false),
      m_general(new GeneralPage(std::move(actions))), m_sync(new SyncPage(std::move(applySync))),
      m_database(new DatabasePage(std::move(useStandardDatabase))) {
    setWindowTitle(QStringLiteral("Preferences"));
    setHasShadow(true);
    makeTabs();
    makeButton();
}

PreferencesWindow::~PreferencesWindow() = default;

void PreferencesWindow::makeTabs() {
    ViewCore& content = *ViewCore::of(contentView());
    auto* pages = new SizingView({NSZeroPoint, sizeBefore}, contentView());
    pages->setAutoresizingMask(NSViewWidthSizable | NSViewHeightSizable);
    content.addSubview(pages);
    m_tabs = new LTPreferenceTabs(NSMakeRect(tabsX, sizeBefore.height - titleBarHeight - tabsGap - tabsHeight,
                                             sizeBefore.width - 2 * tabsX, tabsHeight),
                                  contentView());
    m_tabs->setAutoresizingMask(NSViewWidthSizable | NSViewMinYMargin);
    m_tabs->_switchView = pages;
    content.addSubview(m_tabs);
    m_tabs->setTabNames({QStringLiteral("General"), QStringLiteral("Sync"), QStringLiteral("Database")});
    m_tabs->setTabViews({m_general, m_sync, m_database});
}

void PreferencesWindow::makeButton() {
    auto* button = new LTHUDButton(
        NSMakeRect(sizeBefore.width - buttonMargin - buttonWidth, buttonY, buttonWidth, buttonHeight), contentView());
    button->setTitle(QStringLiteral("Done"));
    button->setAutoresizingMask(NSViewMinXMargin | NSViewMaxYMargin);
    ViewCore::of(contentView())->addSubview(button);
    connect(button, &QAbstractButton::clicked, this, &PreferencesWindow::done);
    button->cell().setKeyEquivalent(QStringLiteral("\u001b"));
    setDefaultButtonCell(&button->cell());
}

void PreferencesWindow::showPage(Page page) {
    if (!isVisible()) {
        m_general->reload();
        m_sync->reload();
        center();
    }
    if (m_tabs->indexOfSelectedTab() != static_cast<int>(page)) {
        m_tabs->setSelectionIndex(static_cast<int>(page));
    }
    makeKeyAndOrderFront(nullptr);
    if (page == Page::Sync) {
        makeFirstResponder(&m_sync->firstField());
    }
}

void PreferencesWindow::becomeKeyWindow() {
    LTHUDWindow::becomeKeyWindow();
    m_general->reload();
}

void PreferencesWindow::showDatabase(const QString& path, bool isStandard) {
    m_database->show(path, isStandard);
}

void PreferencesWindow::done() {
    if (m_sync->applyChanges()) {
        orderOut(nullptr);
        return;
    }
    NSBeep();
    showPage(Page::Sync);
}

// SPDX-License-Identifier: MIT
#include "PreferenceTabsPage.h"

#include "../PictureBook.h"
#include "../SettingsPane.h"
#include "../Stage.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/controls/LTLine.h>
#include <VXKit/transitions/LTPreferenceTabs.h>
#include <VXKit/transitions/LTSwitchableView.h>
#include <VXKit/transitions/_LTPrefTab.h>

namespace {

// Points.
constexpr NSRect tabsFrame{{0, 0}, {400, 26}};
constexpr NSRect panesFrame{{0, 34}, {400, 180}};

const QStringList& tabNames() {
    static const QStringList names{QStringLiteral("&General"), QStringLiteral("&Accounts"), QStringLiteral("&Keys")};
    return names;
}

NSView* makeView(const QString& option) {
    auto* const view = new NSView;
    view->setFrame({NSZeroPoint, panesFrame.size});
    auto* const box = new LTHUDCheckBox(NSMakeRect(20, panesFrame.size.height - 44, 300, 22));
    box->setTitle(option);
    view->addSubview(box);
    return view;
}

_LTPrefTab* makeTab(bool isSelected) {
    std::unique_ptr<_LTPrefTab> tab = _LTPrefTab::tabWithName(QStringLiteral("Accounts"));
    tab->setSelected(isSelected);
    return tab.release();
}

} // namespace

PreferenceTabsPage::PreferenceTabsPage()
    : GalleryPage(
          QStringLiteral("preference-tabs"), QStringLiteral("Preference tabs"),
          QStringLiteral("A row of tabs. A later one slides its view in from the right, an earlier one from the "
                         "left; the arrow keys go along it."),
          {QStringLiteral("LTPreferenceTabs"), QStringLiteral("_LTPrefTab"), QStringLiteral("LTSwitchableView")}) {}

PreferenceTabsPage::~PreferenceTabsPage() = default;

void PreferenceTabsPage::build(Stage& stage, SettingsPane& settings) {
    auto& tabs = stage.put<LTPreferenceTabs>(tabsFrame);
    stage.put<LTLine>(panesFrame);
    auto& container = stage.put<LTSwitchableView>(panesFrame);
    tabs._switchView = &container;
    tabs.setTabNames(tabNames());
    tabs.setTabViews({makeView(QStringLiteral("Open at login")), makeView(QStringLiteral("Sync by itself")),
                      makeView(QStringLiteral("Use the number pad"))});
    QStringList choices = tabNames();
    for (QString& name : choices) {
        name.remove(QLatin1Char('&'));
    }
    settings.addChoice(QStringLiteral("Selected tab"), choices, tabs.indexOfSelectedTab(),
                       [&tabs](int index) { tabs.setSelectionIndex(index); });
    settings.addCheckBox(QStringLiteral("Enabled"), true, [&tabs](bool isOn) { tabs.setEnabled(isOn); });
}

void PreferenceTabsPage::takePictures(PictureBook& book) {
    book.addStates(QStringLiteral("tab"), QStringLiteral("Tab"), [] { return makeTab(false); });
    book.addStates(QStringLiteral("tab-selected"), QStringLiteral("Selected tab"), [] { return makeTab(true); });
}

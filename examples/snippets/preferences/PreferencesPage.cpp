// SPDX-License-Identifier: MIT
#include "PreferencesPage.h"

#include <memory>
#include <vector>

PreferencesPage::PreferencesPage() = default;

void PreferencesPage::load(const QString& name) {
    std::vector<std::unique_ptr<QWidget>> views;
    NSNib(name).instantiateNibWithOwner(*this, &views);
    ViewCore& content = *ViewCore::of(views.front().get());
    m_size = content.frame().size;
    restoreSize();
    content.setFrame({NSZeroPoint, m_size});
    // Everything keeps its distance from the upper edge, where the tabs are.
    content.setAutoresizingMask(NSViewMinYMargin);
    addSubview(views.front().release());
}

void PreferencesPage::restoreSize() {
    setFrame({frame().origin, m_size});
}

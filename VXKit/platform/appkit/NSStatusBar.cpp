// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSStatusBar.h>

#include <VXKit/platform/appkit/NSStatusItem.h>
#include <VXKit/platform/desktop/StatusItemHost.h>

#include <algorithm>

NSStatusBar& NSStatusBar::systemStatusBar() {
    static NSStatusBar bar;
    return bar;
}

double NSStatusBar::thickness() const {
    return StatusItemHost::standardThickness;
}

std::shared_ptr<NSStatusItem> NSStatusBar::statusItemWithLength(double length) {
    return std::make_shared<NSStatusItem>(NSStatusItem::Passkey{}, *this, length);
}

void NSStatusBar::removeStatusItem(NSStatusItem& item) {
    item.removeFromBar();
}

bool NSStatusBar::hasStatusItemAtPoint(const NSPoint& point) const {
    return std::any_of(m_items.begin(), m_items.end(),
                       [&point](const NSStatusItem* item) { return item->mayBeAtPoint(point); });
}

// SPDX-License-Identifier: MIT
#include "GeneralPage.h"

#include "SnippetQuestions.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

namespace {

constexpr const char* logKey = "VXLoggingEnabled"; // the kit's

void keep(const char* key, bool value) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(value, key);
    if (!defaults.synchronize()) {
        VXLog("%s could not be kept", key);
    }
}

} // namespace

GeneralPage::GeneralPage() {
    load(QStringLiteral("GeneralPage"));
    tie(*m_asks, removeWithoutAskingKey, false);
    tie(*m_reducesMotion, VXReduceMotion, true);
    tie(*m_logs, logKey, true);
}

void GeneralPage::connectNib(NSNibConnections& nib) {
    nib.outlet(QStringLiteral("asksBox"), m_asks);
    nib.outlet(QStringLiteral("motionBox"), m_reducesMotion);
    nib.outlet(QStringLiteral("logBox"), m_logs);
}

/// `box` is on where the user default `key` has the value `isOnWhere`, and sets it so.
void GeneralPage::tie(LTHUDCheckBox& box, const char* key, bool isOnWhere) {
    const bool value = NSUserDefaults::standardUserDefaults().boolForKey(key);
    box.setState(value == isOnWhere ? NSOnState : NSOffState);
    connect(&box, &QAbstractButton::toggled, this, [key, isOnWhere](bool isOn) { keep(key, isOn == isOnWhere); });
}

// SPDX-License-Identifier: MIT
#include "GeneralPage.h"

#include "SnippetQuestions.h"

#include <VXKit/controls/LTHUDCheckBox.h>
#include <VXKit/platform/desktop/MotionPreference.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

namespace {

constexpr NSSize pageSize{380, 200}; // points
constexpr double boxHeight = 18;

constexpr const char* logKey = "VXLoggingEnabled"; // the kit's

void keep(const char* key, bool value) {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(value, key);
    if (!defaults.synchronize()) {
        VXLog("%s could not be kept", key);
    }
}

} // namespace

GeneralPage::GeneralPage() : PreferencesPage(pageSize) {
    addSwitch(QStringLiteral("Ask before a snippet is removed"), removeWithoutAskingKey, false);
    addSwitch(QStringLiteral("Reduce motion"), VXReduceMotion, true);
    addSwitch(QStringLiteral("Write a log, from the next start on"), logKey, true);
}

/// A box that is on where the user default `key` has the value `isOnWhere`, and sets it so.
void GeneralPage::addSwitch(const QString& title, const char* key, bool isOnWhere) {
    const bool value = NSUserDefaults::standardUserDefaults().boolForKey(key);
    LTHUDCheckBox& box = addCheckBox(nextRow(boxHeight), title, value == isOnWhere);
    connect(&box, &QAbstractButton::toggled, this, [key, isOnWhere](bool isOn) { keep(key, isOn == isOnWhere); });
}

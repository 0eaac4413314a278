// SPDX-License-Identifier: MIT
#include "SnippetQuestions.h"

#include "Snippet.h"
#include "TitleText.h"

#include <VXKit/hud/LTHUDAlert.h>
#include <VXKit/platform/foundation/NSUserDefaults.h>
#include <VXKit/support/VXLog.h>

namespace {

void removeWithoutAskingFromNowOn() {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setBool(true, removeWithoutAskingKey);
    if (!defaults.synchronize()) {
        VXLog("That removals are not to be asked about could not be kept");
    }
}

} // namespace

bool asksBeforeRemoving() {
    return !NSUserDefaults::standardUserDefaults().boolForKey(removeWithoutAskingKey);
}

bool mayRemove(const Snippet& snippet, NSWindow& window) {
    if (!asksBeforeRemoving()) {
        return true;
    }
    const auto alert = LTHUDAlert::alertWithMessageText(
        QStringLiteral("Remove %1?").arg(quotedTitle(snippet.title())), QStringLiteral("&Remove"),
        QStringLiteral("Cancel"), QStringLiteral("&Do not ask again"),
        QStringLiteral("For some seconds after that, a bar at the bottom of the window offers to put it back."));
    alert->setOtherButtonIsDontShowAgain(true);
    if (alert->runSheetModalForWindow(window) != NSAlertDefaultReturn) {
        return false;
    }
    if (alert->dontShowAgainIsChecked()) {
        removeWithoutAskingFromNowOn();
    }
    return true;
}

std::optional<QString> askForTitle(const Snippet& snippet, NSWindow& window) {
    const QString offered = snippet.shownTitle();
    const auto alert = LTHUDAlert::inputAlertWithMessageText(QStringLiteral("New title:"), offered);
    alert->setMessage(QStringLiteral("Rename ") + quotedTitle(snippet.title()));
    alert->setDefaultButtonTitle(QStringLiteral("Re&name"));
    const QString title = alert->runInputSheetModalForWindow(window).value_or(QString()).trimmed();
    return title.isEmpty() || title == offered.trimmed() ? std::nullopt : std::optional(title);
}

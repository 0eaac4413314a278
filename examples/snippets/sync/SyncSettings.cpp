// SPDX-License-Identifier: MIT
#include "SyncSettings.h"

#include <VXKit/platform/foundation/NSUserDefaults.h>

namespace {

constexpr const char* addressKey = "SnippetsSyncAddress";
constexpr const char* nameKey = "SnippetsSyncName";

/// The kit's own: with it the database notes what is removed, so that the other computers can be told.
constexpr const char* isOnKey = "ShouldAutoSyncWithMobileMe";

} // namespace

SyncSettings SyncSettings::load() {
    const NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    SyncSettings settings;
    settings.address = QUrl(defaults.stringForKey(addressKey));
    settings.name = defaults.stringForKey(nameKey);
    settings.isOn = defaults.boolForKey(isOnKey) && problemWith(settings.address).isEmpty();
    return settings;
}

bool SyncSettings::save() const {
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    defaults.setObject(address.toString(), addressKey);
    defaults.setObject(name, nameKey);
    defaults.setBool(isOn, isOnKey);
    return defaults.synchronize();
}

QString SyncSettings::problemWith(const QUrl& address) {
    if (address.isEmpty()) {
        return QStringLiteral("Type the address of a WebDAV folder.");
    }
    const QString scheme = address.scheme();
    if (!address.isValid() || address.host().isEmpty() ||
        (scheme != QLatin1String("https") && scheme != QLatin1String("http"))) {
        return QStringLiteral("That is not the address of a WebDAV folder, which looks like https://host/folder.");
    }
    if (!address.userInfo().isEmpty()) {
        return QStringLiteral("Leave name and password out of the address; they have fields of their own.");
    }
    return {};
}

QUrl SyncSettings::addressFrom(const QString& typed) {
    const QString text = typed.trimmed();
    if (text.isEmpty()) {
        return {};
    }
    return QUrl(text.contains(QLatin1String("://")) ? text : QStringLiteral("https://") + text, QUrl::StrictMode);
}

// SPDX-License-Identifier: MIT
#include <VXKit/support/NSPasteboard+VXKitAdditions.h>

#include <VXKit/platform/appkit/NSPasteboard.h>

QString stringValue(const NSPasteboard& pasteboard) {
    for (const char* name : {NSStringPboardType, "public.utf8-plain-text", "public.plain-text"}) {
        const QString type = QLatin1String(name);
        // The list is fetched for each test: another program may have written since the last one.
        if (pasteboard.types().contains(type)) {
            return pasteboard.stringForType(type);
        }
    }
    return {};
}

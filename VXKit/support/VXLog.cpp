// SPDX-License-Identifier: MIT
#include <VXKit/support/VXLog.h>

#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <cstdint>

namespace {

bool _didCachePreferences = false;
std::int8_t _cachedPreferences = 0;

} // namespace

bool VXShouldLog() {
    if (!_didCachePreferences) {
        // Set first, so that whatever logs while the settings are being read does not ask for them again.
        _didCachePreferences = true;
        _cachedPreferences = NSUserDefaults::standardUserDefaults().boolForKey("VXLoggingEnabled") ? 1 : 0;
    }
    return _cachedPreferences != 0;
}

void VXLogv(std::string_view format, const NSFormatArguments& arguments) {
    if (VXShouldLog()) {
        NSLogv(format, arguments);
    }
}

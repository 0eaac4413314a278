// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSFormat.h>
#include <VXKit/platform/foundation/NSLog.h>

#include <string_view>
#include <type_traits>

/// Whether diagnostic logging is switched on: the user-defaults key `VXLoggingEnabled`, off when absent.
///
/// The key is read once in the life of a process, by whichever of the functions here is called first, so that a log
/// that is off costs the test of one flag; changing the key takes effect at the next launch. Main thread only, as all
/// functions here.
[[nodiscard]] VXKIT_EXPORT bool VXShouldLog();

/// Logs as NSLogv does when logging is switched on; otherwise does nothing, and does not format the arguments. The
/// format is not checked against the arguments, for functions that pass on what they were given; elsewhere use VXLog.
VXKIT_EXPORT void VXLogv(std::string_view format, const NSFormatArguments& arguments);

/// VXLogv with a format that the compiler checks against its arguments (see NSFormatString).
template <class... Arguments>
void VXLog(NSFormatString<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    if (VXShouldLog()) {
        NSLogv(format.text(), NSMakeFormatArguments(arguments...));
    }
}

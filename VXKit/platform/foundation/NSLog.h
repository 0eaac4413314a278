// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSFormat.h>

/// Writes one line, `2026-11-20 12:00:00.123 name[process:thread] message` in local time, to standard error and the
/// message to the system log (facility user, level notice). Newlines in the message stay as they are.
///
/// The line reaches standard error in a single write, so lines of several threads and processes do not mix; those of
/// one process stand in the order of their times. What cannot be written is lost without a word. May be called from any
/// thread; leaves `errno` alone. The format is not checked against its arguments: see NSStringWithFormatArguments.
/// AppKit: `NSLogv`.
VXKIT_EXPORT void NSLogv(std::string_view format, const NSFormatArguments& arguments);

/// NSLogv with a format that the compiler checks: see NSFormatString. AppKit: `NSLog`.
template <class... Arguments>
void NSLog(NSFormatString<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    NSLogv(format.text(), NSMakeFormatArguments(arguments...));
}

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QString>

class NSPasteboard;

/// The plain text on `pasteboard`, whatever type the writing program gave it: the string of the first of
/// NSStringPboardType, "public.utf8-plain-text" and "public.plain-text" that is there. Null when none of them is; rich
/// text, file names and addresses are not converted.
[[nodiscard]] VXKIT_EXPORT QString stringValue(const NSPasteboard& pasteboard);

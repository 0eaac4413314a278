// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSDate.h>

#include <QString>

/// `date` as a list shows it beside many others, short and seen from `now`: "Just now", "5 min ago", "14:02" (today),
/// "Yesterday", "3 Nov", "3 Nov 2024". English, in local time.
[[nodiscard]] QString relativeDateText(NSDate date, NSDate now);

/// `date` in full, "3 November 2024, 14:02". English, in local time.
[[nodiscard]] QString fullDateText(NSDate date);

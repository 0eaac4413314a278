// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

/// Takes a value that a reader made out of arbitrary bytes on its way through the writers and back, and aborts where it
/// does not come back as it was: XML must read back as an equal value and be written again as the same bytes; the
/// old-style description must be readable and give the same description.
///
/// What XML cannot hold (control characters, dates out of range) may be refused. XML holds whole seconds, so dates are
/// compared by them.
void checkRoundTrip(const NSPropertyList& value);

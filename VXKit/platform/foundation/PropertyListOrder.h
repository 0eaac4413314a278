// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <vector>

/// Appends the entries of `dictionary` to `entries`, sorted by the code points of their keys. They are borrowed from
/// it.
void VXAppendSortedEntries(std::vector<const NSDictionary::Entry*>& entries, const NSDictionary& dictionary);

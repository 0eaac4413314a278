// SPDX-License-Identifier: MIT
// The arithmetic that the corners have in common; for these alone.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

/// The pointer, which is `overflow` points beyond a limit, goes on by `delta`. Where it comes back past the limit,
/// there is none left.
void addToOverflow(float& overflow, double delta);

/// Moves the bottom edge of `frame` down by `dY` points, unless that makes it lower than `leastHeight` or the pointer
/// has not come back from beyond that; then `overflow` takes it up.
void growDownwards(NSRect& frame, double dY, double leastHeight, float& overflow);

// SPDX-License-Identifier: MIT
#include "WindowOpacity.h"

#include <VXKit/platform/foundation/NSUserDefaults.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* opacityKey = "SnippetsWindowOpacity";

} // namespace

double keptWindowOpacity() {
    const NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
    if (!defaults.objectForKey(opacityKey)) {
        return fullWindowOpacity;
    }
    const double opacity = defaults.doubleForKey(opacityKey);
    return std::isnan(opacity) ? fullWindowOpacity : std::clamp(opacity, leastWindowOpacity, fullWindowOpacity);
}

void keepWindowOpacity(double opacity) {
    NSUserDefaults::standardUserDefaults().setDouble(opacity, opacityKey);
}

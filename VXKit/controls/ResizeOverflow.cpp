// SPDX-License-Identifier: MIT
#include <VXKit/controls/ResizeOverflow.h>

void addToOverflow(float& overflow, double delta) {
    const double sum = static_cast<double>(overflow) + delta;
    const bool crossesZero = (overflow > 0 && sum < 0) || (overflow < 0 && sum > 0);
    overflow = crossesZero ? 0 : static_cast<float>(sum);
}

void growDownwards(NSRect& frame, double dY, double leastHeight, float& overflow) {
    if (overflow == 0 && frame.size.height + dY >= leastHeight) {
        frame.origin.y -= dY;
        frame.size.height += dY;
    } else {
        addToOverflow(overflow, dY);
    }
}

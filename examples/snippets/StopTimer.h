// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/foundation/NSTimer.h>

#include <memory>

/// Stops what `timer` repeats or waits for, and lets go of it; does nothing where there is none.
inline void stopTimer(std::shared_ptr<NSTimer>& timer) {
    if (timer) {
        timer->invalidate();
        timer.reset();
    }
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

/// How long `clock`, which was started, has run: seconds, to the nanosecond.
[[nodiscard]] inline double elapsedSeconds(const QElapsedTimer& clock) {
    constexpr double nanosecondsPerSecond = 1e9;
    return static_cast<double>(clock.nsecsElapsed()) / nanosecondsPerSecond;
}

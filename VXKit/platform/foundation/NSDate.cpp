// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSDate.h>

#include <VXKit/platform/foundation/NSException.h>

#include <chrono>
#include <cmath>

NSDate NSDate::date() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return NSDate(std::chrono::duration<double>(sinceEpoch).count());
}

NSDate NSDate::dateWithTimeIntervalSince1970(double seconds) {
    if (std::isnan(seconds)) {
        throw NSException(NSInvalidArgumentException, QStringLiteral("A date cannot be made from NaN seconds"));
    }
    return NSDate(seconds);
}

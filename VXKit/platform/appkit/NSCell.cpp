// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSCell.h>

#include <VXKit/platform/foundation/NSPropertyList.h>

#include <algorithm>
#include <cstdint>
#include <limits>

NSCell::NSCell() = default;

NSCell::~NSCell() = default;

int NSIntValue(const NSPropertyList& value) {
    if (const auto* number = value.as<std::int64_t>()) {
        return static_cast<int>(*number);
    }
    if (const auto* number = value.as<std::uint64_t>()) {
        return static_cast<int>(*number);
    }
    constexpr std::int64_t least = std::numeric_limits<int>::min();
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value.integerValue(), least, most));
}

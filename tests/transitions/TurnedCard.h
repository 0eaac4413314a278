// SPDX-License-Identifier: MIT
// The geometry of a flip, worked out anew in another way than the kit does.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

#include <cmath>
#include <numbers>

/// A card that stands upright before an eye 1600 points away, turned about its middle by `angle`: what is on its right
/// side goes away from the eye by the sine.
struct TurnedCard {
    double angle;

    [[nodiscard]] double depth(double across) const { return 1600 + across * std::sin(angle); }
    /// Where a point of the card is seen, both from the middle.
    [[nodiscard]] NSPoint seen(const NSPoint& onCard) const {
        return {onCard.x * std::cos(angle) * 1600 / depth(onCard.x), onCard.y * 1600 / depth(onCard.x)};
    }
    /// And back.
    [[nodiscard]] NSPoint onCard(const NSPoint& seen) const {
        const double across = 1600 * seen.x / (1600 * std::cos(angle) - seen.x * std::sin(angle));
        return {across, seen.y * depth(across) / 1600};
    }
};

/// What is seen of a flip at `value`: of the back side, as much as it has turned beyond the half, from behind.
inline TurnedCard turnedAt(double value, double direction) {
    const double angle = direction * std::numbers::pi * value;
    return {value <= 0.5 ? angle : angle - direction * std::numbers::pi};
}

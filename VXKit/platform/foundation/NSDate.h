// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

// moc 6.4 stops with a parse error where <compare> is the first standard header that it meets; its parser of
// concepts is incomplete. <cstddef> before it keeps host headers with Q_OBJECT readable. To be removed with Qt 6.5.
#include <cstddef>

#include <compare>

/// An instant, held as a double count of seconds since 1970-01-01 00:00:00 UTC.
///
/// A small value, never nil; where a date may be missing, use `std::optional<NSDate>`. Equality is exact equality of
/// the two doubles: no rounding, and −0.0 is the same instant as 0.0. A count that is not a number is no instant and is
/// refused, so every two dates can be compared. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSDate {
public:
    /// The current instant, to the resolution of the system clock. AppKit: `+date`.
    [[nodiscard]] static NSDate date();

    /// The instant `seconds` after (or, when negative, before) 1970. Infinite counts are allowed.
    /// Throws an NSException named NSInvalidArgumentException when `seconds` is not a number.
    /// AppKit: `+dateWithTimeIntervalSince1970:`.
    [[nodiscard]] static NSDate dateWithTimeIntervalSince1970(double seconds);

    /// Seconds since 1970, exactly as given. AppKit: `-timeIntervalSince1970`.
    [[nodiscard]] constexpr double timeIntervalSince1970() const { return m_seconds; }

    /// Whether both denote the same instant. AppKit: `-isEqualToDate:`.
    [[nodiscard]] constexpr bool isEqualToDate(NSDate other) const { return m_seconds == other.m_seconds; }

    /// The same as isEqualToDate.
    friend constexpr bool operator==(NSDate left, NSDate right) { return left.isEqualToDate(right); }
    /// The earlier is the less; never unordered. AppKit: `-compare:`.
    friend constexpr std::partial_ordering operator<=>(NSDate left, NSDate right) {
        return left.m_seconds <=> right.m_seconds;
    }

private:
    explicit constexpr NSDate(double seconds) : m_seconds(seconds) {}

    double m_seconds;
};

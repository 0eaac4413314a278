// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSGeometry.h>

#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr NSRect unit = NSMakeRect(0, 0, 10, 20);
constexpr NSRect emptyFarAway = NSMakeRect(500, 500, 0, 30);

struct Halves {
    NSRect slice;
    NSRect remainder;
};

Halves divide(const NSRect& rect, double amount, NSRectEdge edge) {
    Halves halves;
    NSDivideRect(rect, &halves.slice, &halves.remainder, amount, edge);
    return halves;
}

} // namespace

TEST(NSGeometry, NamesTheSidesOfARectangle) {
    constexpr NSRect rect = NSMakeRect(-2, 3, 10, 5);
    static_assert(NSMinX(rect) == -2 && NSMidX(rect) == 3 && NSMaxX(rect) == 8 && NSWidth(rect) == 10);
    static_assert(NSMinY(rect) == 3 && NSMidY(rect) == 5.5 && NSMaxY(rect) == 8 && NSHeight(rect) == 5);
    EXPECT_EQ(rect.origin, NSMakePoint(-2, 3));
    EXPECT_EQ(rect.size, NSMakeSize(10, 5));
}

TEST(NSGeometry, TakesRectanglesForEqualOnlyInPlaceAndSize) {
    EXPECT_TRUE(NSEqualRects(unit, NSMakeRect(0, 0, 10, 20)));
    EXPECT_FALSE(NSEqualRects(unit, NSMakeRect(0, 1, 10, 20)));
    EXPECT_FALSE(NSEqualRects(emptyFarAway, NSZeroRect));
    EXPECT_TRUE(NSEqualPoints(NSMakePoint(1, 2), NSMakePoint(1, 2)));
    EXPECT_FALSE(NSEqualSizes(NSMakeSize(1, 2), NSMakeSize(2, 1)));
}

TEST(NSGeometry, TakesARectangleWithoutAreaForEmpty) {
    EXPECT_TRUE(NSIsEmptyRect(NSZeroRect));
    EXPECT_TRUE(NSIsEmptyRect(emptyFarAway));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(0, 0, -1, 5)));
    EXPECT_TRUE(NSIsEmptyRect(NSMakeRect(0, 0, 5, std::numeric_limits<double>::quiet_NaN())));
    EXPECT_FALSE(NSIsEmptyRect(NSMakeRect(-9, -9, 0.001, 0.001)));
}

TEST(NSGeometry, InsetsEachSideAndOutsetsWhenNegative) {
    EXPECT_EQ(NSInsetRect(unit, 1, 2), NSMakeRect(1, 2, 8, 16));
    EXPECT_EQ(NSInsetRect(unit, -1, -2), NSMakeRect(-1, -2, 12, 24));
    EXPECT_EQ(NSInsetRect(unit, 6, 0), NSMakeRect(6, 0, -2, 20));
}

TEST(NSGeometry, OffsetsWithoutResizing) {
    EXPECT_EQ(NSOffsetRect(unit, 3, -4), NSMakeRect(3, -4, 10, 20));
}

TEST(NSGeometry, IntersectsOnlyWhereThereIsCommonArea) {
    EXPECT_TRUE(NSIntersectsRect(unit, NSMakeRect(9, 19, 5, 5)));
    EXPECT_FALSE(NSIntersectsRect(unit, NSMakeRect(10, 0, 5, 5)));
    EXPECT_FALSE(NSIntersectsRect(unit, NSMakeRect(0, 20, 5, 5)));
    EXPECT_FALSE(NSIntersectsRect(unit, NSMakeRect(5, 5, 0, 5)));
    EXPECT_EQ(NSIntersectionRect(unit, NSMakeRect(9, -5, 5, 10)), NSMakeRect(9, 0, 1, 5));
    EXPECT_EQ(NSIntersectionRect(unit, NSMakeRect(10, 0, 5, 5)), NSZeroRect);
    EXPECT_EQ(NSIntersectionRect(unit, NSMakeRect(5, 5, 0, 5)), NSZeroRect);
}

TEST(NSGeometry, LeavesEmptyRectanglesOutOfAUnion) {
    EXPECT_EQ(NSUnionRect(unit, NSMakeRect(-5, 5, 2, 30)), NSMakeRect(-5, 0, 15, 35));
    EXPECT_EQ(NSUnionRect(unit, emptyFarAway), unit);
    EXPECT_EQ(NSUnionRect(emptyFarAway, unit), unit);
    EXPECT_EQ(NSUnionRect(emptyFarAway, emptyFarAway), NSZeroRect);
}

TEST(NSGeometry, ContainsARectangleUpToItsSidesButNoEmptyOne) {
    EXPECT_TRUE(NSContainsRect(unit, unit));
    EXPECT_TRUE(NSContainsRect(unit, NSMakeRect(5, 5, 5, 15)));
    EXPECT_FALSE(NSContainsRect(unit, NSMakeRect(5, 5, 5.5, 15)));
    EXPECT_FALSE(NSContainsRect(unit, NSMakeRect(5, 5, 0, 0)));
    EXPECT_FALSE(NSContainsRect(NSMakeRect(0, 0, 0, 20), NSMakeRect(0, 0, 1, 1)));
}

TEST(NSGeometry, CountsTheSidesWithSmallCoordinatesAsInsideForAPoint) {
    EXPECT_TRUE(NSPointInRect(NSMakePoint(0, 0), unit));
    EXPECT_TRUE(NSPointInRect(NSMakePoint(9.999, 19.999), unit));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(10, 5), unit));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(5, 20), unit));
    EXPECT_FALSE(NSPointInRect(NSMakePoint(0, 0), NSZeroRect));
}

TEST(NSGeometry, CountsTheTopSideAsInsideForTheMouse) {
    EXPECT_FALSE(NSMouseInRect(NSMakePoint(0, 0), unit, false));
    EXPECT_TRUE(NSMouseInRect(NSMakePoint(0, 20), unit, false));
    EXPECT_TRUE(NSMouseInRect(NSMakePoint(0, 0), unit, true));
    EXPECT_FALSE(NSMouseInRect(NSMakePoint(0, 20), unit, true));
    for (const bool flipped : {false, true}) {
        EXPECT_TRUE(NSMouseInRect(NSMakePoint(0, 5), unit, flipped));
        EXPECT_FALSE(NSMouseInRect(NSMakePoint(10, 5), unit, flipped));
        EXPECT_FALSE(NSMouseInRect(NSMakePoint(500, 510), emptyFarAway, flipped));
    }
}

TEST(NSGeometry, GrowsToWholeCoordinates) {
    EXPECT_EQ(NSIntegralRect(NSMakeRect(0.5, -0.5, 10, 20)), NSMakeRect(0, -1, 11, 21));
    EXPECT_EQ(NSIntegralRect(unit), unit);
    EXPECT_EQ(NSIntegralRect(NSMakeRect(1.5, 1.5, 0, 3)), NSZeroRect);
}

TEST(NSGeometry, CutsFromTheSideThatIsNamed) {
    const Halves left = divide(unit, 3, NSMinXEdge);
    EXPECT_EQ(left.slice, NSMakeRect(0, 0, 3, 20));
    EXPECT_EQ(left.remainder, NSMakeRect(3, 0, 7, 20));
    const Halves right = divide(unit, 3, NSMaxXEdge);
    EXPECT_EQ(right.slice, NSMakeRect(7, 0, 3, 20));
    EXPECT_EQ(right.remainder, NSMakeRect(0, 0, 7, 20));
    const Halves bottom = divide(unit, 5, NSMinYEdge);
    EXPECT_EQ(bottom.slice, NSMakeRect(0, 0, 10, 5));
    EXPECT_EQ(bottom.remainder, NSMakeRect(0, 5, 10, 15));
    const Halves top = divide(unit, 5, NSMaxYEdge);
    EXPECT_EQ(top.slice, NSMakeRect(0, 15, 10, 5));
    EXPECT_EQ(top.remainder, NSMakeRect(0, 0, 10, 15));
}

TEST(NSGeometry, CutsNoMoreThanThereIs) {
    const Halves all = divide(unit, 50, NSMinXEdge);
    EXPECT_EQ(all.slice, unit);
    EXPECT_EQ(all.remainder, NSMakeRect(10, 0, 0, 20));
    const Halves nothing = divide(unit, -5, NSMaxYEdge);
    EXPECT_EQ(nothing.slice, NSMakeRect(0, 20, 10, 0));
    EXPECT_EQ(nothing.remainder, unit);
    const Halves ofNothing = divide(emptyFarAway, 1, NSMinYEdge);
    EXPECT_EQ(ofNothing.slice, NSZeroRect);
    EXPECT_EQ(ofNothing.remainder, NSZeroRect);
}

TEST(NSGeometry, CutsWhereOnlyOnePartIsWanted) {
    NSRect slice;
    NSDivideRect(unit, &slice, nullptr, 1, NSMinXEdge);
    EXPECT_EQ(slice, NSMakeRect(0, 0, 1, 20));
    NSRect remainder;
    NSDivideRect(unit, nullptr, &remainder, 1, NSMinXEdge);
    EXPECT_EQ(remainder, NSMakeRect(1, 0, 9, 20));
}

TEST(NSGeometry, WritesNumbersWithTheirShortestDigits) {
    EXPECT_EQ(NSStringFromRect(unit), QStringLiteral("{{0, 0}, {10, 20}}"));
    EXPECT_EQ(NSStringFromPoint(NSMakePoint(-0.0, 0.1)), QStringLiteral("{0, 0.1}"));
    EXPECT_EQ(NSStringFromSize(NSMakeSize(1.0 / 3, -1200000)), QStringLiteral("{0.3333333333333333, -1200000}"));
}

TEST(NSGeometry, KeepsTheNumbersInQtsTypes) {
    static_assert(NSRectFromQRectF(NSRectToQRectF(NSMakeRect(1, 2, -3, 4))) == NSMakeRect(1, 2, -3, 4));
    EXPECT_EQ(NSRectToQRectF(unit), QRectF(0, 0, 10, 20));
    EXPECT_EQ(NSPointFromQPointF(NSPointToQPointF(NSMakePoint(1.5, -2))), NSMakePoint(1.5, -2));
    EXPECT_EQ(NSSizeFromQSizeF(NSSizeToQSizeF(NSMakeSize(1.5, -2))), NSMakeSize(1.5, -2));
}

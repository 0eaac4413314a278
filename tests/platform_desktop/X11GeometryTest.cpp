// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/X11Geometry.h>

#include <gtest/gtest.h>

namespace {

/// A main screen of 1920 x 1080 pixels at 1x; left of it one of 2560 x 1600 pixels at 2x that reaches further up; below
/// it one of 1920 x 1200 pixels at 1.5.
const std::vector<X11Screen>& threeScreens() {
    static const std::vector<X11Screen> screens{
        {QRect(0, 0, 1920, 1080), 1},
        {QRect(-2560, -200, 1280, 800), 2},
        {QRect(0, 1080, 1280, 800), 1.5},
    };
    return screens;
}

} // namespace

TEST(X11Geometry, KeepsTheCornerOfAScreenAndDividesInside) {
    EXPECT_EQ(threeScreens()[1].nativeGeometry(), QRect(-2560, -200, 2560, 1600));
    EXPECT_EQ(threeScreens()[2].nativeGeometry(), QRect(0, 1080, 1920, 1200));
}

TEST(X11Geometry, ConvertsPointsOfAScreenLeftOfTheMainOne) {
    EXPECT_EQ(pointsFromNative(QPoint(-2560, -200), threeScreens()), QPointF(-2560, -200));
    EXPECT_EQ(pointsFromNative(QPoint(-1, 1399), threeScreens()), QPointF(-2560 + 1279.5, -200 + 799.5));
    EXPECT_EQ(nativeFromPoints(QPointF(-1280.5, 599.5), threeScreens()), QPoint(-1, 1399));
}

TEST(X11Geometry, ConvertsPointsOfAScreenBelowTheMainOne) {
    EXPECT_EQ(pointsFromNative(QPoint(300, 1380), threeScreens()), QPointF(200, 1280));
    EXPECT_EQ(nativeFromPoints(QPointF(200, 1280), threeScreens()), QPoint(300, 1380));
}

TEST(X11Geometry, LeavesPointsOfTheMainScreen) {
    EXPECT_EQ(pointsFromNative(QPoint(1919, 1079), threeScreens()), QPointF(1919, 1079));
    EXPECT_EQ(nativeFromPoints(QPointF(0, 0), threeScreens()), QPoint(0, 0));
}

TEST(X11Geometry, ConvertsARectangleByTheScreenOfItsMiddle) {
    const QRect native(-400, 100, 300, 200);
    const QRect points(-2560 + 1080, -200 + 150, 150, 100);
    EXPECT_EQ(pointsFromNative(native, threeScreens()), points);
    EXPECT_EQ(nativeFromPoints(points, threeScreens()), native);
    EXPECT_EQ(pointsFromNative(QRect(-10, 100, 300, 200), threeScreens()), QRect(-10, 100, 300, 200));
}

TEST(X11Geometry, BringsEveryPointRectangleBackExactly) {
    for (int left = 0; left < 50; ++left) {
        const QRect points(left, 1100 + left, 101 + left, 77);
        EXPECT_EQ(pointsFromNative(nativeFromPoints(points, threeScreens()), threeScreens()), points);
    }
}

TEST(X11Geometry, TakesTheNearestScreenForAPlaceOutsideAll) {
    EXPECT_EQ(pointsFromNative(QPoint(-2600, 0), threeScreens()), QPointF(-2580, -100));
    EXPECT_EQ(pointsFromNative(QPoint(2000, 50), threeScreens()), QPointF(2000, 50));
    EXPECT_EQ(nativeFromPoints(QPointF(100, 1980), threeScreens()), QPoint(150, 2430));
}

TEST(X11Geometry, ConvertsNothingWithoutAScreen) {
    EXPECT_EQ(pointsFromNative(QPoint(3, 4), {}), QPointF(3, 4));
    EXPECT_EQ(nativeFromPoints(QRect(1, 2, 3, 4), {}), QRect(1, 2, 3, 4));
}

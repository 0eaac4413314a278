// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <tests/graphics/GraphicsTestSupport.h>

#include <QPainter>

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

std::vector<NSBezierPathElement> elementsOf(const NSBezierPath& path) {
    std::vector<NSBezierPathElement> elements;
    elements.reserve(static_cast<std::size_t>(path.elementCount()));
    for (int index = 0; index < path.elementCount(); ++index) {
        elements.push_back(path.elementAtIndex(index));
    }
    return elements;
}

std::array<NSPoint, 3> pointsOf(const NSBezierPath& path, int index) {
    std::array<NSPoint, 3> points;
    path.elementAtIndex(index, &points);
    return points;
}

NSBezierPath horizontalLine(double y, double length) {
    NSBezierPath path;
    path.moveToPoint({0, y});
    path.lineToPoint({length, y});
    return path;
}

// How much of the area of `image` is covered, in pixels.
double coveredArea(const QImage& image) {
    double area = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            area += qAlpha(image.pixel(x, y)) / 255.0;
        }
    }
    return area;
}

void fillWhite(const NSRect& rect) {
    NSColor::whiteColor().set();
    NSRectFill(rect);
}

} // namespace

TEST(NSBezierPath, KeepsItsElementsAndPointsExactly) {
    NSBezierPath path;
    EXPECT_TRUE(path.isEmpty());
    path.moveToPoint({0.1, 0.2});
    path.lineToPoint({0.1, 0.2});
    path.curveToPoint({1.1, 1.2}, {2.1, 2.2}, {3.1, 3.2});
    path.closePath();
    EXPECT_THAT(elementsOf(path), ElementsAre(NSMoveToBezierPathElement, NSLineToBezierPathElement,
                                              NSCurveToBezierPathElement, NSClosePathBezierPathElement));
    EXPECT_EQ(pointsOf(path, 0)[0], NSMakePoint(0.1, 0.2));
    EXPECT_EQ(pointsOf(path, 1)[0], NSMakePoint(0.1, 0.2));
    EXPECT_THAT(pointsOf(path, 2), ElementsAre(NSMakePoint(2.1, 2.2), NSMakePoint(3.1, 3.2), NSMakePoint(1.1, 1.2)));
    EXPECT_EQ(pointsOf(path, 3)[0], NSMakePoint(0.1, 0.2));
}

TEST(NSBezierPath, RaisesARangeExceptionForAnElementItDoesNotHave) {
    const NSBezierPath path = horizontalLine(0, 1);
    for (const int index : {-1, 2}) {
        try {
            path.elementAtIndex(index);
            ADD_FAILURE() << index;
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), QString::fromLatin1(NSRangeException));
        }
    }
}

TEST(NSBezierPath, LogsAndLeavesOutWhatHasNoPointToBeginAt) {
    NSBezierPath path;
    testing::internal::CaptureStderr();
    path.lineToPoint({1, 1});
    path.curveToPoint({1, 1}, {2, 2}, {3, 3});
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, testing::HasSubstr("line"));
    EXPECT_THAT(log, testing::HasSubstr("curve"));
    EXPECT_TRUE(path.isEmpty());
}

TEST(NSBezierPath, IsNotChangedByClosingItTwiceOrWhileEmpty) {
    NSBezierPath path;
    path.closePath();
    EXPECT_TRUE(path.isEmpty());
    path = NSBezierPath::bezierPathWithRect(NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(path.elementCount(), 5);
    path.closePath();
    EXPECT_EQ(path.elementCount(), 5);
}

TEST(NSBezierPath, GoesOnAfterAClosedSubpathWhereThatBegan) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(1, 2, 3, 4));
    path.lineToPoint({0, 2});
    EXPECT_EQ(path.bounds(), NSMakeRect(0, 2, 4, 4));
}

TEST(NSBezierPath, HasTheBoundsOfTheCurveAndNotOfItsControlPoints) {
    NSBezierPath path;
    EXPECT_EQ(path.bounds(), NSZeroRect);
    path.moveToPoint({0, 0});
    path.curveToPoint({4, 0}, {0, 4}, {4, 4});
    EXPECT_DOUBLE_EQ(NSWidth(path.bounds()), 4);
    EXPECT_DOUBLE_EQ(NSHeight(path.bounds()), 3);
    EXPECT_EQ(NSBezierPath::bezierPathWithRect(NSMakeRect(1.5, 2.5, 3, 4)).bounds(), NSMakeRect(1.5, 2.5, 3, 4));
}

TEST(NSBezierPath, FillsARectangleExactly) {
    for (const int ratio : {1, 2}) {
        const QImage image =
            drawn({9, 7}, ratio, [] { NSBezierPath::bezierPathWithRect(NSMakeRect(2, 1, 4, 5)).fill(); });
        EXPECT_EQ(image, plain(QSize(9, 7) * ratio, QRect(2 * ratio, ratio, 4 * ratio, 5 * ratio), Qt::black));
    }
}

TEST(NSBezierPath, FillsOverWhatIsThere) {
    const QImage image = drawn(
        {1, 1}, 1,
        [] {
            NSColor::colorWithCalibratedWhite(0, 0.5).set();
            NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1)).fill();
        },
        Flipped::No, Qt::white);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 255);
    EXPECT_NEAR(qRed(image.pixel(0, 0)), 127, 1);
}

TEST(NSBezierPath, FillsAnOpenTriangleUpright) {
    const QImage image = drawn({11, 11}, [] {
        NSBezierPath path;
        path.moveToPoint({0, 0});
        path.lineToPoint({11, 0});
        path.lineToPoint({5.5, 11});
        path.fill();
    });
    EXPECT_EQ(qAlpha(image.pixel(5, 1)), 255) << "the tip is at the top";
    EXPECT_EQ(qAlpha(image.pixel(0, 1)), 0);
    EXPECT_EQ(qAlpha(image.pixel(1, 10)), 255) << "the base is at the bottom";
    EXPECT_NEAR(coveredArea(image), 60.5, 0.5);
}

TEST(NSBezierPath, CountsWindingsWhereSubpathsOverlap) {
    const QImage image = drawn({6, 1}, [] {
        NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 4, 1));
        path.appendBezierPathWithRect(NSMakeRect(2, 0, 4, 1));
        path.fill();
    });
    EXPECT_EQ(image, plain({6, 1}, {0, 0, 6, 1}, Qt::black));
}

TEST(NSBezierPath, LeavesAHoleWhereASubpathTurnsTheOtherWay) {
    const QImage image = drawn({6, 6}, [] {
        NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 6, 6));
        path.moveToPoint({2, 2});
        path.lineToPoint({2, 4});
        path.lineToPoint({4, 4});
        path.lineToPoint({4, 2});
        path.closePath();
        path.fill();
    });
    EXPECT_EQ(qAlpha(image.pixel(3, 3)), 0);
    EXPECT_EQ(coveredArea(image), 32);
}

TEST(NSBezierPath, RoundsTheCornersOfARectangle) {
    for (const double ratio : {1.0, 2.0}) {
        const QImage image = drawn(
            {40, 30}, ratio, [] { NSBezierPath::bezierPathWithRoundedRect(NSMakeRect(0, 0, 40, 30), 10, 10).fill(); });
        // Four quarters of a circle are missing from a square of the diameter.
        const double expected = 40 * 30 - (4 - M_PI) * 100;
        EXPECT_NEAR(coveredArea(image) / (ratio * ratio), expected, expected / 1000);
        EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
        EXPECT_EQ(qAlpha(image.pixel(image.width() / 2, 0)), 255);
        EXPECT_EQ(qAlpha(image.pixel(0, image.height() / 2)), 255);
        EXPECT_LE(difference(image, image.mirrored(true, false)), 1);
        EXPECT_LE(difference(image, image.mirrored(false, true)), 1);
    }
}

TEST(NSBezierPath, LimitsTheRadiiOfARoundedRectangleToHalfItsSides) {
    const NSRect rect = NSMakeRect(0, 0, 20, 10);
    const NSBezierPath round = NSBezierPath::bezierPathWithRoundedRect(rect, 100, 100);
    EXPECT_EQ(round.bounds(), rect);
    EXPECT_EQ(pointsOf(round, 0)[0], NSMakePoint(10, 0));
    EXPECT_EQ(pointsOf(round, 2)[2], NSMakePoint(20, 5));
    const NSBezierPath flat = NSBezierPath::bezierPathWithRoundedRect(rect, 3, -1);
    EXPECT_EQ(elementsOf(flat), elementsOf(NSBezierPath::bezierPathWithRect(rect)));
}

TEST(NSBezierPath, MakesAnOvalThatTouchesTheSidesOfItsRectangle) {
    const NSBezierPath oval = NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(2, 3, 20, 10));
    EXPECT_EQ(oval.bounds(), NSMakeRect(2, 3, 20, 10));
    const QImage image = drawn({24, 16}, [&] { oval.fill(); });
    EXPECT_NEAR(coveredArea(image), M_PI * 10 * 5, 0.5);
    EXPECT_EQ(qAlpha(image.pixel(2, 3)), 0);
}

TEST(NSBezierPath, StrokesALineOfOnePointCentredOnIt) {
    const QImage onPixels = drawn({6, 4}, [] { horizontalLine(1.5, 6).stroke(); });
    EXPECT_EQ(onPixels, plain({6, 4}, {0, 2, 6, 1}, Qt::black));
    const QImage between = drawn({6, 4}, [] { horizontalLine(2, 6).stroke(); });
    for (const int y : {1, 2}) {
        EXPECT_NEAR(qAlpha(between.pixel(3, y)), 128, 2);
    }
    EXPECT_EQ(inkOf(between), QRect(0, 1, 6, 2));
    const QImage atTwo = drawn({6, 4}, 2, [] { horizontalLine(2, 6).stroke(); });
    EXPECT_EQ(atTwo, plain({12, 8}, {0, 3, 12, 2}, Qt::black));
}

TEST(NSBezierPath, StrokesAHairlineAlongTheInsideOfARectangle) {
    const auto hairline = [] {
        NSBezierPath path = NSBezierPath::bezierPathWithRect(NSInsetRect(NSMakeRect(0, 0, 8, 6), 0.5, 0.5));
        path.setLineWidth(0.5);
        path.stroke();
    };
    // Half a point wide and centred in the outermost one: half of its pixel is covered, or half of each of its two.
    const QImage atOne = drawn({8, 6}, 1, hairline);
    for (const QPoint point : {QPoint(4, 0), QPoint(4, 5), QPoint(0, 3), QPoint(7, 3)}) {
        EXPECT_NEAR(qAlpha(atOne.pixel(point)), 128, 1);
    }
    EXPECT_EQ(inkOf(atOne), QRect(0, 0, 8, 6));
    EXPECT_EQ(qAlpha(atOne.pixel(1, 1)), 0);
    const QImage atTwo = drawn({8, 6}, 2, hairline);
    for (const QPoint point : {QPoint(8, 0), QPoint(8, 1), QPoint(8, 10), QPoint(8, 11), QPoint(0, 6), QPoint(1, 6),
                               QPoint(14, 6), QPoint(15, 6)}) {
        EXPECT_NEAR(qAlpha(atTwo.pixel(point)), 128, 1);
    }
    EXPECT_EQ(qAlpha(atTwo.pixel(2, 2)), 0);
    // At four pixels a point, half a point is two whole ones.
    const QImage atFour = drawn({8, 6}, 4, hairline);
    QImage expected = plain({32, 24}, {1, 1, 30, 22}, Qt::black);
    for (int y = 3; y < 21; ++y) {
        for (int x = 3; x < 29; ++x) {
            expected.setPixel(x, y, 0);
        }
    }
    EXPECT_EQ(atFour, expected);
}

TEST(NSBezierPath, EndsStrokesFlatAndJoinsThemWithMitres) {
    const QImage image = drawn({12, 12}, [] {
        NSBezierPath path;
        path.moveToPoint({3, 9});
        path.lineToPoint({3, 3});
        path.lineToPoint({9, 3});
        path.setLineWidth(2);
        path.stroke();
    });
    QImage expected = plain({12, 12}, {2, 3, 2, 7}, Qt::black);
    QPainter(&expected).fillRect(QRect(2, 8, 7, 2), Qt::black);
    EXPECT_EQ(image, expected);
}

TEST(NSBezierPath, CutsMitresLongerThanTenLineWidths) {
    // The mitre of two lines at an angle is 1 / sin(angle / 2) line widths long: 10 at 11.5 degrees.
    const auto topOfStroke = [](double degrees) {
        const QImage image = drawn({200, 160}, [&] {
            const double half = std::tan(degrees / 2 * M_PI / 180) * 100;
            NSBezierPath path;
            path.moveToPoint({100 - half, 0});
            path.lineToPoint({100, 100});
            path.lineToPoint({100 + half, 0});
            path.setLineWidth(10);
            path.stroke();
        });
        return 160 - inkOf(image).top() - 100;
    };
    EXPECT_NEAR(topOfStroke(13), 5 / std::sin(6.5 * M_PI / 180), 1.5);
    EXPECT_LE(topOfStroke(10), 6);
}

TEST(NSBezierPath, TakesLineWidthsBelowZeroForZero) {
    NSBezierPath path = horizontalLine(1.5, 4);
    EXPECT_EQ(path.lineWidth(), 1);
    path.setLineWidth(-1);
    EXPECT_EQ(path.lineWidth(), 0);
    path.setLineWidth(std::nan(""));
    EXPECT_EQ(path.lineWidth(), 0);
    EXPECT_EQ(drawn({4, 3}, [&] { path.stroke(); }), plain({4, 3}, {0, 1, 4, 1}, Qt::black))
        << "the thinnest line there is: one pixel";
}

TEST(NSBezierPath, ClipsWhatIsDrawnAfterwards) {
    for (const int ratio : {1, 2}) {
        const QImage image = drawn({8, 8}, ratio, [] {
            NSBezierPath::bezierPathWithRect(NSMakeRect(1, 2, 3, 4)).setClip();
            fillWhite(NSMakeRect(0, 0, 8, 8));
        });
        EXPECT_EQ(image, plain(QSize(8, 8) * ratio, QRect(ratio, 2 * ratio, 3 * ratio, 4 * ratio), Qt::white));
    }
}

TEST(NSBezierPath, AddsToTheClipByNarrowingIt) {
    const QImage image = drawn({8, 8}, [] {
        NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 4, 4)).addClip();
        NSBezierPath::bezierPathWithRect(NSMakeRect(3, 3, 4, 4)).addClip();
        fillWhite(NSMakeRect(0, 0, 8, 8));
    });
    EXPECT_EQ(image, plain({8, 8}, {3, 3, 2, 2}, Qt::white));
}

TEST(NSBezierPath, SetsTheClipInPlaceOfTheOneBefore) {
    const QImage image = drawn({8, 8}, [] {
        NSBezierPath::bezierPathWithRect(NSMakeRect(1, 1, 2, 2)).addClip();
        NSBezierPath::bezierPathWithRect(NSMakeRect(5, 5, 2, 2)).setClip();
        fillWhite(NSMakeRect(0, 0, 8, 8));
    });
    EXPECT_EQ(image, plain({8, 8}, {5, 1, 2, 2}, Qt::white));
}

TEST(NSBezierPath, KeepsToTheClipOfItsViewWhenItSetsOne) {
    QImage pixels(8, 8, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::transparent);
    QPainter painter(&pixels);
    painter.setClipRect(2, 2, 4, 4);
    {
        const NSGraphicsContext context(painter, 8, false);
        NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 3, 8)).setClip();
        NSBezierPath::bezierPathWithRect(NSMakeRect(4, 0, 4, 8)).setClip();
        fillWhite(NSMakeRect(0, 0, 8, 8));
    }
    painter.end();
    EXPECT_EQ(pixels, plain({8, 8}, {4, 2, 2, 4}, Qt::white));
}

TEST(NSBezierPath, ClipsSmoothlyAlongACurve) {
    const QImage image = drawn({20, 20}, [] {
        NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(0, 0, 20, 20)).setClip();
        fillWhite(NSMakeRect(0, 0, 20, 20));
    });
    const QImage filled = drawn({20, 20}, [] {
        NSColor::whiteColor().set();
        NSBezierPath::bezierPathWithOvalInRect(NSMakeRect(0, 0, 20, 20)).fill();
    });
    EXPECT_LE(difference(image, filled), 2);
}

TEST(NSBezierPath, ClipsAwayEverythingWhileEmpty) {
    const QImage image = drawn({4, 4}, [] {
        NSBezierPath().setClip();
        fillWhite(NSMakeRect(0, 0, 4, 4));
    });
    EXPECT_TRUE(inkOf(image).isEmpty());
}

TEST(NSBezierPath, DrawsNothingWithoutAContext) {
    const NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(0, 0, 1, 1));
    path.fill();
    path.stroke();
    path.setClip();
    path.addClip();
    NSBezierPath::fillRect(NSMakeRect(0, 0, 1, 1));
}

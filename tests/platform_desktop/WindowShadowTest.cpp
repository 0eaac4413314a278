// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/WindowShadow.h>

#include <QColor>

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace {

/// Far enough away from the body that nothing of the shadow is cut out.
constexpr int farAway = 100000;

int alphaAt(const QImage& image, int x, int y) {
    return qAlpha(image.pixel(x, y));
}

double sumOfAlpha(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            sum += alphaAt(image, x, y);
        }
    }
    return sum / 255;
}

/// The deviation of the edge of a shadow along the middle row, measured by the places where a Gaussian's edge has
/// 15.87 % and 84.13 % of its height, one deviation to each side.
double measuredDeviation(const QImage& image) {
    const int y = image.height() / 2;
    const double full = alphaAt(image, image.width() / 2, y);
    const auto placeOf = [&](double share) {
        int x = 0;
        while (alphaAt(image, x, y) < share * full) {
            ++x;
        }
        const double before = alphaAt(image, x - 1, y);
        return x - 1 + (share * full - before) / (alphaAt(image, x, y) - before);
    };
    return (placeOf(0.841345) - placeOf(0.158655)) / 2;
}

/// A disc of `alpha` in the middle of a transparent square.
QImage disc(int diameter, int alpha) {
    QImage image(diameter, diameter, QImage::Format_ARGB32_Premultiplied);
    const double middle = diameter / 2.0;
    for (int y = 0; y < diameter; ++y) {
        for (int x = 0; x < diameter; ++x) {
            const bool isInside = std::hypot(x + 0.5 - middle, y + 0.5 - middle) <= middle;
            image.setPixel(x, y, qRgba(0, 0, 0, isInside ? alpha : 0));
        }
    }
    return image;
}

} // namespace

TEST(WindowShadow, ReachesThreeDeviationsBeyondTheBody) {
    EXPECT_EQ(windowShadowMargin({.standardDeviation = 72}), 216);
    EXPECT_EQ(windowShadowMargin({.standardDeviation = 2.1}), 7);
    EXPECT_EQ(windowShadowMargin({.standardDeviation = -1}), 0);
    EXPECT_EQ(windowShadowMargin({.standardDeviation = std::nan("")}), 0);
    const QImage image = windowShadowImage({100, 50}, {}, {.standardDeviation = 24, .density = 0.75}, 2);
    EXPECT_EQ(image.size(), QSize(2 * (100 + 144), 2 * (50 + 144)));
    EXPECT_EQ(image.devicePixelRatio(), 2);
    EXPECT_EQ(image.format(), QImage::Format_ARGB32_Premultiplied);
}

TEST(WindowShadow, HasTheDensityUnderTheMiddleOfAWideBody) {
    for (const double density : {0.25, 0.75, 1.0}) {
        const WindowShadow shadow{.standardDeviation = 24, .density = density, .offsetX = farAway};
        const QImage image = windowShadowImage({400, 300}, {}, shadow, 1);
        EXPECT_NEAR(alphaAt(image, image.width() / 2, image.height() / 2), density * 255, 1);
    }
}

TEST(WindowShadow, SpreadsTheWholeOfWhatTheBodyTakesAway) {
    for (const double deviation : {0.0, 1.0, 4.0, 24.0, 72.0}) {
        const WindowShadow shadow{.standardDeviation = deviation, .density = 0.75, .offsetX = farAway};
        const QImage image = windowShadowImage({401, 303}, {}, shadow, 1);
        EXPECT_NEAR(sumOfAlpha(image) / (0.75 * 401 * 303), 1, 0.01) << deviation;
    }
}

TEST(WindowShadow, HonoursTheDeviationWithinThreeHundredths) {
    for (const double deviation : {3.0, 5.0, 7.5, 11.0, 24.0, 40.0, 72.0}) {
        for (const double pixelRatio : {1.0, 1.5, 2.0}) {
            const WindowShadow shadow{.standardDeviation = deviation, .density = 1, .offsetX = farAway};
            const int side = 8 * static_cast<int>(std::ceil(deviation));
            const QImage image = windowShadowImage({side, side}, {}, shadow, pixelRatio);
            EXPECT_NEAR(measuredDeviation(image) / (deviation * pixelRatio), 1, 0.03) << deviation << ' ' << pixelRatio;
        }
    }
}

TEST(WindowShadow, IsSharpWithoutADeviation) {
    const QImage image = windowShadowImage({10, 8}, {}, {.density = 0.75, .offsetX = 4, .offsetY = 3}, 1);
    ASSERT_EQ(image.size(), QSize(10, 8));
    EXPECT_EQ(alphaAt(image, 5, 4), 0);
    EXPECT_EQ(alphaAt(image, 6, 4), 191);
    EXPECT_EQ(alphaAt(image, 5, 5), 191);
}

TEST(WindowShadow, CutsTheBodyOutWhereTheOffsetLeavesIt) {
    const WindowShadow shadow{.standardDeviation = 24, .density = 0.75, .offsetX = -5, .offsetY = 25};
    for (const double pixelRatio : {1.0, 2.0}) {
        const QImage image = windowShadowImage({200, 100}, {}, shadow, pixelRatio);
        const auto pixels = [&](int points) { return static_cast<int>(points * pixelRatio); };
        const QRect body(pixels(72 + 5), pixels(72 - 25), pixels(200), pixels(100));
        for (int y = body.top(); y <= body.bottom(); ++y) {
            for (int x = body.left(); x <= body.right(); ++x) {
                ASSERT_EQ(alphaAt(image, x, y), 0);
            }
        }
        EXPECT_GT(alphaAt(image, body.center().x(), body.bottom() + 1), 100);
        EXPECT_GT(alphaAt(image, body.left() - 1, body.center().y()), 50);
        EXPECT_GT(alphaAt(image, body.center().x(), body.top() - 1), 20);
    }
}

// To two steps of alpha, since the picture that is blurred begins at the top left corner.
TEST(WindowShadow, IsSymmetric) {
    const QImage image = windowShadowImage({203, 101}, {}, {.standardDeviation = 24, .density = 0.75}, 1);
    const QImage mirrored = image.mirrored(true, true);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            ASSERT_NEAR(alphaAt(image, x, y), alphaAt(mirrored, x, y), 2) << x << ' ' << y;
        }
    }
}

TEST(WindowShadow, IsCastByTheCoverageAndNotByItsRectangle) {
    const WindowShadow shadow{.standardDeviation = 10, .density = 0.75, .offsetX = farAway};
    const QImage image = windowShadowImage({200, 200}, disc(200, 255), shadow, 1);
    EXPECT_NEAR(sumOfAlpha(image) / (0.75 * 3.14159 * 100 * 100), 1, 0.01);
    EXPECT_EQ(alphaAt(image, 30, 30), 0);
    const QImage rectangle = windowShadowImage({200, 200}, {}, shadow, 1);
    EXPECT_GT(alphaAt(rectangle, 30, 30), 40);
}

TEST(WindowShadow, IsTheSameForAFullCoverageAsForNone) {
    QImage coverage(201, 99, QImage::Format_ARGB32_Premultiplied);
    coverage.fill(Qt::white);
    const WindowShadow shadow{.standardDeviation = 24, .density = 0.75, .offsetY = 25};
    const QImage byCoverage = windowShadowImage({201, 99}, coverage, shadow, 1);
    const QImage byRectangle = windowShadowImage({201, 99}, {}, shadow, 1);
    for (int y = 0; y < byCoverage.height(); ++y) {
        for (int x = 0; x < byCoverage.width(); ++x) {
            ASSERT_NEAR(alphaAt(byCoverage, x, y), alphaAt(byRectangle, x, y), 1);
        }
    }
}

TEST(WindowShadow, IsWeakerUnderATranslucentBodyButNotSeenThroughIt) {
    const WindowShadow away{.standardDeviation = 10, .density = 0.75, .offsetX = farAway};
    const WindowShadow near{.standardDeviation = 10, .density = 0.75};
    const QImage image = windowShadowImage({200, 200}, disc(200, 128), away, 1);
    EXPECT_NEAR(alphaAt(image, 130, 130), 0.75 * 128, 1);
    EXPECT_EQ(alphaAt(windowShadowImage({200, 200}, disc(200, 128), near, 1), 130, 130), 0);
}

TEST(WindowShadow, ScalesACoverageOfAnotherSize) {
    const WindowShadow shadow{.standardDeviation = 10, .density = 0.75, .offsetX = farAway};
    const double coarse = sumOfAlpha(windowShadowImage({200, 200}, disc(200, 255), shadow, 2));
    EXPECT_NEAR(coarse / (0.75 * 3.14159 * 200 * 200), 1, 0.01);
}

TEST(WindowShadow, IsNothingForAnEmptyBody) {
    EXPECT_TRUE(windowShadowImage({0, 10}, {}, {.standardDeviation = 24, .density = 0.75}, 1).isNull());
    EXPECT_TRUE(windowShadowImage({10, 10}, {}, {.standardDeviation = 24, .density = 0.75}, 0).isNull());
}

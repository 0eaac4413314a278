// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/GaussianBlur.h>

#include <QImage>

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace {

QImage coverage(QSize size, QRect rect, uchar level = 255) {
    QImage image(size, QImage::Format_Alpha8);
    image.fill(0);
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            image.scanLine(y)[x] = level;
        }
    }
    return image;
}

int levelAt(const QImage& image, int x, int y) {
    return image.constScanLine(y)[x];
}

// What a true Gaussian makes of the span from `from` to `to`, at the middle of the pixel `position`.
double gaussianOfSpan(double from, double to, double position, double deviation) {
    const auto integral = [&](double edge) { return std::erf((edge - position - 0.5) / (deviation * std::sqrt(2))); };
    return (integral(to) - integral(from)) / 2;
}

// Mean square distance from the middle pixel of a blurred row that had all its coverage there.
double varianceOf(const QImage& image) {
    double sum = 0;
    double moment = 0;
    const int middle = image.width() / 2;
    for (int x = 0; x < image.width(); ++x) {
        double column = 0;
        for (int y = 0; y < image.height(); ++y) {
            column += levelAt(image, x, y);
        }
        sum += column;
        moment += column * (x - middle) * (x - middle);
    }
    return moment / sum;
}

} // namespace

TEST(GaussianBlur, ComesNearATrueGaussian) {
    for (const double deviation : {1.0, 1.5, 2.0, 5.0, 12.5, 36.0}) {
        const int reach = GaussianBlurReach(deviation);
        const QRect square(reach, reach, 60, 40);
        QImage image = coverage(QSize(60, 40) + QSize(2, 2) * reach, square);
        GaussianBlur(image, deviation);
        double largest = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const double expected = 255 * gaussianOfSpan(reach, reach + 60, x, deviation) *
                                        gaussianOfSpan(reach, reach + 40, y, deviation);
                largest = std::max(largest, std::abs(expected - levelAt(image, x, y)));
            }
        }
        EXPECT_LE(largest, deviation < 2 ? 8 : 6) << deviation;
    }
}

TEST(GaussianBlur, HasTheVeryDeviationAskedForFractionsToo) {
    for (const double deviation : {0.5, 0.7, 1.0, 1.3, 2.0, 3.7, 9.0}) {
        const int reach = GaussianBlurReach(deviation);
        // A line across the rows, so that rounding to levels does not swallow the tails.
        QImage image = coverage({2 * reach + 1, 2 * reach + 9}, QRect(reach, 0, 1, 2 * reach + 9));
        GaussianBlur(image, deviation);
        const QImage middle = image.copy(0, reach, image.width(), 9);
        EXPECT_NEAR(std::sqrt(varianceOf(middle)), deviation, 0.04 * deviation + 0.02) << deviation;
    }
}

TEST(GaussianBlur, StaysWithinItsReach) {
    for (const double deviation : {0.4, 1.0, 3.3, 20.0}) {
        const int reach = GaussianBlurReach(deviation);
        const int margin = reach + 4;
        QImage image = coverage(QSize(5, 5) + QSize(2, 2) * margin, QRect(margin, margin, 5, 5));
        GaussianBlur(image, deviation);
        for (int x = 0; x < image.width(); ++x) {
            for (int depth = 0; depth < 4; ++depth) {
                EXPECT_EQ(levelAt(image, x, depth), 0);
                EXPECT_EQ(levelAt(image, depth, x), 0);
            }
        }
    }
}

TEST(GaussianBlur, LeavesTheInsideOfALargeAreaFull) {
    const int reach = GaussianBlurReach(3);
    QImage image = coverage(QSize(41, 41) + QSize(2, 2) * reach, QRect(reach, reach, 41, 41));
    GaussianBlur(image, 3);
    EXPECT_EQ(levelAt(image, reach + 20, reach + 20), 255);
}

TEST(GaussianBlur, IsTheSameInAllFourDirections) {
    const int reach = GaussianBlurReach(4);
    QImage image = coverage(QSize(11, 11) + QSize(2, 2) * reach, QRect(reach, reach, 11, 11));
    GaussianBlur(image, 4);
    EXPECT_EQ(image, image.mirrored(true, false));
    EXPECT_EQ(image, image.mirrored(false, true));
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            EXPECT_NEAR(levelAt(image, x, y), levelAt(image, y, x), 1);
        }
    }
}

TEST(GaussianBlur, TakesCoverageBeyondTheEdgesForNone) {
    QImage image = coverage({8, 8}, QRect(0, 0, 8, 8));
    GaussianBlur(image, 6);
    EXPECT_LT(levelAt(image, 0, 0), levelAt(image, 4, 4));
    EXPECT_LT(levelAt(image, 4, 4), 128);
}

TEST(GaussianBlur, ChangesNothingWithoutADeviation) {
    for (const double deviation : {0.0, -1.0, std::nan("")}) {
        QImage image = coverage({5, 5}, QRect(2, 2, 1, 1));
        const QImage before = image.copy();
        GaussianBlur(image, deviation);
        EXPECT_EQ(image, before);
        EXPECT_EQ(GaussianBlurReach(deviation), 0);
    }
}

TEST(GaussianBlur, LooksTheSameAtAnEighthOfTheSize) {
    const double deviation = 24;
    const int margin = 96;
    const QSize size(320 + 2 * margin, 240 + 2 * margin);
    QImage whole = coverage(size, QRect(margin, margin, 320, 240));
    GaussianBlur(whole, deviation);
    QImage small = coverage(size / 8, QRect(margin / 8, margin / 8, 40, 30));
    GaussianBlur(small, deviation / 8);
    const QImage enlarged = small.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                .convertToFormat(QImage::Format_Alpha8);
    int largest = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            largest = std::max(largest, std::abs(levelAt(whole, x, y) - levelAt(enlarged, x, y)));
        }
    }
    EXPECT_LE(largest, 8);
}

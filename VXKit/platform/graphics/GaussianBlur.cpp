// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/GaussianBlur.h>

#include <QImage>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

constexpr int passes = 3;

// Beyond it, the sums of the boxes would not fit their integers, and nothing be left of what is blurred.
constexpr double largestDeviation = 10000;

// Coverage is kept in 16 bits between the passes, so that their rounding does not add up.
using Coverage = std::uint16_t;
constexpr int coverageOfOneLevel = 257;
// Added before a value is cut to an integer, it makes that the nearest one.
constexpr float half = 0.5F;

// A box of 2 * radius + 1 pixels of one weight and one more at each end of a lesser one: with the right weight at the
// ends, its variance is any number one likes, not only those of whole boxes.
struct Box {
    int radius;
    float weight;
    float endWeight;
};

// The box whose passes together have `standardDeviation`, a positive number.
Box boxOfDeviation(double standardDeviation) {
    const double deviation = std::min(standardDeviation, largestDeviation);
    const double variance = deviation * deviation / passes;
    const double radius = std::floor((std::sqrt(12 * variance + 1) - 1) / 2);
    const double width = 2 * radius + 1;
    const double end = width * (3 * variance - radius * (radius + 1)) / (6 * ((radius + 1) * (radius + 1) - variance));
    const double sum = width + 2 * end;
    return {static_cast<int>(radius), static_cast<float>(1 / sum), static_cast<float>(end / sum)};
}

// Coverage in rows without gaps.
struct Plane {
    Plane(int planeWidth, int planeHeight)
        : width(planeWidth), height(planeHeight),
          values(static_cast<std::size_t>(planeWidth) * static_cast<std::size_t>(planeHeight)) {}

    Coverage* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const Coverage* row(int y) const { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }

    int width;
    int height;
    std::vector<Coverage> values;
};

// Adds a row to the sums of the columns, or takes it away.
template <int sign>
void addRow(std::vector<std::int32_t>& sums, const Coverage* row) {
    std::int32_t* const sum = sums.data();
    const std::size_t width = sums.size();
    for (std::size_t x = 0; x < width; ++x) {
        sum[x] += sign * row[x];
    }
}

// One pass down the columns. Whole rows are summed up at once, which processors do for several columns in one step.
void blurColumns(const Plane& from, Plane& to, const Box& box) {
    const int width = from.width;
    const int height = from.height;
    const std::vector<Coverage> nothing(static_cast<std::size_t>(width));
    const auto rowOrNothing = [&](int y) { return y >= 0 && y < height ? from.row(y) : nothing.data(); };

    std::vector<std::int32_t> sums(static_cast<std::size_t>(width));
    for (int y = 0; y < std::min(box.radius, height); ++y) {
        addRow<1>(sums, from.row(y));
    }
    for (int y = 0; y < height; ++y) {
        if (y + box.radius < height) {
            addRow<1>(sums, from.row(y + box.radius));
        }
        const std::int32_t* sum = sums.data();
        const Coverage* above = rowOrNothing(y - box.radius - 1);
        const Coverage* below = rowOrNothing(y + box.radius + 1);
        Coverage* blurred = to.row(y);
        for (int x = 0; x < width; ++x) {
            const auto ends = static_cast<float>(above[x] + below[x]);
            const float value = static_cast<float>(sum[x]) * box.weight + ends * box.endWeight;
            blurred[x] = static_cast<Coverage>(static_cast<std::int32_t>(value + half));
        }
        if (y - box.radius >= 0) {
            addRow<-1>(sums, from.row(y - box.radius));
        }
    }
}

// Rows become columns, in blocks that stay in the processor's nearest cache.
Plane transposed(const Plane& from) {
    constexpr int block = 16;
    Plane to(from.height, from.width);
    for (int top = 0; top < from.height; top += block) {
        const int bottom = std::min(top + block, from.height);
        for (int left = 0; left < from.width; left += block) {
            const int right = std::min(left + block, from.width);
            for (int x = left; x < right; ++x) {
                Coverage* row = to.row(x);
                for (int y = top; y < bottom; ++y) {
                    row[y] = from.row(y)[x];
                }
            }
        }
    }
    return to;
}

void blurAllColumns(Plane& plane, const Box& box) {
    Plane other(plane.width, plane.height);
    for (int pass = 0; pass < passes; ++pass) {
        blurColumns(plane, other, box);
        std::swap(plane, other);
    }
}

} // namespace

void GaussianBlur(QImage& image, double standardDeviation) {
    if (!(standardDeviation > 0) || image.isNull() || image.format() != QImage::Format_Alpha8) {
        return;
    }
    const Box box = boxOfDeviation(standardDeviation);
    Plane plane(image.width(), image.height());
    for (int y = 0; y < plane.height; ++y) {
        const uchar* from = image.constScanLine(y);
        std::transform(from, from + plane.width, plane.row(y),
                       [](uchar level) { return static_cast<Coverage>(level * coverageOfOneLevel); });
    }
    blurAllColumns(plane, box);
    plane = transposed(plane);
    blurAllColumns(plane, box);
    plane = transposed(plane);
    for (int y = 0; y < plane.height; ++y) {
        const Coverage* from = plane.row(y);
        std::transform(from, from + plane.width, image.scanLine(y), [](Coverage value) {
            return static_cast<uchar>((value + coverageOfOneLevel / 2) / coverageOfOneLevel);
        });
    }
}

int GaussianBlurReach(double standardDeviation) {
    if (!(standardDeviation > 0)) {
        return 0;
    }
    return passes * (boxOfDeviation(standardDeviation).radius + 1);
}

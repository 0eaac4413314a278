// SPDX-License-Identifier: MIT
#include <VXKit/platform/desktop/WindowShadow.h>

#include <QColor>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr double largestDeviation = 250;

/// How many deviations a Gaussian is drawn to: what lies beyond is below half a step of an 8-bit alpha.
constexpr double reachInDeviations = 3;

/// The blur is done on a picture that is smaller by this factor at most, in points, and never so small that a deviation
/// has less than `leastDeviation` of its pixels.
constexpr int largestReduction = 16;
constexpr double leastDeviation = 3;

/// An alpha with this many bits behind the point, so that it can be stepped along a row or a column.
constexpr int fractionBits = 16;
constexpr float alphaScale = 255.0F * (1 << fractionBits);
constexpr std::int32_t half = 1 << (fractionBits - 1);

double deviationOf(const WindowShadow& shadow) {
    // Written so that a deviation that is not a number counts as 0.
    return shadow.standardDeviation > 0 ? std::min(shadow.standardDeviation, largestDeviation) : 0;
}

int pixels(int points, double pixelRatio) {
    return static_cast<int>(std::lround(points * pixelRatio));
}

/// Rows of alpha values between 0 and 1.
struct AlphaPlane {
    int width;
    int height;
    std::vector<float> values;

    AlphaPlane(int planeWidth, int planeHeight)
        : width(planeWidth), height(planeHeight),
          values(static_cast<std::size_t>(planeWidth) * static_cast<std::size_t>(planeHeight)) {}

    float* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
    [[nodiscard]] const float* row(int y) const { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

/// How much of each cell of `reduction` pixels an interval covers, between 0 and 1.
std::vector<float> coveredCells(int cells, int reduction, int first, int length) {
    std::vector<float> covered;
    covered.reserve(static_cast<std::size_t>(cells));
    for (int start = 0; start < cells * reduction; start += reduction) {
        const int common = std::min(start + reduction, first + length) - std::max(start, first);
        covered.push_back(static_cast<float>(std::max(common, 0)) / static_cast<float>(reduction));
    }
    return covered;
}

void reduceRectangle(AlphaPlane& plane, int reduction, int margin, QSize body) {
    const std::vector<float> across = coveredCells(plane.width, reduction, margin, body.width());
    const std::vector<float> down = coveredCells(plane.height, reduction, margin, body.height());
    for (int y = 0; y < plane.height; ++y) {
        const float covered = down[static_cast<std::size_t>(y)];
        std::transform(across.begin(), across.end(), plane.row(y), [covered](float cell) { return cell * covered; });
    }
}

/// Adds up the alpha of `look` (in body pixels, premultiplied) in cells of `reduction` pixels.
void reduceLook(AlphaPlane& plane, int reduction, int margin, const QImage& look) {
    const float share = 1.0F / (255.0F * static_cast<float>(reduction) * static_cast<float>(reduction));
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(plane.width));
    for (int y = 0; y < look.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(look.constScanLine(y));
        int cell = margin / reduction;
        int left = reduction - margin % reduction;
        for (int x = 0; x < look.width(); ++cell, left = reduction) {
            const int end = std::min(x + left, look.width());
            std::uint32_t sum = 0;
            for (; x < end; ++x) {
                sum += line[x] >> 24U;
            }
            sums[static_cast<std::size_t>(cell)] += sum;
        }
        if ((margin + y + 1) % reduction == 0 || y + 1 == look.height()) {
            std::transform(sums.begin(), sums.end(), plane.row((margin + y) / reduction),
                           [share](std::uint32_t sum) { return static_cast<float>(sum) * share; });
            std::fill(sums.begin(), sums.end(), 0);
        }
    }
}

/// The right half of a Gaussian, its middle first; the whole of it adds up to 1.
std::vector<float> gaussian(double deviation) {
    const int reach = static_cast<int>(std::ceil(reachInDeviations * deviation));
    std::vector<double> weights;
    double sum = 0;
    for (int distance = 0; distance <= reach; ++distance) {
        weights.push_back(deviation > 0 ? std::exp(-distance * distance / (2 * deviation * deviation)) : 1);
        sum += distance == 0 ? weights.back() : 2 * weights.back();
    }
    std::vector<float> kernel;
    kernel.reserve(weights.size());
    for (const double weight : weights) {
        kernel.push_back(static_cast<float>(weight / sum));
    }
    return kernel;
}

/// Adds `from` times `weight` to `to`, `count` values of each.
void addScaled(float* to, const float* from, float weight, int count) {
    for (int index = 0; index < count; ++index) {
        to[index] += from[index] * weight;
    }
}

void blurRows(AlphaPlane& plane, const std::vector<float>& kernel) {
    std::vector<float> blurred(static_cast<std::size_t>(plane.width));
    for (int y = 0; y < plane.height; ++y) {
        float* row = plane.row(y);
        std::fill(blurred.begin(), blurred.end(), 0.0F);
        addScaled(blurred.data(), row, kernel.front(), plane.width);
        const int reach = std::min(static_cast<int>(kernel.size()), plane.width);
        for (int distance = 1; distance < reach; ++distance) {
            const float weight = kernel[static_cast<std::size_t>(distance)];
            addScaled(blurred.data(), row + distance, weight, plane.width - distance);
            addScaled(blurred.data() + distance, row, weight, plane.width - distance);
        }
        std::copy(blurred.begin(), blurred.end(), row);
    }
}

void blurColumns(AlphaPlane& plane, const std::vector<float>& kernel) {
    const AlphaPlane source = plane;
    std::fill(plane.values.begin(), plane.values.end(), 0.0F);
    const int reach = static_cast<int>(kernel.size()) - 1;
    for (int y = 0; y < plane.height; ++y) {
        for (int from = std::max(y - reach, 0); from <= std::min(y + reach, plane.height - 1); ++from) {
            addScaled(plane.row(y), source.row(from), kernel[static_cast<std::size_t>(std::abs(from - y))],
                      plane.width);
        }
    }
}

/// Where a pixel lies between the middles of two neighbouring cells.
struct Between {
    int first;
    int second;
    float fraction; ///< of the way from the first to the second
};

Between cellsAround(int pixel, int reduction, int cells) {
    const float place = (static_cast<float>(pixel) + 0.5F) / static_cast<float>(reduction) - 0.5F;
    const float below = std::floor(place);
    const int first = static_cast<int>(below);
    return {std::clamp(first, 0, cells - 1), std::clamp(first + 1, 0, cells - 1), place - below};
}

/// A row of cells as a row of pixels, linear between the middles of the cells.
void widen(const float* row, const std::vector<Between>& places, float density, std::vector<std::int32_t>& wide) {
    const float scale = density * alphaScale;
    std::transform(places.begin(), places.end(), wide.begin(), [row, scale](const Between& place) {
        const float value = row[place.first] + (row[place.second] - row[place.first]) * place.fraction;
        return static_cast<std::int32_t>(value * scale);
    });
}

/// Draws the plane, every cell `reduction` pixels wide and high, as black of its alpha times `density`.
void enlarge(const AlphaPlane& plane, int reduction, double density, QImage& image) {
    std::vector<Between> places;
    places.reserve(static_cast<std::size_t>(image.width()));
    for (int x = 0; x < image.width(); ++x) {
        places.push_back(cellsAround(x, reduction, plane.width));
    }
    const auto scale = static_cast<float>(density);
    int firstRow = -1;
    std::vector<std::int32_t> upper(places.size());
    std::vector<std::int32_t> lower(places.size());
    std::vector<std::int32_t> step(places.size());
    for (int y = 0; y < image.height(); ++y) {
        const Between rows = cellsAround(y, reduction, plane.height);
        // Between two rows of cells the alpha of each column grows by the same step from line to line; so only one
        // addition a pixel is left.
        if (y == 0 || rows.first != firstRow || rows.second == rows.first) {
            firstRow = rows.first;
            widen(plane.row(rows.first), places, scale, upper);
            widen(plane.row(rows.second), places, scale, lower);
            for (std::size_t x = 0; x < step.size(); ++x) {
                const std::int32_t difference = lower[x] - upper[x];
                step[x] = difference / reduction;
                upper[x] += static_cast<std::int32_t>(static_cast<float>(difference) * rows.fraction) + half;
            }
        }
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (std::size_t x = 0; x < step.size(); ++x) {
            line[x] = (static_cast<std::uint32_t>(upper[x]) >> fractionBits) << 24U;
            upper[x] += step[x];
        }
    }
}

/// What is left of the shadow under a pixel of each alpha. The edge of a look is smooth and keeps a share; what is as
/// solid as half the most solid pixel belongs to the shape wholly, so that nothing shows through translucent parts.
std::array<std::uint32_t, 256> sharesLeft(std::uint32_t mostSolid) {
    std::array<std::uint32_t, 256> shares{};
    std::uint32_t alpha = 0;
    for (std::uint32_t& share : shares) {
        share = 255 - std::min<std::uint32_t>(255, 2 * 255 * alpha / std::max(mostSolid, 1U));
        ++alpha;
    }
    return shares;
}

std::uint32_t mostSolidAlpha(const QImage& look) {
    std::uint32_t most = 0;
    for (int y = 0; y < look.height() && most < 255; ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(look.constScanLine(y));
        for (int x = 0; x < look.width(); ++x) {
            most = std::max(most, line[x] >> 24U);
        }
    }
    return most;
}

/// Takes the shape of `look` (or its whole rectangle where it is null) out of the shadow.
void cutOut(const QImage& look, const QRect& body, QImage& image) {
    const QRect seen = body & image.rect();
    if (seen.isEmpty()) {
        return;
    }
    const std::array<std::uint32_t, 256> shares = sharesLeft(look.isNull() ? 255 : mostSolidAlpha(look));
    for (int y = seen.top(); y <= seen.bottom(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y)) + seen.left();
        if (look.isNull()) {
            std::fill_n(line, seen.width(), 0);
            continue;
        }
        const auto* shape =
            reinterpret_cast<const QRgb*>(look.constScanLine(y - body.top())) + (seen.left() - body.left());
        for (int x = 0; x < seen.width(); ++x) {
            const std::uint32_t share = shares[shape[x] >> 24U];
            line[x] = share == 0 ? 0 : ((line[x] >> 24U) * share + 127) / 255 << 24U;
        }
    }
}

} // namespace

int windowShadowMargin(const WindowShadow& shadow) {
    return static_cast<int>(std::ceil(reachInDeviations * deviationOf(shadow)));
}

QImage windowShadowImage(QSize body, const QImage& coverage, const WindowShadow& shadow, double pixelRatio) {
    if (body.isEmpty() || !(pixelRatio > 0)) {
        return {};
    }
    const int margin = pixels(windowShadowMargin(shadow), pixelRatio);
    const QSize bodyPixels(pixels(body.width(), pixelRatio), pixels(body.height(), pixelRatio));
    QImage image(bodyPixels + QSize(2 * margin, 2 * margin), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return {};
    }
    QImage look = coverage;
    if (!look.isNull()) {
        look.convertTo(QImage::Format_ARGB32_Premultiplied);
        look.setDevicePixelRatio(1);
        if (look.size() != bodyPixels) {
            look = look.scaled(bodyPixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        }
    }

    const double deviation = deviationOf(shadow) * pixelRatio;
    const int reduction = std::clamp(static_cast<int>(deviation / leastDeviation), 1,
                                     std::max(1, static_cast<int>(largestReduction * pixelRatio)));
    AlphaPlane plane((image.width() + reduction - 1) / reduction, (image.height() + reduction - 1) / reduction);
    if (look.isNull()) {
        reduceRectangle(plane, reduction, margin, bodyPixels);
    } else {
        reduceLook(plane, reduction, margin, look);
    }
    // Making the picture smaller and larger again blurs as well: by a box of one cell and a triangle of two, whose
    // variances are a twelfth and a sixth of the square of a cell.
    const double smallDeviation = deviation / reduction;
    const double variance = smallDeviation * smallDeviation - (reduction > 1 ? 0.25 : 0);
    const std::vector<float> kernel = gaussian(std::sqrt(std::max(variance, 0.0)));
    blurRows(plane, kernel);
    blurColumns(plane, kernel);
    const double density = shadow.density > 0 ? std::min(shadow.density, 1.0) : 0;
    enlarge(plane, reduction, density, image);
    cutOut(look,
           QRect(QPoint(margin - pixels(shadow.offsetX, pixelRatio), margin - pixels(shadow.offsetY, pixelRatio)),
                 bodyPixels),
           image);
    image.setDevicePixelRatio(pixelRatio);
    return image;
}

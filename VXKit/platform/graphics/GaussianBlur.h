// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

class QImage;

/// Blurs the coverage in `image`, of format QImage::Format_Alpha8, in place; beyond its edges there is none, so leave
/// GaussianBlurReach() pixels free around what is to be blurred.
///
/// `standardDeviation` is in pixels and exact, fractions too; the Gaussian is approximated by three box passes whose
/// variances add up to it. 0, below and NaN change nothing. The time depends on the number of pixels, not on the
/// deviation: a wide soft shadow (some 20 pixels and more) looks the same drawn and blurred at an eighth of its size,
/// with an eighth of the deviation, and scaled up smoothly, at a fraction of the time.
VXKIT_EXPORT void GaussianBlur(QImage& image, double standardDeviation);

/// How many pixels far GaussianBlur carries coverage, at most.
[[nodiscard]] VXKIT_EXPORT int GaussianBlurReach(double standardDeviation);

/// The blur of a shadow, as a standard deviation in pixels, beyond which it grows no softer: the layer that is blurred
/// must stay in proportion to the surface.
constexpr double softestShadowDeviation = 256;

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <QImage>
#include <QSize>

/// The drop shadow of a window: a black Gaussian.
struct WindowShadow {
    double standardDeviation = 0; ///< of the Gaussian, in points; held between 0 and 250
    double density = 0;           ///< alpha of the shadow of a wide opaque body, 0 to 1
    int offsetX = 0;              ///< to the right, in points
    int offsetY = 0;              ///< downwards, in points

    /// Exactly the same numbers; NaN is equal to nothing.
    friend bool operator==(const WindowShadow&, const WindowShadow&) = default;
};

/// How far a shadow reaches beyond the (moved) body on every side, in points: three standard deviations, rounded up.
[[nodiscard]] VXKIT_EXPORT int windowShadowMargin(const WindowShadow& shadow);

/// Draws the shadow of a body of `body` points, with the margin around it:
///
///     +---------------------+  the image: body grown by the margin on every side,
///     |   .  -  -  -  .     |  its top left corner at body's + offset - margin
///     |   |  (cut out) |    |
///     |   |            |    |
///     |   '  -  -  -  '     |
///     +---------------------+
///
/// `coverage` is what casts the shadow: the look of the body, of which only alpha counts, scaled to the body where it
/// has another size; a null image stands for the whole rectangle. The body's own shape is cut out of the shadow,
/// translucent parts of it included, so that nothing of the shadow is seen through them. Premultiplied, `pixelRatio`
/// pixels for each point, with that device pixel ratio. Null for an empty body. For any thread.
[[nodiscard]] VXKIT_EXPORT QImage windowShadowImage(QSize body, const QImage& coverage, const WindowShadow& shadow,
                                                    double pixelRatio);

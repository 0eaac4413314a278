// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QImage>

class NSWindow;

/// What of `below` is behind `frame`, both on the screen, blurred by a Gaussian of `standardDeviation` points and as
/// strong as `coverage`, a look of the window in front, is there: its most solid half counts as all. For desktops that
/// do not blur themselves. Premultiplied, in the size and at the pixel ratio of `coverage`; null where there is none.
[[nodiscard]] VXKIT_EXPORT QImage blurredBackdrop(NSWindow& below, const NSRect& frame, double standardDeviation,
                                                  const QImage& coverage);

// SPDX-License-Identifier: MIT
// Where a painter's drawing lands in the pixels below it. For the drawing classes alone.
#pragma once

#include <QRect>
#include <QTransform>

class QPainter;

/// From the points that the painter's own transform ends in to the pixels of the surface below. Not only the pixel
/// ratio: the painter of a child view is moved, too, to where the view lies in the pixels of its window.
[[nodiscard]] QTransform logicalToDevice(const QPainter& painter);

/// The pixels that drawing can reach at most: those of the surface or view, within the clip.
[[nodiscard]] QRect reachablePixels(const QPainter& painter);

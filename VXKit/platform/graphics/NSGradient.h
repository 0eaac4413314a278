// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>

class NSBezierPath;

/// A steady transition from one colour to another along a line, components and alpha each for itself.
///
/// Angles are in degrees, counter-clockwise in coordinates whose y grows upwards: 0 goes from left to right, 90 from
/// bottom to top (in a flipped context from top to bottom), 180 from right to left. The line is just so long that the
/// start and the end colour reach the corners. Of pattern colours only the alpha counts. Draws nothing without a
/// context. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSGradient {
public:
    /// AppKit: `-initWithStartingColor:endingColor:`.
    NSGradient(NSColor startingColor, NSColor endingColor);

    /// Fills `rect` with the transition. AppKit: `-drawInRect:angle:`.
    void drawInRect(const NSRect& rect, double angle) const;
    /// Fills `path` with the transition across its bounds. AppKit: `-drawInBezierPath:angle:`.
    void drawInBezierPath(const NSBezierPath& path, double angle) const;

private:
    NSColor m_startingColor;
    NSColor m_endingColor;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

/// How what is drawn is combined with what is there, with AppKit's numbers. Each is the Porter and Duff operation of
/// its name, bounded by the shape that is drawn: what lies outside it stays as it is. NSCompositePlusDarker is drawn as
/// a multiplication, the nearest that the platform offers. AppKit: `NSCompositingOperation`.
enum NSCompositingOperation {
    NSCompositeClear = 0,           ///< nothing stays
    NSCompositeCopy = 1,            ///< the source
    NSCompositeSourceOver = 2,      ///< the source over what is there
    NSCompositeSourceIn = 3,        ///< the source where there is something
    NSCompositeSourceOut = 4,       ///< the source where there is nothing
    NSCompositeSourceAtop = 5,      ///< the source over what is there, and only there
    NSCompositeDestinationOver = 6, ///< what is there over the source
    NSCompositeDestinationIn = 7,   ///< what is there, as far as the source covers it
    NSCompositeDestinationOut = 8,  ///< what is there, as far as the source does not cover it
    NSCompositeDestinationAtop = 9, ///< what is there over the source, and only where that is
    NSCompositeXOR = 10,            ///< either, where the other is not
    NSCompositePlusDarker = 11,     ///< the product of the two
    NSCompositePlusLighter = 13,    ///< the sum of the two
};

/// Fills `rect`, in points, with the current fill colour, which replaces what is there: a colour with alpha leaves the
/// pixels just as transparent. To lay such a colour over what is there, use NSRectFillUsingOperation with
/// NSCompositeSourceOver, or NSBezierPath::fillRect. Sides that lie between pixels cover these in part. Draws nothing
/// for an empty rectangle or without a context. AppKit: `NSRectFill`.
VXKIT_EXPORT void NSRectFill(const NSRect& rect);

/// NSRectFill with the compositing operation `operation`. AppKit: `NSRectFillUsingOperation`.
VXKIT_EXPORT void NSRectFillUsingOperation(const NSRect& rect, NSCompositingOperation operation);

/// A frame 1 point wide along the inside of `rect`, in the current fill colour, which replaces what is there as
/// NSRectFill does; no pixel is filled twice. A rectangle of at most 2 points in one direction is filled whole.
/// AppKit: `NSFrameRect`.
VXKIT_EXPORT void NSFrameRect(const NSRect& rect);

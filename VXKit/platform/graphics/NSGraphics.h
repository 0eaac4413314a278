// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

/// How what is drawn is combined with what is there, with AppKit's numbers. Each is the Porter and Duff operation of
/// its name, bounded by the shape that is drawn: what lies outside it stays as it is. NSCompositePlusDarker is drawn as
/// a multiplication, the nearest that the platform offers. AppKit: `NSCompositingOperation`.
enum NSCompositingOperation {
    NSCompositeClear = 0,
    NSCompositeCopy = 1,
    NSCompositeSourceOver = 2,
    NSCompositeSourceIn = 3,
    NSCompositeSourceOut = 4,
    NSCompositeSourceAtop = 5,
    NSCompositeDestinationOver = 6,
    NSCompositeDestinationIn = 7,
    NSCompositeDestinationOut = 8,
    NSCompositeDestinationAtop = 9,
    NSCompositeXOR = 10,
    NSCompositePlusDarker = 11,
    NSCompositePlusLighter = 13,
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

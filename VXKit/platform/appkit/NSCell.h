// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

class NSPropertyList;
class ViewCore;

/// The number that a value stands for: of a number its whole part, of which the lowest 32 bits are kept (of a fraction
/// or a string, the nearest number that there is); of a string what it begins with; 0 for anything else.
/// AppKit: `-intValue` of NSNumber and NSString.
[[nodiscard]] VXKIT_EXPORT int NSIntValue(const NSPropertyList& value);

/// What a control, or a table in each of its rows, draws itself by.
///
/// Not a QObject and no view: whoever has it owns it and gives it a place. See NSButtonCell and NSTextFieldCell. Stands
/// for AppKit's class of the same name.
class VXKIT_EXPORT NSCell {
public:
    NSCell();
    NSCell(const NSCell&) = delete;
    NSCell& operator=(const NSCell&) = delete;
    virtual ~NSCell();

    /// The value as a number. AppKit: `-intValue`.
    [[nodiscard]] virtual int intValue() const = 0;
    /// Sets the value by a number. AppKit: `-setIntValue:`.
    virtual void setIntValue(int value) = 0;

    /// The room that the cell needs, in points. AppKit: `-cellSize`.
    [[nodiscard]] virtual NSSize cellSize() const = 0;

    /// Draws the cell in `cellFrame` of `controlView`, in the current graphics context.
    /// AppKit: `-drawWithFrame:inView:`.
    virtual void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) = 0;
};

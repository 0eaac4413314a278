// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <cstdint>

class ViewCore;

/// The check boxes of a column: the box of LTHUDCheckBox, without a title.
///
/// Beside off and on there is a third value, -1, for what is installed already: it shows as a badge and cannot be
/// toggled.
class VXKIT_EXPORT LTHUDCheckBoxCell : public NSButtonCell {
public:
    LTHUDCheckBoxCell();
    ~LTHUDCheckBoxCell() override;

    /// The number that setIntValue was last called with; 0 before.
    [[nodiscard]] std::int32_t realValue() const { return m_realValue; }

    /// -1 disables the cell, any other value enables it; the state is on for all but 0.
    void setIntValue(int value) override;

    /// The box with a margin around it, square.
    [[nodiscard]] NSSize cellSize() const override;
    /// Draws the box, or the mark of what is installed already, at the corner of `cellFrame` with the smallest
    /// coordinates.
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;

private:
    std::int32_t m_realValue = 0;
};

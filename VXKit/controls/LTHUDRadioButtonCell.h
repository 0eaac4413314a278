// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/foundation/NSGeometry.h>

class ViewCore;

/// Draws a radio button of HUD panels: a circle of 14 points, with a dot in it when it is on, and a bold white title
/// beside it.
class VXKIT_EXPORT LTHUDRadioButtonCell : public NSButtonCell {
public:
    LTHUDRadioButtonCell();
    ~LTHUDRadioButtonCell() override;

    /// The circle and the title beside it, with a little room.
    [[nodiscard]] NSSize cellSize() const override;
    /// Draws the circle and the title from the corner of `cellFrame` with the smallest coordinates; it is not
    /// stretched.
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;
};

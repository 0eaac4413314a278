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

    [[nodiscard]] NSSize cellSize() const override;
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;
};

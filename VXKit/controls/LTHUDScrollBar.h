// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSScroller.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

/// The scroll bar of HUD panels: a grey knob in a thin dark slot, on the window's own background, without arrows.
///
/// The knob is darker while the application is not active; where all can be seen, there is neither knob nor slot. One
/// that does not come from a nib is awoken by whoever makes it (awakeFromNib). For the scroll bars of a table that has
/// them already see LTHUDTableView.
class VXKIT_EXPORT LTHUDScrollBar : public NSScroller {
    Q_OBJECT

public:
    using NSScroller::NSScroller;
    ~LTHUDScrollBar() override;

    /// Takes the arrows away.
    void awakeFromNib() override;
    /// Draws the window's own background, and slot and knob where there is a knob.
    void drawRect(const NSRect& dirtyRect) override;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

class QWidget;

/// The radio button of HUD panels, drawn by LTHUDRadioButtonCell.
///
/// Of the radio buttons in one superview that are not in a group of Qt's, one at most is on; turning one on turns the
/// other off, and the arrow keys go from one to the next. It looks the same when it is disabled.
class VXKIT_EXPORT LTHUDRadioButton : public NSButton {
    Q_OBJECT

public:
    /// A radio button without a frame, for a layout of Qt's.
    explicit LTHUDRadioButton(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDRadioButton(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDRadioButton() override;

    /// LTHUDRadioButtonCell.
    [[nodiscard]] NSCellClass cellClass() const override;

    /// Has the cell draw the button and, while it shows that it has the keyboard, adds the ring.
    void drawRect(const NSRect& dirtyRect) override;

private:
    void setUp();
};

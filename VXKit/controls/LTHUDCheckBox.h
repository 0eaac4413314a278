// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QObject>
#include <QSize>
#include <QString>

class QWidget;

/// The check box of HUD panels: a box of 16 points and a bold white title beside it.
///
/// Both lie at the bottom left of the frame; the view is not flipped. It looks the same when it is disabled. For a
/// column of check boxes use LTHUDCheckBoxCell.
class VXKIT_EXPORT LTHUDCheckBox : public NSButton {
    Q_OBJECT

public:
    /// A check box without a frame, for a layout of Qt's.
    explicit LTHUDCheckBox(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDCheckBox(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDCheckBox() override;

    /// Gives the title that was set by other means the control's own looks, in the font of the cell's control size.
    void awakeFromNib() override;
    /// Sets a title with these looks.
    void setTitle(const QString& title) override;

    /// No, unlike other buttons.
    [[nodiscard]] bool isFlipped() const override { return false; }
    /// Draws the box, the title and, while it shows that it has the keyboard, the ring.
    void drawRect(const NSRect& dirtyRect) override;

    /// The box and the title.
    [[nodiscard]] QSize sizeHint() const override;

private:
    void setUp();
    void setWhiteTitle(const QString& title, NSControlSize controlSize);
};

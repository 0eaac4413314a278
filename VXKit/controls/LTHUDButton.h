// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QSize>

class QWidget;

/// The push button of HUD panels: a body of two caps and a stretched fill, with a white title.
///
///     ╭──────────────────────╮  0
///     │        Title         │
///     ╰──────────────────────╯  22, and its shadow to 26
///                               28, the height it is made for
///
/// The body is 26 points high whatever the height of the button, and begins at its top; the title is centred in the
/// whole height, 3 points higher. Disabled, body and title fade. For a button without images see LTHUDFlatButton.
class VXKIT_EXPORT LTHUDButton : public NSButton {
    Q_OBJECT

public:
    /// A button without a frame, for a layout of Qt's.
    explicit LTHUDButton(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDButton(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDButton() override;

    /// Draws body, title and, while it shows that it has the keyboard, the ring; the cell draws nothing.
    void drawRect(const NSRect& dirtyRect) override;

    /// The width of the title and 30 points, at least 96; 28 points high.
    [[nodiscard]] QSize sizeHint() const override;

private:
    void drawBody();
    void drawTitle();
};

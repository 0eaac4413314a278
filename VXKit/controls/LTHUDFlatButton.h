// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButton.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QSize>

class QWidget;

/// A push button for HUD panels that is drawn without images: a dark rounded rectangle that fills its frame, with a
/// thin light edge and a small white title in the middle. Pressed, it lets what is behind shine through.
///
/// It looks the same when it is disabled; where that is to be seen, use LTHUDButton.
class VXKIT_EXPORT LTHUDFlatButton : public NSButton {
    Q_OBJECT

public:
    /// A button without a frame, for a layout of Qt's.
    explicit LTHUDFlatButton(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDFlatButton(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDFlatButton() override;

    /// Draws body, title and, while it shows that it has the keyboard, the ring; the cell draws nothing.
    void drawRect(const NSRect& dirtyRect) override;

    /// The title with room around it, at least 20 points high.
    [[nodiscard]] QSize sizeHint() const override;

private:
    void drawBody();
    void drawTitle();
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSProgressIndicator.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

/// The progress indicator of HUD panels: a light one on a faint disc that fills its frame.
class VXKIT_EXPORT LTHUDProgressIndicator : public NSProgressIndicator {
    Q_OBJECT

public:
    /// One without a frame, for a layout of Qt's.
    explicit LTHUDProgressIndicator(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTHUDProgressIndicator(const NSRect& frame, QWidget* parent = nullptr);
    ~LTHUDProgressIndicator() override;

    /// Draws the disc, and the indicator on it.
    void drawRect(const NSRect& dirtyRect) override;

private:
    void setUp();
};

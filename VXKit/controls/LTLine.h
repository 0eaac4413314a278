// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSBox.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

/// A line between parts of a window.
///
///     ╶──────────────────────╴   in a HUD window: dark above light, from side to side
///       · · ─────────── · ·      in others: a point high, fading out to both ends
///     ▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓▓   more than 5 points high: a dark panel behind other views
class VXKIT_EXPORT LTLine : public NSBox {
    Q_OBJECT

public:
    using NSBox::NSBox;
    ~LTLine() override;

    /// Draws the line or the panel, whichever the window and the height ask for.
    void drawRect(const NSRect& dirtyRect) override;
};

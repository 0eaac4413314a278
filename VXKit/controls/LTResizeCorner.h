// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

class NSEvent;
class QWidget;

/// A grip for the bottom right corner of a window without a frame, which resizes the window when it is dragged.
///
/// Keeps to the window's least and largest size. The grip of 10 points is drawn in from the right edge, at the bottom;
/// the view should be at least as wide, and keep to the window's corner by its autoresizing mask (NSViewMinXMargin,
/// NSViewMaxYMargin). Windows with a frame of the window manager's have borders for this; for the bottom left corner
/// there is LTLeftResizeCorner.
class VXKIT_EXPORT LTResizeCorner : public NSView {
    Q_OBJECT

public:
    /// A corner without a frame, for a nib or a layout of Qt's.
    explicit LTResizeCorner(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTResizeCorner(const NSRect& frame, QWidget* parent = nullptr);
    ~LTResizeCorner() override;

    /// Yes: the window need not be active to be resized.
    [[nodiscard]] bool acceptsFirstMouse(const NSEvent& event) const override;
    /// Begins a drag.
    void mouseDown(const NSEvent& event) override;
    /// Resizes the window, whose frame is set for every event. The top edge stays where it is.
    ///
    /// Travel beyond the least size is held back until the pointer has come back by as much; of the event with which it
    /// does, the rest is dropped. Beyond the largest width nothing is held back.
    void mouseDragged(const NSEvent& event) override;
    /// Draws the grip at the bottom right of the view.
    void drawRect(const NSRect& dirtyRect) override;

private:
    // How far the pointer has gone beyond the least size in this drag, in points.
    float xOverflow = 0;
    float yOverflow = 0;
    bool _wasTooLarge = false; // in this drag, in width
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>

class NSEvent;
class QWidget;

/// A grip for the bottom left corner of a window without a frame, which resizes the window when it is dragged.
///
/// For windows that place themselves, as one that hangs centred under a status item: dragged to the left it makes the
/// window wider, and leaves it to the window's own frame where its left edge goes. It keeps to the window's least size
/// and to no largest one. See LTResizeCorner for any other window.
class VXKIT_EXPORT LTLeftResizeCorner : public NSView {
    Q_OBJECT

public:
    /// A corner without a frame, for a nib or a layout of Qt's.
    explicit LTLeftResizeCorner(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTLeftResizeCorner(const NSRect& frame, QWidget* parent = nullptr);
    ~LTLeftResizeCorner() override;

    /// Begins a drag.
    void mouseDown(const NSEvent& event) override;
    /// Resizes the window, whose frame is set for every event; see LTResizeCorner.
    void mouseDragged(const NSEvent& event) override;
    /// Draws the grip at the bottom left of the view.
    void drawRect(const NSRect& dirtyRect) override;

private:
    // How far the pointer has gone beyond the least size in this drag, in points.
    float xOverflow = 0;
    float yOverflow = 0;
};

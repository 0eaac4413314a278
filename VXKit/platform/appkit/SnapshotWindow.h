// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSWindow.h>

#include <memory>

class NSImage;
class NSImageView;

/// A picture of `window` as it would be on the screen, its background and views, at the screen's pixel ratio, whether
/// it is shown or not. Without the window manager's frame. Null for a window without a size.
[[nodiscard]] VXKIT_EXPORT std::shared_ptr<NSImage> snapshotOfWindow(NSWindow& window);

/// Returns when the window server shows `window`, which was ordered in, or after a quarter of a second in which it did
/// not; the user's input waits. For what must not be seen before, or taken away.
VXKIT_EXPORT void waitUntilShown(NSWindow& window);

/// A window that shows a picture while its frame changes.
///
/// Changing the frame of a window on X11 is neither smooth nor in step with what it paints. So this one covers the
/// whole stage of the play from the beginning, clear except where its picture is, and paints the picture where its
/// frame says; what sticks out of the stage is cut off. Its shadow and its shape follow the picture. It takes neither
/// clicks nor the keyboard, and stands at its pixels past the window manager.
class VXKIT_EXPORT SnapshotWindow : public NSWindow {
    Q_OBJECT

public:
    /// A window at `frame`, which shows `picture` (null shows nothing) stretched to it and will stay within `stage`.
    SnapshotWindow(const NSRect& frame, const NSRect& stage, std::shared_ptr<NSImage> picture);

    /// Where the picture is.
    [[nodiscard]] NSRect frame() const override { return m_pictureFrame; }
    using NSWindow::setFrame;
    /// Moves the picture, not the window; posts what changed as any window does.
    void setFrame(const NSRect& frame, bool display) override;
    /// The stage, whatever `frame` is: there the window itself stays.
    [[nodiscard]] NSRect constrainFrameRect(const NSRect& frame) const override;

protected:
    /// The picture where it is.
    void drawCoverage() const override;

private:
    [[nodiscard]] NSRect pictureOnStage() const;

    NSRect m_stage;
    NSRect m_pictureFrame;
    NSImageView* m_pictureView; // of the content view
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <cstdint>

/// A container that shows one view at a time and slides the next one in as the one before slides out, in a quarter of a
/// second.
///
///     inDirection   0           1           2           3 and any other
///                 ╭────╮      ╭────╮      ╭─↓──╮      ╭─↑──╮
///                 │    ←  new →    │      │    │      │    │        where the new view comes from; the old one
///                 ╰────╯      ╰────╯      ╰────╯      ╰─↑──╯        leaves on the other side
///                                          from top    from below
///
/// The enclosing window may take the size of the new view meanwhile. Two seconds after each switch the window's size
/// becomes its least one, and from then on the view that is shown fills the container again whatever happens to that;
/// until then changes of the container's frame leave the views alone.
///
/// The view shown and the one before it are subviews, and belong to the container as any subview; the one before those
/// is taken out and belongs to the host again.
class VXKIT_EXPORT LTSwitchableView : public NSView {
    Q_OBJECT

public:
    /// A container without a frame, for a form or a layout of Qt's.
    explicit LTSwitchableView(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit LTSwitchableView(const NSRect& frame, QWidget* parent = nullptr);
    ~LTSwitchableView() override;

    /// The view that is shown, or comes into view; null at first. AppKit: `-currentView`.
    [[nodiscard]] QWidget* currentView() const { return m_currentView; }

    /// Switches to `view`; the first one is there at once. With `adjustWindow`, the window's frame takes the size of
    /// the view: it stays in the middle across, and its top edge where it was. Nothing moves where the view is shown
    /// already; the animation group that is opened for it is left open then. Null leaves the container empty, and the
    /// window as it is. AppKit: `-setANewView:inDirection:adjustWindow:`.
    virtual void setANewView(QWidget* view, int inDirection, bool adjustWindow = false);

    /// Whether changes of the frame are ignored for now: 2 from a switch to its settling, else 0.
    [[nodiscard]] std::int32_t animating() const { return m_animating; }

    /// Draws nothing.
    void drawRect(const NSRect& dirtyRect) override;

private:
    void _frameChanged();
    void unsetAnimation();
    void detachUnsetAnimation();
    [[nodiscard]] NSRect adjustedWindow(const ViewCore& newView);

    QPointer<QWidget> m_currentView;
    QPointer<QWidget> _otherView; // shown before the last switch
    std::int32_t m_animating = 0;
};

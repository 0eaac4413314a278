// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QMenu>
#include <QString>

#include <memory>

class NSStatusBar;

/// A length of a status item that is no number of points: as wide as its view.
inline constexpr double NSVariableStatusItemLength = -1;
/// A length of a status item that is no number of points: as wide as the bar is high.
inline constexpr double NSSquareStatusItemLength = -2;

/// An item of the status bar: a view of the application that the desktop shows beside those of other applications, in a
/// tray, in a panel, or in a small window of its own where it has neither. It moves over by itself when these come and
/// go.
///
/// The view is in a window like any other: its window()->frame() is where the item is on the screen, and
/// NSWindowDidMoveNotification tells when that changes. In a panel that is told of the item over the session bus, the
/// frame is an estimate, and a click is told to the view as a left mouse-down, and up, in its middle.
///
/// Made by NSStatusBar::statusItemWithLength; on the bar from when it has a view until removeStatusItem, or until the
/// last holder lets go of it. It must not outlive the application object. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSStatusItem {
    struct Private;
    struct Passkey {};
    friend NSStatusBar;

public:
    /// For NSStatusBar alone.
    NSStatusItem(Passkey, NSStatusBar& statusBar, double length);
    NSStatusItem(const NSStatusItem&) = delete;
    NSStatusItem& operator=(const NSStatusItem&) = delete;
    ~NSStatusItem();

    /// The bar that the item was made by. AppKit: `-statusBar`.
    [[nodiscard]] NSStatusBar& statusBar() const { return m_statusBar; }

    /// The length as it was set: the width in points, or one of the two above. AppKit: `-length`.
    [[nodiscard]] double length() const;
    /// An item that is wider than the desktop lets it be is shown in part. AppKit: `-setLength:`.
    void setLength(double length);

    /// The view; null before there is one. It belongs to the item. AppKit: `-view`.
    [[nodiscard]] NSView* view() const;
    /// Shows `view`, in the size of the item, in place of the one before, which is destroyed. For an item of variable
    /// length, the width that the view has counts. Nothing for a null pointer. AppKit: `-setView:`.
    void setView(std::unique_ptr<NSView> view);

    /// Draws in the current graphics context what the bar has behind an item: with `highlight`, the quiet selection of
    /// an item whose window or menu is open, which shows on dark and on light bars; without, nothing, since the desktop
    /// draws its bar itself. AppKit: `-drawStatusBarBackgroundInRect:withHighlight:`.
    void drawStatusBarBackgroundInRect(const NSRect& rect, bool highlight) const;

    /// A menu for the right mouse button, or however else the desktop lets one ask for a menu; borrowed, null for none.
    /// The left button is the view's. AppKit: `-setMenu:`.
    [[nodiscard]] QMenu* menu() const;
    /// `menu` is not owned; one that is deleted is none any more. AppKit: `-setMenu:`.
    void setMenu(QMenu* menu);

    /// A text for a pointer that rests on the item. AppKit: `-setToolTip:`.
    void setToolTip(const QString& toolTip);

    /// The item's name for screen readers and for lists of items that a desktop may have; at first the application's.
    /// The view alone is what the item looks like. AppKit: `-setTitle:`, of which this is a part.
    void setTitle(const QString& title);

private:
    void removeFromBar();
    [[nodiscard]] bool mayBeAtPoint(const NSPoint& point) const;

    NSStatusBar& m_statusBar;
    std::unique_ptr<Private> m_private;
};

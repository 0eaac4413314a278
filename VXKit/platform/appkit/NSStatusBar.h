// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <memory>
#include <vector>

class NSStatusItem;

/// The place on the desktop where applications show their status items. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSStatusBar {
public:
    NSStatusBar(const NSStatusBar&) = delete;
    NSStatusBar& operator=(const NSStatusBar&) = delete;

    /// The bar of the desktop. AppKit: `+systemStatusBar`.
    [[nodiscard]] static NSStatusBar& systemStatusBar();

    /// The height of an item in points, where the desktop leaves it to the application. Items in a tray have the height
    /// that the tray gives them; so ask the view itself what it has. AppKit: `-thickness`.
    [[nodiscard]] double thickness() const;

    /// A new item, `length` points wide or by one of the lengths in NSStatusItem.h. Never null. It is shown when it has
    /// a view, and for as long as the answer is held. AppKit: `-statusItemWithLength:`.
    [[nodiscard]] std::shared_ptr<NSStatusItem> statusItemWithLength(double length);

    /// Takes `item` from the bar for good; it keeps its view. AppKit: `-removeStatusItem:`.
    void removeStatusItem(NSStatusItem& item);

    /// Whether a click at `point`, in screen coordinates, may have been one on an item of this application. Where the
    /// desktop does not tell where an item is, this is generous. AppKit has no such operation.
    [[nodiscard]] bool hasStatusItemAtPoint(const NSPoint& point) const;

private:
    friend NSStatusItem;
    NSStatusBar() = default;

    std::vector<const NSStatusItem*> m_items;
};

// SPDX-License-Identifier: MIT
#include <VXKit/controls/HUDImage.h>

#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSException.h>
#include <VXKit/platform/graphics/NSGraphics.h>
#include <VXKit/platform/graphics/NSImage.h>
#include <VXKit/support/VXKitResources.h>

#include <memory>

namespace {

/// The image, marked as the view is, or null: a control that lacks a piece of its look is still a control.
std::shared_ptr<NSImage> imageForView(const QString& name, const ViewCore& view) {
    try {
        std::shared_ptr<NSImage> image = VXKitImage(name);
        image->setFlipped(view.isFlipped());
        return image;
    } catch (const NSException&) {
        return nullptr;
    }
}

} // namespace

void drawHUDImage(const QString& name, const NSPoint& point, const ViewCore& view, double fraction) {
    if (const std::shared_ptr<NSImage> image = imageForView(name, view)) {
        image->drawAtPoint(point, NSZeroRect, NSCompositeSourceOver, fraction);
    }
}

void drawHUDImage(const QString& name, const NSRect& rect, const ViewCore& view, double fraction) {
    if (const std::shared_ptr<NSImage> image = imageForView(name, view)) {
        image->drawInRect(rect, NSZeroRect, NSCompositeSourceOver, fraction);
    }
}

QString HUDCheckboxImageName(const NSButtonCell& cell) {
    return QStringLiteral("HUDCheckbox%1%2")
        .arg(cell.isHighlighted() ? QStringLiteral("Pressed") : QStringLiteral("Normal"),
             cell.state() == NSOnState ? QStringLiteral("Checked") : QString());
}

// SPDX-License-Identifier: MIT
// Draws the images that HUD controls are made of; for the controls alone.
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>

#include <QString>

class NSButtonCell;
class ViewCore;

/// Draws the whole image `name` of the kit in its own size, its corner with the smallest coordinates at `point` of
/// `view`, upright whether or not that is flipped, at the opacity `fraction` from 0 to 1. Draws nothing where the kit
/// has no such image.
VXKIT_EXPORT void drawHUDImage(const QString& name, const NSPoint& point, const ViewCore& view, double fraction = 1);

/// The same, stretched to `rect`.
VXKIT_EXPORT void drawHUDImage(const QString& name, const NSRect& rect, const ViewCore& view, double fraction = 1);

/// The name of the image that shows a check box in the state of `cell`.
[[nodiscard]] QString HUDCheckboxImageName(const NSButtonCell& cell);

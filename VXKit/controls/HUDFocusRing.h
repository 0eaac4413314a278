// SPDX-License-Identifier: MIT
// Shows which HUD control has the keyboard; for the controls alone.
#pragma once

#include <VXKit/platform/foundation/NSGeometry.h>

class NSButton;

/// Draws a ring just inside `rect` of `button`, with corners of `radius` points, where the button is to show that it
/// has the keyboard; nothing else. To be called last in its drawRect.
void drawHUDFocusRing(const NSButton& button, const NSRect& rect, double radius);

// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSShadow.h>

#include <VXKit/platform/graphics/NSGraphicsContext.h>

NSShadow::NSShadow() : m_color(NSColor::colorWithCalibratedWhite(0, 1.0 / 3)) {}

void NSShadow::set() const {
    if (NSGraphicsContext* context = NSGraphicsContext::currentContext()) {
        context->setShadow(*this);
    }
}

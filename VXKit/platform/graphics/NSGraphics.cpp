// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSGraphics.h>

#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <QBrush>
#include <QPainter>
#include <QRectF>

#include <initializer_list>

namespace {

constexpr double frameWidth = 1;

// Fills the rectangles as one shape, which casts one shadow.
void fillRects(std::initializer_list<NSRect> rects, NSCompositingOperation operation) {
    NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (context == nullptr) {
        return;
    }
    NSRect bounds;
    for (const NSRect& rect : rects) {
        bounds = NSUnionRect(bounds, rect);
    }
    if (NSIsEmptyRect(bounds)) {
        return;
    }
    const QBrush brush = context->brush(context->fillColor());
    context->draw(NSRectToQRectF(bounds), operation, [&](QPainter& painter) {
        for (const NSRect& rect : rects) {
            painter.fillRect(NSRectToQRectF(rect), brush);
        }
    });
}

} // namespace

void NSRectFill(const NSRect& rect) {
    fillRects({rect}, NSCompositeCopy);
}

void NSRectFillUsingOperation(const NSRect& rect, NSCompositingOperation operation) {
    fillRects({rect}, operation);
}

void NSFrameRect(const NSRect& rect) {
    if (NSWidth(rect) <= 2 * frameWidth || NSHeight(rect) <= 2 * frameWidth) {
        NSRectFill(rect);
        return;
    }
    NSRect bottom;
    NSRect top;
    NSRect left;
    NSRect right;
    NSRect rest = rect;
    NSDivideRect(rest, &bottom, &rest, frameWidth, NSMinYEdge);
    NSDivideRect(rest, &top, &rest, frameWidth, NSMaxYEdge);
    NSDivideRect(rest, &left, &rest, frameWidth, NSMinXEdge);
    NSDivideRect(rest, &right, &rest, frameWidth, NSMaxXEdge);
    fillRects({bottom, top, left, right}, NSCompositeCopy);
}

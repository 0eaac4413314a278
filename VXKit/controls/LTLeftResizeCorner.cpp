// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTLeftResizeCorner.h>

#include <VXKit/controls/HUDImage.h>
#include <VXKit/controls/ResizeOverflow.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSWindow.h>

LTLeftResizeCorner::LTLeftResizeCorner(QWidget* parent) : NSView(parent) {
    setCursor(Qt::SizeBDiagCursor);
}

LTLeftResizeCorner::LTLeftResizeCorner(const NSRect& frame, QWidget* parent) : LTLeftResizeCorner(parent) {
    setFrame(frame);
}

LTLeftResizeCorner::~LTLeftResizeCorner() = default;

void LTLeftResizeCorner::mouseDown(const NSEvent& event) {
    xOverflow = 0;
    yOverflow = 0;
    NSView::mouseDown(event);
}

void LTLeftResizeCorner::mouseDragged(const NSEvent& event) {
    NSWindow* const window = this->window();
    if (!window) {
        return;
    }
    const double dX = event.deltaX();
    const NSSize least = window->minSize();
    NSRect frame = window->frame();

    growDownwards(frame, event.deltaY(), least.height, yOverflow);

    if (xOverflow == 0 && frame.size.width - dX >= least.width) {
        frame.size.width -= dX;
    } else {
        addToOverflow(xOverflow, -dX);
    }
    window->setFrame(frame, true);
}

void LTLeftResizeCorner::drawRect(const NSRect& /*dirtyRect*/) {
    drawHUDImage(QStringLiteral("LeftResizeCorner"), NSZeroPoint, *this);
}

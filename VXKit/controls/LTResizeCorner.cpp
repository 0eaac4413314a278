// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTResizeCorner.h>

#include <VXKit/controls/HUDImage.h>
#include <VXKit/controls/ResizeOverflow.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/NSWindow.h>

namespace {

constexpr double gripLength = 10; // points

} // namespace

LTResizeCorner::LTResizeCorner(QWidget* parent) : NSView(parent) {
    setCursor(Qt::SizeFDiagCursor);
}

LTResizeCorner::LTResizeCorner(const NSRect& frame, QWidget* parent) : LTResizeCorner(parent) {
    setFrame(frame);
}

LTResizeCorner::~LTResizeCorner() = default;

bool LTResizeCorner::acceptsFirstMouse(const NSEvent& /*event*/) const {
    return true;
}

void LTResizeCorner::mouseDown(const NSEvent& event) {
    xOverflow = 0;
    yOverflow = 0;
    _wasTooLarge = false;
    NSView::mouseDown(event);
}

void LTResizeCorner::mouseDragged(const NSEvent& event) {
    NSWindow* const window = this->window();
    if (!window) {
        return;
    }
    const double dX = event.deltaX();
    const double dY = event.deltaY();
    const NSSize least = window->minSize();
    const NSSize largest = window->maxSize();
    NSRect frame = window->frame();

    growDownwards(frame, dY, least.height, yOverflow);

    if ((xOverflow == 0 || _wasTooLarge) && frame.size.width + dX >= least.width) {
        frame.size.width += dX;
        if (_wasTooLarge) {
            xOverflow = static_cast<float>(static_cast<double>(xOverflow) + dX);
        }
    } else {
        addToOverflow(xOverflow, dX);
    }

    if (frame.size.width >= largest.width) {
        _wasTooLarge = true;
        frame.size.width = largest.width;
    }
    if (frame.size.height > largest.height) {
        frame.origin.y += frame.size.height - largest.height;
        frame.size.height = largest.height;
    }
    window->setFrame(frame, true);
}

void LTResizeCorner::drawRect(const NSRect& /*dirtyRect*/) {
    drawHUDImage(QStringLiteral("ResizeCorner"), NSPoint{bounds().size.width - gripLength, 0}, *this);
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSImageView.h>

#include <VXKit/platform/graphics/NSImage.h>

#include <algorithm>
#include <utility>

namespace {

/// The part of `bounds` that a picture of `size` covers.
NSRect placeOfPicture(const NSSize& size, const NSRect& bounds, NSImageScaling scaling) {
    if (scaling == NSScaleToFit) {
        return bounds;
    }
    double scale = 1;
    if (scaling == NSScaleProportionally) {
        scale = std::min({1.0, bounds.size.width / size.width, bounds.size.height / size.height});
    }
    const NSSize scaled{size.width * scale, size.height * scale};
    return {{bounds.origin.x + (bounds.size.width - scaled.width) / 2,
             bounds.origin.y + (bounds.size.height - scaled.height) / 2},
            scaled};
}

} // namespace

NSImageView::NSImageView(QWidget* parent) : NSView(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

NSImageView::NSImageView(const NSRect& frame) : NSImageView(nullptr) {
    setFrame(frame);
}

void NSImageView::setImage(std::shared_ptr<NSImage> image) {
    m_image = std::move(image);
    setNeedsDisplay(true);
}

QPixmap NSImageView::pixmap() const {
    return m_image ? QPixmap::fromImage(m_image->imageForScale(devicePixelRatioF())) : QPixmap();
}

void NSImageView::setPixmap(const QPixmap& pixmap) {
    setImage(pixmap.isNull() ? nullptr : NSImage::initWithQImage(pixmap.toImage()));
}

void NSImageView::setImageScaling(NSImageScaling scaling) {
    m_scaling = scaling;
    setNeedsDisplay(true);
}

void NSImageView::drawRect(const NSRect& /*dirtyRect*/) {
    if (m_image && m_image->isValid()) {
        m_image->drawInRect(placeOfPicture(m_image->size(), bounds(), m_scaling), NSZeroRect, NSCompositeSourceOver, 1);
    }
}

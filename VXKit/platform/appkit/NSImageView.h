// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>

#include <memory>

class NSImage;

/// How a picture gets the size of its view: as it is but not larger than the view, stretched in both directions each
/// for itself, or left as it is. AppKit: `NSImageScaling`.
enum NSImageScaling { NSScaleProportionally = 0, NSScaleToFit = 1, NSScaleNone = 2 };

/// A view that shows a picture, without a frame around it. It takes no input. Stands for AppKit's class of the same
/// name.
class VXKIT_EXPORT NSImageView : public NSView {
public:
    /// AppKit: `-initWithFrame:`.
    explicit NSImageView(const NSRect& frame = NSZeroRect);

    /// The picture, shared; null shows nothing. AppKit: `-setImage:`.
    void setImage(std::shared_ptr<NSImage> image);
    [[nodiscard]] const std::shared_ptr<NSImage>& image() const { return m_image; }

    /// NSScaleProportionally at first. A picture that does not fill the view is in its middle.
    /// AppKit: `-setImageScaling:`.
    void setImageScaling(NSImageScaling scaling);
    [[nodiscard]] NSImageScaling imageScaling() const { return m_scaling; }

    void drawRect(const NSRect& dirtyRect) override;

private:
    std::shared_ptr<NSImage> m_image;
    NSImageScaling m_scaling = NSScaleProportionally;
};

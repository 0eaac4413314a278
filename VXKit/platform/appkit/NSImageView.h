// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSView.h>

#include <QObject>
#include <QPixmap>

#include <memory>

class NSImage;

/// How a picture gets the size of its view. AppKit: `NSImageScaling`.
enum NSImageScaling {
    NSScaleProportionally = 0, ///< as it is, but not larger than the view
    NSScaleToFit = 1,          ///< stretched in both directions, each for itself
    NSScaleNone = 2,           ///< left as it is
};

/// A view that shows a picture, without a frame around it. It takes no input. Stands for AppKit's class of the same
/// name.
class VXKIT_EXPORT NSImageView : public NSView {
    Q_OBJECT
    Q_PROPERTY(QPixmap pixmap READ pixmap WRITE setPixmap)

public:
    /// A view without a frame, for a form or a layout of Qt's.
    explicit NSImageView(QWidget* parent);
    /// AppKit: `-initWithFrame:`.
    explicit NSImageView(const NSRect& frame = NSZeroRect);

    /// The picture, shared; null shows nothing. AppKit: `-setImage:`.
    void setImage(std::shared_ptr<NSImage> image);
    /// AppKit: `-image`.
    [[nodiscard]] const std::shared_ptr<NSImage>& image() const { return m_image; }

    /// The picture for the screen that the view is on; null where there is none.
    [[nodiscard]] QPixmap pixmap() const;
    /// Shows a picture of Qt's, as a form has it.
    void setPixmap(const QPixmap& pixmap);

    /// NSScaleProportionally at first. A picture that does not fill the view is in its middle.
    /// AppKit: `-setImageScaling:`.
    void setImageScaling(NSImageScaling scaling);
    /// AppKit: `-imageScaling`.
    [[nodiscard]] NSImageScaling imageScaling() const { return m_scaling; }

    /// Draws the picture where the scaling puts it; nothing for one that is not valid.
    void drawRect(const NSRect& dirtyRect) override;

private:
    std::shared_ptr<NSImage> m_image;
    NSImageScaling m_scaling = NSScaleProportionally;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <memory>

class NSImage;
class QColor;

/// A colour to draw with: red, green, blue and alpha, each from 0 to 1, or a pattern that repeats an image.
///
/// A value: copy it freely. Components are kept as they were given, clamped to 0 to 1 (NaN counts as 0), and are not
/// multiplied by alpha. The calibrated and the device colour space are both the screen's; there is no colour
/// management.
///
/// A pattern colour holds its image and shows it as it is at the time of drawing. Its tiles stand upright in flipped
/// contexts too, start at the context's pattern phase (see NSGraphicsContext::setPatternPhase) and are never scaled:
/// one pixel of the image for the context's pixel ratio lies on one pixel of the screen. Stands for the AppKit class of
/// the same name.
class VXKIT_EXPORT NSColor {
public:
    /// Opaque black.
    NSColor() = default;

    /// A grey from `white` 0 (black) to 1 (white). AppKit: `+colorWithCalibratedWhite:alpha:`.
    [[nodiscard]] static NSColor colorWithCalibratedWhite(double white, double alpha);
    /// AppKit: `+colorWithDeviceWhite:alpha:`.
    [[nodiscard]] static NSColor colorWithDeviceWhite(double white, double alpha);
    /// AppKit: `+colorWithCalibratedRed:green:blue:alpha:`.
    [[nodiscard]] static NSColor colorWithCalibratedRed(double red, double green, double blue, double alpha);
    /// The colour that repeats `image`, which it shares. A null image makes the clear colour. AppKit:
    /// `+colorWithPatternImage:`.
    [[nodiscard]] static NSColor colorWithPatternImage(std::shared_ptr<const NSImage> image);

    /// White 1, alpha 1. AppKit: `+whiteColor`.
    [[nodiscard]] static NSColor whiteColor();
    /// White 0, alpha 1. AppKit: `+blackColor`.
    [[nodiscard]] static NSColor blackColor();
    /// White 0, alpha 0. AppKit: `+clearColor`.
    [[nodiscard]] static NSColor clearColor();

    /// The same colour with `alpha`. Of a pattern colour, the pattern drawn at that opacity. AppKit:
    /// `-colorWithAlphaComponent:`.
    [[nodiscard]] NSColor colorWithAlphaComponent(double alpha) const;

    /// Red, from 0 to 1; that of a pattern colour is black's, as green and blue are. AppKit: `-redComponent`.
    [[nodiscard]] double redComponent() const { return m_red; }
    /// Green, from 0 to 1. AppKit: `-greenComponent`.
    [[nodiscard]] double greenComponent() const { return m_green; }
    /// Blue, from 0 to 1. AppKit: `-blueComponent`.
    [[nodiscard]] double blueComponent() const { return m_blue; }
    /// Opacity, from 0 to 1, of a pattern colour too. AppKit: `-alphaComponent`.
    [[nodiscard]] double alphaComponent() const { return m_alpha; }

    /// The image that is repeated; null for a plain colour. AppKit: `-patternImage`.
    [[nodiscard]] const std::shared_ptr<const NSImage>& patternImage() const { return m_patternImage; }

    /// Makes this the fill and the stroke colour of the current context; does nothing without one. AppKit: `-set`.
    void set() const;
    /// AppKit: `-setFill`.
    void setFill() const;
    /// AppKit: `-setStroke`.
    void setStroke() const;

    /// The components as Qt's type, for the platform; a pattern is left out.
    [[nodiscard]] QColor qtColor() const;

    /// The same components, exactly, and the very same pattern image.
    friend bool operator==(const NSColor&, const NSColor&) = default;

private:
    NSColor(double red, double green, double blue, double alpha);

    double m_red = 0;
    double m_green = 0;
    double m_blue = 0;
    double m_alpha = 1;
    std::shared_ptr<const NSImage> m_patternImage;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>

/// The soft shadow that everything drawn casts while it is set: fills, strokes, text, images and gradients alike.
///
/// A value: changing a shadow after it was set changes nothing of what is drawn. It stays in force until another one is
/// set or the graphics state is restored. A shadow without blur and offset, or without opacity, is none. Stands for the
/// AppKit class of the same name.
class VXKIT_EXPORT NSShadow {
public:
    /// A shadow of black at an alpha of one third, without blur and offset: setting it ends the one in force.
    NSShadow();

    /// The colour of the shadow under opaque paint; of a pattern colour only the alpha counts. AppKit:
    /// `-setShadowColor:`.
    void setShadowColor(const NSColor& color) { m_color = color; }
    /// AppKit: `-shadowColor`.
    [[nodiscard]] const NSColor& shadowColor() const { return m_color; }

    /// Twice the standard deviation of the Gaussian blur, in points; below 0 and NaN count as 0. Blurs with a deviation
    /// of more than 256 pixels are drawn with one of 256. AppKit: `-setShadowBlurRadius:`.
    void setShadowBlurRadius(double radius) { m_blurRadius = radius > 0 ? radius : 0; }
    /// AppKit: `-shadowBlurRadius`.
    [[nodiscard]] double shadowBlurRadius() const { return m_blurRadius; }

    /// How far the shadow is moved from what casts it, in points, to the right and up, in flipped contexts too; rounded
    /// to whole pixels when drawn. AppKit: `-setShadowOffset:`.
    void setShadowOffset(const NSSize& offset) { m_offset = offset; }
    /// AppKit: `-shadowOffset`.
    [[nodiscard]] const NSSize& shadowOffset() const { return m_offset; }

    /// Makes this the shadow of the current context; does nothing without one. AppKit: `-set`.
    void set() const;

    /// The same colour, blur and offset, exactly.
    friend bool operator==(const NSShadow&, const NSShadow&) = default;

private:
    NSColor m_color;
    double m_blurRadius = 0;
    NSSize m_offset;
};

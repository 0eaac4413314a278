// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

class QFont;

/// The sizes in which controls come. AppKit: `NSControlSize`.
enum NSControlSize {
    NSRegularControlSize = 0, ///< with text of 13 points
    NSSmallControlSize = 1,   ///< with text of 11 points
    NSMiniControlSize = 2,    ///< with text of 9 points
};

/// The system font in a size and weight: Inter, which the kit carries in its resources.
///
/// A value. Text in it has the same widths and the same pixels on every desktop, whatever its language, fonts, screen
/// resolution and smoothing settings: glyphs are placed at fractions of a pixel, neither hinted nor smoothed for the
/// sub-pixels of a screen. Two things a desktop still decides: characters that Inter does not have come from its fonts,
/// and a person who has turned all smoothing of text off gets none, in the same widths. Stands for the
/// AppKit class of the same name, as far as the system font goes.
class VXKIT_EXPORT NSFont {
public:
    /// The system font in its standard size.
    NSFont();

    /// The regular system font, one em `fontSize` points high, rounded to whole points. 0, below and NaN mean
    /// systemFontSize(). AppKit: `+systemFontOfSize:`.
    [[nodiscard]] static NSFont systemFontOfSize(double fontSize);
    /// The bold system font, sizes as above. AppKit: `+boldSystemFontOfSize:`.
    [[nodiscard]] static NSFont boldSystemFontOfSize(double fontSize);

    /// 13 points. AppKit: `+systemFontSize`.
    [[nodiscard]] static double systemFontSize();
    /// 11 points. AppKit: `+smallSystemFontSize`.
    [[nodiscard]] static double smallSystemFontSize();
    /// 13, 11 and 9 points for a regular, a small and a mini control. AppKit: `+systemFontSizeForControlSize:`.
    [[nodiscard]] static double systemFontSizeForControlSize(NSControlSize controlSize);

    /// The size in points, a whole number. AppKit: `-pointSize`.
    [[nodiscard]] double pointSize() const { return m_pointSize; }
    /// Whether it is the bold system font.
    [[nodiscard]] bool isBold() const { return m_bold; }

    /// The font as Qt's type, for the platform, with all that makes it look the same everywhere. Needs an application
    /// object.
    [[nodiscard]] QFont qtFont() const;

    /// The same size and weight.
    friend bool operator==(const NSFont&, const NSFont&) = default;

private:
    NSFont(double fontSize, bool bold);

    int m_pointSize;
    bool m_bold;
};

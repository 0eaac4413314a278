// SPDX-License-Identifier: MIT
// Measures and draws text with the current graphics context. AppKit: the string drawing additions and
// NSAttributedString.
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSShadow.h>

#include <QString>

#include <optional>

/// Where lines stand between the sides of their rectangle. AppKit: `NSTextAlignment`.
enum NSTextAlignment {
    NSLeftTextAlignment = 0,    ///< at the left side
    NSRightTextAlignment = 1,   ///< at the right side
    NSCenterTextAlignment = 2,  ///< in the middle
    NSNaturalTextAlignment = 4, ///< at the left side; at the right for text that is written from right to left
};

/// What becomes of a line wider than its rectangle. AppKit: `NSLineBreakMode`.
enum NSLineBreakMode {
    NSLineBreakByWordWrapping = 0,   ///< it goes on in the next one; a single word that is too wide is broken
    NSLineBreakByClipping = 2,       ///< it is cut off
    NSLineBreakByTruncatingTail = 4, ///< it is shortened, with an ellipsis at its end
};

/// How text looks. AppKit: the attributes dictionary with its paragraph style.
struct NSTextAttributes {
    /// What the text is set in.
    NSFont font = NSFont::systemFontOfSize(12);
    /// The colour of the glyphs.
    NSColor foregroundColor = NSColor::blackColor();
    /// Where lines stand between the sides.
    NSTextAlignment alignment = NSNaturalTextAlignment;
    /// What becomes of a line that is too wide.
    NSLineBreakMode lineBreakMode = NSLineBreakByWordWrapping;
    /// The shadow of this text; where there is none, that of the context stays in force.
    std::optional<NSShadow> shadow = std::nullopt;
    /// The place in the string of the one character that is underlined, the mnemonic of a control's title; a place
    /// outside of the string underlines nothing.
    std::optional<int> underlinedCharacter = std::nullopt;

    /// The same looks, exactly.
    friend bool operator==(const NSTextAttributes&, const NSTextAttributes&) = default;
};

/// The width and height in points, fractions kept, that `string` takes up when nothing limits its width: the advance
/// width of its widest line, spaces at its end included, and the line height for each line. An empty string has one
/// line of no width. AppKit: `-sizeWithAttributes:`.
[[nodiscard]] VXKIT_EXPORT NSSize sizeWithAttributes(const QString& string, const NSTextAttributes& attributes = {});

/// Draws `string` in a rectangle of the size that sizeWithAttributes tells, whose corner with the smallest coordinates
/// is `point`: the bottom left, in a flipped context the top left. Draws nothing without a context. AppKit:
/// `-drawAtPoint:withAttributes:`.
VXKIT_EXPORT void drawAtPoint(const QString& string, const NSPoint& point, const NSTextAttributes& attributes = {});

/// Draws `string` from the top of `rect` downwards, broken into lines of its width and aligned in it; what does not fit
/// is cut off. A rectangle of the very size that sizeWithAttributes tells holds all of the string. AppKit:
/// `-drawInRect:withAttributes:`.
VXKIT_EXPORT void drawInRect(const QString& string, const NSRect& rect, const NSTextAttributes& attributes = {});

/// A string with its looks, the same for all of it. A value. Stands for the AppKit class of the same name.
class VXKIT_EXPORT NSAttributedString {
public:
    /// The empty string in the looks that NSTextAttributes has at first.
    NSAttributedString() = default;
    /// AppKit: `-initWithString:attributes:`.
    explicit NSAttributedString(QString string, NSTextAttributes attributes = {});

    /// AppKit: `-string`.
    [[nodiscard]] const QString& string() const { return m_string; }
    /// The looks. AppKit: `-attributesAtIndex:effectiveRange:`.
    [[nodiscard]] const NSTextAttributes& attributes() const { return m_attributes; }

    /// See sizeWithAttributes. AppKit: `-size`.
    [[nodiscard]] NSSize size() const;
    /// See the function of that name. AppKit: `-drawAtPoint:`.
    void drawAtPoint(const NSPoint& point) const;
    /// See the function of that name. AppKit: `-drawInRect:`.
    void drawInRect(const NSRect& rect) const;

    /// The same text in the same looks, exactly.
    friend bool operator==(const NSAttributedString&, const NSAttributedString&) = default;

private:
    QString m_string;
    NSTextAttributes m_attributes;
};

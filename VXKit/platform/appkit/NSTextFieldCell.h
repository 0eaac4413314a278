// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSCell.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QCache>
#include <QString>

/// A line of text, in the middle of its height, 3 points from the sides; what is too long ends in an ellipsis.
///
/// For the rows of a table; text that stands by itself is an NSTextField. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSTextFieldCell : public NSCell {
public:
    NSTextFieldCell();
    ~NSTextFieldCell() override;

    /// The text; empty at first. AppKit: `-stringValue`.
    [[nodiscard]] const QString& stringValue() const { return m_string; }
    /// A line break is drawn as a space. AppKit: `-setStringValue:`.
    void setStringValue(const QString& string) { m_string = string; }
    /// The number that the text begins with, else 0.
    [[nodiscard]] int intValue() const override;
    /// Sets the text to the digits of `value`.
    void setIntValue(int value) override;

    /// The system font in its standard size, at first. AppKit: `-font`.
    [[nodiscard]] NSFont font() const { return m_attributes.font; }
    /// Counts for what is drawn from now on. AppKit: `-setFont:`.
    void setFont(const NSFont& font);
    /// Black at first. AppKit: `-textColor`.
    [[nodiscard]] NSColor textColor() const { return m_attributes.foregroundColor; }
    /// Counts for what is drawn from now on. AppKit: `-setTextColor:`.
    void setTextColor(const NSColor& color) { m_attributes.foregroundColor = color; }
    /// The natural side, at first. AppKit: `-alignment`.
    [[nodiscard]] NSTextAlignment alignment() const { return m_attributes.alignment; }
    /// Counts for what is drawn from now on. AppKit: `-setAlignment:`.
    void setAlignment(NSTextAlignment alignment) { m_attributes.alignment = alignment; }

    /// The text in one line with 3 points at either side, one line high.
    [[nodiscard]] NSSize cellSize() const override;
    /// Draws the text in the middle of the height of `cellFrame`; an ellipsis stands for what is too long.
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;

private:
    [[nodiscard]] double lineHeight() const;
    [[nodiscard]] double widthOf(const QString& line) const;

    QString m_string;
    NSTextAttributes m_attributes;
    mutable double m_lineHeight = 0;          // 0: not known
    mutable QCache<QString, double> m_widths; // of the lines drawn last
};

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

    /// AppKit: `-stringValue`, `-setStringValue:`. A line break is drawn as a space.
    [[nodiscard]] const QString& stringValue() const { return m_string; }
    void setStringValue(const QString& string) { m_string = string; }
    [[nodiscard]] int intValue() const override;
    void setIntValue(int value) override;

    /// The system font in its standard size, black, at the natural side, at first.
    [[nodiscard]] NSFont font() const { return m_attributes.font; }
    void setFont(const NSFont& font);
    [[nodiscard]] NSColor textColor() const { return m_attributes.foregroundColor; }
    void setTextColor(const NSColor& color) { m_attributes.foregroundColor = color; }
    [[nodiscard]] NSTextAlignment alignment() const { return m_attributes.alignment; }
    void setAlignment(NSTextAlignment alignment) { m_attributes.alignment = alignment; }

    [[nodiscard]] NSSize cellSize() const override;
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;

private:
    [[nodiscard]] double lineHeight() const;
    [[nodiscard]] double widthOf(const QString& line) const;

    QString m_string;
    NSTextAttributes m_attributes;
    mutable double m_lineHeight = 0;          // 0: not known
    mutable QCache<QString, double> m_widths; // of the lines drawn last
};

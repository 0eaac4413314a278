// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/graphics/NSColor.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QClipboard>
#include <QColor>
#include <QFont>
#include <QLabel>
#include <QObject>
#include <QRect>
#include <QString>

#include <memory>

class WrappedText;
struct TextRange;

extern template class VXKIT_EXPORT ViewOf<QLabel>;

/// Static text: plain, without a border and a background, broken into the lines of its frame.
///
/// The text begins at the left edge of the frame and at its top, and its lines lie one line height of the font apart,
/// so that a frame as high as n times the height of attributedStringValue holds n lines. Text that takes more than the
/// frame has is drawn in a slightly smaller size of the font, down to two points smaller; what is too long even then
/// ends in an ellipsis and is told whole by a tool tip. The text is never taken for markup.
///
/// It takes no input, unless it is made selectable. A screen reader is told a label with the text as its name. For text
/// that is typed see LTHUDTextField.
///
/// Stands for AppKit's class of the same name, as far as it shows text.
class VXKIT_EXPORT NSTextField : public ViewOf<QLabel> {
    Q_OBJECT
    Q_PROPERTY(QColor textColor READ widgetTextColor WRITE setTextColor)
    Q_PROPERTY(bool selectable READ isSelectable WRITE setSelectable)
    // Designer's fonts are not the kit's.
    Q_PROPERTY(QFont font READ widgetFont DESIGNABLE false STORED false)

public:
    /// A field without a frame, for a layout of Qt's.
    explicit NSTextField(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit NSTextField(const NSRect& frame, QWidget* parent = nullptr);
    ~NSTextField() override;

    /// The text; empty at first. AppKit: `-stringValue`.
    [[nodiscard]] QString stringValue() const;
    /// Shows `string` as it is, with its line breaks. AppKit: `-setStringValue:`.
    void setStringValue(const QString& string);

    /// The font as it was set, whatever size the text is drawn in; the system font in its standard size at first.
    /// AppKit: `-font`, `-setFont:`.
    [[nodiscard]] NSFont font() const { return m_font; }
    /// Lays the text out anew. AppKit: `-setFont:`.
    void setFont(const NSFont& font);

    /// Black at first. Text of a disabled field is drawn paler. AppKit: `-textColor`, `-setTextColor:`.
    [[nodiscard]] NSColor textColor() const { return m_textColor; }
    /// Redraws the text. AppKit: `-setTextColor:`.
    void setTextColor(const NSColor& color);
    /// The same for a colour of Qt's, as forms have them; one that is not valid is black.
    void setTextColor(const QColor& color);

    /// Whether text can be selected, with the mouse or, once it was clicked, with the keyboard, and copied. No.
    /// AppKit: `-isSelectable`, `-setSelectable:`.
    [[nodiscard]] bool isSelectable() const { return m_isSelectable; }
    /// Lets a click give the field the keyboard; where it no longer does, nothing stays selected. AppKit:
    /// `-setSelectable:`.
    void setSelectable(bool flag);
    /// AppKit: `-selectText:`. Selects all of it; nothing where it is not selectable.
    void selectText(QObject* sender);
    /// What is selected. Hides QLabel's, which knows nothing of it.
    [[nodiscard]] QString selectedText() const;

    /// The text with its looks; its size is that of text which nothing limits. AppKit: `-attributedStringValue`.
    [[nodiscard]] NSAttributedString attributedStringValue() const;

    /// Draws the text in its colour, paler where the field is disabled, with what is selected.
    void drawRect(const NSRect& dirtyRect) override;

protected:
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    /// Selects by the mouse and the keyboard where that is wanted; all else is the label's.
    void handleAsWidget(QEvent& event) override;
    /// As high as the frame at least, so that the last line is not cut.
    [[nodiscard]] QRect geometryForFrame(const QRectF& frame) const override;

private:
    struct Private;

    [[nodiscard]] QColor widgetTextColor() const;
    [[nodiscard]] const QFont& widgetFont() const { return QLabel::font(); }
    [[nodiscard]] const WrappedText& wrapped() const;
    void select(const TextRange& range);
    void selectByMouse(QMouseEvent& event);
    void selectByKey(QKeyEvent& event);
    void copy(QClipboard::Mode mode) const;

    NSFont m_font;
    NSColor m_textColor = NSColor::blackColor();
    bool m_isSelectable = false;
    std::unique_ptr<Private> m_private;
};

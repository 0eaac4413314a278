// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QClipboard>
#include <QFont>
#include <QLineEdit>
#include <QObject>
#include <QString>

class QMenu;

extern template class VXKIT_EXPORT ViewOf<QLineEdit>;

/// A line edit of Qt's as a view of one line of plain text, without a frame and a background.
///
/// Text that comes in with line breaks, whichever way (pasted, dropped, from an input method, set), has a space for
/// each of them; styled text comes in plain. Undoing a paste takes it back whole. Everything else is Qt's: selection,
/// input methods, clipboard, undo, shortcuts, menu, accessibility.
///
/// The class's own painting is a white text, selection and caret; it is meant for dark grounds. The selection is
/// translucent, so that the ground shows; text of a disabled field is paler.
class VXKIT_EXPORT PlainLineEdit : public ViewOf<QLineEdit> {
    Q_OBJECT
    // Designer's fonts are not the kit's.
    Q_PROPERTY(QFont font READ widgetFont DESIGNABLE false STORED false)

public:
    /// An empty field without a frame, for a layout of Qt's.
    explicit PlainLineEdit(QWidget* parent = nullptr);

    /// The text. AppKit: `-stringValue`.
    [[nodiscard]] QString stringValue() const;
    /// A null string is the empty one. AppKit: `-setStringValue:`.
    void setStringValue(const QString& string);

    /// The system font of 12 points at first. AppKit: `-font`, `-setFont:`.
    [[nodiscard]] NSFont font() const { return m_font; }
    /// AppKit: `-setFont:`.
    void setFont(const NSFont& font);

    /// Whether the view gets the keys of its window, be that active or not.
    [[nodiscard]] bool isFirstResponder() const;

    /// Inserts the text of the clipboard in place of the selection. Nothing where the field is read-only.
    void pasteFromClipboard(QClipboard::Mode mode = QClipboard::Clipboard);

    /// Qt's menu. Hides QLineEdit's, whose entry for pasting knows nothing of line breaks.
    [[nodiscard]] QMenu* createStandardContextMenu();

    /// The text, selection and caret in white, throwing the shadow in force.
    void drawRect(const NSRect& dirtyRect) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    /// Pastes without line breaks, by the keys for it and by the middle mouse button; all else is the line edit's.
    void handleAsWidget(QEvent& event) override;
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private:
    class LineBreakRemover;

    [[nodiscard]] const QFont& widgetFont() const { return QLineEdit::font(); }
    void applyColors();
    void beginUndoStep();

    NSFont m_font;
    bool m_isGoingToDrawAll = false;
};

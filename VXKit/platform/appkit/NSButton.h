// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSButtonCell.h>
#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QAbstractButton>
#include <QObject>
#include <QSize>
#include <QString>

#include <memory>
#include <optional>

class QFocusEvent;

extern template class VXKIT_EXPORT ViewOf<QAbstractButton>;

/// A button, drawn by its cell.
///
/// It is one of Qt's, which it takes the mouse, the keyboard, groups, shortcuts and accessibility from: a button that
/// can be checked is a check box, or where it is exclusive by itself (autoExclusive) a radio button. The action is
/// clicked(); connect to it. A title is written as Qt wants it: `&Save` is clicked by Alt+S and drawn with its S
/// underlined, `&&` is an ampersand.
///
/// Its own coordinates are flipped, as a control's are. Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSButton : public ViewOf<QAbstractButton> {
    Q_OBJECT
    Q_PROPERTY(int tag READ tag WRITE setTag)

public:
    /// A button without a frame, for a layout of Qt's.
    explicit NSButton(QWidget* parent = nullptr);
    /// AppKit: `-initWithFrame:`.
    explicit NSButton(const NSRect& frame, QWidget* parent = nullptr);
    ~NSButton() override;

    /// What draws the button; made by cellClass() when it is first asked for. The button owns it.
    [[nodiscard]] NSButtonCell& cell() const;
    /// The class of the cells that buttons of this class get by themselves. Here: NSButtonCell. AppKit: `+cellClass`.
    [[nodiscard]] virtual NSCellClass cellClass() const;
    /// Gives the button another cell, which then shows what the button holds; the one before is deleted. Null: one of
    /// the button's own class, when it is next asked for. AppKit: `-setCell:`.
    void setCell(std::unique_ptr<NSButtonCell> cell);

    /// The title as it was set, the marks of its mnemonic included.
    [[nodiscard]] QString title() const { return text(); }
    /// Sets a title with plain looks. AppKit: `-setTitle:`.
    virtual void setTitle(const QString& title);
    /// The title as it is drawn: without the marks.
    [[nodiscard]] QString displayTitle() const;
    /// The title with its looks; plain are black in the system font of the cell's control size. AppKit:
    /// `-attributedTitle`.
    [[nodiscard]] NSAttributedString attributedTitle() const;
    /// Sets title and looks. The looks stay when the text changes by Qt's own ways. AppKit: `-setAttributedTitle:`.
    void setAttributedTitle(const NSAttributedString& title);

    /// NSOnState or NSOffState; always off for a button that cannot be checked. AppKit: `-state`.
    [[nodiscard]] int state() const { return isChecked() ? NSOnState : NSOffState; }
    /// Anything but NSOffState is on. Nothing for a button that cannot be checked. AppKit: `-setState:`.
    void setState(int state) { setChecked(state != NSOffState); }

    /// A number that the button is known by, 0 at first. AppKit: `-tag`.
    [[nodiscard]] int tag() const { return m_tag; }
    /// AppKit: `-setTag:`.
    void setTag(int tag) { m_tag = tag; }

    /// Shows the button pressed for a moment and then clicks it, after this has returned. `sender` is not looked at.
    /// Nothing while the button is disabled. AppKit: `-performClick:`.
    void performClick(QObject* sender);

    /// Whether the button is to show that it has the keyboard: not where it got it by a click of the mouse.
    [[nodiscard]] bool showsFirstResponder() const { return hasFocus() && m_showsFirstResponder; }

    /// Yes, as a control's are.
    [[nodiscard]] bool isFlipped() const override { return true; }
    /// Draws the cell over the whole button.
    void drawRect(const NSRect& dirtyRect) override;
    /// Clicks the button when the key is the cell's key equivalent and the button can be seen and clicked. A key that
    /// is held down clicks once.
    bool performKeyEquivalent(const NSEvent& event) override;

    /// The size of the cell, for Qt's layouts.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    mutable std::unique_ptr<NSButtonCell> m_cell;
    std::optional<NSTextAttributes> m_titleAttributes; // of a title with looks of its own
    int m_tag = 0;
    bool m_showsFirstResponder = true;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>
#include <VXKit/platform/appkit/NSCell.h>
#include <VXKit/platform/foundation/NSGeometry.h>
#include <VXKit/platform/graphics/NSFont.h>
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <QString>

#include <memory>

class NSButton;
class QObject;
class ViewCore;

/// The state of a cell that is off.
inline constexpr int NSOffState = 0;
/// The state of a cell that is on.
inline constexpr int NSOnState = 1;
/// The state between the two. A cell of two states, as NSButtonCell is, takes it for on.
inline constexpr int NSMixedState = -1;

/// What a button shows, and how it is drawn.
///
/// The cell of a button has nothing of its own but its key equivalent and its control size: all else is read from the
/// button and set in it. One without a button, as a table draws for each of its rows in turn, keeps its own values;
/// nobody is told when they change. Subclass it to draw otherwise.
///
/// Not a QObject: an action is the button's clicked(). Stands for AppKit's class of the same name.
class VXKIT_EXPORT NSButtonCell : public NSCell {
public:
    /// A cell without a button, a title and a key equivalent.
    NSButtonCell();
    ~NSButtonCell() override;

    /// The button that the cell belongs to, which owns it; null for a cell without one. AppKit: `-controlView`.
    [[nodiscard]] NSButton* controlView() const { return m_controlView; }

    /// The title as it was set, the marks of its mnemonic included.
    [[nodiscard]] QString title() const;
    /// Sets the title, of the button where there is one. AppKit: `-setTitle:`.
    void setTitle(const QString& title);
    /// The title without these marks, with the looks `attributes` and its mnemonic underlined.
    [[nodiscard]] NSAttributedString attributedDisplayTitle(const NSTextAttributes& attributes) const;

    /// NSOnState or NSOffState; always off for a button that cannot be checked.
    [[nodiscard]] int state() const;
    /// Anything but NSOffState is on. Nothing for a button that cannot be checked.
    void setState(int state);
    /// The state as a number, 0 or 1. AppKit: `-intValue`.
    [[nodiscard]] int intValue() const override { return state(); }
    /// Here: setState. AppKit: `-setIntValue:`.
    void setIntValue(int value) override;

    /// Whether it can be clicked. A cell without a button can, at first. AppKit: `-isEnabled`.
    [[nodiscard]] bool isEnabled() const;
    /// Sets that of the button where there is one. AppKit: `-setEnabled:`.
    void setEnabled(bool flag);

    /// Whether the cell looks pressed: while the mouse or the space bar is held down on its button, and for a moment
    /// when the button is clicked by other means.
    [[nodiscard]] bool isHighlighted() const;
    /// Sets that of the button where there is one. AppKit: `-setHighlighted:`.
    void setHighlighted(bool flag);

    /// Regular at first. AppKit: `-controlSize`.
    [[nodiscard]] NSControlSize controlSize() const { return m_controlSize; }
    /// Redraws nothing. AppKit: `-setControlSize:`.
    void setControlSize(NSControlSize controlSize) { m_controlSize = controlSize; }

    /// The key that clicks the button wherever the keyboard is in its window: the character it makes. Escape (U+001B)
    /// and Return (U+000D, the keypad's Enter too) act by themselves, other control characters too, and any other key
    /// together with Command. Empty, as it is at first: none. AppKit: `-keyEquivalent`.
    [[nodiscard]] const QString& keyEquivalent() const { return m_keyEquivalent; }
    /// Counts for the next key. AppKit: `-setKeyEquivalent:`.
    void setKeyEquivalent(const QString& keyEquivalent) { m_keyEquivalent = keyEquivalent; }

    /// Clicks the button, see NSButton::performClick. A cell without one goes to its other state. Nothing while it is
    /// disabled. AppKit: `-performClick:`.
    void performClick(QObject* sender);

    /// The room that the cell needs, in points. Here: what the desktop's style wants for a button of its own. AppKit:
    /// `-cellSize`.
    [[nodiscard]] NSSize cellSize() const override;

    /// Draws the cell in `cellFrame` of `controlView`, in the current graphics context. Here: a button in the desktop's
    /// style. AppKit: `-drawWithFrame:inView:`.
    void drawWithFrame(const NSRect& cellFrame, ViewCore& controlView) override;

private:
    friend class NSButton;

    NSButton* m_controlView = nullptr;
    NSControlSize m_controlSize = NSRegularControlSize;
    QString m_keyEquivalent;
    // Of a cell without a button.
    QString m_title;
    int m_state = NSOffState;
    bool m_isEnabled = true;
    bool m_isHighlighted = false;
};

/// A class of cells: what makes one. AppKit: a `Class`.
using NSCellClass = std::unique_ptr<NSButtonCell> (*)();

/// The class of cells that are `Cell`s.
template <class Cell>
[[nodiscard]] NSCellClass NSCellClassOf() {
    return []() -> std::unique_ptr<NSButtonCell> { return std::make_unique<Cell>(); };
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSButton.h>

#include <VXKit/platform/appkit/KeyCodes.h>
#include <VXKit/platform/appkit/NSEvent.h>
#include <VXKit/platform/appkit/TitleMnemonic.h>
#include <VXKit/platform/graphics/NSFont.h>

#include <QChar>
#include <QFocusEvent>

#include <cmath>
#include <utility>

template class ViewOf<QAbstractButton>;

namespace {

constexpr QChar escapeCharacter(u'\x1b');
constexpr QChar returnCharacter(u'\r');

bool isControlCharacter(const QString& text) {
    return text.size() == 1 && text.at(0).category() == QChar::Other_Control;
}

/// Whether the key of `event` makes the character `text`, by itself or with other characters on the same key.
bool makes(const QString& text, const NSEvent& event) {
    if (text == escapeCharacter && event.keyCode() == NSEscapeKeyCode) {
        return true;
    }
    if (text == returnCharacter && isReturnOrEnter(event)) {
        return true;
    }
    return event.charactersIgnoringModifiers() == text;
}

bool isKeyEquivalent(const QString& keyEquivalent, const NSEvent& event) {
    if (event.type() != NSKeyDown || keyEquivalent.isEmpty() || !makes(keyEquivalent, event)) {
        return false;
    }
    const unsigned held =
        event.modifierFlags() & (NSShiftKeyMask | NSControlKeyMask | NSAlternateKeyMask | NSCommandKeyMask);
    // Shift is in the character already.
    return isControlCharacter(keyEquivalent) ? held == 0 : (held & ~NSShiftKeyMask) == NSCommandKeyMask;
}

/// Whether the keyboard comes or goes with the whole window, or for as long as a menu is open.
bool isFocusOfWindow(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

} // namespace

NSButton::NSButton(QWidget* parent) : ViewOf<QAbstractButton>(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

NSButton::NSButton(const NSRect& frame, QWidget* parent) : NSButton(parent) {
    ViewOf<QAbstractButton>::setFrame(frame);
}

NSButton::~NSButton() = default;

NSButtonCell& NSButton::cell() const {
    if (!m_cell) {
        m_cell = cellClass()();
        m_cell->m_controlView = const_cast<NSButton*>(this);
    }
    return *m_cell;
}

NSCellClass NSButton::cellClass() const {
    return NSCellClassOf<NSButtonCell>();
}

void NSButton::setCell(std::unique_ptr<NSButtonCell> cell) {
    m_cell = std::move(cell);
    if (m_cell) {
        m_cell->m_controlView = this;
    }
    updateGeometry();
    update();
}

void NSButton::setTitle(const QString& title) {
    m_titleAttributes.reset();
    setText(title);
    updateGeometry();
    update();
}

QString NSButton::displayTitle() const {
    return titleWithMnemonicUnderlined(text()).string();
}

NSAttributedString NSButton::attributedTitle() const {
    if (m_titleAttributes) {
        return NSAttributedString(text(), *m_titleAttributes);
    }
    const double fontSize = NSFont::systemFontSizeForControlSize(cell().controlSize());
    return NSAttributedString(text(), {.font = NSFont::systemFontOfSize(fontSize)});
}

void NSButton::setAttributedTitle(const NSAttributedString& title) {
    m_titleAttributes = title.attributes();
    setText(title.string());
    updateGeometry();
    update();
}

void NSButton::performClick(QObject* /*sender*/) {
    animateClick();
}

void NSButton::drawRect(const NSRect& /*dirtyRect*/) {
    cell().drawWithFrame(bounds(), *this);
}

bool NSButton::performKeyEquivalent(const NSEvent& event) {
    if (!isEnabled() || !isVisible() || !isKeyEquivalent(cell().keyEquivalent(), event)) {
        return ViewOf<QAbstractButton>::performKeyEquivalent(event);
    }
    if (!event.isARepeat()) {
        performClick(this);
    }
    return true;
}

QSize NSButton::sizeHint() const {
    const NSSize size = cell().cellSize();
    return {static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height))};
}

void NSButton::focusInEvent(QFocusEvent* event) {
    if (!isFocusOfWindow(event->reason())) {
        m_showsFirstResponder = event->reason() != Qt::MouseFocusReason;
    }
    QAbstractButton::focusInEvent(event);
}

void NSButton::focusOutEvent(QFocusEvent* event) {
    // The next time the keyboard may come with the window.
    if (!isFocusOfWindow(event->reason())) {
        m_showsFirstResponder = true;
    }
    QAbstractButton::focusOutEvent(event);
}

// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDTextField.h>

namespace {

constexpr std::uint16_t vKey = 9;

// Points.
// Around the text, besides the 2 points at its sides and the 1 above that a line edit of Qt's has by itself: it begins
// 10 from the left and 4 from the top.
constexpr int sideMargin = 8;
constexpr int topMargin = 3;

} // namespace

LTHUDTextField::LTHUDTextField(QWidget* parent)
    : LTHUDLineEdit({.shadowBlurRadius = 2, .boundsShift = {0, 4}}, parent) {
    setAlignment(Qt::AlignLeading | Qt::AlignTop);
    setTextMargins(sideMargin, topMargin, sideMargin, 0);
}

LTHUDTextField::LTHUDTextField(const NSRect& frame, QWidget* parent) : LTHUDTextField(parent) {
    setFrame(frame);
}

NSColor LTHUDTextField::insertionPointColor() const {
    return NSColor::whiteColor();
}

void LTHUDTextField::paste(QObject* /*sender*/) {
    pasteFromClipboard();
}

void LTHUDTextField::keyDown(const NSEvent& event) {
    if (event.keyCode() == vKey && (event.modifierFlags() & NSCommandKeyMask) != 0) {
        paste(nullptr);
        return;
    }
    LTHUDLineEdit::keyDown(event);
}

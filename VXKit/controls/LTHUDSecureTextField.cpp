// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDSecureTextField.h>

namespace {

// Points.
// Besides the 2 points that a line edit of Qt's has by itself: the dots begin 10 from the left.
constexpr int dotsMargin = 8;

} // namespace

LTHUDSecureTextField::LTHUDSecureTextField(QWidget* parent)
    : LTHUDLineEdit({.shadowBlurRadius = 1, .boundsShift = {4, 0}}, parent) {
    setEchoMode(QLineEdit::Password);
    setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    setTextMargins(dotsMargin, 0, dotsMargin, 0);
}

LTHUDSecureTextField::LTHUDSecureTextField(const NSRect& frame, QWidget* parent) : LTHUDSecureTextField(parent) {
    setFrame(frame);
}

NSFocusRingType LTHUDSecureTextField::focusRingType() const {
    return NSFocusRingTypeNone;
}

// SPDX-License-Identifier: MIT
#include <VXKit/controls/LTHUDSecureTextField.h>

namespace {

// Points.
constexpr double shadowBlurRadius = 1;
constexpr NSPoint boundsShift{4, 0};
// Besides the 2 points that a line edit of Qt's has by itself: the dots begin 10 from the left.
constexpr int sideMargin = 8;

} // namespace

LTHUDSecureTextField::LTHUDSecureTextField(QWidget* parent) : LTHUDLineEdit({shadowBlurRadius, boundsShift}, parent) {
    setEchoMode(QLineEdit::Password);
    setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    setTextMargins(sideMargin, 0, sideMargin, 0);
}

LTHUDSecureTextField::LTHUDSecureTextField(const NSRect& frame, QWidget* parent) : LTHUDSecureTextField(parent) {
    setFrame(frame);
}

NSFocusRingType LTHUDSecureTextField::focusRingType() const {
    return NSFocusRingTypeNone;
}

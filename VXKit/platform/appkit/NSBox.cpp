// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSBox.h>

template class ViewOf<QFrame>;

NSBox::NSBox(QWidget* parent) : ViewOf<QFrame>(parent) {}

NSBox::NSBox(const NSRect& frame, QWidget* parent) : NSBox(parent) {
    ViewOf<QFrame>::setFrame(frame);
}

NSBox::~NSBox() = default;

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/platform/appkit/NSTextField.h>

/// A text as the program's dark windows have it: white, of 11 points. Nibs know it by this name.
class SmallText : public NSTextField {
public:
    explicit SmallText(QWidget* parent = nullptr) : NSTextField(parent) {
        setFont(NSFont::systemFontOfSize(11));
        setTextColor(NSColor::whiteColor());
    }
};

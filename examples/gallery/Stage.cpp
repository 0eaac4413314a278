// SPDX-License-Identifier: MIT
#include "Stage.h"

namespace {

constexpr double textWhite = 0.82;

} // namespace

NSTextField& Stage::putText(const NSRect& frame, const QString& text, double fontSize) {
    auto& field = put<NSTextField>(frame);
    makeWhite(field, text, NSFont::systemFontOfSize(fontSize));
    field.setTextColor(NSColor::colorWithCalibratedWhite(textWhite, 1));
    return field;
}

void makeWhite(NSTextField& field, const QString& text, const NSFont& font) {
    field.setStringValue(text);
    field.setFont(font);
    field.setTextColor(NSColor::whiteColor());
}

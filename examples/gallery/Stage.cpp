// SPDX-License-Identifier: MIT
#include "Stage.h"

namespace {

constexpr double explainingWhite = 0.82;

} // namespace

NSTextField& Stage::putText(const NSRect& frame, const QString& text, double fontSize) {
    auto& field = put<NSTextField>(frame);
    makeExplaining(field, text, NSFont::systemFontOfSize(fontSize));
    return field;
}

void makeWhite(NSTextField& field, const QString& text, const NSFont& font) {
    field.setStringValue(text);
    field.setFont(font);
    field.setTextColor(NSColor::whiteColor());
}

void makeExplaining(NSTextField& field, const QString& text, const NSFont& font) {
    makeWhite(field, text, font);
    field.setTextColor(NSColor::colorWithCalibratedWhite(explainingWhite, 1));
}

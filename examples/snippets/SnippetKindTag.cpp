// SPDX-License-Identifier: MIT
#include "SnippetKindTag.h"

#include <VXKit/platform/graphics/NSBezierPath.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QSize>

#include <cmath>

namespace {

constexpr double pillAlpha = 0.16; // of white

} // namespace

SnippetKindTag::SnippetKindTag(SnippetKind kind) : LTNameTag(nameOfKind(kind)), m_kind(kind) {
    const NSSize size = bounds().size;
    // Room for the ends of the pill beside the word.
    setFixedSize(static_cast<int>(std::ceil(size.width + size.height / 2)), static_cast<int>(std::ceil(size.height)));
}

void SnippetKindTag::drawRect(const NSRect& dirtyRect) {
    const double radius = NSHeight(bounds()) / 2;
    NSColor::colorWithCalibratedWhite(1.0, pillAlpha).setFill();
    NSBezierPath::bezierPathWithRoundedRect(bounds(), radius, radius).fill();
    LTNameTag::drawRect(dirtyRect);
}

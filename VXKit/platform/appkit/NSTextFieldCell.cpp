// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/NSTextFieldCell.h>

#include <VXKit/platform/appkit/NSView.h>
#include <VXKit/platform/foundation/NSPropertyList.h>
#include <VXKit/platform/graphics/NSGraphicsContext.h>

#include <algorithm>
#include <cmath>

namespace {

// In points.
constexpr double sideMargin = 3;

constexpr int mostWidths = 500; // more than the cells that a person sees at a time

bool breaksLine(QChar character) {
    return character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

QString oneLine(const QString& text) {
    if (std::none_of(text.begin(), text.end(), breaksLine)) {
        return text;
    }
    QString line = text;
    std::replace_if(line.begin(), line.end(), breaksLine, QChar(u' '));
    return line;
}

} // namespace

NSTextFieldCell::NSTextFieldCell() : m_widths(mostWidths) {
    m_attributes.font = NSFont::systemFontOfSize(NSFont::systemFontSize());
}

NSTextFieldCell::~NSTextFieldCell() = default;

int NSTextFieldCell::intValue() const {
    return NSIntValue(NSPropertyList(m_string));
}

void NSTextFieldCell::setIntValue(int value) {
    m_string = QString::number(value);
}

void NSTextFieldCell::setFont(const NSFont& font) {
    m_attributes.font = font;
    m_lineHeight = 0;
    m_widths.clear();
}

double NSTextFieldCell::lineHeight() const {
    if (m_lineHeight <= 0) {
        m_lineHeight = sizeWithAttributes({}, m_attributes).height;
    }
    return m_lineHeight;
}

double NSTextFieldCell::widthOf(const QString& line) const {
    if (const double* known = m_widths.object(line)) {
        return *known;
    }
    const double width = sizeWithAttributes(line, m_attributes).width;
    m_widths.insert(line, new double(width));
    return width;
}

NSSize NSTextFieldCell::cellSize() const {
    return {widthOf(oneLine(m_string)) + 2 * sideMargin, lineHeight()};
}

void NSTextFieldCell::drawWithFrame(const NSRect& cellFrame, ViewCore& /*controlView*/) {
    const NSGraphicsContext* context = NSGraphicsContext::currentContext();
    if (m_string.isEmpty() || !context) {
        return;
    }
    NSRect box = NSInsetRect(cellFrame, sideMargin, (NSHeight(cellFrame) - lineHeight()) / 2);
    // Rows of one table have their text at the same height to the pixel.
    const double pixelRatio = context->pixelRatio();
    box.origin.y = std::floor(box.origin.y * pixelRatio) / pixelRatio;
    // A line that is known to fit need not be laid out a second time to find where to shorten it.
    const QString line = oneLine(m_string);
    NSTextAttributes attributes = m_attributes;
    attributes.lineBreakMode = widthOf(line) <= NSWidth(box) ? NSLineBreakByClipping : NSLineBreakByTruncatingTail;
    ::drawInRect(line, box, attributes);
}

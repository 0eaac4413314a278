// SPDX-License-Identifier: MIT
#include <VXKit/platform/graphics/NSStringDrawing.h>

#include <VXKit/platform/graphics/NSGraphicsContext.h>
#include <VXKit/platform/graphics/TextLines.h>

#include <QBrush>
#include <QChar>
#include <QFontMetricsF>
#include <QPainter>
#include <QPen>
#include <QTextCharFormat>
#include <QTextLayout>
#include <QTextOption>
#include <QTransform>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace {

// The width of a line that nothing limits, in points: more than any text has, and still exact in the fixed point
// numbers of the layout.
constexpr double unlimitedWidth = 1 << 20;

constexpr double tabInterval = 28;

QString withEveryLineElided(const QString& text, const QFontMetricsF& metrics, double width) {
    QStringList lines = text.split(QChar(QChar::LineSeparator));
    for (QString& line : lines) {
        line = metrics.elidedText(line, Qt::ElideRight, width + textTolerance);
    }
    return lines.join(QChar(QChar::LineSeparator));
}

// Text broken into lines, one line height below the other.
class Lines {
public:
    // Lines as long as they are.
    Lines(const QString& string, const NSTextAttributes& attributes)
        : Lines(withLineSeparators(string), attributes, unlimitedWidth, QTextOption::IncludeTrailingSpaces) {}

    // Lines of `width`.
    static Lines ofWidth(const QString& string, const NSTextAttributes& attributes, double width) {
        QString text = withLineSeparators(string);
        switch (attributes.lineBreakMode) {
        case NSLineBreakByClipping:
            return {text, attributes, unlimitedWidth, {}};
        case NSLineBreakByTruncatingTail:
            text = withEveryLineElided(text, QFontMetricsF(attributes.font.qtFont()), width);
            return {text, attributes, unlimitedWidth, {}};
        case NSLineBreakByWordWrapping:
            break;
        }
        return {text, attributes, width + textTolerance, {}};
    }

    NSSize size() const { return {m_width, static_cast<double>(m_layout->lineCount()) * lineHeight()}; }

    // With the top left corner of the first line at the origin, y growing downwards.
    void draw(QPainter& painter, double width) const {
        for (int number = 0; number < m_layout->lineCount(); ++number) {
            const QTextLine line = m_layout->lineAt(number);
            // The baselines are the font's own, also where a character of another font makes its line higher.
            const double baseline = number * lineHeight() + m_metrics.leading() + m_metrics.ascent();
            line.draw(&painter, {indent(line, width), baseline - line.ascent()});
        }
    }

    double lineHeight() const { return ::lineHeight(m_metrics); }

private:
    Lines(const QString& text, const NSTextAttributes& attributes, double lineWidth, QTextOption::Flags flags)
        : m_metrics(attributes.font.qtFont()), m_alignment(attributes.alignment),
          m_layout(std::make_unique<QTextLayout>(text, attributes.font.qtFont())) {
        if (m_alignment == NSNaturalTextAlignment) {
            m_alignment = text.isRightToLeft() ? NSRightTextAlignment : NSLeftTextAlignment;
        }
        QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        option.setTabStopDistance(tabInterval);
        option.setFlags(flags);
        m_layout->setTextOption(option);
        underline(attributes.underlinedCharacter, text);
        m_layout->beginLayout();
        for (QTextLine line = m_layout->createLine(); line.isValid(); line = m_layout->createLine()) {
            line.setLineWidth(lineWidth);
            line.setPosition({0, 0});
            m_width = std::max(m_width, line.naturalTextWidth());
        }
        m_layout->endLayout();
    }

    void underline(std::optional<int> character, const QString& text) {
        if (!character || *character < 0 || *character >= text.size()) {
            return;
        }
        QTextLayout::FormatRange range;
        range.start = *character;
        range.length = text.at(*character).isHighSurrogate() ? 2 : 1;
        range.format.setFontUnderline(true);
        m_layout->setFormats({range});
    }

    double indent(const QTextLine& line, double width) const {
        const double room = width - line.naturalTextWidth();
        switch (m_alignment) {
        case NSRightTextAlignment:
            return room;
        case NSCenterTextAlignment:
            return room / 2;
        default:
            return 0;
        }
    }

    QFontMetricsF m_metrics;
    NSTextAlignment m_alignment;
    std::unique_ptr<QTextLayout> m_layout;
    double m_width = 0;
};

// Narrows the clip to the pixels that `rect` touches, so that a side between two of them takes nothing away.
void clipToPixelsOf(const QRectF& rect, QPainter& painter) {
    const QTransform toDevice = painter.deviceTransform();
    const QRectF pixels = toDevice.mapRect(rect).toAlignedRect();
    painter.setClipRect(toDevice.inverted().mapRect(pixels), Qt::IntersectClip);
}

void drawLines(const Lines& lines, const NSRect& rect, const NSTextAttributes& attributes) {
    NSGraphicsContext& context = *NSGraphicsContext::currentContext();
    if (attributes.shadow) {
        NSGraphicsContext::saveGraphicsState();
        attributes.shadow->set();
    }
    // Upright text in a y-up context, and nothing but a translation in sum, so that the cached glyphs serve.
    const QTransform textToContext = context.isFlipped() ? QTransform::fromTranslate(NSMinX(rect), NSMinY(rect))
                                                         : QTransform(1, 0, 0, -1, NSMinX(rect), NSMaxY(rect));
    QBrush brush = context.brush(attributes.foregroundColor);
    brush.setTransform(brush.transform() * textToContext.inverted());

    const NSSize size = lines.size();
    const bool fits = size.width <= NSWidth(rect) + textTolerance && size.height <= NSHeight(rect) + textTolerance;
    // Glyphs may reach over the box of their line.
    const double overhang = lines.lineHeight();
    const QRectF box = NSRectToQRectF(rect);
    const QRectF bounds = fits ? box.adjusted(-overhang, -overhang, overhang, overhang) : box;
    context.draw(bounds, [&](QPainter& painter) {
        painter.save();
        if (!fits) {
            clipToPixelsOf(box, painter);
        }
        painter.setTransform(textToContext, true);
        painter.setPen(QPen(brush, 0));
        lines.draw(painter, NSWidth(rect));
        painter.restore();
    });
    if (attributes.shadow) {
        NSGraphicsContext::restoreGraphicsState();
    }
}

} // namespace

NSSize sizeWithAttributes(const QString& string, const NSTextAttributes& attributes) {
    return Lines(string, attributes).size();
}

void drawAtPoint(const QString& string, const NSPoint& point, const NSTextAttributes& attributes) {
    if (NSGraphicsContext::currentContext() == nullptr || string.isEmpty()) {
        return;
    }
    const Lines lines(string, attributes);
    drawLines(lines, {point, lines.size()}, attributes);
}

void drawInRect(const QString& string, const NSRect& rect, const NSTextAttributes& attributes) {
    if (NSGraphicsContext::currentContext() == nullptr || string.isEmpty() || NSIsEmptyRect(rect)) {
        return;
    }
    drawLines(Lines::ofWidth(string, attributes, NSWidth(rect)), rect, attributes);
}

NSAttributedString::NSAttributedString(QString string, NSTextAttributes attributes)
    : m_string(std::move(string)), m_attributes(std::move(attributes)) {}

NSSize NSAttributedString::size() const {
    return sizeWithAttributes(m_string, m_attributes);
}

void NSAttributedString::drawAtPoint(const NSPoint& point) const {
    ::drawAtPoint(m_string, point, m_attributes);
}

void NSAttributedString::drawInRect(const NSRect& rect) const {
    ::drawInRect(m_string, rect, m_attributes);
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/WrappedText.h>

#include <VXKit/platform/graphics/TextLines.h>

#include <QChar>
#include <QFontMetricsF>
#include <QList>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QPointF>
#include <QTextBoundaryFinder>
#include <QTextCharFormat>
#include <QTextLayout>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double largestReduction = 2; // points of the font's size

constexpr QChar ellipsis(u'\u2026');

// No area is wide enough for a line longer than this, and measuring one takes time.
constexpr int longestLine = 4096; // units of UTF-16

int linesIn(double height, const QFontMetricsF& metrics) {
    return std::max(1, static_cast<int>(std::floor((height + textTolerance) / lineHeight(metrics))));
}

/// At most `lineLimit` lines.
std::unique_ptr<QTextLayout> layOut(const QString& text, const NSFont& font, double width, int lineLimit) {
    auto layout = std::make_unique<QTextLayout>(text, font.qtFont());
    QTextOption option(Qt::AlignLeading);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    const QFontMetricsF metrics(font.qtFont());
    layout->beginLayout();
    for (int number = 0; number < lineLimit; ++number) {
        QTextLine line = layout->createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(width + textTolerance);
        // The baselines are the font's own, also where a character of another font makes its line higher.
        const double baseline = number * lineHeight(metrics) + metrics.leading() + metrics.ascent();
        line.setPosition({0, baseline - line.ascent()});
    }
    layout->endLayout();
    return layout;
}

bool holdsAll(const QTextLayout& layout) {
    const QTextLine last = layout.lineAt(layout.lineCount() - 1);
    return last.textStart() + last.textLength() >= layout.text().size();
}

} // namespace

WrappedText::WrappedText() = default;
WrappedText::WrappedText(WrappedText&& other) noexcept = default;
WrappedText& WrappedText::operator=(WrappedText&& other) noexcept = default;
WrappedText::~WrappedText() = default;

WrappedText::WrappedText(QString string, const NSFont& font, const NSSize& size)
    : m_string(std::move(string)), m_font(font), m_size(size), m_text(withLineSeparators(m_string)) {
    m_keptLength = static_cast<int>(m_text.size());
    NSFont drawnFont = font;
    for (double reduction = 0; reduction <= largestReduction && font.pointSize() > reduction; ++reduction) {
        drawnFont = font.isBold() ? NSFont::boldSystemFontOfSize(font.pointSize() - reduction)
                                  : NSFont::systemFontOfSize(font.pointSize() - reduction);
        const int lines = linesIn(size.height, QFontMetricsF(drawnFont.qtFont()));
        m_layout = layOut(m_text, drawnFont, size.width, lines);
        if (holdsAll(*m_layout)) {
            return;
        }
    }
    m_isCut = true;
    const int lastStart = m_layout->lineAt(m_layout->lineCount() - 1).textStart();
    QString rest = m_text.mid(lastStart, longestLine);
    rest.replace(QChar(QChar::LineSeparator), QChar(QChar::Space));
    const QFontMetricsF metrics(drawnFont.qtFont());
    QString lastLine = metrics.elidedText(rest + ellipsis, Qt::ElideRight, size.width + textTolerance);
    if (lastLine.isEmpty()) {
        lastLine = ellipsis;
    }
    m_keptLength = lastStart + static_cast<int>(lastLine.size()) - 1;
    m_layout = layOut(m_text.left(lastStart) + lastLine, drawnFont, size.width, m_layout->lineCount());
}

bool WrappedText::isOf(const QString& string, const NSFont& font, const NSSize& size) const {
    return m_layout && m_size == size && m_font == font && m_string == string;
}

void WrappedText::draw(QPainter& painter, const TextRange& selection, const QPalette& palette) const {
    QList<QTextLayout::FormatRange> selections;
    if (!selection.isEmpty()) {
        QTextLayout::FormatRange range;
        range.start = selection.first();
        range.length = selection.last() - selection.first();
        range.format.setBackground(palette.highlight());
        range.format.setForeground(palette.highlightedText());
        selections.append(range);
    }
    m_layout->draw(&painter, {0, 0}, selections);
}

int WrappedText::positionAt(const QPointF& point) const {
    QTextLine line = m_layout->lineAt(0);
    for (int number = 1; number < m_layout->lineCount() && m_layout->lineAt(number).y() <= point.y(); ++number) {
        line = m_layout->lineAt(number);
    }
    return line.xToCursor(point.x());
}

TextRange WrappedText::wordAt(int position) const {
    const QString text = m_layout->text();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    finder.setPosition(position);
    if (position < text.size()) {
        // The word that begins here, or the one around.
        finder.setPosition(position + 1);
    }
    const auto start = position == 0 ? 0 : finder.toPreviousBoundary();
    const auto end = finder.toNextBoundary();
    return {static_cast<int>(std::max<qsizetype>(0, start)), static_cast<int>(end < 0 ? text.size() : end)};
}

TextRange WrappedText::everything() const {
    return {0, static_cast<int>(m_layout->text().size())};
}

int WrappedText::nextCharacter(int position) const {
    return m_layout->nextCursorPosition(position);
}

int WrappedText::previousCharacter(int position) const {
    return m_layout->previousCursorPosition(position);
}

int WrappedText::nextWord(int position) const {
    return m_layout->nextCursorPosition(position, QTextLayout::SkipWords);
}

int WrappedText::previousWord(int position) const {
    return m_layout->previousCursorPosition(position, QTextLayout::SkipWords);
}

int WrappedText::startOfLine(int position) const {
    return m_layout->lineForTextPosition(position).textStart();
}

int WrappedText::endOfLine(int position) const {
    const QTextLine line = m_layout->lineForTextPosition(position);
    const int end = line.textStart() + line.textLength();
    const bool isLast = line.lineNumber() == m_layout->lineCount() - 1;
    return isLast ? end : m_layout->previousCursorPosition(end);
}

QString WrappedText::text(const TextRange& selection) const {
    const int first = std::min(selection.first(), m_keptLength);
    const bool isToTheEnd = selection.last() > m_keptLength;
    QString text = m_text.mid(first, isToTheEnd ? -1 : selection.last() - first);
    return text.replace(QChar(QChar::LineSeparator), QChar(u'\n'));
}

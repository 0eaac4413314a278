// SPDX-License-Identifier: MIT
#include "EditedText.h"

#include "TextChange.h"

#include <QStringBuilder>
#include <QStringView>

#include <algorithm>
#include <utility>

namespace {

/// Whether Qt's documents begin a paragraph at this character.
bool endsParagraph(QChar character) {
    switch (character.unicode()) {
    case u'\n':
    case u'\r':
    case QChar::ParagraphSeparator:
    case 0xFDD0: // which mark the beginning and the end of a frame there
    case 0xFDD1:
        return true;
    default:
        return false;
    }
}

bool isPair(QStringView text, qsizetype place) {
    return text[place] == u'\r' && place + 1 < text.size() && text[place + 1] == u'\n';
}

QString plain(QStringView text) {
    QString result;
    result.reserve(text.size());
    for (qsizetype place = 0; place < text.size(); ++place) {
        if (isPair(text, place)) {
            ++place;
        }
        result += endsParagraph(text[place]) ? QChar(u'\n') : text[place];
    }
    return result;
}

} // namespace

EditedText::EditedText(QString text, qsizetype longestShown)
    : m_text(std::move(text)), m_shownLength(std::min(m_text.size(), longestShown)) {
    // Neither half of a character nor half of a line end.
    const bool isInPair = m_shownLength > 0 && m_shownLength < m_text.size() &&
                          (m_text[m_shownLength].isLowSurrogate() || isPair(m_text, m_shownLength - 1));
    if (isInPair) {
        --m_shownLength;
    }
    m_shown = plain(QStringView(m_text).first(m_shownLength));
}

QString EditedText::hidden() const {
    return plain(QStringView(m_text).sliced(m_shownLength));
}

void EditedText::showHidden() {
    m_shown += hidden();
    m_shownLength = m_text.size();
}

void EditedText::setShown(const QString& shown) {
    TextChange change = TextChange::between(m_shown, shown);
    QString& inserted = change.inserted;
    // What Shift+Return makes is a line end to whoever presses it.
    inserted.replace(QChar(QChar::LineSeparator), QLatin1Char('\n'));
    inserted.replace(QLatin1Char('\n'), lineEnd());

    const QStringView before = QStringView(m_text).first(placeInText(change.begin));
    const QStringView after = QStringView(m_text).sliced(placeInText(m_shown.size() - change.end));
    // Two line ends that come together stay two.
    if (before.endsWith(u'\r') && (inserted.isEmpty() ? after : QStringView(inserted)).startsWith(u'\n')) {
        inserted.prepend(QLatin1Char('\n'));
    }
    if (inserted.endsWith(QLatin1Char('\r')) && after.startsWith(u'\n')) {
        inserted.append(QLatin1Char('\n'));
    }
    const qsizetype hiddenLength = this->hiddenLength();
    m_text = before % inserted % after;
    m_shown = shown;
    m_shownLength = m_text.size() - hiddenLength;
}

/// That of the first line; most texts have but one kind.
QString EditedText::lineEnd() const {
    const auto first = std::find_if(m_text.begin(), m_text.end(),
                                    [](QChar character) { return character == u'\n' || character == u'\r'; });
    if (first == m_text.end()) {
        return QStringLiteral("\n");
    }
    return isPair(m_text, first - m_text.begin()) ? QStringLiteral("\r\n") : QString(*first);
}

qsizetype EditedText::placeInText(qsizetype placeInShown) const {
    qsizetype place = 0;
    for (; placeInShown > 0; --placeInShown) {
        place += isPair(m_text, place) ? 2 : 1;
    }
    return place;
}

// SPDX-License-Identifier: MIT
#include "SnippetTextEdit.h"

#include "Appearance.h"
#include "TextChange.h"

#include <QDragEnterEvent>
#include <QFocusEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QTextBlock>
#include <QTextOption>

#include <algorithm>

SnippetTextEdit::SnippetTextEdit(QWidget* parent) : QPlainTextEdit(parent) {
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    useHUDScrollBars(*this);
    // So that there is never anything to scroll across.
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    document()->setDocumentMargin(0);
    QFont textFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    textFont.setPixelSize(QFontInfo(font()).pixelSize() - 1);
    setFont(textFont);
}

QString SnippetTextEdit::text() const {
    QString text = document()->toRawText();
    std::replace(text.begin(), text.end(), QChar(QChar::ParagraphSeparator), QChar(u'\n'));
    return text;
}

void SnippetTextEdit::changeText(const QString& text) {
    const QString before = this->text();
    const TextChange change = TextChange::between(before, text);
    QTextCursor cursor(document());
    cursor.setPosition(static_cast<int>(change.begin));
    cursor.setPosition(static_cast<int>(before.size() - change.end), QTextCursor::KeepAnchor);
    cursor.insertText(change.inserted);
}

void SnippetTextEdit::appendHidden(const QString& text) {
    setUndoRedoEnabled(false);
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    // The visible caret may be at the end, and would go along.
    const QTextCursor visible = textCursor();
    const int anchor = visible.anchor();
    const int position = visible.position();
    cursor.insertText(text);
    QTextCursor restored(document());
    restored.setPosition(anchor);
    restored.setPosition(position, QTextCursor::KeepAnchor);
    setTextCursor(restored);
    setUndoRedoEnabled(true);
}

void SnippetTextEdit::focusInEvent(QFocusEvent* event) {
    QPlainTextEdit::focusInEvent(event);
    Q_EMIT entered();
}

void SnippetTextEdit::focusOutEvent(QFocusEvent* event) {
    QPlainTextEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason) {
        Q_EMIT wasLeft();
    }
}

void SnippetTextEdit::dragEnterEvent(QDragEnterEvent* event) {
    if (event->source() == this || event->source() == viewport()) {
        QPlainTextEdit::dragEnterEvent(event);
    } else {
        event->ignore();
    }
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/appkit/PlainLineEdit.h>

#include <VXKit/platform/appkit/NSWindow.h>
#include <VXKit/platform/graphics/NSColor.h>

#include <QAction>
#include <QColor>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <QList>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPalette>
#include <QSignalBlocker>
#include <QTextDocumentFragment>
#include <QValidator>

#include <algorithm>
#include <utility>

template class ViewOf<QLineEdit>;

namespace {

constexpr double standardFontSize = 12;

// How white it is on the dark ground, from 0 to 1: a selection must stand out and leave its text readable.
constexpr float selectionStrength = 0.3F;
constexpr float disabledTextStrength = 0.4F;

bool isLineBreak(QChar character) {
    switch (character.unicode()) {
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case 0x0085: // next line
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return true;
    default:
        return false;
    }
}

bool hasLineBreak(const QString& text) {
    return std::any_of(text.begin(), text.end(), isLineBreak);
}

/// The text with a space for each line break.
QString inOneLine(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    std::replace_if(text.begin(), text.end(), isLineBreak, QChar(QChar::Space));
    return text;
}

/// The text of what was copied or dragged; of what comes as styled text alone, the text of that.
QString plainText(const QMimeData* data) {
    if (!data) {
        return {};
    }
    if (!data->hasText() && data->hasHtml()) {
        return QTextDocumentFragment::fromHtml(data->html()).toPlainText();
    }
    return data->text();
}

QColor white(float strength) {
    return QColor::fromRgbF(1, 1, 1, strength);
}

} // namespace

/// Mends text that comes by a way of which this class does not know, an assistive program's for one. Qt forgets what
/// could be undone then, so the ways that are known take the line breaks out themselves.
class PlainLineEdit::LineBreakRemover final : public QValidator {
public:
    using QValidator::QValidator;

    State validate(QString& text, int& position) const override {
        if (hasLineBreak(text)) {
            position = static_cast<int>(inOneLine(text.left(position)).size());
            text = inOneLine(text);
        }
        return Acceptable;
    }
};

PlainLineEdit::PlainLineEdit(QWidget* parent)
    : ViewOf<QLineEdit>(parent), m_font(NSFont::systemFontOfSize(standardFontSize)) {
    QLineEdit::setFrame(false);
    QLineEdit::setFont(m_font.qtFont());
    setValidator(new LineBreakRemover(this));
    applyColors();
}

QString PlainLineEdit::stringValue() const {
    return text();
}

void PlainLineEdit::setStringValue(const QString& string) {
    setText(inOneLine(string));
}

void PlainLineEdit::setFont(const NSFont& font) {
    m_font = font;
    QLineEdit::setFont(font.qtFont());
}

bool PlainLineEdit::isFirstResponder() const {
    const NSWindow* window = ViewCore::window();
    return (window ? window->firstResponder() : QWidget::window()->focusWidget()) == this;
}

void PlainLineEdit::pasteFromClipboard(QClipboard::Mode mode) {
    const QString pasted = inOneLine(plainText(QGuiApplication::clipboard()->mimeData(mode)));
    if (isReadOnly() || (pasted.isEmpty() && !hasSelectedText())) {
        return;
    }
    beginUndoStep();
    insert(pasted);
    beginUndoStep();
}

/// What changes the text before and after is undone apart. Qt sees to that in its own pasting; to others it offers the
/// moving of the cursor alone. Replacing a selection begins a step by itself.
void PlainLineEdit::beginUndoStep() {
    if (hasSelectedText()) {
        return;
    }
    const QSignalBlocker quiet(this);
    const int position = cursorPosition();
    setCursorPosition(position > 0 ? 0 : static_cast<int>(text().size()));
    setCursorPosition(position);
}

QMenu* PlainLineEdit::createStandardContextMenu() {
    QMenu* menu = QLineEdit::createStandardContextMenu();
    const QList<QAction*> actions = menu ? menu->actions() : QList<QAction*>();
    for (QAction* action : actions) {
        // It has no other mark; the shortcut stands behind the title.
        if (action->text().section(u'\t', 0, 0) == QLineEdit::tr("&Paste")) {
            disconnect(action, &QAction::triggered, this, nullptr);
            connect(action, &QAction::triggered, this, [this] { pasteFromClipboard(); });
            action->setEnabled(!isReadOnly() && !plainText(QGuiApplication::clipboard()->mimeData()).isEmpty());
        }
    }
    return menu;
}

void PlainLineEdit::drawRect(const NSRect& /*dirtyRect*/) {
    drawAsMask(NSColor::whiteColor());
}

void PlainLineEdit::paintEvent(QPaintEvent* event) {
    ViewOf::paintEvent(event);
    // A caret that blinks is redrawn by itself, and what it throws its shadow on is not. Once for each time: where a
    // part of the field cannot be seen, all that can is still a part.
    const bool wasToDrawAll = std::exchange(m_isGoingToDrawAll, false);
    if (!wasToDrawAll && hasFocus() && event->rect() != rect()) {
        m_isGoingToDrawAll = true;
        update();
    }
}

void PlainLineEdit::handleAsWidget(QEvent& event) {
    if (event.type() == QEvent::KeyPress) {
        auto& key = static_cast<QKeyEvent&>(event);
        if (key.matches(QKeySequence::Paste)) {
            const bool isOfSelection =
                key.key() == Qt::Key_Insert && key.modifiers() == (Qt::ControlModifier | Qt::ShiftModifier);
            pasteFromClipboard(isOfSelection ? QClipboard::Selection : QClipboard::Clipboard);
            return;
        }
    }
    if (event.type() == QEvent::MouseButtonRelease &&
        static_cast<const QMouseEvent&>(event).button() == Qt::MiddleButton &&
        QGuiApplication::clipboard()->supportsSelection()) {
        deselect();
        pasteFromClipboard(QClipboard::Selection);
        return;
    }
    ViewOf::handleAsWidget(event);
}

void PlainLineEdit::changeEvent(QEvent* event) {
    ViewOf::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyColors();
    }
}

void PlainLineEdit::contextMenuEvent(QContextMenuEvent* event) {
    if (QMenu* menu = createStandardContextMenu()) {
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(event->globalPos());
    }
}

void PlainLineEdit::dropEvent(QDropEvent* event) {
    const QString dropped = event->mimeData()->text();
    if (!hasLineBreak(dropped)) {
        return ViewOf::dropEvent(event);
    }
    QMimeData plain;
    plain.setText(inOneLine(dropped));
    QDropEvent plainEvent(event->position(), event->possibleActions(), &plain, event->buttons(), event->modifiers());
    plainEvent.setDropAction(event->dropAction());
    ViewOf::dropEvent(&plainEvent);
    event->setDropAction(plainEvent.dropAction());
    event->setAccepted(plainEvent.isAccepted());
}

void PlainLineEdit::inputMethodEvent(QInputMethodEvent* event) {
    if (!hasLineBreak(event->commitString())) {
        return ViewOf::inputMethodEvent(event);
    }
    QInputMethodEvent plainEvent(event->preeditString(), event->attributes());
    plainEvent.setCommitString(inOneLine(event->commitString()), event->replacementStart(), event->replacementLength());
    ViewOf::inputMethodEvent(&plainEvent);
    event->setAccepted(plainEvent.isAccepted());
}

/// They are not the person's colours but part of the look, and are kept against a change of those.
void PlainLineEdit::applyColors() {
    QPalette colors = palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        colors.setColor(group, QPalette::Base, Qt::transparent);
        colors.setColor(group, QPalette::Text, white(group == QPalette::Disabled ? disabledTextStrength : 1));
        colors.setColor(group, QPalette::HighlightedText, colors.color(group, QPalette::Text));
        colors.setColor(group, QPalette::Highlight, white(selectionStrength));
    }
    if (colors != palette()) {
        setPalette(colors);
    }
}

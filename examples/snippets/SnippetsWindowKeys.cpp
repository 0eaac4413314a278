// SPDX-License-Identifier: MIT
// What the keys of the window do.
#include "SnippetsWindow.h"

#include "ImportBar.h"
#include "SnippetDetail.h"
#include "SnippetTextEdit.h"
#include "SnippetsListView.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

namespace {

bool hasOnly(const QKeyEvent& event, Qt::KeyboardModifiers modifiers) {
    return (event.modifiers() & ~Qt::KeypadModifier) == modifiers;
}

} // namespace

void SnippetsWindow::keyPressEvent(QKeyEvent* event) {
    // From widgets that are not filtered, those of the message bars.
    if (!handleKeyPress(nullptr, event)) {
        LTWindow::keyPressEvent(event);
    }
}

bool SnippetsWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && handleKeyPress(watched, static_cast<QKeyEvent*>(event))) {
        return true;
    }
    if (event->type() == QEvent::FocusIn && (watched == m_search || watched == m_list)) {
        m_beforeEditing = static_cast<QWidget*>(watched);
    }
    return LTWindow::eventFilter(watched, event);
}

bool SnippetsWindow::handleKeyPress(QObject* receiver, QKeyEvent* event) {
    const bool isInSearch = receiver == m_search;
    if (isEditor(receiver)) {
        return handleEditorKey(*event);
    }
    if (handleUndoKey(receiver, *event) || handleCommandKey(receiver, *event)) {
        return true;
    }
    if (!hasOnly(*event, Qt::NoModifier)) {
        return passToSearch(receiver, event);
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto* button = qobject_cast<QPushButton*>(receiver)) {
            button->click();
        } else if (copySelected()) {
            leave();
        }
        return true;
    case Qt::Key_Escape:
        handleEscape();
        return true;
    case Qt::Key_Delete:
        if (isInSearch && (m_search->hasSelectedText() || m_search->cursorPosition() < m_search->text().size())) {
            return false;
        }
        // A key held down deletes characters, never snippets.
        if (!event->isAutoRepeat()) {
            askToRemoveSelected();
        }
        return true;
    case Qt::Key_F2:
        renameSelected();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        return isInSearch && passToList(event);
    default:
        return passToSearch(receiver, event);
    }
}

/// Keys with Control, which stay what they are in a text that has something selected.
bool SnippetsWindow::handleCommandKey(QObject* receiver, const QKeyEvent& event) {
    if (!hasOnly(event, Qt::ControlModifier)) {
        return false;
    }
    const bool isInSelectedText = receiver == m_search && m_search->hasSelectedText();
    switch (event.key()) {
    case Qt::Key_V:
        if (isInSelectedText) {
            return false;
        }
        if (!event.isAutoRepeat()) {
            addFromClipboard();
        }
        return true;
    case Qt::Key_C:
        if (isInSelectedText) {
            return false;
        }
        copySelected();
        return true;
    case Qt::Key_E:
        editSelected();
        return true;
    case Qt::Key_S:
        exportSnippets();
        return true;
    case Qt::Key_F:
        m_search->setFocus();
        m_search->selectAll();
        return true;
    default:
        return false;
    }
}

/// Where a text can be typed into, the field's own typing is what is undone first, as long as it was the latest.
bool SnippetsWindow::handleUndoKey(QObject* receiver, const QKeyEvent& event) {
    const bool isRedo = hasOnly(event, Qt::ControlModifier | Qt::ShiftModifier);
    if (event.key() != Qt::Key_Z || (!isRedo && !hasOnly(event, Qt::ControlModifier))) {
        return false;
    }
    const bool fieldCan = isRedo ? m_search->isRedoAvailable() : m_search->isUndoAvailable();
    if (receiver == m_search && m_searchIsLatest && fieldCan) {
        return false;
    }
    if (isRedo) {
        redo();
    } else {
        undo();
    }
    return true;
}

/// All but a few keys are the text's.
bool SnippetsWindow::handleEditorKey(const QKeyEvent& event) {
    if (hasOnly(event, Qt::NoModifier)) {
        switch (event.key()) {
        case Qt::Key_Escape:
            leaveEditor();
            return true;
        case Qt::Key_F2:
            renameSelected();
            return true;
        default:
            return false;
        }
    }
    if (!hasOnly(event, Qt::ControlModifier)) {
        return false;
    }
    switch (event.key()) {
    case Qt::Key_C:
        return !m_detail->editor().textCursor().hasSelection() && copySelected();
    case Qt::Key_E:
        leaveEditor();
        return true;
    case Qt::Key_F:
        m_search->setFocus();
        m_search->selectAll();
        return true;
    case Qt::Key_S:
        exportSnippets();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (copySelected()) {
            leave();
        }
        return true;
    default:
        return false;
    }
}

bool SnippetsWindow::isEditor(const QObject* receiver) const {
    return receiver == &m_detail->editor() && !m_detail->editor().isReadOnly();
}

/// To where the keyboard was before.
void SnippetsWindow::leaveEditor() {
    QWidget* const back = m_beforeEditing ? m_beforeEditing.data() : m_search;
    back->setFocus(Qt::OtherFocusReason);
}

void SnippetsWindow::handleEscape() {
    if (!m_search->text().isEmpty()) {
        m_search->clear();
        m_search->setFocus();
    } else if (m_importBar->isVisible()) {
        Q_EMIT asksToStopImport();
    } else {
        leave();
    }
}

bool SnippetsWindow::passToList(QKeyEvent* event) {
    QCoreApplication::sendEvent(m_list, event);
    return true;
}

/// Typing anywhere but in the search field goes there, and so does the key that takes back what was typed.
bool SnippetsWindow::passToSearch(QObject* receiver, QKeyEvent* event) {
    constexpr Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const QString text = event->text();
    const bool isTyping = !text.isEmpty() && (text.at(0).isPrint() || event->key() == Qt::Key_Backspace);
    const bool pressesButton = qobject_cast<QPushButton*>(receiver) && event->key() == Qt::Key_Space;
    if (receiver == m_search || !isTyping || pressesButton || (event->modifiers() & commands)) {
        return false;
    }
    m_search->setFocus();
    m_search->deselect();
    m_search->setCursorPosition(static_cast<int>(m_search->text().size()));
    QCoreApplication::sendEvent(m_search, event);
    return true;
}

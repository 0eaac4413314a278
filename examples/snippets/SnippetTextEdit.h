// SPDX-License-Identifier: MIT
#pragma once

#include <QPlainTextEdit>

/// The field in which the text of a snippet is read and edited.
///
/// Its text can be dragged about in it; what is dragged in from elsewhere is the window's, which makes a snippet of it.
class SnippetTextEdit : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit SnippetTextEdit(QWidget* parent = nullptr);

    /// The text as it is, with '\n' between paragraphs; toPlainText makes blanks of the blanks that break no line.
    [[nodiscard]] QString text() const;

    /// Brings the text to `text` by a change that can be undone, so that what can be undone so far still can.
    void changeText(const QString& text);

    /// Appends what was not shown yet, which nobody can undo. Nothing else can be undone after that either.
    void appendHidden(const QString& text);

Q_SIGNALS:
    /// The keyboard has come in.
    void entered();
    /// The keyboard has gone somewhere else; not for a moment, as into a menu.
    void wasLeft();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
};

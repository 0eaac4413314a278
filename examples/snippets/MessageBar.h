// SPDX-License-Identifier: MIT
#pragma once

#include <QFrame>
#include <QStringList>

class ElidedLabel;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

/// A quiet message on a strip inside a window, in place of a dialog: a sentence, perhaps one action, perhaps details
/// that unfold, and a button that dismisses it. Hidden until there is something to say.
///
///     12 files were imported, 2 were not.                    Details   ✕
class MessageBar : public QFrame {
    Q_OBJECT

public:
    explicit MessageBar(QWidget* parent = nullptr);

    /// Shows `text`. With `details`, lines that a button unfolds below it.
    void showMessage(const QString& text, const QStringList& details = {});

    /// Gives the bar a button that emits actionTriggered.
    void setAction(const QString& title, const QString& accessibleName);

    [[nodiscard]] QString text() const;
    [[nodiscard]] QString details() const;

Q_SIGNALS:
    void actionTriggered();
    /// The user has dismissed the message; the bar is hidden.
    void dismissed();

private:
    void unfold(bool unfolded);

    ElidedLabel* m_text;
    QPushButton* m_action;
    QPushButton* m_detailsButton;
    QToolButton* m_close;
    QPlainTextEdit* m_details;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <memory>
#include <vector>

class ElidedLabel;
class NSTimer;
class QPushButton;

/// The line below the list: what there is to do, and how many snippets there are or what has just happened.
///
///     (i) 214 snippets      Add from Clipboard   Rename   Remove   Copy
class SnippetsFooter : public QWidget {
    Q_OBJECT

public:
    explicit SnippetsFooter(QWidget* parent = nullptr);
    ~SnippetsFooter() override;

    /// What stands there unless there is something to say.
    void setCount(const QString& count);
    /// Says `status` for a while, in place of the count.
    void sayForAWhile(const QString& status);
    [[nodiscard]] QString text() const;

    /// Whether there is a snippet for the buttons that need one.
    void setHasSelection(bool hasSelection);

    /// From left to right.
    [[nodiscard]] const std::vector<QPushButton*>& buttons() const { return m_buttons; }

Q_SIGNALS:
    void asksWhatItIs();
    void asksToAdd();
    void asksToRename();
    void asksToRemove();
    void asksToCopy();

private:
    QPushButton* addButton(const QString& title, const QString& toolTip);

    ElidedLabel* m_status;
    QPushButton* m_rename = nullptr;
    QPushButton* m_remove = nullptr;
    QPushButton* m_copy = nullptr;
    std::vector<QPushButton*> m_buttons;
    QString m_count;
    std::shared_ptr<NSTimer> m_statusTimer;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A text while it is edited: what an editor shows of it, and what the text becomes by what the editor has then.
///
/// Editors know one line end, and a very long text is not shown to its end. So not what the editor has is the new text,
/// but what was changed in there is changed in the text: line ends that nobody touched stay what they were, new ones
/// are of the text's own kind, and what is not shown stays as it is.
class EditedText {
public:
    EditedText() = default;
    /// Shows `text` up to `longestShown` characters of it.
    EditedText(QString text, qsizetype longestShown);

    /// What to show: one character, '\n', for each line end, and everything else as it is.
    [[nodiscard]] const QString& shown() const { return m_shown; }
    /// What follows on that, for an editor that shows the rest after all; as in shown().
    [[nodiscard]] QString hidden() const;
    [[nodiscard]] bool hasHidden() const { return m_shownLength < m_text.size(); }
    /// In characters of the text itself.
    [[nodiscard]] qsizetype hiddenLength() const { return m_text.size() - m_shownLength; }
    /// From now on all of it is shown.
    void showHidden();

    /// Does to the text what was done to make `shown`, which the editor has now, of what it had. One change at a time,
    /// because what is between two of them is taken for changed too.
    void setShown(const QString& shown);

    /// All of the text, as it is now.
    [[nodiscard]] const QString& text() const { return m_text; }

private:
    [[nodiscard]] QString lineEnd() const;
    [[nodiscard]] qsizetype placeInText(qsizetype placeInShown) const;

    QString m_text;
    QString m_shown;
    qsizetype m_shownLength = 0; // of m_text
};

// SPDX-License-Identifier: MIT
#pragma once

#include "EditedText.h"
#include "Snippet.h"
#include "SnippetKind.h"
#include "SnippetsDatabase.h"

#include <QWidget>

#include <memory>
#include <optional>

class ElidedLabel;
class NSTimer;
class QHBoxLayout;
class QLabel;
class SnippetKindTag;
class SnippetTextEdit;

/// The selected snippet, whose text is edited in place.
///
///     Title                       (Link)
///     Created … Modified … Used 3 times
///
///     text
///
/// What is typed is kept, in the record and for the database to save, after a short pause, when the keyboard leaves the
/// text, and when another snippet is shown. It can be undone, also after it was kept, as long as the snippet is shown.
///
/// Nobody's text is lost where a sync changes a snippet that is being edited: what is typed stays, and what came in is
/// put beside it as a snippet of its own. One that a sync removes meanwhile comes back with what was typed.
///
/// A text that was emptied leaves a snippet with a title alone; to remove one is another matter.
class SnippetDetail : public QWidget {
    Q_OBJECT

public:
    explicit SnippetDetail(std::shared_ptr<SnippetsDatabase> database, QWidget* parent = nullptr);
    ~SnippetDetail() override;

    /// Shows `snippet`, or nothing for null. What was typed into the one before is kept first. For the one that is
    /// shown already, looks at what has become of it.
    void showSnippet(const std::shared_ptr<Snippet>& snippet);
    [[nodiscard]] const std::shared_ptr<Snippet>& snippet() const { return m_snippet; }

    /// Keeps what was typed and not kept yet; false where there was nothing to keep.
    bool keep();

    /// Keeps what was typed, and tells of all that was changed in the text since it is shown. What is typed later is a
    /// change of its own, to whoever is told; in the text itself everything can still be undone.
    void endEditing();

    [[nodiscard]] SnippetTextEdit& editor() const { return *m_text; }

Q_SIGNALS:
    /// Something is being typed, and not kept yet.
    void typed();
    /// The text of `snippet` was changed from `before` to `after` by what was typed, all of which is kept now.
    void edited(const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after);
    /// Somebody else has changed the text that is being edited; `other` is what that has become.
    void otherVersionWasKept(const std::shared_ptr<Snippet>& other);
    /// Somebody else has removed the snippet that was being edited; `snippet` is in the database again.
    void wasBroughtBack(const std::shared_ptr<Snippet>& snippet);

protected:
    /// Marks the text while the keyboard is in it.
    void paintEvent(QPaintEvent* event) override;

private:
    void load();
    void followRecord();
    void updateLabels();
    void updateKindTag(std::optional<SnippetKind> kind);
    void textHasChanged();
    void showHidden();
    void noteTextBefore(const QString& before);
    void noteTitle();
    void changeText(const QString& text);
    void tellEdited(const QString& after);
    void takeBase();

    std::shared_ptr<SnippetsDatabase> m_database;
    std::shared_ptr<Snippet> m_snippet;

    QHBoxLayout* m_titleLayout = nullptr;
    ElidedLabel* m_title = nullptr;
    SnippetKindTag* m_kindTag = nullptr; // of the snippet that is shown
    QLabel* m_dates = nullptr;
    SnippetTextEdit* m_text = nullptr;

    QByteArray m_base;                   // the text of the record when the editor last agreed with it
    EditedText m_edited;                 // what that has become by what was typed, and how it is shown
    std::optional<QString> m_textBefore; // all that was typed and kept, and not yet told
    /// The title since m_textBefore, where that was made of the text then.
    std::optional<QString> m_titleOfText;
    std::shared_ptr<NSTimer> m_pause;
    bool m_isLoading = false;
};

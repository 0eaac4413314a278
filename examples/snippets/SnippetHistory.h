// SPDX-License-Identifier: MIT
#pragma once

#include "Snippet.h"
#include "SnippetsDatabase.h"

#include <QString>

#include <memory>
#include <vector>

/// What was done to snippets, to be undone and done again: removals, other titles, other texts.
///
/// The same records come back, with all that belonged to them. Where a record was changed or removed meanwhile by
/// somebody else, a sync say, undoing would take that away, and is refused with a word.
class SnippetHistory {
public:
    /// What came of undoing something or doing it again.
    struct Outcome {
        std::shared_ptr<Snippet> snippet; ///< which it was about and which is there now; null where there is none
        QString message;                  ///< in a few words
    };

    explicit SnippetHistory(std::shared_ptr<SnippetsDatabase> database);

    /// Notes what was done. Nothing of what was undone can be done again after that.
    void noteRemoval(const std::shared_ptr<Snippet>& snippet);
    void noteTitle(const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after);
    void noteText(const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after);

    /// How many snippets the latest action has removed, where it is a removal that more may be added to.
    [[nodiscard]] std::size_t openRemovalCount() const;
    /// Removals that come from now on are an action of their own.
    void closeRemoval() { m_isRemovalOpen = false; }

    [[nodiscard]] bool canUndo() const { return !m_done.empty(); }
    [[nodiscard]] bool canRedo() const { return !m_undone.empty(); }
    /// Nothing where there is nothing to undo, or to do again.
    Outcome undo();
    Outcome redo();

private:
    struct Action {
        enum class Kind { Removal, Title, Text };
        Kind kind = Kind::Removal;
        std::vector<std::shared_ptr<Snippet>> snippets;
        QString before;
        QString after;
    };

    void note(Action action);
    Outcome putBack(Action& action);
    Outcome removeAgain(const Action& action);
    Outcome change(const Action& action, const QString& from, const QString& to);
    void replace(const std::shared_ptr<Snippet>& snippet, const std::shared_ptr<Snippet>& replacement);

    std::shared_ptr<SnippetsDatabase> m_database;
    std::vector<Action> m_done;
    std::vector<Action> m_undone;
    bool m_isRemovalOpen = false;
};

// SPDX-License-Identifier: MIT
#include "SnippetHistory.h"

#include "TitleText.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t mostActions = 100; // a text in each of them may be long

} // namespace

SnippetHistory::SnippetHistory(std::shared_ptr<SnippetsDatabase> database) : m_database(std::move(database)) {}

void SnippetHistory::noteRemoval(const std::shared_ptr<Snippet>& snippet) {
    if (openRemovalCount() > 0) {
        m_done.back().snippets.push_back(snippet);
        m_undone.clear();
        return;
    }
    note({.kind = Action::Kind::Removal, .snippets = {snippet}, .before = {}, .after = {}});
    m_isRemovalOpen = true;
}

void SnippetHistory::noteTitle(const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after) {
    note({.kind = Action::Kind::Title, .snippets = {snippet}, .before = before, .after = after});
}

void SnippetHistory::noteText(const std::shared_ptr<Snippet>& snippet, const QString& before, const QString& after) {
    note({.kind = Action::Kind::Text, .snippets = {snippet}, .before = before, .after = after});
}

void SnippetHistory::note(Action action) {
    m_undone.clear();
    m_isRemovalOpen = false;
    if (m_done.size() == mostActions) {
        m_done.erase(m_done.begin());
    }
    m_done.push_back(std::move(action));
}

std::size_t SnippetHistory::openRemovalCount() const {
    const bool isOpen = m_isRemovalOpen && !m_done.empty() && m_done.back().kind == Action::Kind::Removal;
    return isOpen ? m_done.back().snippets.size() : 0;
}

SnippetHistory::Outcome SnippetHistory::undo() {
    if (m_done.empty()) {
        return {};
    }
    Action action = std::move(m_done.back());
    m_done.pop_back();
    m_isRemovalOpen = false;
    Outcome outcome =
        action.kind == Action::Kind::Removal ? putBack(action) : change(action, action.after, action.before);
    // What was refused once is refused again.
    if (outcome.snippet) {
        m_undone.push_back(std::move(action));
    }
    return outcome;
}

SnippetHistory::Outcome SnippetHistory::redo() {
    if (m_undone.empty()) {
        return {};
    }
    Action action = std::move(m_undone.back());
    m_undone.pop_back();
    m_isRemovalOpen = false;
    if (action.kind == Action::Kind::Removal) {
        Outcome outcome = removeAgain(action);
        m_done.push_back(std::move(action));
        return outcome;
    }
    Outcome outcome = change(action, action.before, action.after);
    if (outcome.snippet) {
        m_done.push_back(std::move(action));
    }
    return outcome;
}

SnippetHistory::Outcome SnippetHistory::putBack(Action& action) {
    std::shared_ptr<Snippet> last;
    for (std::shared_ptr<Snippet>& snippet : action.snippets) {
        if (m_database->holds(*snippet)) {
            last = snippet;
            continue;
        }
        last = m_database->putBack(snippet);
        if (last != snippet) {
            replace(std::exchange(snippet, last), last);
        }
    }
    const QString back = m_database->holdsChangesBack() ? QStringLiteral(" comes back when the sync has ended")
                                                        : QStringLiteral(" is back");
    return {last, action.snippets.size() == 1 ? quotedTitle(last->title()) + back
                                              : QStringLiteral("%1 snippets are back").arg(action.snippets.size())};
}

SnippetHistory::Outcome SnippetHistory::removeAgain(const Action& action) {
    for (const std::shared_ptr<Snippet>& snippet : action.snippets) {
        if (m_database->holds(*snippet)) {
            m_database->removeSnippet(snippet);
        }
    }
    return {nullptr, action.snippets.size() == 1
                         ? QStringLiteral("Removed ") + quotedTitle(action.snippets.front()->title())
                         : QStringLiteral("Removed %1 snippets").arg(action.snippets.size())};
}

SnippetHistory::Outcome SnippetHistory::change(const Action& action, const QString& from, const QString& to) {
    const std::shared_ptr<Snippet>& snippet = action.snippets.front();
    if (!m_database->holds(*snippet)) {
        return {nullptr, quotedTitle(snippet->title()) + QStringLiteral(" is no longer here")};
    }
    const bool isTitle = action.kind == Action::Kind::Title;
    if ((isTitle ? snippet->title() : snippet->text()) != from) {
        return {nullptr, quotedTitle(snippet->title()) + QStringLiteral(" has been changed since")};
    }
    if (isTitle) {
        snippet->rename(to, NSDate::date());
    } else {
        snippet->changeText(to, NSDate::date());
    }
    m_database->notifyOfModificationForSnippet(snippet);
    return {snippet, isTitle ? QStringLiteral("Renamed to ") + quotedTitle(to)
                             : QStringLiteral("Changed the text of ") + quotedTitle(snippet->title())};
}

/// One came back as another record, which is what earlier actions are about from now on.
void SnippetHistory::replace(const std::shared_ptr<Snippet>& snippet, const std::shared_ptr<Snippet>& replacement) {
    for (std::vector<Action>* actions : {&m_done, &m_undone}) {
        for (Action& action : *actions) {
            std::replace(action.snippets.begin(), action.snippets.end(), snippet, replacement);
        }
    }
}

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/database/LTDatabase.h>

class Snippet;

/// The store of this program's snippets: the kit's, with its own file and record class.
class SnippetsDatabase : public LTDatabase {
public:
    /// The one store of the process, made on first use. A program calls this before anything of the kit that asks for
    /// the shared store, so that the store is of this class.
    [[nodiscard]] static std::shared_ptr<SnippetsDatabase> shared();

    /// Leaves a file of the user's own choice and opens the standard one; shared gives the new store from then on.
    static void reloadFromStandardFile();

    /// The full path of the file that the snippets are kept in.
    [[nodiscard]] QString path() const { return _path; }

    /// Saves as saveDB does and tells whether all is in the file now, which saveDB keeps to itself.
    bool save();

    /// Adds a snippet that was here before. Where one of its identity was removed during a sync it goes in as a copy
    /// under an identity of its own, because such a removal counts again at every later end of a sync. Gives what is in
    /// the database now.
    std::shared_ptr<Snippet> putBack(const std::shared_ptr<Snippet>& snippet);

    /// Gives every snippet that has no identity, or that of one before it in the list, one of its own.
    void mendIdentities();

    /// Whether additions or edits wait for the end of a sync.
    [[nodiscard]] bool holdsChangesBack() const { return !_layaway.empty() || !_layawayEdits.empty(); }

    /// Whether a snippet is here to stay: in the list, or waiting to come in at the end of a sync.
    [[nodiscard]] bool holds(const _LTSnippet& snippet) const;

    /// What has happened to one snippet.
    struct Change {
        enum class Kind { Unknown, Addition, Removal, Modification };
        Kind kind = Kind::Unknown;
        const _LTSnippet* snippet = nullptr;
    };
    /// What the notification is about that is being posted; unknown where it is not about one snippet alone. So that
    /// nobody has to look through all of them for each one that comes in.
    [[nodiscard]] const Change& change() const { return m_change; }

    void addSnippet(const std::shared_ptr<_LTSnippet>& snippet) override;
    void removeSnippet(const std::shared_ptr<_LTSnippet>& snippet) override;
    /// Posts the notification also while a sync holds the change back from the list.
    void notifyOfModificationForSnippet(const std::shared_ptr<_LTSnippet>& snippet) override;

    /// Whether a snippet that is still in the list was removed during a sync and will be gone at its end.
    [[nodiscard]] bool isLeaving(const _LTSnippet& snippet) const;
    /// Whether there are such snippets. Costs a look for each that was removed during any sync so far.
    [[nodiscard]] bool hasLeavingSnippets() const;

    /// A copy that no snippet shares its identity with. It is not in the database.
    [[nodiscard]] static std::shared_ptr<Snippet> copyUnderFreeIdentity(const Snippet& snippet);

protected:
    [[nodiscard]] QString databaseFileName() const override;
    [[nodiscard]] QString databaseName() const override;
    [[nodiscard]] _LTSnippetClass snippetClass() const override;

private:
    Change m_change;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/database/LTDatabase.h>

/// The store of this program's snippets: the kit's, with its own file and record class.
class SnippetsDatabase : public LTDatabase {
public:
    /// The one store of the process, made on first use. A program calls this before anything of the kit that asks for
    /// the shared store, so that the store is of this class.
    [[nodiscard]] static std::shared_ptr<SnippetsDatabase> shared();

    /// The full path of the file that the snippets are kept in.
    [[nodiscard]] QString path() const { return _path; }

protected:
    [[nodiscard]] QString databaseFileName() const override;
    [[nodiscard]] QString databaseName() const override;
    [[nodiscard]] _LTSnippetClass snippetClass() const override;
};

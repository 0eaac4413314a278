// SPDX-License-Identifier: MIT
#include "SnippetsDatabase.h"

#include "Snippet.h"

std::shared_ptr<SnippetsDatabase> SnippetsDatabase::shared() {
    return std::dynamic_pointer_cast<SnippetsDatabase>(sharedDB<SnippetsDatabase>());
}

QString SnippetsDatabase::databaseFileName() const {
    return QStringLiteral("Snippets.plist");
}

QString SnippetsDatabase::databaseName() const {
    return QStringLiteral("Snippets");
}

_LTSnippetClass SnippetsDatabase::snippetClass() const {
    return _LTSnippetClass::of<Snippet>();
}

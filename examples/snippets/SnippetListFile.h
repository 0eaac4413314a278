// SPDX-License-Identifier: MIT
// Snippets in a file of their own, to be carried elsewhere and read again: an XML property list that has of each
// snippet all that the database has.
#pragma once

#include <VXKit/platform/foundation/NSError.h>

#include <QString>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class Snippet;

/// What was read of such a file.
struct SnippetList {
    std::vector<std::shared_ptr<Snippet>> snippets;
    std::vector<std::size_t> badRecords; ///< the numbers, from 1, of those that hold no snippet
};

/// The content of the file; nothing, with the reason in `error`, where a property list cannot hold it.
[[nodiscard]] std::optional<std::string> bytesOfSnippetList(const std::vector<std::shared_ptr<Snippet>>& snippets,
                                                            NSError* error);

/// Whether `bytes` mean to be such a file, or one of this program's database, be they whole or not.
[[nodiscard]] bool isSnippetList(std::string_view bytes);

/// Reads `bytes`; nothing, with the reason in `error`, where they hold no list of snippets.
[[nodiscard]] std::optional<SnippetList> snippetListFrom(std::string_view bytes, NSError* error);

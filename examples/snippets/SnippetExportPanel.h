// SPDX-License-Identifier: MIT
#pragma once

#include "SnippetExporter.h"

#include <optional>

class NSWindow;

/// Asks, as a sheet over `window`, in which form `snippets` are to be exported, then where to, and exports them.
/// `areFound` says that these are not all there are. The file of the open database, at `databasePath`, is refused.
/// Nothing where the person wants none of it after all.
[[nodiscard]] std::optional<SnippetExportResult> exportWithPanels(const std::vector<std::shared_ptr<Snippet>>& snippets,
                                                                  bool areFound, const QString& databasePath,
                                                                  NSWindow& window);

// SPDX-License-Identifier: MIT
// What the program asks the person, as sheets over the window that it is about.
#pragma once

#include <QString>

#include <optional>

class NSWindow;
class Snippet;

/// The user default that keeps the person from being asked before a snippet is removed.
inline constexpr const char* removeWithoutAskingKey = "SnippetsRemoveWithoutAsking";

/// Whether the person is asked before a snippet is removed.
[[nodiscard]] bool asksBeforeRemoving();

/// Whether `snippet` may be removed. Asks, unless the person has once wished not to be asked again.
[[nodiscard]] bool mayRemove(const Snippet& snippet, NSWindow& window);

/// The new title for `snippet`; nothing where the person keeps the old one.
[[nodiscard]] std::optional<QString> askForTitle(const Snippet& snippet, NSWindow& window);

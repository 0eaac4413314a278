// SPDX-License-Identifier: MIT
#pragma once

#include "SyncSettings.h"

#include <QString>

#include <optional>

class NSWindow;

/// What the user said about syncing.
struct SyncAnswer {
    SyncSettings settings;
    QString password; ///< empty where it is to stay what it is
};

/// Asks for the server's folder, name and password, and whether to keep in sync with it, in a sheet over `window`; nil
/// where the user cancels. An address that cannot be one is refused in the sheet itself.
///
///     Address    [ https://host/folder        ]
///     Name       [                            ]
///     Password   [ ••••                       ]
///                ☑ Keep the snippets in sync
///     what an address is wrong in, or what to know of it
///                              [Cancel] [ OK ]
[[nodiscard]] std::optional<SyncAnswer> askForSyncSettings(const SyncSettings& settings, NSWindow& window);

/// Asks for the password alone, saying why in `reason`; nil where the user cancels.
[[nodiscard]] std::optional<QString> askForSyncPassword(const SyncSettings& settings, const QString& reason,
                                                        NSWindow& window);

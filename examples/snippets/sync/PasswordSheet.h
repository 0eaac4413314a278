// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

class NSWindow;

/// Asks for the password for `host`, saying why in `reason`, in a sheet over `window`; nil where the person cancels.
///
///     Password for host
///     Why it is needed.
///     Password: [ ••••               ]
///                       [Cancel] [ OK ]
[[nodiscard]] std::optional<QString> askForPassword(const QString& host, const QString& reason, NSWindow& window);

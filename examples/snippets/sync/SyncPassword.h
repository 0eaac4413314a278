// SPDX-License-Identifier: MIT
#pragma once

#include "SyncSettings.h"

#include <QString>

#include <functional>
#include <optional>

class QObject;

/// The password for the server, in the desktop's secret service and nowhere else: without such a service it is kept
/// nowhere, and has to be asked for each time.
///
/// The service may ask the user to unlock it first, so answers come later; none comes when `receiver` is gone by then.
namespace SyncPassword {

/// Gives the password, or nothing where none is kept or there is no service.
void read(const SyncSettings& settings, QObject* receiver, std::function<void(const std::optional<QString>&)> handler);

/// Keeps a password; the handler is told whether it was.
void write(const SyncSettings& settings, const QString& password, QObject* receiver, std::function<void(bool)> handler);

} // namespace SyncPassword

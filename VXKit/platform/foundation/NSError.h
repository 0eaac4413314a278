// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Why an operation of the platform layer failed, in words fit for a log line or an alert.
///
/// An operation that can fail takes a pointer to one and fills it only when it fails; a null pointer means the caller
/// does not want to know. Stands for AppKit's `NSError`.
struct NSError {
    /// What went wrong and with what (a file's path, a byte offset, a line number), without a final full stop.
    QString localizedDescription;
};

/// Fills `error`, where the caller gave one, with `description`.
inline void NSSetError(NSError* error, const QString& description) {
    if (error) {
        error->localizedDescription = description;
    }
}

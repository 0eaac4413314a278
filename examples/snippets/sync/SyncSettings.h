// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

/// Where the snippets are kept in sync, and whether: what the user says once, kept in the user defaults. The password
/// is not among it; see SyncPassword.
struct SyncSettings {
    QUrl address; ///< of the WebDAV folder
    QString name; ///< that the server knows the user by; empty where it needs none
    bool isOn = false;

    [[nodiscard]] static SyncSettings load();
    /// Tells whether they are kept.
    bool save() const;

    /// What is wrong with an address as it was typed, for a person to read; empty where nothing is.
    [[nodiscard]] static QString problemWith(const QUrl& address);
    /// The address that typed text means: with "https://" in front where it begins with no scheme.
    [[nodiscard]] static QUrl addressFrom(const QString& typed);

    friend bool operator==(const SyncSettings&, const SyncSettings&) = default;
};

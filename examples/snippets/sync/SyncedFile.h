// SPDX-License-Identifier: MIT
#pragma once

#include "Snippet.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

/// What one file of the folder that several computers share holds: a snippet, or the mark that it was removed.
///
/// A removal leaves a mark in the place of the file, because a file that is merely missing may as well be one that the
/// server has lost, and then every computer that still has the snippet puts it back.
struct SyncedFile {
    std::shared_ptr<const Snippet> snippet; ///< null in a mark

    /// The name of the file of a snippet with this identity: its seconds since 1970, exactly.
    [[nodiscard]] static QString nameFor(NSDate identity);
    /// The identity that a name stands for; nil for a name that nameFor never gives.
    [[nodiscard]] static std::optional<NSDate> identityIn(const QString& name);

    /// Reads the file called `name`; nil where the bytes are neither a snippet of that identity nor a mark.
    [[nodiscard]] static std::optional<SyncedFile> read(const QString& name, const QByteArray& bytes);

    /// The content of the file; nil where the snippet cannot be told in a file.
    [[nodiscard]] static std::optional<QByteArray> bytesOf(const Snippet& snippet);
    [[nodiscard]] static QByteArray markOfRemoval(NSDate identity);

    /// Equal for snippets that are equal in all that a file holds; empty for null.
    [[nodiscard]] static QByteArray fingerprintOf(const Snippet* snippet);
    [[nodiscard]] QByteArray fingerprint() const { return fingerprintOf(snippet.get()); }
};

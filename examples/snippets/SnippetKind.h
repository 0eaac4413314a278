// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringView>

/// What a snippet's text is, as far as it can be told from the text alone.
enum class SnippetKind { Text, Link, MailAddress, Color, Path, Code };

/// The kind of `text`. All but code is a single line; what is none of them is plain text. Of a long text the beginning
/// tells.
[[nodiscard]] SnippetKind kindOfText(QStringView text);

/// What a kind is called in the window.
[[nodiscard]] QString nameOfKind(SnippetKind kind);

// SPDX-License-Identifier: MIT
#pragma once

#include "Snippet.h"
#include "SnippetsDatabase.h"

#include <memory>

class NSPasteboard;

/// Adds a snippet of `text`, titled with its first line, and answers it; null, with nothing added, for nothing but
/// blanks.
std::shared_ptr<Snippet> addSnippetOfText(SnippetsDatabase& database, const QString& text);

/// The same with the plain text on `pasteboard`; null where there is none.
std::shared_ptr<Snippet> addSnippetFromPasteboard(SnippetsDatabase& database, const NSPasteboard& pasteboard);

/// Puts the text of `snippet`, a record of `database`, on `pasteboard` and counts the use. False, with nothing counted,
/// where the pasteboard does not take it.
bool copySnippetToPasteboard(const std::shared_ptr<Snippet>& snippet, SnippetsDatabase& database,
                             NSPasteboard& pasteboard);

/// Lets the kit's pop-up tell that something was copied, as soon as all else that happens at copying is done: input
/// waits while it zooms in, and neither the window's going nor the keyboard's return to where it was may wait for that.
void showCopyPopUp();

// SPDX-License-Identifier: MIT
// Snippets that are dragged out of the window, and what is dragged into it.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QMimeData;
class Snippet;

/// What others get of a snippet that is dragged to them: its text, and of a link the address too.
[[nodiscard]] std::unique_ptr<QMimeData> mimeDataOf(const Snippet& snippet);

/// What is dragged here.
struct DraggedContent {
    QStringList paths; ///< of files and folders of this computer
    bool hasText = false;

    [[nodiscard]] bool isEmpty() const { return paths.isEmpty() && !hasText; }
};

/// Looks at the kinds of what is dragged, and not at the text itself, which its owner may have to be waited for.
[[nodiscard]] DraggedContent contentOf(const QMimeData& data);

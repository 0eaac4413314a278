// SPDX-License-Identifier: MIT
#include "SnippetMimeData.h"

#include "Snippet.h"
#include "SnippetKind.h"

#include <QMimeData>
#include <QUrl>

std::unique_ptr<QMimeData> mimeDataOf(const Snippet& snippet) {
    auto data = std::make_unique<QMimeData>();
    const QString text = snippet.text();
    data->setText(text);
    if (kindOfText(text) == SnippetKind::Link) {
        const QUrl url = QUrl::fromUserInput(text.trimmed());
        if (url.isValid()) {
            data->setUrls({url});
            // Which otherwise is made of the addresses, where somebody asks.
            data->setText(text);
        }
    }
    return data;
}

DraggedContent contentOf(const QMimeData& data) {
    DraggedContent content;
    if (data.hasUrls()) {
        for (const QUrl& url : data.urls()) {
            if (url.isLocalFile()) {
                content.paths += url.toLocalFile();
            }
        }
    }
    // Files come with their names as text.
    content.hasText = content.paths.isEmpty() && data.hasText();
    return content;
}

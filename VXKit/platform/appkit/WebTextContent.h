// SPDX-License-Identifier: MIT
// What WebTextEngine makes of the content of a page before Qt's text browser shows it. For it alone.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

class QTextDocument;

namespace WebTextContent {

/// Whether a server has the page at `url`.
[[nodiscard]] bool isOnTheWeb(const QUrl& url);

/// Whether a file or a resource of the program is the page at `url`.
[[nodiscard]] bool isLocal(const QUrl& url);

/// What a person is told of a page beyond the limit.
[[nodiscard]] QString tooLarge();

/// The content of a file or a resource of the program, or nothing and the reason.
[[nodiscard]] std::optional<QByteArray> readLocalFile(const QUrl& url, qint64 mostBytes, QString* reason);

/// The text of a page: in the encoding that its server says, else that which the page itself says, else UTF-8.
[[nodiscard]] QString decoded(const QByteArray& content, const QByteArray& contentType);

/// `html` as Qt's reader wants it: elements that never have content end by themselves, because it would take what comes
/// after one for its content, and style sheets tell their type.
[[nodiscard]] QString asQtReadsIt(const QString& html);

/// Whether elements lie so deep in one another that showing them would take minutes.
[[nodiscard]] bool isTooDeep(const QString& html);

/// Makes the text of `document` larger or smaller, whatever sizes its formats were given in. A heading with a size of
/// its own gets that: Qt would add to it what it adds to headings.
void scaleText(QTextDocument& document, double factor);

} // namespace WebTextContent

// SPDX-License-Identifier: MIT
#include "SnippetKind.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace {

constexpr qsizetype longestLookedAt = 4096; // characters
constexpr qsizetype longestLine = 2048;     // of a link or path; longer ones are text

QRegularExpression insensitive(const char* pattern) {
    return QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::CaseInsensitiveOption);
}

bool matches(const QRegularExpression& expression, QStringView text) {
    return expression.match(text).hasMatch();
}

bool isMailAddress(QStringView line) {
    static const QRegularExpression address =
        insensitive(R"(^(mailto:)?[^\s@<>,;:"()\\/]+@[^\s@.,;:/]+(\.[^\s@.,;:/]+)+$)");
    return matches(address, line);
}

bool isLink(QStringView line) {
    static const QRegularExpression link =
        insensitive(R"(^([a-z][a-z0-9+.-]*://[^\s/]\S*|file:///\S*|www\.[^\s.]+\.\S+)$)");
    return matches(link, line);
}

bool isColor(QStringView line) {
    static const QRegularExpression color =
        insensitive(R"(^(#([0-9a-f]{3,4}|[0-9a-f]{6}|[0-9a-f]{8})|(rgb|hsl)a?\([\d\s.,%/a-z-]+\))$)");
    return matches(color, line);
}

bool isPath(QStringView line) {
    static const QRegularExpression unixPath(QStringLiteral(R"(^(~|\.\.?)?(/[^/\s][^/]*)+/?$)"));
    static const QRegularExpression drivePath(QStringLiteral(R"(^[A-Za-z]:\\[^*?"<>|]*$)"));
    if (matches(drivePath, line)) {
        return true;
    }
    // A name with blanks in it is one among others; a single word with a slash before it and words after is a command.
    return matches(unixPath, line) && (!line.contains(u' ') || line.count(u'/') > 1);
}

/// Whether a line, without the blanks around it, is one that people write for machines alone.
bool isLineOfCode(QStringView line) {
    static const QRegularExpression beginning(QStringLiteral(
        R"(^(//|/\*|\*/|<[!?/a-zA-Z]|@\w+$|#(include|define|ifn?def|if|endif|pragma|import)\b|)"
        R"((import|from|using|package) [\w.:*"'<{]+|(def|class|struct|fn|func|function|public|private|static|const|var|)"
        R"(let|namespace|template|enum|interface|return|export)\b.*[({=:;<]|(if|for|while|switch|elif)\s*\(|)"
        R"((SELECT|INSERT INTO|UPDATE|DELETE FROM|CREATE TABLE)\s))"));
    static const QRegularExpression call(QStringLiteral(R"(^[\w.:]+\(([^ ].*\)|[^)]*)$|\(\)[;,)]?$|^[)\]}]+[;,]?$)"));
    static const QRegularExpression assignment(
        QStringLiteral(R"(^[\w.\[\]]+\s*[:+-]?=\s*\S+|^"?[\w-]+"?\s*:\s*["\d\[{])"));
    constexpr std::array ends{u';', u'{', u'}'};
    return std::any_of(ends.begin(), ends.end(), [&](char16_t end) { return line.endsWith(end); }) ||
           matches(beginning, line) || matches(call, line) || matches(assignment, line);
}

/// Whether as many lines as not look like code.
bool isCode(QStringView text) {
    if (text.startsWith(u"#!")) {
        return true;
    }
    qsizetype lines = 0;
    qsizetype linesOfCode = 0;
    bool isInCode = false;
    for (const QStringView line : text.split(u'\n')) {
        const QStringView bare = line.trimmed();
        if (!bare.isEmpty()) {
            // What is indented below a line of code belongs to it.
            isInCode = isLineOfCode(bare) || (isInCode && line.front().isSpace());
            ++lines;
            linesOfCode += isInCode ? 1 : 0;
        }
    }
    return lines > 0 && 2 * linesOfCode >= lines;
}

} // namespace

SnippetKind kindOfText(QStringView text) {
    text = text.trimmed();
    const bool isLine = text.size() <= longestLine && !text.contains(u'\n') && !text.contains(u'\r');
    if (isLine && isMailAddress(text)) {
        return SnippetKind::MailAddress;
    }
    if (isLine && isLink(text)) {
        return SnippetKind::Link;
    }
    if (isLine && isColor(text)) {
        return SnippetKind::Color;
    }
    if (isLine && isPath(text)) {
        return SnippetKind::Path;
    }
    return isCode(text.first(std::min(text.size(), longestLookedAt))) ? SnippetKind::Code : SnippetKind::Text;
}

QString nameOfKind(SnippetKind kind) {
    switch (kind) {
    case SnippetKind::Text:
        return QStringLiteral("Text");
    case SnippetKind::Link:
        return QStringLiteral("Link");
    case SnippetKind::MailAddress:
        return QStringLiteral("E-mail");
    case SnippetKind::Color:
        return QStringLiteral("Colour");
    case SnippetKind::Path:
        return QStringLiteral("Path");
    case SnippetKind::Code:
        return QStringLiteral("Code");
    }
    return {};
}

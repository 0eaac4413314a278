// SPDX-License-Identifier: MIT
// How titles are told in sentences.
#pragma once

#include <QString>
#include <QStringView>

/// The first `length` characters of `line`, no half of a surrogate pair among them.
[[nodiscard]] inline QStringView beginning(QStringView line, qsizetype length) {
    if (line.size() <= length) {
        return line;
    }
    return line.first(line[length].isLowSurrogate() ? length - 1 : length);
}

/// The title as far as there is room for it in a sentence.
[[nodiscard]] QString shortTitle(const QString& title);

/// The same in quotation marks.
[[nodiscard]] QString quotedTitle(const QString& title);

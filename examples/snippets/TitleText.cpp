// SPDX-License-Identifier: MIT
#include "TitleText.h"

namespace {

constexpr qsizetype longestTitle = 40; // characters

} // namespace

QString shortTitle(const QString& title) {
    return title.size() > longestTitle ? beginning(title, longestTitle - 1).trimmed().toString() + QChar(u'…') : title;
}

QString quotedTitle(const QString& title) {
    return QChar(u'“') + shortTitle(title) + QChar(u'”');
}

// SPDX-License-Identifier: MIT
#include "TitleText.h"

namespace {

constexpr qsizetype longestTitle = 40; // characters

} // namespace

QString shortTitle(const QString& title) {
    return title.size() > longestTitle ? title.first(longestTitle - 1).trimmed() + QChar(u'…') : title;
}

QString quotedTitle(const QString& title) {
    return QChar(u'“') + shortTitle(title) + QChar(u'”');
}

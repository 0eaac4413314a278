// SPDX-License-Identifier: MIT
// How titles are told in sentences.
#pragma once

#include <QString>

/// The title as far as there is room for it in a sentence.
[[nodiscard]] QString shortTitle(const QString& title);

/// The same in quotation marks.
[[nodiscard]] QString quotedTitle(const QString& title);

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <algorithm>
#include <cstddef>

/// What makes one text of another: how much stays at its beginning and at its end, and what stands between.
struct TextChange {
    qsizetype begin = 0; ///< characters that stay
    qsizetype end = 0;   ///< those that stay at the end
    QString inserted;

    [[nodiscard]] static TextChange between(const QString& before, const QString& after) {
        const auto shorter = static_cast<std::ptrdiff_t>(std::min(before.size(), after.size()));
        const auto begin =
            std::mismatch(before.begin(), before.begin() + shorter, after.begin()).first - before.begin();
        const auto end =
            std::mismatch(before.rbegin(), before.rbegin() + (shorter - begin), after.rbegin()).first - before.rbegin();
        return {begin, end, after.sliced(begin, after.size() - begin - end)};
    }
};

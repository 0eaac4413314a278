// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// "1 file", "1,200 files".
[[nodiscard]] QString numbered(qint64 count, const char* one, const char* many);

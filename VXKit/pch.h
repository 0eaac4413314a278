// SPDX-License-Identifier: MIT
// Headers that most sources of the kit include and that do not change.
#pragma once

#include <QtWidgets>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string>

/// The name that `symbol` has in the source; itself where it is not a mangled one.
[[nodiscard]] inline std::string demangled(const char* symbol) {
    const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr),
                                                           &std::free);
    return name ? name.get() : symbol;
}

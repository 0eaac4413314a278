// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/support/VMUSymbolicator.h>

#include <cstdint>
#include <span>
#include <vector>

/// What is left of a thread that has crashed.
struct VXCrashStack {
    std::uint64_t instruction = 0;
    std::span<const std::uint64_t> registers; ///< as the record has them; none where the machine's are not known
    std::uint64_t address = 0;                ///< of the first of the bytes
    std::span<const unsigned char> bytes;
};

struct VXStackAddress {
    std::uint64_t address = 0;
    VMUAddressKind kind = VMUAddressKind::Instruction;
};

/// The calls that led to the crash, innermost first: the instruction that crashed and then return addresses. Functions
/// without a frame pointer are followed by the tables in the files of `modules`, as exceptions would be. Ends where
/// those, or the bytes, do.
[[nodiscard]] std::vector<VXStackAddress> VXUnwindCrashStack(const VXCrashStack& stack,
                                                             const std::vector<VMUModule>& modules);

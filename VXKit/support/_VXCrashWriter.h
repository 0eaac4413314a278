// SPDX-License-Identifier: MIT
// What writes the record of a crash, where the process has crashed.
#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <csignal>
#include <cstddef>
#include <string_view>

/// Text for a record, set aside before there is a crash; what is longer is cut.
template <std::size_t Size>
struct VXCrashText {
    std::size_t length = 0;
    std::array<char, Size> bytes = {};

    void set(std::string_view text) {
        length = std::min(text.size(), Size);
        std::copy_n(text.data(), length, bytes.data());
    }
};

/// What a record needs to be told.
struct VXCrashSettings {
    VXCrashText<PATH_MAX> folder;
    VXCrashText<255> hostVersion;
};

/// The exception that the process is about to end for.
struct VXCrashException {
    VXCrashText<255> type;
    VXCrashText<4096> reason;
};

inline constexpr std::size_t VXMemoryPageBytes = 4096;

/// The number of this thread, as the kernel has it. For signal handlers, too.
[[nodiscard]] int VXCurrentThread();

/// Opens a file descriptor that a record is written to where the process has used up all others, and closes it again.
/// The former is for where there is none.
void VXHoldSpareDescriptor();
void VXCloseSpareDescriptor();

/// Writes the record of this process; for a handler of the signal that `information` and `context` are about, and once
/// only. `exception` is that which this thread ends for, null for none.
void VXWriteCrashRecord(const VXCrashSettings& settings, const VXCrashException* exception,
                        const siginfo_t& information, const void* context);

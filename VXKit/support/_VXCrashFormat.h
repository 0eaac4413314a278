// SPDX-License-Identifier: MIT
// The record of a crash as it lies in its file: the mark, the head, and then sections, each behind a header of its own.
//
// Numbers are as the machine has them: who reads a record is the next run of the program that wrote it. The writer
// fills in a section's header after its content, so one that was cut off by a full disk has the kind None.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <elf.h>

inline constexpr std::array<char, 8> VXCrashMark = {'V', 'X', 'C', 'r', 'a', 's', 'h', '1'};

/// The machine whose registers a record of this build holds, as the headers of programs name it.
#if defined(__x86_64__)
inline constexpr std::uint32_t VXCrashMachine = EM_X86_64;
#elif defined(__aarch64__)
inline constexpr std::uint32_t VXCrashMachine = EM_AARCH64;
#else
inline constexpr std::uint32_t VXCrashMachine = EM_NONE;
#endif

struct VXCrashHead {
    std::array<char, 8> mark = VXCrashMark;
    std::uint32_t machine = VXCrashMachine;
    std::int32_t signal = 0;
    std::int32_t code = 0;
    std::int32_t sender = 0; ///< process that sent the signal; 0 where none did
    std::int32_t process = 0;
    std::int32_t thread = 0;
    std::uint64_t faultAddress = 0;
    std::uint64_t instruction = 0;
    std::int64_t seconds = 0; ///< since 1970
    std::int64_t nanoseconds = 0;
};

enum class VXCrashSectionKind : std::uint64_t {
    None = 0,
    HostVersion,     ///< UTF-8
    ExceptionType,   ///< UTF-8
    ExceptionReason, ///< as what() had it
    Registers,       ///< 64 bits each, in the order in which debugging information numbers them; the instruction last
    Stack,           ///< its lowest address (64 bits), then its bytes
    Maps,            ///< the text of /proc/PID/maps
    Images,          ///< VXLoadedImage, one for each program or library
    Frames,          ///< what a reader has made of the stack, whose bytes are then no more
    Erased,
};

struct VXCrashSection {
    VXCrashSectionKind kind = VXCrashSectionKind::None;
    std::uint64_t size = 0; ///< of the content that follows
};

namespace VXCrashLimits {

inline constexpr std::size_t stackBytes = std::size_t{1} << 20U;
inline constexpr std::size_t mapsBytes = std::size_t{1} << 20U;
inline constexpr std::size_t images = 4096;
inline constexpr std::size_t registers = 33;
inline constexpr std::size_t fileBytes = std::size_t{8} << 20U;
inline constexpr std::size_t frames = 16384;

} // namespace VXCrashLimits

/// The names of records: `crash-`, the process, the nanosecond since 1970, and this.
inline constexpr const char* VXCrashFileSuffix = ".vxcrash";

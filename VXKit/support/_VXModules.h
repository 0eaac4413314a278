// SPDX-License-Identifier: MIT
// Programs and libraries in the memory of a process, and libdwfl's view of them.
#pragma once

#include <VXKit/support/VMUSymbolicator.h>

#include <cstddef>
#include <cstdint>
#include <elfutils/libdwfl.h>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/// A part of a process's memory that shows a file: one line of its `/proc/PID/maps`.
struct VXMapping {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    std::uint64_t offset = 0; ///< from the file's beginning
    bool isReadable = false;
    bool isExecutable = false;
    std::string_view path; ///< as the kernel writes it
};

/// Takes the next mapping of a file, and what is before it, off the text of a `/proc/PID/maps`; nothing where there is
/// no more. May be called from a signal handler.
[[nodiscard]] std::optional<VXMapping> VXTakeMapping(std::string_view& maps);

/// What the headers of a loaded program or library tell: enough to know it among the mappings of its process, and its
/// file again later. Fixed in size, since it is filled while a process dies, and written to a file as it is.
struct VXLoadedImage {
    static constexpr std::size_t longestBuildId = 64;

    std::uint64_t start = 0;            ///< address of its first byte
    std::uint64_t size = 0;             ///< of memory, from the first byte to the last
    std::uint64_t executableStart = 0;  ///< address of its first mapping with code
    std::uint64_t executableOffset = 0; ///< what that maps, in bytes from the file's beginning
    std::uint64_t buildIdLength = 0;
    unsigned char buildId[longestBuildId] = {};
};

/// Reads `size` bytes at `address` of the process `pid`; false where not all of them can be read. May be called from a
/// signal handler.
[[nodiscard]] bool VXReadMemory(int pid, std::uint64_t address, void* bytes, std::size_t size);

/// Fills `image` from the headers at `start` in the memory of the process `pid`; false where no program or library
/// begins there. May be called from a signal handler.
[[nodiscard]] bool VXReadLoadedImage(int pid, std::uint64_t start, VXLoadedImage& image);

/// Which of the files that the text of a `/proc/PID/maps` tells of are programs and libraries, and where: those that
/// one of `images` fits. Other mappings of such files, as tools that read them have, are none.
[[nodiscard]] std::vector<VMUModule> VXModulesOfMaps(std::string_view maps, const std::vector<VXLoadedImage>& images,
                                                     std::int64_t unchangedSince);

/// What the process `pid` has loaded now.
[[nodiscard]] std::vector<VMUModule> VXModulesOfProcess(int pid);

/// A session of libdwfl for some modules, which opens a module's file when it is first needed, and only the very file
/// that was loaded.
class VXModuleSession {
public:
    /// `pid` is that of the process while it lives, so that a program whose file is gone can still be read; else 0.
    VXModuleSession(std::vector<VMUModule> modules, int pid);
    VXModuleSession(const VXModuleSession&) = delete;
    VXModuleSession& operator=(const VXModuleSession&) = delete;
    ~VXModuleSession() = default;

    [[nodiscard]] Dwfl* dwfl() const { return m_dwfl.get(); }
    [[nodiscard]] const std::vector<VMUModule>& modules() const { return m_modules; }
    /// The module that `address` lies in, or null.
    [[nodiscard]] const VMUModule* moduleOfAddress(std::uint64_t address) const;

private:
    static int findElf(Dwfl_Module* module, void** data, const char* name, Dwarf_Addr base, char** file, Elf** elf);
    static const Dwfl_Callbacks callbacks;

    std::vector<VMUModule> m_modules;
    std::map<std::uint64_t, const VMUModule*> m_byStart;
    int m_pid;
    std::unique_ptr<Dwfl, decltype(&dwfl_end)> m_dwfl;
};

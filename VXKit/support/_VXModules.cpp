// SPDX-License-Identifier: MIT
#include <VXKit/support/_VXModules.h>

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t mostProgramHeaders = 64;
constexpr std::size_t mostNoteBytes = 4096;

/// The bytes of an image by their offset in its file: in memory, where its first mapping holds the beginning of the
/// file, or in the file.
class ImageBytes {
public:
    static ImageBytes inMemory(int pid, std::uint64_t start) { return {pid, start, -1}; }
    static ImageBytes inFile(int descriptor) { return {0, 0, descriptor}; }

    [[nodiscard]] bool read(std::uint64_t offset, void* bytes, std::size_t size) const {
        if (m_descriptor < 0) {
            return VXReadMemory(m_pid, m_start + offset, bytes, size);
        }
        return ::pread(m_descriptor, bytes, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
    }

private:
    ImageBytes(int pid, std::uint64_t start, int descriptor) : m_pid(pid), m_start(start), m_descriptor(descriptor) {}

    int m_pid;
    std::uint64_t m_start;
    int m_descriptor;
};

/// Asked when the library is loaded, since a signal handler must not wait for a first time.
const std::uint64_t pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));

std::uint64_t pageFloor(std::uint64_t address) {
    return address & ~(pageSize - 1);
}

/// Looks for the build id among the notes at `offset`; the buffer is on the stack because nothing may be allocated.
void readBuildId(const ImageBytes& bytes, std::uint64_t offset, std::uint64_t size, VXLoadedImage& image) {
    alignas(ElfW(Nhdr)) std::array<unsigned char, mostNoteBytes> notes; // filled by the next lines
    const std::size_t length = std::min<std::uint64_t>(size, notes.size());
    if (!bytes.read(offset, notes.data(), length)) {
        return;
    }
    std::size_t position = 0;
    while (length - position >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) note;
        std::memcpy(&note, notes.data() + position, sizeof note);
        position += sizeof note;
        const std::size_t nameSize = (std::size_t{note.n_namesz} + 3) & ~std::size_t{3};
        const std::size_t contentSize = (std::size_t{note.n_descsz} + 3) & ~std::size_t{3};
        if (nameSize > length - position || contentSize > length - position - nameSize) {
            return;
        }
        const bool isGnu = note.n_namesz == 4 && std::memcmp(notes.data() + position, "GNU", 4) == 0;
        position += nameSize;
        if (isGnu && note.n_type == NT_GNU_BUILD_ID && note.n_descsz <= VXLoadedImage::longestBuildId) {
            std::memcpy(image.buildId, notes.data() + position, note.n_descsz);
            image.buildIdLength = note.n_descsz;
            return;
        }
        position += contentSize;
    }
}

bool readImage(const ImageBytes& bytes, std::uint64_t start, VXLoadedImage& image) {
    ElfW(Ehdr) header;
    if (!bytes.read(0, &header, sizeof header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_phentsize != sizeof(ElfW(Phdr)) || header.e_phnum > mostProgramHeaders) {
        return false;
    }
    // In the first page, which is there: where the kernel may not be asked, reading beyond it may crash.
    if (header.e_phoff > pageSize || header.e_phnum * sizeof(ElfW(Phdr)) > pageSize - header.e_phoff) {
        return false;
    }
    std::array<ElfW(Phdr), mostProgramHeaders> segments; // filled by the next lines
    if (!bytes.read(header.e_phoff, segments.data(), header.e_phnum * sizeof segments[0])) {
        return false;
    }
    std::uint64_t lowest = UINT64_MAX;
    std::uint64_t highest = 0;
    std::uint64_t firstSegmentSize = 0;
    const ElfW(Phdr)* code = nullptr;
    for (std::size_t number = 0; number < header.e_phnum; ++number) {
        const ElfW(Phdr)& segment = segments[number];
        if (segment.p_type != PT_LOAD) {
            continue;
        }
        if (lowest == UINT64_MAX) {
            firstSegmentSize = segment.p_filesz;
        }
        lowest = std::min<std::uint64_t>(lowest, pageFloor(segment.p_vaddr));
        highest = std::max<std::uint64_t>(highest, segment.p_vaddr + segment.p_memsz);
        if (!code && (segment.p_flags & PF_X) != 0) {
            code = &segment;
        }
    }
    if (!code || highest <= lowest) {
        return false;
    }
    image = {};
    image.start = start;
    image.size = highest - lowest;
    image.executableStart = start + (pageFloor(code->p_vaddr) - lowest);
    image.executableOffset = pageFloor(code->p_offset);
    for (std::size_t number = 0; number < header.e_phnum && image.buildIdLength == 0; ++number) {
        const ElfW(Phdr)& segment = segments[number];
        // Only what lies in the first mapping is at the same distance from the beginning in the file and in memory.
        if (segment.p_type == PT_NOTE && segment.p_offset + segment.p_filesz <= firstSegmentSize) {
            readBuildId(bytes, segment.p_offset, segment.p_filesz, image);
        }
    }
    return true;
}

QByteArray buildIdOf(const VXLoadedImage& image) {
    return {reinterpret_cast<const char*>(image.buildId),
            static_cast<qsizetype>(std::min<std::uint64_t>(image.buildIdLength, VXLoadedImage::longestBuildId))};
}

bool takeHexadecimal(std::string_view& text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc();
}

bool take(std::string_view& text, std::string_view expected) {
    if (!text.starts_with(expected)) {
        return false;
    }
    text.remove_prefix(expected.size());
    return true;
}

/// `55d0c0a00000-55d0c0a21000 r-xp 00001000 08:01 1234567      /usr/bin/notes`; nothing for a mapping of no file.
std::optional<VXMapping> mappingOf(std::string_view line) {
    VXMapping mapping;
    if (!takeHexadecimal(line, mapping.start) || !take(line, "-") || !takeHexadecimal(line, mapping.end) ||
        !take(line, " ") || line.size() < 5) {
        return std::nullopt;
    }
    mapping.isReadable = line[0] == 'r';
    mapping.isExecutable = line[2] == 'x';
    line.remove_prefix(4);
    if (!take(line, " ") || !takeHexadecimal(line, mapping.offset)) {
        return std::nullopt;
    }
    const std::size_t slash = line.find('/');
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    mapping.path = line.substr(slash);
    return mapping;
}

constexpr std::string_view deletedMark = " (deleted)";

/// The kernel writes a line feed in a name as an octal number, and marks a file that has lost its name.
QByteArray fileOf(std::string_view path) {
    if (path.ends_with(deletedMark)) {
        path.remove_suffix(deletedMark.size());
    }
    QByteArray file(path.data(), static_cast<qsizetype>(path.size()));
    return file.replace("\\012", "\n");
}

bool isFileOf(int descriptor, const VMUModule& module) {
    struct stat status {};
    VXLoadedImage image;
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        !readImage(ImageBytes::inFile(descriptor), module.start, image)) {
        return false;
    }
    if (!module.buildId.isEmpty()) {
        return buildIdOf(image) == module.buildId;
    }
    // The time of the last change, unlike that of the last modification, cannot be set by whoever replaces the file.
    return status.st_ctim.tv_sec <= module.unchangedSince;
}

int openFile(const QByteArray& path, const VMUModule& module) {
    // A pipe that has taken the file's place must not be waited for.
    const int descriptor = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor >= 0 && !isFileOf(descriptor, module)) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

QByteArray readWhole(const QByteArray& path) {
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The standard function of this kind asks servers for what it does not find; this one stays on the machine.
int findDebugInformation(Dwfl_Module* module, void** data, const char* name, Dwarf_Addr base, const char* file,
                         const char* link, GElf_Word checksum, char** found) {
    return dwfl_build_id_find_debuginfo(module, data, name, base, file, link, checksum, found);
}

} // namespace

bool VXReadMemory(int pid, std::uint64_t address, void* bytes, std::size_t size) {
    iovec local{bytes, size};
    iovec remote{reinterpret_cast<void*>(static_cast<std::uintptr_t>(address)), size};
    // Not the library's function, which the sanitizers watch: what is read here is no object of anybody's.
    const long read = ::syscall(SYS_process_vm_readv, pid, &local, 1, &remote, 1, 0);
    if (read < 0 && (errno == EPERM || errno == ENOSYS) && pid == ::getpid()) {
        // A sandbox forbids the call. Those who ask have seen that the mapping can be read.
        std::memcpy(bytes, remote.iov_base, size);
        return true;
    }
    return read >= 0 && static_cast<std::size_t>(read) == size;
}

std::optional<VXMapping> VXTakeMapping(std::string_view& maps) {
    while (!maps.empty()) {
        const std::size_t end = std::min(maps.find('\n'), maps.size());
        const auto mapping = mappingOf(maps.substr(0, end));
        maps.remove_prefix(std::min(end + 1, maps.size()));
        if (mapping) {
            return mapping;
        }
    }
    return std::nullopt;
}

bool VXReadLoadedImage(int pid, std::uint64_t start, VXLoadedImage& image) {
    return readImage(ImageBytes::inMemory(pid, start), start, image);
}

std::vector<VMUModule> VXModulesOfMaps(std::string_view maps, const std::vector<VXLoadedImage>& images,
                                       std::int64_t unchangedSince) {
    std::map<std::uint64_t, VXMapping> mappings;
    while (const auto mapping = VXTakeMapping(maps)) {
        mappings.emplace(mapping->start, *mapping);
    }
    std::vector<VMUModule> modules;
    for (const VXLoadedImage& image : images) {
        const auto first = mappings.find(image.start);
        const auto code = mappings.find(image.executableStart);
        if (first == mappings.end() || code == mappings.end() || first->second.path != code->second.path ||
            !code->second.isExecutable || code->second.offset != image.executableOffset ||
            image.size > UINT64_MAX - image.start) {
            continue;
        }
        modules.push_back(
            {fileOf(first->second.path), image.start, image.start + image.size, buildIdOf(image), unchangedSince});
    }
    return modules;
}

std::vector<VMUModule> VXModulesOfProcess(int pid) {
    const QByteArray maps = readWhole("/proc/" + QByteArray::number(pid) + "/maps");
    const std::string_view text(maps.constData(), static_cast<std::size_t>(maps.size()));
    std::vector<VXLoadedImage> images;
    std::string_view rest = text;
    while (const auto found = VXTakeMapping(rest)) {
        const VXMapping& mapping = *found;
        if (mapping.offset != 0 || !mapping.isReadable) {
            continue;
        }
        VXLoadedImage image;
        bool isImage = VXReadLoadedImage(pid, mapping.start, image);
        if (!isImage && pid != ::getpid() && !mapping.path.ends_with(deletedMark)) {
            // The memory of other processes is often closed even to their own user; the file that is mapped is not.
            const int descriptor = ::open(fileOf(mapping.path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
            isImage = descriptor >= 0 && readImage(ImageBytes::inFile(descriptor), mapping.start, image);
            if (descriptor >= 0) {
                ::close(descriptor);
            }
        }
        if (isImage) {
            images.push_back(image);
        }
    }
    return VXModulesOfMaps(text, images, std::time(nullptr));
}

const Dwfl_Callbacks VXModuleSession::callbacks = {
    .find_elf = &VXModuleSession::findElf,
    .find_debuginfo = &findDebugInformation,
    .section_address = nullptr, // for files that are not linked yet
    .debuginfo_path = nullptr,
};

VXModuleSession::VXModuleSession(std::vector<VMUModule> modules, int pid)
    : m_modules(std::move(modules)), m_pid(pid), m_dwfl(dwfl_begin(&callbacks), &dwfl_end) {
    if (!m_dwfl) {
        return;
    }
    dwfl_report_begin(m_dwfl.get());
    for (const VMUModule& module : m_modules) {
        if (module.end <= module.start || !m_byStart.emplace(module.start, &module).second) {
            continue;
        }
        if (Dwfl_Module* reported =
                dwfl_report_module(m_dwfl.get(), module.path.constData(), module.start, module.end)) {
            void** data = nullptr;
            dwfl_module_info(reported, &data, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
            *data = this;
        }
    }
    dwfl_report_end(m_dwfl.get(), nullptr, nullptr);
}

const VMUModule* VXModuleSession::moduleOfAddress(std::uint64_t address) const {
    const auto next = m_byStart.upper_bound(address);
    if (next == m_byStart.begin()) {
        return nullptr;
    }
    const VMUModule* module = std::prev(next)->second;
    return address < module->end ? module : nullptr;
}

int VXModuleSession::findElf(Dwfl_Module* /*module*/, void** data, const char* /*name*/, Dwarf_Addr base, char** file,
                             Elf** /*elf*/) {
    const auto* session = static_cast<const VXModuleSession*>(*data);
    const VMUModule* module = session ? session->moduleOfAddress(base) : nullptr;
    if (!module) {
        return -1;
    }
    int descriptor = openFile(module->path, *module);
    if (descriptor < 0 && session->m_pid > 0) {
        // A program that was replaced while it runs can still be read here; which of the modules it is, its mark tells.
        descriptor = openFile("/proc/" + QByteArray::number(session->m_pid) + "/exe", *module);
    }
    if (descriptor >= 0) {
        *file = ::strdup(module->path.constData());
    }
    return descriptor;
}

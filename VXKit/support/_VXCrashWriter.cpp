// SPDX-License-Identifier: MIT
#include <VXKit/support/_VXCrashWriter.h>

#include <VXKit/support/_VXCrashFormat.h>
#include <VXKit/support/_VXModules.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

// What runs in the signal handler stays within these bounds: no allocation, no lock, nothing of the library loader, no
// memory but what was set aside before, and memory that may not be there is handed to the kernel, which says so instead
// of crashing. System calls are made directly, past the functions that sanitizers put before them.

namespace {

constexpr std::size_t redZoneBytes = 128; // that a function may use below its stack pointer
/// A function with so much of its own on the stack may have overflowed it; the rest is what can be read behind that.
constexpr std::size_t mostUnreadableBytes = std::size_t{1} << 20U;

std::atomic<int> spareDescriptor = -1; // given up where a crash finds no more of them

// Untouched, so without memory of their own, until there is a crash.
std::array<char, VXCrashLimits::mapsBytes> mapsText;
std::array<VXLoadedImage, VXCrashLimits::images> loadedImages;

/// Opens as `open` does, with the spare descriptor where there is no other.
int openWithSpare(const char* path, int flags, unsigned mode) {
    const auto open = [&] { return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode)); };
    int descriptor = open();
    if (descriptor < 0 && (errno == EMFILE || errno == ENFILE)) {
        const int spare = spareDescriptor.exchange(-1);
        if (spare >= 0) {
            ::syscall(SYS_close, spare);
            descriptor = open();
        }
    }
    return descriptor;
}

/// Writes all that can be read of `size` bytes at `address`; fewer at the end of what is mapped or of the disk.
std::size_t writeFrom(int file, std::uint64_t address, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const std::size_t piece = std::min(size - done, VXMemoryPageBytes - (address + done) % VXMemoryPageBytes);
        const long written = ::syscall(SYS_write, file, static_cast<std::uintptr_t>(address + done), piece);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            break;
        }
        done += static_cast<std::size_t>(written);
    }
    return done;
}

bool writeAll(int file, const void* bytes, std::size_t size) {
    return writeFrom(file, reinterpret_cast<std::uintptr_t>(bytes), size) == size;
}

/// Writes the header of a section before its content, when that is there.
void finishSection(int file, off_t start, VXCrashSectionKind kind) {
    const off_t end = ::lseek(file, 0, SEEK_CUR);
    const VXCrashSection header{kind, static_cast<std::uint64_t>(end - start) - sizeof(VXCrashSection)};
    ::lseek(file, start, SEEK_SET);
    writeAll(file, &header, sizeof header);
    ::lseek(file, end, SEEK_SET);
}

off_t beginSection(int file) {
    const off_t start = ::lseek(file, 0, SEEK_CUR);
    const VXCrashSection header;
    writeAll(file, &header, sizeof header);
    return start;
}

void writeSection(int file, VXCrashSectionKind kind, const void* bytes, std::size_t size) {
    if (size == 0) {
        return;
    }
    const off_t start = beginSection(file);
    if (writeAll(file, bytes, size)) {
        finishSection(file, start, kind);
    }
}

/// The registers of the interrupted code, as VXCrashSectionKind::Registers orders them.
struct Registers {
    std::size_t count = 0;
    std::array<std::uint64_t, VXCrashLimits::registers> values = {};
    std::uint64_t instruction = 0;
    std::uint64_t stackPointer = 0; // 0 where this machine's is not known
};

Registers registersOf(const void* signalContext) {
    Registers registers;
    [[maybe_unused]] const mcontext_t& context = static_cast<const ucontext_t*>(signalContext)->uc_mcontext;
#if defined(__x86_64__)
    constexpr std::array<int, 17> order = {REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI,
                                           REG_RBP, REG_RSP, REG_R8,  REG_R9,  REG_R10, REG_R11,
                                           REG_R12, REG_R13, REG_R14, REG_R15, REG_RIP};
    registers.count = order.size();
    for (std::size_t number = 0; number < order.size(); ++number) {
        registers.values[number] = static_cast<std::uint64_t>(context.gregs[order[number]]);
    }
    registers.instruction = static_cast<std::uint64_t>(context.gregs[REG_RIP]);
    registers.stackPointer = static_cast<std::uint64_t>(context.gregs[REG_RSP]);
#elif defined(__aarch64__)
    constexpr std::size_t generalRegisters = 31;
    registers.count = generalRegisters + 2;
    std::copy_n(context.regs, generalRegisters, registers.values.begin());
    registers.values[generalRegisters] = context.sp;
    registers.values[generalRegisters + 1] = context.pc;
    registers.instruction = context.pc;
    registers.stackPointer = context.sp;
#elif defined(__riscv)
    registers.instruction = context.__gregs[REG_PC];
#elif defined(__i386__)
    registers.instruction = static_cast<std::uint32_t>(context.gregs[REG_EIP]);
#endif
    return registers;
}

void writeStack(int file, std::uint64_t lowest) {
    const off_t start = beginSection(file);
    std::uint64_t address = lowest - std::min<std::uint64_t>(lowest, redZoneBytes);
    const std::uint64_t furthest = address + mostUnreadableBytes;
    if (!writeAll(file, &address, sizeof address)) {
        return;
    }
    std::size_t written = writeFrom(file, address, VXCrashLimits::stackBytes);
    while (written == 0 && errno == EFAULT && address < furthest) {
        address = (address / VXMemoryPageBytes + 1) * VXMemoryPageBytes;
        written = writeFrom(file, address, VXCrashLimits::stackBytes);
    }
    if (written == 0) {
        // What comes next takes the place.
        ::lseek(file, start, SEEK_SET);
        return;
    }
    const off_t end = ::lseek(file, 0, SEEK_CUR);
    ::lseek(file, start + static_cast<off_t>(sizeof(VXCrashSection)), SEEK_SET);
    writeAll(file, &address, sizeof address);
    ::lseek(file, end, SEEK_SET);
    finishSection(file, start, VXCrashSectionKind::Stack);
}

std::size_t readMaps() {
    const int file = openWithSpare("/proc/self/maps", O_RDONLY | O_CLOEXEC, 0);
    std::size_t length = 0;
    while (file >= 0 && length < mapsText.size()) {
        const long count = ::syscall(SYS_read, file, mapsText.data() + length, mapsText.size() - length);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    if (file >= 0) {
        ::syscall(SYS_close, file);
    }
    return length;
}

void writeImages(int file, int process, std::size_t mapsLength) {
    std::size_t count = 0;
    std::string_view maps(mapsText.data(), mapsLength);
    while (count < loadedImages.size()) {
        const auto mapping = VXTakeMapping(maps);
        if (!mapping) {
            break;
        }
        if (mapping->offset == 0 && mapping->isReadable &&
            VXReadLoadedImage(process, mapping->start, loadedImages[count])) {
            ++count;
        }
    }
    writeSection(file, VXCrashSectionKind::Images, loadedImages.data(), count * sizeof(VXLoadedImage));
}

/// A path that is put together where nothing can be allocated.
class Path {
public:
    void append(std::string_view text) {
        const std::size_t length = std::min(text.size(), m_bytes.size() - 1 - m_length);
        std::copy_n(text.data(), length, m_bytes.data() + m_length);
        m_length += length;
    }
    void append(std::uint64_t number) {
        std::array<char, 20> digits;
        std::size_t first = digits.size();
        do {
            digits[--first] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        append(std::string_view(digits.data() + first, digits.size() - first));
    }
    [[nodiscard]] const char* text() const { return m_bytes.data(); }

private:
    std::size_t m_length = 0;
    std::array<char, PATH_MAX + 128> m_bytes = {};
};

} // namespace

int VXCurrentThread() {
    return static_cast<int>(::syscall(SYS_gettid));
}

void VXHoldSpareDescriptor() {
    spareDescriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

void VXCloseSpareDescriptor() {
    const int spare = spareDescriptor.exchange(-1);
    if (spare >= 0) {
        ::close(spare);
    }
}

void VXWriteCrashRecord(const VXCrashSettings& settings, const VXCrashException* exception,
                        const siginfo_t& information, const void* context) {
    const Registers registers = registersOf(context);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const bool isSent = information.si_code <= 0; // by a process, also this one; the kernel's own are above
    VXCrashHead head;
    head.signal = information.si_signo;
    head.code = information.si_code;
    head.sender = isSent ? information.si_pid : 0;
    head.process = ::getpid();
    head.thread = VXCurrentThread();
    head.faultAddress = isSent ? 0 : reinterpret_cast<std::uintptr_t>(information.si_addr);
    head.instruction = registers.instruction;
    head.seconds = now.tv_sec;
    head.nanoseconds = now.tv_nsec;

    // Before the record is opened: where descriptors have run out there is but one.
    const std::size_t mapsLength = readMaps();
    constexpr std::uint64_t nanosecondsOfASecond = 1000000000;
    static constinit Path path; // too large for a small alternate stack
    path.append(std::string_view(settings.folder.bytes.data(), settings.folder.length));
    path.append("/crash-");
    path.append(static_cast<std::uint64_t>(head.process));
    path.append("-");
    path.append(static_cast<std::uint64_t>(now.tv_sec) * nanosecondsOfASecond +
                static_cast<std::uint64_t>(now.tv_nsec));
    path.append(VXCrashFileSuffix);
    const int file = openWithSpare(path.text(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) {
        return;
    }
    // So that another instance which starts right now does not take half of it. The lock ends with the process.
    ::syscall(SYS_flock, file, LOCK_EX | LOCK_NB);
    // The most telling first: the disk may be full, and what comes last may fail.
    if (writeAll(file, &head, sizeof head)) {
        const auto writeText = [file](VXCrashSectionKind kind, const auto& text) {
            writeSection(file, kind, text.bytes.data(), text.length);
        };
        writeText(VXCrashSectionKind::HostVersion, settings.hostVersion);
        if (exception) {
            writeText(VXCrashSectionKind::ExceptionType, exception->type);
            writeText(VXCrashSectionKind::ExceptionReason, exception->reason);
        }
        writeSection(file, VXCrashSectionKind::Registers, registers.values.data(),
                     registers.count * sizeof registers.values[0]);
        writeSection(file, VXCrashSectionKind::Maps, mapsText.data(), mapsLength);
        if (registers.stackPointer != 0) {
            writeStack(file, registers.stackPointer);
        }
        writeImages(file, head.process, mapsLength);
    }
    ::syscall(SYS_close, file);
}

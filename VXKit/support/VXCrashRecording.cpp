// SPDX-License-Identifier: MIT
#include <VXKit/support/VXCrashRecording.h>

#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/support/_VXCrashFiles.h>
#include <VXKit/support/_VXCrashFormat.h>
#include <VXKit/support/_VXModules.h>

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <typeinfo>
#include <ucontext.h>
#include <unistd.h>
#include <utility>

// What runs in the signal handler stays within these bounds: no allocation, no lock, nothing of the library loader, no
// memory but what was set aside before, and memory that may not be there is handed to the kernel, which says so instead
// of crashing. System calls are made directly, past the functions that sanitizers put before them.

namespace {

constexpr std::array<int, 7> fatalSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};
constexpr std::size_t mostPathBytes = PATH_MAX;
constexpr std::size_t mostTypeBytes = 255;
constexpr std::size_t mostReasonBytes = 4096;
constexpr std::size_t mostVersionBytes = 255;
constexpr std::size_t pageBytes = 4096;
constexpr std::size_t redZoneBytes = 128; // that a function may use below its stack pointer
constexpr std::size_t alternateStackBytes = std::size_t{128} * 1024;
/// What the handler needs, generously; a thread's own alternate stack of this size is left to it.
constexpr std::size_t leastAlternateStackBytes = std::size_t{24} * 1024;
/// A function with so much of its own on the stack may have overflowed it; the rest is what can be read behind that.
constexpr std::size_t mostUnreadableBytes = std::size_t{1} << 20U;
constexpr int longestWaitInMilliseconds = 10000;

template <std::size_t Size>
struct Text {
    std::size_t length = 0;
    std::array<char, Size> bytes = {};

    void set(std::string_view text) {
        length = std::min(text.size(), Size);
        std::copy_n(text.data(), length, bytes.data());
    }
};

struct Configuration {
    Text<mostPathBytes> folder;
    Text<mostVersionBytes> hostVersion;
};

enum class Progress { None, Writing, Written };

std::atomic<const Configuration*> configuration = nullptr; // null while nothing is to be recorded
std::atomic<Progress> progress = Progress::None;
std::atomic<int> writingThread = 0;
std::atomic<int> spareDescriptor = -1; // given up where a crash finds no more of them
std::array<struct sigaction, fatalSignals.size()> formerActions;
std::array<std::atomic<bool>, fatalSignals.size()> isPassedOn = {};
std::terminate_handler formerTerminateHandler = nullptr;

/// The exception that the process is about to end for, and the thread that it ends on.
Text<mostTypeBytes> exceptionType;
Text<mostReasonBytes> exceptionReason;
std::atomic<int> terminatingThread = 0;

// Untouched, so without memory of their own, until there is a crash.
std::array<char, VXCrashLimits::mapsBytes> mapsText;
std::array<VXLoadedImage, VXCrashLimits::images> loadedImages;

std::size_t numberOfSignal(int signal) {
    return static_cast<std::size_t>(std::find(fatalSignals.begin(), fatalSignals.end(), signal) - fatalSignals.begin());
}

int currentThread() {
    return static_cast<int>(::syscall(SYS_gettid));
}

/// Opens as `open` does, with the spare descriptor where there is no other.
int openFile(const char* path, int flags, unsigned mode) {
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
        const std::size_t piece = std::min(size - done, pageBytes - (address + done) % pageBytes);
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

void writeStack(int file, std::uint64_t stackPointer) {
    const off_t start = beginSection(file);
    std::uint64_t address = stackPointer - std::min<std::uint64_t>(stackPointer, redZoneBytes);
    const std::uint64_t furthest = address + mostUnreadableBytes;
    if (!writeAll(file, &address, sizeof address)) {
        return;
    }
    std::size_t written = writeFrom(file, address, VXCrashLimits::stackBytes);
    while (written == 0 && errno == EFAULT && address < furthest) {
        address = (address / pageBytes + 1) * pageBytes;
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
    const int file = openFile("/proc/self/maps", O_RDONLY | O_CLOEXEC, 0);
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
    std::array<char, mostPathBytes + 128> m_bytes = {};
};

void writeRecord(const Configuration& settings, const siginfo_t& information, const void* context) {
    const Registers registers = registersOf(context);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const bool isSent = information.si_code <= 0; // by a process, also this one; the kernel's own are above
    VXCrashHead head;
    head.signal = information.si_signo;
    head.code = information.si_code;
    head.sender = isSent ? information.si_pid : 0;
    head.process = ::getpid();
    head.thread = currentThread();
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
    const int file = openFile(path.text(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
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
        if (terminatingThread == head.thread) {
            writeText(VXCrashSectionKind::ExceptionType, exceptionType);
            writeText(VXCrashSectionKind::ExceptionReason, exceptionReason);
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

/// Has the signal arrive again, with all it told, when the handler returns, and what stood here before take it.
void passOn(int signal, siginfo_t* information) {
    const std::size_t number = numberOfSignal(signal);
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    // Something that was installed later and calls the former handler may be the former handler of this one.
    if (!isPassedOn[number].exchange(true)) {
        action = formerActions[number];
    }
    ::sigaction(signal, &action, nullptr);
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), currentThread(), signal, information) != 0) {
        ::syscall(SYS_tgkill, ::getpid(), currentThread(), signal);
    }
}

void handleSignal(int signal, siginfo_t* information, void* context) {
    const int savedError = errno;
    auto expected = Progress::None;
    if (progress.compare_exchange_strong(expected, Progress::Writing)) {
        writingThread = currentThread();
        // Asked after the claim, which keeps it from being destroyed.
        const Configuration* settings = configuration;
        if (settings) {
            writeRecord(*settings, *information, context);
        }
        progress = settings ? Progress::Written : Progress::None;
    } else if (expected == Progress::Writing && writingThread != currentThread()) {
        // Another thread was first; it would not come to its end if this one let the process die.
        for (int waited = 0; progress == Progress::Writing && waited < longestWaitInMilliseconds; ++waited) {
            const timespec millisecond{0, 1000000};
            ::nanosleep(&millisecond, nullptr);
        }
    }
    passOn(signal, information);
    errno = savedError;
}

[[noreturn]] void handleTerminate() {
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        exceptionType.set(demangled(type->name()));
        try {
            throw;
        } catch (const std::exception& exception) {
            const char* reason = exception.what();
            exceptionReason.set(reason ? reason : "");
        } catch (...) {
            exceptionReason.set({});
        }
        terminatingThread = currentThread();
    }
    if (formerTerminateHandler) {
        formerTerminateHandler();
    }
    // The handler of the signal writes the record, also of a former handler's abort.
    std::abort();
}

bool isOurs(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == &handleSignal;
}

void installHandlers() {
    struct sigaction action {};
    action.sa_sigaction = &handleSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    // No other handler is to run in the middle. A second crash in here ends the process at once: the kernel takes a
    // blocked signal of that kind for fatal.
    ::sigfillset(&action.sa_mask);
    for (std::size_t number = 0; number < fatalSignals.size(); ++number) {
        struct sigaction former {};
        ::sigaction(fatalSignals[number], nullptr, &former);
        if (!isOurs(former)) {
            formerActions[number] = former;
            isPassedOn[number] = false;
            ::sigaction(fatalSignals[number], &action, nullptr);
        }
    }
    if (std::get_terminate() != &handleTerminate) {
        formerTerminateHandler = std::set_terminate(&handleTerminate);
    }
}

/// The alternate signal stack of the thread that made it.
class AlternateStack {
public:
    AlternateStack() {
        stack_t former{};
        const bool hasOne = ::sigaltstack(nullptr, &former) == 0 && (former.ss_flags & SS_DISABLE) == 0;
        if (hasOne && former.ss_size >= leastAlternateStackBytes) {
            return;
        }
        m_size = alternateStackBytes + pageBytes;
        m_memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (m_memory == MAP_FAILED) {
            m_memory = nullptr;
            return;
        }
        // What runs over its lower end is to crash rather than to write into something else.
        ::mprotect(m_memory, pageBytes, PROT_NONE);
        stack_t ours{};
        ours.ss_sp = static_cast<char*>(m_memory) + pageBytes;
        ours.ss_size = alternateStackBytes;
        ::sigaltstack(&ours, &m_former);
    }
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;
    ~AlternateStack() {
        stack_t current{};
        const bool isInUse = m_memory && ::sigaltstack(nullptr, &current) == 0 &&
                             current.ss_sp == static_cast<char*>(m_memory) + pageBytes;
        if (isInUse && ::sigaltstack(&m_former, nullptr) == 0) {
            ::munmap(m_memory, m_size);
        }
    }

private:
    void* m_memory = nullptr;
    std::size_t m_size = 0;
    stack_t m_former{};
};

// What belongs to the installation but not to the handler. A configuration that was replaced stays for a thread that
// crashes meanwhile; none of it is destroyed at exit, because destructors of static objects crash too.
struct Installation {
    AlternateStack stack;
    std::unique_ptr<Configuration> current;
    std::unique_ptr<Configuration> former;
};
Installation* installation = nullptr;

} // namespace

bool VXRecordCrashes(const QString& folder, const QString& hostVersion, NSError* error) {
    const QString path = QDir::cleanPath(QDir(folder).absolutePath());
    const QByteArray file = QFile::encodeName(path);
    if (folder.isEmpty() || static_cast<std::size_t>(file.size()) > mostPathBytes) {
        NSSetError(error, QStringLiteral("\"%1\": not the path of a folder").arg(folder));
        return false;
    }
    if (!VXMakeCrashFolder(path, error)) {
        return false;
    }
    VXRemoveSurplusCrashFiles(path);
    const QString version = hostVersion.isNull()
                                ? NSBundle::mainBundle().objectForInfoDictionaryKey(QStringLiteral("CFBundleVersion"))
                                : hostVersion;
    auto settings = std::make_unique<Configuration>();
    settings->folder.set(std::string_view(file.constData(), static_cast<std::size_t>(file.size())));
    settings->hostVersion.set(version.toStdString());
    if (!installation) {
        installation = new Installation;
        spareDescriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    configuration = settings.get();
    installation->former = std::exchange(installation->current, std::move(settings));
    installHandlers();
    return true;
}

void VXStopRecordingCrashes() {
    if (!installation) {
        return;
    }
    configuration = nullptr;
    for (std::size_t number = 0; number < fatalSignals.size(); ++number) {
        struct sigaction current {};
        ::sigaction(fatalSignals[number], nullptr, &current);
        if (isOurs(current)) {
            ::sigaction(fatalSignals[number], &formerActions[number], nullptr);
        }
    }
    if (std::get_terminate() == &handleTerminate) {
        std::set_terminate(formerTerminateHandler);
    }
    const int spare = spareDescriptor.exchange(-1);
    if (spare >= 0) {
        ::close(spare);
    }
    Installation* ended = std::exchange(installation, nullptr);
    if (progress == Progress::None) {
        delete ended;
    } // else another thread is crashing right now, with the configuration in its hands
}

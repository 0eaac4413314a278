// SPDX-License-Identifier: MIT
#include <VXKit/support/VXCrashRecording.h>

#include <VXKit/platform/foundation/Demangling.h>
#include <VXKit/platform/foundation/NSBundle.h>
#include <VXKit/support/_VXCrashFiles.h>
#include <VXKit/support/_VXCrashWriter.h>

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
#include <ctime>
#include <cxxabi.h>
#include <exception>
#include <memory>
#include <string_view>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <typeinfo>
#include <unistd.h>
#include <utility>

// What runs in the signal handler stays within the bounds that _VXCrashWriter.cpp tells.

namespace {

constexpr std::array<int, 7> fatalSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS};
constexpr std::size_t alternateStackBytes = std::size_t{128} * 1024;
/// What the handler needs, generously; a thread's own alternate stack of this size is left to it.
constexpr std::size_t leastAlternateStackBytes = std::size_t{24} * 1024;
constexpr int longestWaitInMilliseconds = 10000;

enum class Progress { None, Writing, Written };

std::atomic<const VXCrashSettings*> configuration = nullptr; // null while nothing is to be recorded
std::atomic<Progress> progress = Progress::None;
std::atomic<int> writingThread = 0;
std::array<struct sigaction, fatalSignals.size()> formerActions;
std::array<std::atomic<bool>, fatalSignals.size()> isPassedOn = {};
std::terminate_handler formerTerminateHandler = nullptr;

/// The exception that the process is about to end for, and the thread that it ends on.
VXCrashException uncaughtException;
std::atomic<int> terminatingThread = 0;

std::size_t numberOfSignal(int signal) {
    return static_cast<std::size_t>(std::find(fatalSignals.begin(), fatalSignals.end(), signal) - fatalSignals.begin());
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
    if (::syscall(SYS_rt_tgsigqueueinfo, ::getpid(), VXCurrentThread(), signal, information) != 0) {
        ::syscall(SYS_tgkill, ::getpid(), VXCurrentThread(), signal);
    }
}

void handleSignal(int signal, siginfo_t* information, void* context) {
    const int savedError = errno;
    auto expected = Progress::None;
    if (progress.compare_exchange_strong(expected, Progress::Writing)) {
        writingThread = VXCurrentThread();
        // Asked after the claim, which keeps it from being destroyed.
        const VXCrashSettings* settings = configuration;
        if (settings) {
            const bool isForException = terminatingThread == VXCurrentThread();
            VXWriteCrashRecord(*settings, isForException ? &uncaughtException : nullptr, *information, context);
        }
        progress = settings ? Progress::Written : Progress::None;
    } else if (expected == Progress::Writing && writingThread != VXCurrentThread()) {
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
        uncaughtException.type.set(demangled(type->name()));
        try {
            throw;
        } catch (const std::exception& exception) {
            const char* reason = exception.what();
            uncaughtException.reason.set(reason ? reason : "");
        } catch (...) {
            uncaughtException.reason.set({});
        }
        terminatingThread = VXCurrentThread();
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
        m_size = alternateStackBytes + VXMemoryPageBytes;
        m_memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (m_memory == MAP_FAILED) {
            m_memory = nullptr;
            return;
        }
        // What runs over its lower end is to crash rather than to write into something else.
        ::mprotect(m_memory, VXMemoryPageBytes, PROT_NONE);
        stack_t ours{};
        ours.ss_sp = static_cast<char*>(m_memory) + VXMemoryPageBytes;
        ours.ss_size = alternateStackBytes;
        ::sigaltstack(&ours, &m_former);
    }
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;
    ~AlternateStack() {
        stack_t current{};
        const bool isInUse = m_memory && ::sigaltstack(nullptr, &current) == 0 &&
                             current.ss_sp == static_cast<char*>(m_memory) + VXMemoryPageBytes;
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
    std::unique_ptr<VXCrashSettings> current;
    std::unique_ptr<VXCrashSettings> former;
};
Installation* installation = nullptr;

} // namespace

bool VXRecordCrashes(const QString& folder, const QString& hostVersion, NSError* error) {
    const QString path = QDir::cleanPath(QDir(folder).absolutePath());
    const QByteArray file = QFile::encodeName(path);
    if (folder.isEmpty() || static_cast<std::size_t>(file.size()) > PATH_MAX) {
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
    auto settings = std::make_unique<VXCrashSettings>();
    settings->folder.set(std::string_view(file.constData(), static_cast<std::size_t>(file.size())));
    settings->hostVersion.set(version.toStdString());
    if (!installation) {
        installation = new Installation;
        VXHoldSpareDescriptor();
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
    VXCloseSpareDescriptor();
    Installation* ended = std::exchange(installation, nullptr);
    if (progress == Progress::None) {
        delete ended;
    } // else another thread is crashing right now, with the configuration in its hands
}

// SPDX-License-Identifier: MIT
// Dies in the way that its first argument names, with a record in the folder that the second names.
#include <VXKit/support/VXCrashRecording.h>

#include "CrashingLibrary.h"

#include <QString>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <exception>
#include <fcntl.h>
#include <link.h>
#include <map>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// Read again at each use, so that no compiler sees what is about to happen.
int* volatile nowhere = nullptr;
int (*volatile noFunction)(int) = nullptr;
volatile int zero = 0;
volatile bool isDeepEnough = false;
std::atomic<bool> isReady = false;

[[gnu::noinline]] int staticCrash() {
    const int value = *static_cast<volatile int*>(nowhere);
    asm volatile("");
    return value + 1;
}

[[gnu::noinline]] int readNull() {
    const int value = staticCrash();
    asm volatile("");
    return value + 1;
}

[[gnu::noinline]] int callNull() {
    const int value = noFunction(1);
    asm volatile("");
    return value + 1;
}

[[gnu::noinline]] int recurse(int depth) {
    const int value = depth == 0 ? staticCrash() : recurse(depth - 1);
    asm volatile("");
    return value + 1;
}

[[gnu::noinline]] int overflow(volatile char* outer) {
    volatile char inner[256];
    inner[0] = static_cast<char>(outer[0] + 1);
    const int value = isDeepEnough ? 0 : overflow(inner);
    asm volatile("" ::: "memory");
    return value + inner[0];
}

[[gnu::noinline]] int divide() {
#if defined(__x86_64__) || defined(__i386__)
    volatile const int result = 7 / zero;
    return result;
#else
    // This machine answers 0 to that.
    return std::raise(SIGFPE);
#endif
}

[[gnu::noinline, noreturn]] void throwNobodyCatches() {
    throw std::runtime_error("the cupboard was bare");
}

struct Unusual {};

[[gnu::noinline]] void doAbort() {
    std::abort();
}

[[gnu::noinline]] void allocate();

[[gnu::noinline]] void dieInAThread() {
    std::thread([] { std::_Exit(readNull()); }).join();
}

int stayInLoader(dl_phdr_info* /*info*/, std::size_t /*size*/, void* /*data*/) {
    isReady = true;
    for (;;) {
        ::pause();
    }
}

/// While another thread is in the loader, which nobody else can enter then.
[[gnu::noinline]] void dieWhileLoaderIsLocked() {
    std::thread([] { dl_iterate_phdr(stayInLoader, nullptr); }).detach();
    while (!isReady) {
        std::this_thread::yield();
    }
    readNull();
}

[[gnu::noinline]] void dieInTwoThreads() {
    const auto die = [] {
        while (!isReady) {
        }
        readNull();
    };
    std::thread first(die);
    std::thread second(die);
    isReady = true;
    first.join();
    second.join();
}

void dieInBothProcesses() {
    const pid_t child = ::fork();
    if (child != 0) {
        int status = 0;
        ::waitpid(child, &status, 0);
    }
    readNull();
}

void dieWithoutDescriptors() {
    const rlimit few{64, 64};
    ::setrlimit(RLIMIT_NOFILE, &few);
    while (::open("/dev/null", O_RDONLY) >= 0) {
    }
    readNull();
}

void dieInALibraryLoadedLater() {
    void* library = ::dlopen(CRASHING_PLUGIN, RTLD_NOW);
    void* function = library ? ::dlsym(library, "crashingLibraryReadsNull") : nullptr;
    if (function) {
        reinterpret_cast<int (*)(void*)>(function)(nullptr);
    }
}

int readNullForLibrary(void* /*data*/) {
    return readNull();
}

void tellOfSignal(int signal, siginfo_t* information, void* /*context*/) {
    // What a host's own handler sees must be what the system told.
    ::_exit(signal == SIGSEGV && information->si_code == SEGV_MAPERR && !information->si_addr ? 42 : 43);
}

/// Shows where a static function is, and stays until it is killed.
void stay() {
    std::printf("%p\n", reinterpret_cast<void*>(&staticCrash));
    std::fflush(stdout);
    for (;;) {
        ::pause();
    }
}

const std::map<std::string, void (*)()> ways = {
    {"null", [] { readNull(); }},
    {"call", [] { callNull(); }},
    {"deep", [] { recurse(10000); }},
    {"overflow",
     [] {
         char outermost = 0;
         overflow(&outermost);
     }},
    {"abort", doAbort},
    {"exception", throwNobodyCatches},
    {"unusual", [] { throw Unusual(); }},
    {"divide", [] { divide(); }},
    {"malloc", allocate},
    {"thread", dieInAThread},
    {"loader", dieWhileLoaderIsLocked},
    {"two", dieInTwoThreads},
    {"fork", dieInBothProcesses},
    {"descriptors", dieWithoutDescriptors},
    {"plugin", dieInALibraryLoadedLater},
    {"library", [] { crashingLibraryCalls(readNullForLibrary, nullptr); }},
    {"trap", [] { std::raise(SIGTRAP); }},
    {"bus", [] { std::raise(SIGBUS); }},
    {"instruction", [] { std::raise(SIGILL); }},
    {"system", [] { std::raise(SIGSYS); }},
    {"stopped",
     [] {
         VXStopRecordingCrashes();
         readNull();
     }},
    {"former", [] { readNull(); }},
    {"stay", stay},
};

} // namespace

// In the middle of an allocation nothing can be allocated.
namespace {
volatile bool isToDieInMalloc = false;
volatile bool isInMalloc = false;
} // namespace

#ifndef CRASHING_SANITIZED // sanitizers bring an allocator of their own
extern "C" void* __libc_malloc(std::size_t size);
extern "C" [[gnu::visibility("default")]] void* malloc(std::size_t size) {
    if (isInMalloc) {
        ::_exit(77);
    }
    if (isToDieInMalloc) {
        isInMalloc = true;
        static_cast<void>(readNull());
    }
    return __libc_malloc(size);
}
#endif

namespace {

[[gnu::noinline]] void allocate() {
    isToDieInMalloc = true;
    void* volatile memory = std::malloc(16);
    std::free(memory);
}

} // namespace

int main(int argc, char** argv) {
    const auto way = argc == 3 ? ways.find(argv[1]) : ways.end();
    if (way == ways.end()) {
        return 2;
    }
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::alarm(60); // a crash that never ends is one too
    if (way->first == "former") {
        struct sigaction action {};
        action.sa_sigaction = &tellOfSignal;
        action.sa_flags = SA_SIGINFO;
        ::sigaction(SIGSEGV, &action, nullptr);
    }
    const QString folder = QString::fromLocal8Bit(argv[2]);
    if (way->first != "stay" && !VXRecordCrashes(folder, QStringLiteral("7.1β"))) {
        return 4;
    }
    if (::getenv("REMOVE_THE_FOLDER")) {
        ::rmdir(argv[2]);
    }
    way->second();
    return 0;
}

// SPDX-License-Identifier: MIT
#include "CrashingLibrary.h"

namespace {

[[gnu::noinline]] int hiddenInLibrary(int (*work)(void*), void* data) {
    const int result = work(data);
    asm volatile(""); // the call above is to stay a call, with a frame below it
    return result;
}

int* volatile nowhere = nullptr;

} // namespace

int crashingLibraryCalls(int (*work)(void*), void* data) {
    const int result = hiddenInLibrary(work, data);
    asm volatile("");
    return result;
}

int crashingLibraryReadsNull(void* /*unused*/) {
    return *static_cast<volatile int*>(nowhere);
}

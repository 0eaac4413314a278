// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSThread.h>

#include <cstddef>
#include <unistd.h>
#include <unwind.h>
#include <utility>

namespace {

/// Unwind information that leads in a circle must come to an end somewhere.
constexpr std::size_t mostFrames = std::size_t{1} << 20U;
constexpr std::size_t usualFrames = 64;

struct Walk {
    std::vector<std::uintptr_t> addresses;
    bool isAtOwnFrame = true;
};

_Unwind_Reason_Code noteFrame(_Unwind_Context* context, void* data) noexcept {
    Walk& walk = *static_cast<Walk*>(data);
    if (walk.isAtOwnFrame) {
        walk.isAtOwnFrame = false;
        return _URC_NO_REASON;
    }
    int isInterrupted = 0; // by a signal: the address is that of the next instruction and not one after a call
    const std::uintptr_t address = _Unwind_GetIPInfo(context, &isInterrupted);
    if (address == 0 || walk.addresses.size() == mostFrames) {
        return _URC_END_OF_STACK;
    }
    walk.addresses.push_back(isInterrupted != 0 ? address + 1 : address);
    return _URC_NO_REASON;
}

} // namespace

// Were it merged into its caller, the caller's frame would be taken for its own.
[[gnu::noinline]] std::vector<std::uintptr_t> NSThread::callStackReturnAddresses() {
    Walk walk;
    walk.addresses.reserve(usualFrames);
    // Reads the tables that exceptions use too, so functions without a frame pointer are no obstacle.
    _Unwind_Backtrace(noteFrame, &walk);
    return std::move(walk.addresses);
}

bool NSThread::isMainThread() {
    return ::gettid() == ::getpid();
}

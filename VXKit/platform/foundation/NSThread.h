// SPDX-License-Identifier: MIT
#pragma once

#include <VXKit/VXKitExport.h>

#include <cstdint>
#include <vector>

/// The thread that asks. Stands for the AppKit class of the same name, of which only what follows is here: threads are
/// made and run with Qt or the standard library.
class VXKIT_EXPORT NSThread {
public:
    NSThread() = delete;

    /// The return addresses of the current thread's stack, innermost first; the first lies in the function that asks.
    ///
    /// Each address is the one right after a call, so that the call itself is at the address less one; a function that
    /// a signal interrupted is told in the same way. A stack deeper than a million calls, which no stack of the usual
    /// size holds, is cut at its outer end. A caller whose last act is to return what this answers may have given up
    /// its frame already. Any thread; not from a signal handler. AppKit: `+callStackReturnAddresses`.
    [[nodiscard]] static std::vector<std::uintptr_t> callStackReturnAddresses();

    /// Whether this is the thread that `main` runs on. AppKit: `+isMainThread`.
    [[nodiscard]] static bool isMainThread();
};

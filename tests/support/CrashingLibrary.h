// SPDX-License-Identifier: MIT
// A library that programs of tests call, and are called back from.
#pragma once

extern "C" {

/// Calls `work` with `data`, from a function of its own that no table of a stripped library names.
[[gnu::visibility("default")]] int crashingLibraryCalls(int (*work)(void*), void* data);

/// Reads from nowhere.
[[gnu::visibility("default")]] int crashingLibraryReadsNull(void* unused);
}

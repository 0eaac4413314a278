// SPDX-License-Identifier: MIT
// What every measured program of this folder has in common: it does one task once and prints the time that took and the
// most memory that the process ever had.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

/// The whole content of a file.
inline std::string readWhole(const char* path) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path);
        std::exit(1);
    }
    return content;
}

/// The process's greatest resident memory so far, in KiB.
inline long peakMemory() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::atol(line.c_str() + 6);
        }
    }
    return 0;
}

/// Does `work` and prints its time in seconds and the peak of memory after it.
template <class Work>
void measure(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%.9f %ld\n", time.count(), peakMemory());
}

/// Ends the program because it was asked for something that it does not know.
[[noreturn]] inline void refuse(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(2);
}

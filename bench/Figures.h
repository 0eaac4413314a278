// SPDX-License-Identifier: MIT
// How the measured programs tell what they measured: a name and a figure a line, on standard output.
#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

inline void tellFigure(const char* what, double figure) {
    std::printf("%s %.9f\n", what, figure);
    std::fflush(stdout);
}

inline double milliseconds(const QElapsedTimer& clock) {
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

/// Milliseconds on a processor, of all threads of this process.
inline double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// The longest time between two of the frames that were painted at `times`.
inline double longestGap(const std::vector<double>& times) {
    double longest = 0;
    for (std::size_t frame = 1; frame < times.size(); ++frame) {
        longest = std::max(longest, times[frame] - times[frame - 1]);
    }
    return longest;
}

/// Tells how many frames there were in a second, and the longest time between two of them; nothing of fewer than two.
inline void tellFrames(const std::vector<double>& times) {
    if (times.size() < 2) {
        return;
    }
    tellFigure("rate", static_cast<double>(times.size() - 1) / (times.back() - times.front()) * 1000);
    tellFigure("gap", longestGap(times));
}

/// Tells the median and the worst of `times`, of which there is at least one.
inline void tellMedianAndWorst(const std::string& what, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    tellFigure((what + "_median").c_str(), times[times.size() / 2]);
    tellFigure((what + "_worst").c_str(), times.back());
}

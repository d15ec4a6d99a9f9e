#pragma once

#include <QElapsedTimer>

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

/// Ends the program with the message where that is not so.
inline void check(bool isSo, const std::string& message) {
    if (!isSo) {
        std::fprintf(stderr, "%s\n", message.c_str());
        std::exit(EXIT_FAILURE);
    }
}

/// Since the timer was started.
inline double milliseconds(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// The value below which that part of the values lies; 0.5: the median. There is at least one.
inline double percentile(std::vector<double> values, double part) {
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

/// Resident memory of this process in MiB.
inline double residentMemory() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

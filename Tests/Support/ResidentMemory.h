#pragma once

#include <QtGlobal>

#include <unistd.h>

#include <fstream>

/// Resident memory of this process, in bytes.
inline qint64 residentMemory() {
    qint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE);
}

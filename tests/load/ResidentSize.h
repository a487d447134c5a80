#pragma once

#include <fstream>

#include <unistd.h>

/// What this process has in memory now.
inline long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

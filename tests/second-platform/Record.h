#pragma once

#include <cstdlib>
#include <fstream>
#include <string>

/// Appends one line to the file that SECOND_PLATFORM_RECORD names.
inline void record(const std::string& line) {
    if (const char* const path = std::getenv("SECOND_PLATFORM_RECORD")) {
        std::ofstream(path, std::ios::app) << line << '\n';
    }
}

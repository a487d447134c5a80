#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// Ends the process, which the fuzzer reports together with the input.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

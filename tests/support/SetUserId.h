#pragma once

#include <cstdlib>

/// Set, the program's environment is one that is not trusted, as in a program that runs with
/// another user's rights. For one source file of a program: it takes the C library's place.
static bool g_setUserId = false;

extern "C" [[gnu::visibility("default")]] char* secure_getenv(const char* name) noexcept {
    return g_setUserId ? nullptr : std::getenv(name);
}

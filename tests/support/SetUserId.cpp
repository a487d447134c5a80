#include "support/SetUserId.h"

#include <cstdlib>

bool runsWithOthersRights = false;

// In place of the C library's.
extern "C" char* secure_getenv(const char* name) noexcept {
    return runsWithOthersRights ? nullptr : std::getenv(name);
}

#pragma once

#include <cstdlib>

namespace common {

/// The value of the environment variable `name`, or `otherwise` when it is not set. It holds until
/// the environment is changed.
inline const char* environment(const char* name, const char* otherwise = "") {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

/// The same for what names files or switches something: who starts a set-user-ID program must not
/// choose these for it, so that nothing counts as set there.
inline const char* trustedEnvironment(const char* name, const char* otherwise = "") {
    const char* const value = secure_getenv(name);
    return value != nullptr ? value : otherwise;
}

} // namespace common

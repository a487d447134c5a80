#pragma once

#include <cstdlib>

namespace common {

/// The value of the environment variable `name`, or `otherwise` if it is not set. The text is valid
/// until the environment is changed.
inline const char* environment(const char* name, const char* otherwise = "") {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

/// The same for a variable that names files or switches something on. In a set-user-ID program no
/// such variable counts as set, for its user must not choose these for the program's owner.
inline const char* trustedEnvironment(const char* name, const char* otherwise = "") {
    const char* const value = secure_getenv(name);
    return value != nullptr ? value : otherwise;
}

} // namespace common

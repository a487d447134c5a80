#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace dolqctl {

/// The value of an environment variable; nothing when it is not set.
inline std::optional<std::string> environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace dolqctl

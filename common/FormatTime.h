#pragma once

#include <cstdint>
#include <string>

namespace common {

/// The time `timeNs`, in nanoseconds since 1970, in the form of RFC 3339: UTC with microseconds,
/// for instance "2024-02-29T12:34:56.123456Z".
std::string formatTime(std::int64_t timeNs);

} // namespace common

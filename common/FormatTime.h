#pragma once

#include <cstdint>
#include <string>

namespace common {

/// `timeNs`, in nanoseconds since 1970, in RFC 3339 form: UTC, with microseconds, e.g.
/// "2024-02-29T12:34:56.123456Z".
std::string formatTime(std::int64_t timeNs);

} // namespace common

#pragma once

#include <string>

namespace common {

/// Writes `line`, which ends with a newline, to stderr, as a client library's own log: once in a
/// process, and at most 32 different ones. Thread safe.
void reportOnce(const std::string& line);

} // namespace common

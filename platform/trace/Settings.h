#pragma once

#include <cstdint>
#include <string>

namespace platform::trace {

/// The trace groups of `RUXA_TRACE_GROUPS`, bit n for group n.
std::uint32_t enabledGroups();

/// The text of `RUXA_TRACE_PREFIX`; without it the program's short name and a dot.
std::string traceObjectPrefix();

/// Tells the operator on stderr that the value of an environment variable is not used, why, and
/// what is used instead.
void reportUnusedSetting(const char* variable, const std::string& value, const std::string& reason,
                         const char* used);

} // namespace platform::trace

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ruxa::trace::v2 {

/// `all`, `none`, or numbers from 0 to 8 joined by commas, as bit n for group n; nothing when
/// `text` is none of these.
std::optional<std::uint32_t> parseGroups(std::string_view text);

/// The trace groups of `RUXA_TRACE_GROUPS`, bit n for group n.
std::uint32_t enabledGroups();

/// The text of `RUXA_TRACE_PREFIX`; without it the program's short name and a dot.
std::string traceObjectPrefix();

/// Tells the operator on stderr that the value of an environment variable is not used, why, and
/// what is used instead.
void reportUnusedSetting(const char* variable, const std::string& value, const std::string& reason,
                         const char* used);

} // namespace ruxa::trace::v2

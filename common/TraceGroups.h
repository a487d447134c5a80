#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace common {

/// `all`, `none`, or numbers from 0 to 8 joined by commas, as bit n for group n; nothing when
/// `text` is none of these.
std::optional<std::uint32_t> parseTraceGroups(std::string_view text);

} // namespace common

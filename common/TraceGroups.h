#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace common {

/// The trace groups that `text` names: "all", "none", or numbers from 0 to 8 joined by commas. Bit
/// n stands for group n. Nothing if `text` is not one of these.
std::optional<std::uint32_t> parseTraceGroups(std::string_view text);

} // namespace common

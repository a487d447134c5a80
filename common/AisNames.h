#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace common {

/// "5 (SA_AIS_ERR_TIMEOUT)" for an SaAisErrorT; the number alone if the standard has no such value.
std::string aisText(std::uint32_t code);

/// What a code of the notification service means for an alarm. Empty if its name says it, or if the
/// service does not answer with it.
std::string_view aisMeaning(std::uint32_t code);

/// The SaAisErrorT of a name: that of an error may come without its "SA_AIS_ERR_".
std::optional<std::uint32_t> aisCode(std::string_view name);

} // namespace common

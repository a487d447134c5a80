#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace common {

/// "5 (SA_AIS_ERR_TIMEOUT)" of an SaAisErrorT; the number alone of one that the standard has not.
std::string aisText(std::uint32_t code);

/// What a code of the notification service means for an alarm; empty of one that says it by its
/// name, or that the service does not answer with.
std::string_view aisMeaning(std::uint32_t code);

/// The SaAisErrorT value of a name, an error with or without its "SA_AIS_ERR_".
std::optional<std::uint32_t> aisCode(std::string_view name);

} // namespace common

#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace dolqctl {

/// "0x00010002".
std::string hexText(std::uint32_t minorType);
/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// Adds "minorType", "minorTypeHex", "majorId" and "minorId".
void addMinorTypeTo(nlohmann::ordered_json& json, std::uint32_t minorType);

} // namespace dolqctl

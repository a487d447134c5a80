#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "Inventory.h"

namespace dolqctl {

/// "0x00010002".
std::string hexText(std::uint32_t minorType);
/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);
/// "131073 at equipment.xml:8", one for each mapping that was replaced, the last one first.
std::string overriddenText(const EffectiveMapping& effective);

nlohmann::ordered_json toJson(const Mapping& mapping);
/// The mapping with those that it replaced as "overrides".
nlohmann::ordered_json toJson(const EffectiveMapping& effective);

} // namespace dolqctl

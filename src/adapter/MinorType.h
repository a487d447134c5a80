#pragma once

#include <cstdint>

namespace dolq {

// A mapping names an alarm by one number, its minor type. The notification service names it by the
// notification class id, of which the minor type holds two parts: the major id in the upper 16
// bits, the minor id in the lower 16. The third part, the vendor id, is the same for all alarms.

constexpr std::uint32_t majorIdOf(std::uint32_t minorType) { return minorType >> 16; }
constexpr std::uint32_t minorIdOf(std::uint32_t minorType) { return minorType & 0xFFFF; }

} // namespace dolq

#pragma once

#include <cstdint>

namespace dolq {

/// The two numbers of an alarm's notification class that a minor type carries.
constexpr std::uint32_t majorIdOf(std::uint32_t minorType) { return minorType >> 16; }
constexpr std::uint32_t minorIdOf(std::uint32_t minorType) { return minorType & 0xFFFF; }

} // namespace dolq

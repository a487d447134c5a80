#pragma once

#include <cstdint>
#include <string>

#include "Place.h"

namespace dolqctl {

/// One entry of a mapping file as the library's reader stores it.
struct Mapping {
    std::uint32_t faultId;
    std::string moClass;
    std::uint32_t minorType;
    Place place;
};

} // namespace dolqctl

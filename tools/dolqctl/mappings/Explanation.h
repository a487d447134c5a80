#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "adapter/MoClass.h"
#include "mappings/Inventory.h"

namespace dolqctl {

/// A mapping of the fault that is not the one asked for.
struct NearMiss {
    const EffectiveMapping* effective;
    std::string difference;
};

/// Why a fault on an object becomes an alarm, or not. Refers to the inventory it was made from.
struct Explanation {
    std::uint32_t faultId;
    std::string object;
    dolq::MoClass moClass;
    std::string relativeName;
    const EffectiveMapping* found = nullptr;
    std::vector<NearMiss> nearMisses;
    std::vector<std::string> obstacles; ///< what keeps an alarm from being raised
};

/// `problems`: what went wrong while reading, for a fault that is not mapped.
Explanation explain(std::uint32_t faultId, const std::string& object, const Inventory& inventory,
                    const std::vector<std::string>& problems);

} // namespace dolqctl

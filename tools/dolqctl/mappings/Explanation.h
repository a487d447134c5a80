#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "adapter/MoClass.h"
#include "mappings/Inventory.h"

namespace dolqctl {

struct Discovery;

/// A mapping of the fault that is not the one asked for.
struct NearMiss {
    const Mapping* mapping;
    std::string difference;
};

/// Why a fault on an object becomes an alarm, or not. Refers to the inventory it was made from. Its
/// texts are printable.
struct Explanation {
    std::uint32_t faultId;
    std::string object;
    dolq::MoClass moClass;
    std::string classText;               ///< the class, and what it was taken from
    const std::vector<Mapping>* found;   ///< null without one
    std::vector<NearMiss> nearMisses;    ///< the nearest first
    std::vector<std::string> obstacles;  ///< why neither raise nor cease is sent, the most
                                         ///< important one first
    std::vector<std::string> conditions; ///< "only if ..." for a raise that is mapped

    /// The first sentence: whether a raise would go out, and as what or why not.
    std::string answer() const;
};

/// `identityGiven`: the program names its system and compute node itself.
Explanation explain(std::uint32_t faultId, const std::string& object, const Discovery& discovery,
                    const Inventory& inventory, bool identityGiven);

} // namespace dolqctl

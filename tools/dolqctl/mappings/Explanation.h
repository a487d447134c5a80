#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "adapter/MoClass.h"
#include "mappings/MappingFiles.h"

namespace dolqctl {

struct Discovery;

/// Why a fault on an object becomes an alarm, or not. Refers to the inventory it was made from. Its
/// texts are printable.
struct Explanation {
    std::uint32_t faultId;
    std::string object;
    dolq::MoClass moClass;
    const std::vector<Mapping>* found = nullptr;
    std::vector<const Mapping*> nearMisses; ///< the fault on other classes, the nearest first
    std::vector<std::string> obstacles;     ///< why nothing is sent, the most important one first
    std::vector<std::string> conditions;    ///< what a raise that is mapped depends on

    /// The first sentence: whether a raise would go out, and as what or why not.
    std::string answer() const;
    /// The class, and what it was taken from.
    std::string classText() const;
    /// How another class differs from the object's.
    std::string difference(const std::string& other) const;
};

/// `identityGiven`: the program names its system and compute node itself.
Explanation explain(std::uint32_t faultId, const std::string& object, const Discovery& discovery,
                    const Inventory& inventory, bool identityGiven);

} // namespace dolqctl

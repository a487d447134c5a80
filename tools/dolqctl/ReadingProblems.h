#pragma once

#include <string>
#include <vector>

#include "Discovery.h"
#include "Inventory.h"

namespace dolqctl {

/// That no load module is known at all, and where the embedded load-module handler looks for them.
std::string noLoadModulesAtAll();

/// Why programs of the load module may have fewer mappings than they should: one text each.
std::vector<std::string> readingProblems(const Identity& identity, const Discovery& discovery,
                                         const Inventory& inventory);

} // namespace dolqctl

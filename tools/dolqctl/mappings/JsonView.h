#pragma once

#include <string>
#include <vector>

#include "mappings/Discovery.h"
#include "mappings/Explanation.h"
#include "mappings/Inventory.h"
#include "mappings/MappingFileChecker.h"

namespace dolqctl {

class Output;

// What the commands of this folder print with --json.

void printMappingsJson(const Discovery& discovery, const Inventory& inventory,
                       const std::vector<const EffectiveMapping*>& mappings, Output& output);
void printCheckJson(const std::vector<std::string>& files, const MappingFileChecker& checker,
                    Output& output);
void printExplainJson(const Explanation& explanation, const Identity& identity, Output& output);

} // namespace dolqctl

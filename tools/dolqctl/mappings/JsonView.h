#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "mappings/Discovery.h"
#include "mappings/Inventory.h"
#include "mappings/MappingFileChecker.h"

namespace dolqctl {

class Output;
using Json = nlohmann::ordered_json;

// How the things of this folder look in what its commands print with --json.

void to_json(Json& json, const FilePosition& position);
void to_json(Json& json, const UnreadableFile& file);
void to_json(Json& json, const Mapping& mapping);
void to_json(Json& json, const Discovery::FailedCategory& failure);
void to_json(Json& json, const Discovery::LoadModule& loadModule);
void to_json(Json& json, const Finding& finding);

/// The last one, with what it replaced.
Json effectiveJson(const std::vector<Mapping>& history);

void printCheckJson(const std::vector<std::string>& files, const MappingFileChecker& checker,
                    Output& output);

} // namespace dolqctl

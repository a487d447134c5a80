#pragma once

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "Commands.h"

namespace dolqctl {

class Diagnosis;
struct Inventory;

/// The library's walk over the node's load modules, written down.
struct Discovery {
    struct LoadModule {
        std::string category;
        Identity identity;
        bool matches;                          ///< it is the load module looked for
        std::vector<std::string> mappingFiles; ///< of one that matches
    };
    struct FailedCategory {
        std::string category;
        int errorCode;
    };

    Identity identity;                   ///< of the load module looked for
    std::vector<LoadModule> loadModules; ///< all of them, in reading order
    std::vector<FailedCategory> failedCategories;
    std::vector<std::string> mappingFiles; ///< in reading order
    /// Why load modules or files may be missing: what the handler answers, or what is wrong in the
    /// manifests if it is the embedded one. Printable, as all texts below.
    std::vector<std::string> problems;

    /// Why there is no mapping file, the nearest reason; empty when there is one.
    std::string whyNoMappingFile() const;
    /// What all mapping files begin with, up to a '/'.
    std::string commonFolder() const;
    /// The load module, and on a line of its own the common folder.
    std::string heading() const;
};

void to_json(nlohmann::ordered_json& json, const Discovery::LoadModule& loadModule);
void to_json(nlohmann::ordered_json& json, const Discovery::FailedCategory& failure);

/// From here on the embedded trace backend is silent, unless RUXA_TRACE_GROUPS is set: the commands
/// report themselves what the library's reader traces. Before the first trace, for the backend
/// reads its environment once.
void silenceTraces();

/// Silences traces, too.
Discovery discover(const Identity& identity);

/// What is wrong with the load module and its mapping files (doctor/MappingChecks.cpp).
void checkMappings(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory);

} // namespace dolqctl

#pragma once

#include <string>
#include <vector>

#include "Mapping.h"
#include "Unreadable.h"
#include "mapping/MappingTable.h"

namespace dolqctl {

/// A mapping as a program has it after reading, and the ones that it replaced, the last one first.
struct EffectiveMapping {
    Mapping mapping;
    std::vector<Mapping> overridden;
};

/// What the library's reader takes from mapping files read one after the other.
struct Inventory {
    struct File {
        std::string path;
        std::size_t mappings = 0; ///< overridden ones included
        std::size_t skipped = 0;  ///< mapping elements without both ids
    };
    std::vector<File> files; ///< those that loaded
    std::vector<Unreadable> unreadable;
    std::vector<Place> skipped; ///< those elements
    dolq::MappingTable table;
    std::vector<EffectiveMapping> effective; ///< by fault id, then class, as in the table
};

Inventory readMappingFiles(const std::vector<std::string>& paths);

} // namespace dolqctl

#pragma once

#include <set>
#include <string>
#include <vector>

namespace dolqctl {

/// Which load module a program belongs to.
struct Identity {
    std::string productNumber;
    std::string revision;
};

/// "product" "revision": white space counts.
std::string quoted(const Identity& identity);

/// The node's load modules as the load-module handler gives them, in the library's order.
struct Discovery {
    Identity identity;                     ///< of the load module that the environment names
    std::set<std::string> loadModules;     ///< all of them, `quoted`
    std::vector<std::string> mappingFiles; ///< of the one looked for, in reading order
    std::vector<std::string> problems;     ///< why load modules or mapping files are missing

    /// Why there is no mapping file; empty when there is one.
    std::string whyNoMappingFile() const;
};

/// Throws CommandError when the handler cannot be loaded.
Discovery discover();

} // namespace dolqctl

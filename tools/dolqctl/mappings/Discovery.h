#pragma once

#include <string>
#include <vector>

#include "Commands.h"

namespace dolqctl {

/// The load module in quotes, for white space counts.
std::string quoted(const Identity& identity);

/// The node's load modules as the load-module handler gives them, in the library's order.
struct Discovery {
    Identity identity;                     ///< of the load module looked for
    bool isFound = false;                  ///< there is one
    std::vector<Identity> loadModules;     ///< all of them, in reading order
    std::vector<std::string> mappingFiles; ///< in reading order
    /// Why load modules or files may be missing: what is wrong in the manifests if the handler is
    /// the embedded one, or else what it answers.
    std::vector<std::string> problems;
    std::vector<std::string> doubts; ///< what else is odd in the manifests

    /// Why there is no mapping file; empty when there is one.
    std::string whyNoMappingFile() const;
};

Discovery discover(const Identity& identity);

} // namespace dolqctl

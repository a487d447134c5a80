#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace dolqctl {

/// Which load module a program belongs to.
struct Identity {
    std::string productNumber;
    std::string revision;
};

/// Options --product and --revision, by default what the environment says.
void addIdentityOptions(CLI::App& command, Identity& identity);

/// "CXC1370001 R1A", printable.
std::string text(const Identity& identity);

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

    std::vector<LoadModule> loadModules; ///< all of them, in reading order
    std::vector<FailedCategory> failedCategories;
    std::vector<std::string> mappingFiles; ///< in reading order
};

Discovery discover(const Identity& identity);

/// What to tell of it.
std::string text(const Discovery::FailedCategory& failure);

} // namespace dolqctl

#pragma once

#include <string>
#include <vector>

namespace dolqctl {

class Options;
struct Inventory;

/// Which load module a program belongs to.
struct Identity {
    std::string productNumber;
    std::string revision;
};

/// --product and --revision, by default what the environment says.
void addIdentityOptions(Options& options, Identity& identity);

/// "CXC1370001 R1A", printable.
std::string identityText(const Identity& identity);

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

    bool isFound() const; ///< the load module looked for is among them
};

/// From here on the embedded trace backend is silent, unless RUXA_TRACE_GROUPS is set: the commands
/// report themselves what the library's reader traces.
Discovery discover(const Identity& identity);

std::string failureText(const Discovery::FailedCategory& failure);

/// That no load module is known at all, and where the embedded load-module handler looks for them.
std::string noLoadModulesText();

/// Why programs of the load module may have fewer mappings than they should: one text each.
std::vector<std::string> readingProblems(const Discovery& discovery, const Inventory& inventory);

/// Which mapping files a command works on: named ones, or those of a load module.
struct MappingFileOptions {
    std::vector<std::string> files;
    bool discovered = false;
    Identity identity;
};

/// FILE..., --discovered and the identity options that go with it.
void addMappingFileOptions(Options& options, MappingFileOptions& values);

struct MappingFiles {
    std::vector<std::string> paths; ///< in reading order, each file once
    bool isComplete = true;         ///< the load-module handler could be asked for all of them
};

/// Tells of what the load-module handler could not be asked for. Throws CommandError when there is
/// no file. Silences traces as `discover` does.
MappingFiles mappingFilesOf(const MappingFileOptions& options);

} // namespace dolqctl

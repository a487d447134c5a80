#pragma once

#include <string>
#include <vector>

#include "Discovery.h"

namespace dolqctl {

/// Which mapping files a command works on: named ones, or those of a load module.
struct Sources {
    std::vector<std::string> files;
    bool discovered = false;
    Identity identity;
};

/// FILE..., --discovered and the identity options that go with it.
void addSourceOptions(CLI::App& command, Sources& sources);

struct SourceFiles {
    std::vector<std::string> paths; ///< in reading order, each file once
    bool isComplete = true;         ///< the load-module handler could be asked for all of them
};

/// Tells of what the load-module handler could not be asked for. Throws CommandError when there is
/// no file.
SourceFiles filesOf(const Sources& sources);

} // namespace dolqctl

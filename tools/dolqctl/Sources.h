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

/// The files in reading order, each once. Throws CommandError when there is none, or when the
/// load-module handler could not be asked for all of them.
std::vector<std::string> pathsOf(const Sources& sources);

} // namespace dolqctl

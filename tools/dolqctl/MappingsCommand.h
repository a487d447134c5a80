#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `mappings`: what a program of a load module loads, and from where.
void addMappingsCommand(CLI::App& app, Context& context);

} // namespace dolqctl
